// MsgCharsetLabels.cpp - charset labels to Windows code page numbers.
//
// The labels are the WHATWG Encoding Standard's (what browsers and mail
// readers accept), with the aliases that mailers write beyond it (Python's
// names among them). Two choices differ from WHATWG: the US-ASCII labels stay
// US-ASCII, because old Japanese mail declared it over 8-bit text and such
// text is guessed; and the labels WHATWG turns into "replacement" (ISO-2022-KR,
// ISO-2022-CN, HZ) name their code pages, converted where the system can.
// Labels match in any case, with '_' and '-' alike, as Python matches them.
#include "MsgCharset.h"

#include <algorithm>
#include <vector>

#include "MsgText.h"
#include "platform/platform.h"

namespace msg {

namespace {

struct Label {
    const char* name;
    uint32_t codePage;
};

// Windows' numbers of the code pages that platform.h does not name.
enum : uint32_t {
    kIbm866 = 866, kWin874 = 874, kGbk = 936, kUhc = 949, kBig5 = 950,
    kWin1250 = 1250, kWin1251, kWin1252, kWin1253, kWin1254, kWin1255, kWin1256, kWin1257, kWin1258,
    kMacRoman = 10000, kMacCyrillic = 10007, kKoi8R = 20866, kKoi8U = 21866,
    kIso8859_2 = 28592, kIso8859_3, kIso8859_4, kIso8859_5, kIso8859_6, kIso8859_7, kIso8859_8,
    kIso8859_10 = 28600, kIso8859_13 = 28603, kIso8859_14, kIso8859_15, kIso8859_16, kIso8859_8I = 38598,
    kIso2022Kr = 50225, kIso2022Cn = 50227, kHz = 52936, kGb18030 = 54936, kUtf7 = 65000,
};

const Label kLabels[] = {
    // Unicode
    {"unicode-1-1-utf-8", qvp::kCpUtf8}, {"unicode11utf8", qvp::kCpUtf8}, {"unicode20utf8", qvp::kCpUtf8},
    {"utf-8", qvp::kCpUtf8}, {"utf8", qvp::kCpUtf8}, {"x-unicode20utf8", qvp::kCpUtf8},
    {"csunicode", qvp::kCpUtf16Le}, {"iso-10646-ucs-2", qvp::kCpUtf16Le}, {"ucs-2", qvp::kCpUtf16Le},
    {"unicode", qvp::kCpUtf16Le}, {"unicodefeff", qvp::kCpUtf16Le}, {"utf-16", qvp::kCpUtf16Le},
    {"utf-16le", qvp::kCpUtf16Le}, {"unicodefffe", qvp::kCpUtf16Be}, {"utf-16be", qvp::kCpUtf16Be},
    {"utf-7", kUtf7}, {"unicode-1-1-utf-7", kUtf7}, {"csunicode11utf7", kUtf7},
    // Japanese
    {"csiso2022jp", qvp::kCpIso2022Jp}, {"iso-2022-jp", qvp::kCpIso2022Jp}, {"iso-2022-jp-1", qvp::kCpIso2022Jp},
    {"iso-2022-jp-2", qvp::kCpIso2022Jp}, {"iso-2022-jp-3", qvp::kCpIso2022Jp},
    {"cseucpkdfmtjapanese", qvp::kCpEucJp}, {"euc-jp", qvp::kCpEucJp}, {"x-euc-jp", qvp::kCpEucJp},
    {"eucjp", qvp::kCpEucJp}, {"ujis", qvp::kCpEucJp},
    {"csshiftjis", qvp::kCp932}, {"ms932", qvp::kCp932}, {"ms_kanji", qvp::kCp932}, {"shift-jis", qvp::kCp932},
    {"shift_jis", qvp::kCp932}, {"sjis", qvp::kCp932}, {"windows-31j", qvp::kCp932}, {"x-sjis", qvp::kCp932},
    {"cp932", qvp::kCp932}, {"x-ms-cp932", qvp::kCp932}, {"windows-932", qvp::kCp932},
    // US-ASCII, kept apart (see above)
    {"us-ascii", qvp::kCpAscii}, {"ascii", qvp::kCpAscii}, {"ansi_x3.4-1968", qvp::kCpAscii},
    {"us", qvp::kCpAscii}, {"iso646-us", qvp::kCpAscii},
    // windows-1252 and the ISO-8859-1 labels that mean it
    {"cp1252", kWin1252}, {"cp819", kWin1252}, {"csisolatin1", kWin1252}, {"ibm819", kWin1252},
    {"iso-8859-1", kWin1252}, {"iso-ir-100", kWin1252}, {"iso8859-1", kWin1252}, {"iso88591", kWin1252},
    {"iso_8859-1:1987", kWin1252}, {"l1", kWin1252}, {"latin1", kWin1252}, {"latin-1", kWin1252},
    {"latin", kWin1252}, {"windows-1252", kWin1252}, {"x-cp1252", kWin1252},
    // the ISO-8859 family
    {"csisolatin2", kIso8859_2}, {"iso-8859-2", kIso8859_2}, {"iso-ir-101", kIso8859_2}, {"iso8859-2", kIso8859_2},
    {"iso88592", kIso8859_2}, {"iso_8859-2:1987", kIso8859_2}, {"l2", kIso8859_2}, {"latin2", kIso8859_2},
    {"csisolatin3", kIso8859_3}, {"iso-8859-3", kIso8859_3}, {"iso-ir-109", kIso8859_3}, {"iso8859-3", kIso8859_3},
    {"iso88593", kIso8859_3}, {"iso_8859-3:1988", kIso8859_3}, {"l3", kIso8859_3}, {"latin3", kIso8859_3},
    {"csisolatin4", kIso8859_4}, {"iso-8859-4", kIso8859_4}, {"iso-ir-110", kIso8859_4}, {"iso8859-4", kIso8859_4},
    {"iso88594", kIso8859_4}, {"iso_8859-4:1988", kIso8859_4}, {"l4", kIso8859_4}, {"latin4", kIso8859_4},
    {"csisolatincyrillic", kIso8859_5}, {"cyrillic", kIso8859_5}, {"iso-8859-5", kIso8859_5},
    {"iso-ir-144", kIso8859_5}, {"iso8859-5", kIso8859_5}, {"iso88595", kIso8859_5}, {"iso_8859-5:1988", kIso8859_5},
    {"arabic", kIso8859_6}, {"asmo-708", kIso8859_6}, {"csiso88596e", kIso8859_6}, {"csiso88596i", kIso8859_6},
    {"csisolatinarabic", kIso8859_6}, {"ecma-114", kIso8859_6}, {"iso-8859-6", kIso8859_6},
    {"iso-8859-6-e", kIso8859_6}, {"iso-8859-6-i", kIso8859_6}, {"iso-ir-127", kIso8859_6},
    {"iso8859-6", kIso8859_6}, {"iso88596", kIso8859_6}, {"iso_8859-6:1987", kIso8859_6},
    {"csisolatingreek", kIso8859_7}, {"ecma-118", kIso8859_7}, {"elot_928", kIso8859_7}, {"greek", kIso8859_7},
    {"greek8", kIso8859_7}, {"iso-8859-7", kIso8859_7}, {"iso-ir-126", kIso8859_7}, {"iso8859-7", kIso8859_7},
    {"iso88597", kIso8859_7}, {"iso_8859-7:1987", kIso8859_7}, {"sun_eu_greek", kIso8859_7},
    {"csiso88598e", kIso8859_8}, {"csisolatinhebrew", kIso8859_8}, {"hebrew", kIso8859_8},
    {"iso-8859-8", kIso8859_8}, {"iso-8859-8-e", kIso8859_8}, {"iso-ir-138", kIso8859_8},
    {"iso8859-8", kIso8859_8}, {"iso88598", kIso8859_8}, {"iso_8859-8:1988", kIso8859_8}, {"visual", kIso8859_8},
    {"csiso88598i", kIso8859_8I}, {"iso-8859-8-i", kIso8859_8I}, {"logical", kIso8859_8I},
    {"csisolatin6", kIso8859_10}, {"iso-8859-10", kIso8859_10}, {"iso-ir-157", kIso8859_10},
    {"iso8859-10", kIso8859_10}, {"iso885910", kIso8859_10}, {"l6", kIso8859_10}, {"latin6", kIso8859_10},
    {"iso-8859-13", kIso8859_13}, {"iso8859-13", kIso8859_13}, {"iso885913", kIso8859_13},
    {"iso-8859-14", kIso8859_14}, {"iso8859-14", kIso8859_14}, {"iso885914", kIso8859_14},
    {"csisolatin9", kIso8859_15}, {"iso-8859-15", kIso8859_15}, {"iso8859-15", kIso8859_15},
    {"iso885915", kIso8859_15}, {"l9", kIso8859_15}, {"latin-9", kIso8859_15}, {"iso-8859-16", kIso8859_16},
    // windows-125x and Turkish, whose ISO-8859-9 labels mean windows-1254
    {"cp1250", kWin1250}, {"windows-1250", kWin1250}, {"x-cp1250", kWin1250},
    {"cp1251", kWin1251}, {"windows-1251", kWin1251}, {"x-cp1251", kWin1251},
    {"cp1253", kWin1253}, {"windows-1253", kWin1253}, {"x-cp1253", kWin1253},
    {"cp1254", kWin1254}, {"csisolatin5", kWin1254}, {"iso-8859-9", kWin1254}, {"iso-ir-148", kWin1254},
    {"iso8859-9", kWin1254}, {"iso88599", kWin1254}, {"iso_8859-9:1989", kWin1254}, {"l5", kWin1254},
    {"latin5", kWin1254}, {"windows-1254", kWin1254}, {"x-cp1254", kWin1254},
    {"cp1255", kWin1255}, {"windows-1255", kWin1255}, {"x-cp1255", kWin1255},
    {"cp1256", kWin1256}, {"windows-1256", kWin1256}, {"x-cp1256", kWin1256},
    {"cp1257", kWin1257}, {"windows-1257", kWin1257}, {"x-cp1257", kWin1257},
    {"cp1258", kWin1258}, {"windows-1258", kWin1258}, {"x-cp1258", kWin1258},
    {"dos-874", kWin874}, {"iso-8859-11", kWin874}, {"iso8859-11", kWin874}, {"iso885911", kWin874},
    {"tis-620", kWin874}, {"windows-874", kWin874}, {"cp874", kWin874},
    // Cyrillic
    {"866", kIbm866}, {"cp866", kIbm866}, {"csibm866", kIbm866}, {"ibm866", kIbm866},
    {"cskoi8r", kKoi8R}, {"koi", kKoi8R}, {"koi8", kKoi8R}, {"koi8-r", kKoi8R}, {"koi8-ru", kKoi8U},
    {"koi8-u", kKoi8U}, {"x-mac-cyrillic", kMacCyrillic}, {"x-mac-ukrainian", kMacCyrillic},
    {"csmacintosh", kMacRoman}, {"mac", kMacRoman}, {"macintosh", kMacRoman}, {"x-mac-roman", kMacRoman},
    // Chinese and Korean
    {"chinese", kGbk}, {"csgb2312", kGbk}, {"csiso58gb231280", kGbk}, {"gb2312", kGbk}, {"gb_2312", kGbk},
    {"gb_2312-80", kGbk}, {"gbk", kGbk}, {"iso-ir-58", kGbk}, {"x-gbk", kGbk}, {"cp936", kGbk},
    {"euc-cn", kGbk}, {"gb18030", kGb18030}, {"hz-gb-2312", kHz},
    {"csiso2022cn", kIso2022Cn}, {"iso-2022-cn", kIso2022Cn},
    {"big5", kBig5}, {"big5-hkscs", kBig5}, {"cn-big5", kBig5}, {"csbig5", kBig5}, {"x-x-big5", kBig5},
    {"cp950", kBig5}, {"big5hkscs", kBig5},
    {"cseuckr", kUhc}, {"csksc56011987", kUhc}, {"euc-kr", kUhc}, {"iso-ir-149", kUhc}, {"korean", kUhc},
    {"ks_c_5601-1987", kUhc}, {"ks_c_5601-1989", kUhc}, {"ksc5601", kUhc}, {"ksc_5601", kUhc},
    {"windows-949", kUhc}, {"cp949", kUhc}, {"uhc", kUhc},
    {"csiso2022kr", kIso2022Kr}, {"iso-2022-kr", kIso2022Kr},
};

// A label as it is compared: lower case, '_' as '-'.
char KeyChar(char c) { return c == '_' ? '-' : AsciiLower(c); }

std::string Key(std::string_view name) {
    std::string key(name);
    for (char& c : key) c = KeyChar(c);
    return key;
}

using Entry = std::pair<std::string, uint32_t>;

const std::vector<Entry>& SortedLabels() {
    static const std::vector<Entry> sorted = [] {
        std::vector<Entry> v;
        for (const Label& l : kLabels) v.emplace_back(Key(l.name), l.codePage);
        std::sort(v.begin(), v.end());
        return v;
    }();
    return sorted;
}

}  // namespace

uint32_t CodePageOfCharset(std::string_view name) {
    name = TrimSpace(name);
    const size_t star = name.find('*');
    if (star != std::string_view::npos) name = name.substr(0, star);
    if (name.empty() || name.size() > 32) return kCpGuess;
    // Every part names its charset: the key is made on the stack.
    char room[32];
    for (size_t i = 0; i < name.size(); ++i) room[i] = KeyChar(name[i]);
    const std::string_view key(room, name.size());
    const std::vector<Entry>& labels = SortedLabels();
    const auto it = std::lower_bound(labels.begin(), labels.end(), key,
                                     [](const Entry& e, std::string_view k) { return std::string_view(e.first) < k; });
    return it != labels.end() && it->first == key ? it->second : kCpGuess;
}

}  // namespace msg
