// QvRecordLayout.cpp - compile-time checks of the two records' binary form.
//
// On a 32-bit target the records must match the host's layout byte for byte;
// a 64-bit build keeps the field order with native pointer widths.
#include <cstddef>

#include "tqnralm.h"

namespace {
constexpr size_t W = sizeof(void*);

static_assert(offsetof(QV_MAIL_DATA, pszMailText) == 0, "pszMailText");
static_assert(offsetof(QV_MAIL_DATA, nMailTextLen) == W, "nMailTextLen");
static_assert(offsetof(QV_MAIL_DATA, pfnFree) == 2 * W, "pfnFree");
static_assert(sizeof(QV_MAIL_DATA) == 3 * W, "QV_MAIL_DATA size");

// Every field from offset 0 to 132 (on 32 bits) is one pointer-sized word.
#define QV_WORD(field, offset32) \
    static_assert(offsetof(QV_ADDRESS_DATA, field) == (offset32) / 4 * W, #field)
QV_WORD(pfnRelease, 0);
QV_WORD(lpszN1, 4);
QV_WORD(lpszN2, 8);
QV_WORD(lpszNS1, 12);
QV_WORD(lpszNS2, 16);
QV_WORD(lpszNickName, 20);
QV_WORD(lpszEmailInternet, 24);
QV_WORD(dwReserved1, 28);
QV_WORD(dwReserved2, 32);
QV_WORD(lpszTelHomeVoice, 36);
QV_WORD(lpszTelHomeFax, 40);
QV_WORD(lpszTelCellVoice, 44);
QV_WORD(lpszReserved1, 48);
QV_WORD(lpszAdrHome6, 52);
QV_WORD(lpszAdrHome7, 56);
QV_WORD(lpszAdrHome5, 60);
QV_WORD(lpszAdrHome4, 64);
QV_WORD(lpszAdrHome3, 68);
QV_WORD(lpszAdrHome2, 72);
QV_WORD(lpszTelWorkVoice, 76);
QV_WORD(lpszTelWorkFax, 80);
QV_WORD(lpszReserved2, 84);
QV_WORD(lpszTelPagerVoice, 88);
QV_WORD(lpszAdrWork6, 92);
QV_WORD(lpszAdrWork7, 96);
QV_WORD(lpszAdrWork5, 100);
QV_WORD(lpszAdrWork4, 104);
QV_WORD(lpszAdrWork3, 108);
QV_WORD(lpszAdrWork2, 112);
QV_WORD(lpszAdrOrg1, 116);
QV_WORD(lpszReserved3, 120);
QV_WORD(lpszAdrOrg2, 124);
QV_WORD(lpszTitle, 128);
QV_WORD(lpszNote, 132);
#undef QV_WORD
static_assert(offsetof(QV_ADDRESS_DATA, nExtraCount) == 34 * W, "nExtraCount");
static_assert(offsetof(QV_ADDRESS_DATA, pExtra) == (W == 4 ? 140 : 34 * W + 8), "pExtra");
static_assert(W != 4 || sizeof(QV_ADDRESS_DATA) == 144, "QV_ADDRESS_DATA is 144 bytes on 32 bits");
static_assert(W != 4 || sizeof(QV_MAIL_DATA) == 12, "QV_MAIL_DATA is 12 bytes on 32 bits");
static_assert(sizeof(QV_WCHAR) == 2, "16-bit text");
}  // namespace
