// Iconv.cpp - the code pages of other languages' mail through glibc's iconv.
//
// Windows names a charset by its code page number; glibc by name. This table
// joins the two for every code page that mail is written in and that glibc
// has. A conversion opens its own converter (glibc keeps the tables loaded),
// so no state is shared between threads; the charsets here are met per header
// word or per body asked for, never per byte. Without the flag of strictness
// an invalid or cut sequence becomes '?', as Windows writes it in these code
// pages, and the conversion goes on with the next byte. A converter that
// cannot be opened for want of a descriptor fails that one conversion; for
// want of memory, std::bad_alloc goes up.
#include "platform/posix/DirStream.h"
#include "platform/posix/PosixText.h"

#include <iconv.h>

#include <cerrno>
#include <cstdint>

namespace qvp {
namespace posix {
namespace {

struct IconvName {
    uint32_t codePage;
    const char* name;
};

const IconvName kIconvNames[] = {
    {866, "CP866"},           {874, "CP874"},         {936, "CP936"},         {949, "CP949"},
    {950, "CP950"},           {1250, "CP1250"},       {1251, "CP1251"},       {1252, "CP1252"},
    {1253, "CP1253"},         {1254, "CP1254"},       {1255, "CP1255"},       {1256, "CP1256"},
    {1257, "CP1257"},         {1258, "CP1258"},       {10000, "MACINTOSH"},   {10007, "MAC-CYRILLIC"},
    {20866, "KOI8-R"},        {21866, "KOI8-U"},      {28592, "ISO-8859-2"},  {28593, "ISO-8859-3"},
    {28594, "ISO-8859-4"},    {28595, "ISO-8859-5"},  {28596, "ISO-8859-6"},  {28597, "ISO-8859-7"},
    {28598, "ISO-8859-8"},    {28599, "ISO-8859-9"},  {28600, "ISO-8859-10"}, {28603, "ISO-8859-13"},
    {28604, "ISO-8859-14"},   {28605, "ISO-8859-15"}, {28606, "ISO-8859-16"}, {38598, "ISO-8859-8"},
    {50225, "ISO-2022-KR"},   {50227, "ISO-2022-CN"}, {54936, "GB18030"},     {65000, "UTF-7"},
};

const char* NameOf(uint32_t codePage) {
    for (const IconvName& n : kIconvNames) {
        if (n.codePage == codePage) return n.name;
    }
    return nullptr;
}

void AppendUtf16Le(const char* bytes, size_t count, std::u16string* out) {
    for (size_t i = 0; i + 1 < count; i += 2) {
        out->push_back(static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                             (static_cast<unsigned char>(bytes[i + 1]) << 8)));
    }
}

}  // namespace

bool IconvToUtf16(uint32_t codePage, const char* bytes, size_t count, bool strict, std::u16string* out) {
    const char* name = NameOf(codePage);
    // Windows takes no flag of strictness for UTF-7 and the ISO-2022 forms.
    if (name == nullptr || (strict && (codePage == 65000 || (codePage >= 50220 && codePage <= 50229)))) return false;
    iconv_t cd = InjectedFailure() ? reinterpret_cast<iconv_t>(-1) : iconv_open("UTF-16LE", name);
    if (cd == reinterpret_cast<iconv_t>(-1)) {
        ThrowIfNoMemory(errno);
        return false;
    }
    out->clear();
    char* in = const_cast<char*>(bytes);
    size_t inLeft = count;
    bool ok = true;
    char chunk[4096];
    while (inLeft > 0) {
        char* to = chunk;
        size_t toLeft = sizeof chunk;
        const size_t done = iconv(cd, &in, &inLeft, &to, &toLeft);
        const int error = errno;
        AppendUtf16Le(chunk, sizeof chunk - toLeft, out);
        if (done != static_cast<size_t>(-1) || error == E2BIG) continue;
        if (strict || (error != EILSEQ && error != EINVAL)) {
            ok = false;
            break;
        }
        out->push_back(u'?');  // Windows' default character in these code pages
        ++in;
        --inLeft;
    }
    // What a stateful charset still holds.
    char* to = chunk;
    size_t toLeft = sizeof chunk;
    if (ok && iconv(cd, nullptr, nullptr, &to, &toLeft) != static_cast<size_t>(-1))
        AppendUtf16Le(chunk, sizeof chunk - toLeft, out);
    iconv_close(cd);
    return ok;
}

}  // namespace posix
}  // namespace qvp
