// The assistant's font (Font.h).
#include "Font.h"

#include <algorithm>
#include <cwchar>
#include <string>
#include <vector>

namespace tqnralm {
namespace gui {

namespace {

// Whether `face` draws "Aメ" without borrowing glyphs from a linked font;
// `exact`: and is the family named, not a stand-in the mapper chose.
bool DrawsBoth(HDC dc, const LOGFONTW& face, bool exact) {
    HFONT font = CreateFontIndirectW(&face);
    HGDIOBJ old = SelectObject(dc, font);
    wchar_t name[LF_FACESIZE] = {};
    GetTextFaceW(dc, LF_FACESIZE, name);
    WORD glyphs[2] = {};
    const bool both = GetGlyphIndicesW(dc, L"A\u30e1", 2, glyphs, GGI_MARK_NONEXISTING_GLYPHS) == 2 &&
                      glyphs[0] != 0xFFFF && glyphs[1] != 0xFFFF &&
                      (!exact || _wcsicmp(name, face.lfFaceName) == 0);
    SelectObject(dc, old);
    DeleteObject(font);
    return both;
}

int CALLBACK AddFamily(const LOGFONTW* font, const TEXTMETRICW*, DWORD, LPARAM list) {
    // '@': the same family turned for vertical text.
    if (font->lfFaceName[0] != L'@') reinterpret_cast<std::vector<std::wstring>*>(list)->push_back(font->lfFaceName);
    return 1;
}

// Windows' own Japanese UI fonts first, then families named for Japanese,
// then the others in the system's order.
int Rank(const std::wstring& name) {
    static const wchar_t* const kUi[] = {L"Yu Gothic UI", L"Meiryo UI", L"MS UI Gothic"};
    for (int i = 0; i < 3; ++i) {
        if (name == kUi[i]) return i;
    }
    return name.find(L" JP") != std::wstring::npos ? 3 : 4;
}

}  // namespace

LOGFONTW FaceForJapanese(HWND hwnd, LOGFONTW face) {
    HDC dc = GetDC(hwnd);
    if (!DrawsBoth(dc, face, false)) {
        std::vector<std::wstring> families;
        LOGFONTW query = {};
        query.lfCharSet = SHIFTJIS_CHARSET;
        EnumFontFamiliesExW(dc, &query, AddFamily, reinterpret_cast<LPARAM>(&families), 0);
        std::stable_sort(families.begin(), families.end(),
                         [](const std::wstring& a, const std::wstring& b) { return Rank(a) < Rank(b); });
        for (const std::wstring& family : families) {
            LOGFONTW candidate = face;
            candidate.lfCharSet = SHIFTJIS_CHARSET;
            wcsncpy(candidate.lfFaceName, family.c_str(), LF_FACESIZE - 1);
            candidate.lfFaceName[LF_FACESIZE - 1] = L'\0';
            if (DrawsBoth(dc, candidate, true)) {
                face = candidate;
                break;
            }
        }
    }
    ReleaseDC(hwnd, dc);
    return face;
}

}  // namespace gui
}  // namespace tqnralm
