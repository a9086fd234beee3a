// CharsetRows.h - subjects in the charsets of mail and what the reader must
// show for each (UTF-8 of the code page 932 text). The table test reads them
// through the library; the differential test hands the same messages to
// Python's email package.
#ifndef QV_TESTS_MSGLIB_CHARSETROWS_H
#define QV_TESTS_MSGLIB_CHARSETROWS_H

#include <string>
#include <vector>

namespace qvt {

struct SubjectRow {
    const char* name;
    std::string subject;   // the field value as written
    std::string charset;   // the top-level charset parameter, "" for none
    const char* rawCodec;  // Python's codec for raw 8-bit text in the value, or ""
    std::string expected;  // UTF-8 of what the reader gets

    std::string Mail() const {
        std::string mail = "Subject: " + subject + "\r\n";
        if (!charset.empty()) mail += "Content-Type: text/plain; charset=\"" + charset + "\"\r\n";
        return mail + "\r\nbody\r\n";
    }
};

inline const std::vector<SubjectRow>& SubjectRows() {
    const std::string euc = "\xC6\xFC\xCB\xDC\xB8\xEC\xA4\xCE\xB7\xEF\xCC\xBE";  // 日本語の件名
    const std::string sjis = "\x93\xFA\x96\x7B\x8C\xEA\x82\xCC\x8C\x8F\x96\xBC";
    const std::string utf8 = "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E";  // 日本語
    const std::string jis = "\x1B$BF|K\\8l\x1B(B";
    static const std::vector<SubjectRow> rows = {
        // A row per family of labels, in encoded words.
        {"windows-1252 word", "=?windows-1252?Q?caf=E9_=93q=94?=", "", "", "cafe “q”"},
        {"latin-1 label", "=?latin-1?Q?caf=E9?=", "", "", "cafe"},
        {"iso-8859-1 underscore label", "=?ISO_8859-1?Q?na=EFve?=", "", "", "naive"},
        {"koi8-r", "=?koi8-r?B?8NLJ18XU?=", "", "", "Привет"},
        {"koi8-u", "=?koi8-u?B?8NI=?=", "", "", "Пр"},
        {"windows-1251 with я", "=?windows-1251?B?z/Do4uXyIP8=?=", "", "", "Привет я"},
        {"ibm866", "=?ibm866?B?j+A=?=", "", "", "Пр"},
        {"iso-8859-5", "=?iso-8859-5?B?v+A=?=", "", "", "Пр"},
        {"iso-8859-7", "=?iso-8859-7?B?4eI=?=", "", "", "αβ"},
        {"windows-1253", "=?windows-1253?B?4eI=?=", "", "", "αβ"},
        {"iso-8859-2: no cp932 form", "=?ISO-8859-2?B?qeg=?=", "", "", "??"},
        {"gb2312", "=?gb2312?B?1tDOxA==?=", "", "", "中文"},
        {"gbk", "=?GBK?B?1tDOxA==?=", "", "", "中文"},
        {"gb18030", "=?gb18030?B?1tDOxA==?=", "", "", "中文"},
        {"big5", "=?big5?B?pKSk5Q==?=", "", "", "中文"},
        {"ks_c_5601-1987 hanja", "=?ks_c_5601-1987?B?8enZ/g==?=", "", "", "中文"},
        {"euc-kr hangul: no cp932 form", "=?euc-kr?B?x9Gx2w==?=", "", "", "??"},
        {"iso-2022-kr", "=?iso-2022-kr?B?GyQpQw5xaVl+Dw==?=", "", "", "中文"},
        {"utf-16 with a byte order mark", "=?utf-16?B?//5CMEQw?=", "", "", "あい"},
        {"utf-16be", "=?utf-16be?B?MEIwRA==?=", "", "", "あい"},
        {"utf-7", "=?utf-7?Q?+ZeVnLIqe-?=", "", "", "日本語"},
        {"x-sjis", "=?x-sjis?B?k/qWe4zq?=", "", "", "日本語"},
        {"ms_kanji", "=?ms_kanji?B?k/qWe4zq?=", "", "", "日本語"},
        {"csISO2022JP", "=?csISO2022JP?B?GyRCRnxLXDhsGyhC?=", "", "", "日本語"},
        {"x-euc-jp", "=?x-euc-jp?B?xvzL3Ljs?=", "", "", "日本語"},
        // Windows' best-fit forms for characters that code page 932 lacks.
        {"wave dash, minus, double bar, cent, pound, not, no-break space, em dash",
         "=?utf-8?B?MTDmmYLjgJwxMuaZgiDiiJIxIOKAliDCosKjwqwgYcKgYiDigJQ=?=", "", "",
         "10時～12時 －1 ∥ ￠￡￢ a b ―"},
        {"accented letter, yen, euro, hangul", "=?utf-8?B?w6kgwqUg4oKsIO2VnA==?=", "", "", "e \\ ? ?"},
        // Bytes A0, FD, FE, FF that code page 932 has no character for.
        {"A0 in a shift_jis word", "=?shift_jis?Q?=A0ab?=", "", "", "?ab"},
        {"FD FE FF in a shift_jis word", "=?shift_jis?Q?a=FDb=FEc=FF?=", "", "", "a?b?c?"},
        {"FF in a latin-1 word", "=?iso-8859-1?Q?ab=FF?=", "", "", "aby"},
        {"raw A0 inside", "a\xA0" "b", "", "cp1252", "a b"},
        {"raw FE first, FD last", "\xFE" "ab\xFD", "", "cp1252", "taby"},
        // Raw 8-bit text by its bytes and the top-level charset.
        {"raw euc-jp", euc, "", "euc_jp", "日本語の件名"},
        {"raw euc-jp, iso-2022-jp declared", euc, "iso-2022-jp", "euc_jp", "日本語の件名"},
        {"raw shift_jis", sjis, "", "cp932", "日本語の件名"},
        {"raw shift_jis, euc-jp declared", sjis, "euc-jp", "cp932", "日本語の件名"},
        {"raw kana pair, shift_jis declared", "\xB1\xB2", "shift_jis", "cp932", "ｱｲ"},
        {"raw kana pair read as euc-jp", "\xB1\xB2", "", "euc_jp", "渦"},
        {"raw utf-8", utf8, "", "utf-8", "日本語"},
        {"raw utf-8, iso-8859-1 declared", utf8, "iso-8859-1", "utf-8", "日本語"},
        {"raw utf-8, euc-jp declared", utf8, "euc-jp", "utf-8", "日本語"},
        {"raw iso-2022-jp", jis, "", "iso2022_jp", "日本語"},
        {"raw iso-2022-jp, utf-8 declared", jis, "utf-8", "iso2022_jp", "日本語"},
        {"raw latin-1", "caf\xE9", "", "cp1252", "cafe"},
        {"raw latin-1, iso-8859-1 declared", "caf\xE9 ok", "iso-8859-1", "cp1252", "cafe ok"},
        {"raw windows-1251 declared", "\xCF\xF0\xE8\xE2\xE5\xF2 \xFF", "windows-1251", "cp1251", "Привет я"},
        {"raw text and a word", euc + " =?utf-8?B?5pel?=", "", "euc_jp", "日本語の件名 日"},
    };
    return rows;
}

}  // namespace qvt

#endif  // QV_TESTS_MSGLIB_CHARSETROWS_H
