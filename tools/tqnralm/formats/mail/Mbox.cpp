// mboxrd: the "From " line of each message and the quoting of its body.
#include "Mbox.h"

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tqnralm {
namespace {

const char* const kEpoch = "Thu Jan  1 00:00:00 1970";

bool EqualNoCase(const char* a, size_t n, const char* b) {
    if (std::strlen(b) != n) return false;
    for (size_t i = 0; i < n; ++i) {
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    }
    return true;
}

// ASCII case only, as header field names are ASCII; faster than tolower,
// which every header line of every message would pass through.
inline char AsciiLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

bool SameNoCase(const char* a, const char* b, size_t n) {
    for (size_t i = 0; i < n; ++i) {
        if (AsciiLower(a[i]) != AsciiLower(b[i])) return false;
    }
    return true;
}

// Days from 1970-01-01 of a date of the proleptic Gregorian calendar.
int64_t DaysFromCivil(int64_t y, int m, int d) {
    y -= m <= 2;
    const int64_t era = (y >= 0 ? y : y - 399) / 400;
    const int64_t yoe = y - era * 400;
    const int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468;
}

void CivilFromDays(int64_t z, int64_t* y, int* m, int* d) {
    z += 719468;
    const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const int64_t doe = z - era * 146097;
    const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const int64_t mp = (5 * doy + 2) / 153;
    *d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    *m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    *y = yoe + era * 400 + (*m <= 2);
}

const char* const kMonths[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
const char* const kDays[7] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};

bool AllDigits(const std::string& s) {
    if (s.empty()) return false;
    for (char c : s) {
        if (!std::isdigit(static_cast<unsigned char>(c))) return false;
    }
    return true;
}

// The zone's offset east of UTC in minutes.
bool ZoneOffset(const std::string& zone, int* minutes) {
    if ((zone[0] == '+' || zone[0] == '-') && zone.size() == 5 && AllDigits(zone.substr(1))) {
        int hh = std::stoi(zone.substr(1, 2)), mm = std::stoi(zone.substr(3, 2));
        if (hh > 23 || mm > 59) return false;
        *minutes = (zone[0] == '-' ? -1 : 1) * (hh * 60 + mm);
        return true;
    }
    static const struct {
        const char* name;
        int hours;
    } kNames[] = {{"UT", 0},  {"UTC", 0}, {"GMT", 0}, {"Z", 0},   {"EST", -5}, {"EDT", -4}, {"CST", -6},
                  {"CDT", -5}, {"MST", -7}, {"MDT", -6}, {"PST", -8}, {"PDT", -7}, {"JST", 9}};
    for (const auto& entry : kNames) {
        if (EqualNoCase(zone.data(), zone.size(), entry.name)) {
            *minutes = entry.hours * 60;
            return true;
        }
    }
    // Other letters (the military zones) carry no usable offset: as -0000.
    for (char c : zone) {
        if (!std::isalpha(static_cast<unsigned char>(c))) return false;
    }
    *minutes = 0;
    return true;
}

// Whether a value holds a comment, a quoted string or an angle bracket:
// most senders' and dates' values hold none, and need no stripping.
bool Bracketed(std::string_view value) {
    for (char c : value) {
        if (c == '(' || c == '"' || c == '<') return true;
    }
    return false;
}

// The address inside a value with comments and quoted strings skipped: what
// stands between the first '<' and its '>', else the whole value.
std::string StripComments(const std::string& value, bool* angle) {
    *angle = false;
    if (!Bracketed(value)) return value;
    std::string out;
    int depth = 0;
    bool quoted = false;
    *angle = false;
    size_t start = std::string::npos;
    for (size_t i = 0; i < value.size(); ++i) {
        char c = value[i];
        if (quoted) {
            if (c == '\\' && i + 1 < value.size()) {
                out += value.substr(i, 2);
                ++i;
                continue;
            }
            if (c == '"') quoted = false;
            out.push_back(c);
        } else if (depth > 0) {
            if (c == '\\') ++i;
            else if (c == '(') ++depth;
            else if (c == ')') --depth;
        } else if (c == '(') {
            ++depth;
        } else if (c == '"') {
            quoted = true;
            out.push_back(c);
        } else if (c == '<' && start == std::string::npos) {
            start = i + 1;
            out.clear();
            *angle = true;
        } else if (c == '>' && *angle) {
            return out;
        } else {
            out.push_back(c);
        }
    }
    return out;
}

std::string_view Trim(std::string_view s) {
    size_t b = 0, e = s.size();
    while (b < e && std::isspace(static_cast<unsigned char>(s[b]))) ++b;
    while (e > b && std::isspace(static_cast<unsigned char>(s[e - 1]))) --e;
    return s.substr(b, e - b);
}

bool g_quickDates = true;

bool IsDateSeparator(char c) { return c == ' ' || c == '\t' || c == ',' || c == '\r' || c == '\n'; }

// Reads 1 to `most` digits at d[*i] as a number; false when there are none.
bool Digits(std::string_view d, size_t* i, size_t most, int* value) {
    const size_t start = *i;
    *value = 0;
    while (*i < d.size() && *i - start < most && d[*i] >= '0' && d[*i] <= '9') *value = *value * 10 + (d[(*i)++] - '0');
    return *i > start;
}

// The day, month, year, time and zone of a date of the common form, each
// checked as the general reading checks it. False, and the general reading
// decides, for any other form, and for a date that fails a check.
bool QuickDate(std::string_view d, int64_t* seconds) {
    if (Bracketed(d)) return false;  // comments, quotes, brackets
    size_t i = 0;
    const auto skip = [&] { while (i < d.size() && IsDateSeparator(d[i])) ++i; };
    const auto wordEnds = [&] { return i == d.size() || IsDateSeparator(d[i]); };
    skip();
    if (i < d.size() && std::isalpha(static_cast<unsigned char>(d[i]))) {  // the day of the week
        while (!wordEnds()) ++i;
        skip();
    }
    int day = 0, year = 0, hh = 0, mm = 0, ss = 0, zone = 0, month = -1;
    size_t from = i;
    if (!Digits(d, &i, 2, &day) || !wordEnds()) return false;
    skip();
    for (int m = 0; m < 12 && month < 0 && i + 3 <= d.size(); ++m) {
        if (SameNoCase(d.data() + i, kMonths[m], 3)) month = m + 1;
    }
    i += 3;
    if (month < 0 || !wordEnds()) return false;
    skip();
    from = i;
    if (!Digits(d, &i, 4, &year) || !wordEnds() || i - from < 2) return false;
    if (i - from == 2) year += year < 50 ? 2000 : 1900;
    else if (i - from == 3) year += 1900;
    skip();
    if (!Digits(d, &i, 2, &hh) || i == d.size() || d[i++] != ':' || !Digits(d, &i, 2, &mm)) return false;
    if (i < d.size() && d[i] == ':' && (++i, !Digits(d, &i, 2, &ss))) return false;
    if (!wordEnds()) return false;
    skip();
    if (i < d.size()) {
        const char sign = d[i++];
        from = i;
        if ((sign != '+' && sign != '-') || !Digits(d, &i, 4, &zone) || i - from != 4 || !wordEnds()) return false;
        skip();
        if (i != d.size() || zone / 100 > 23 || zone % 100 > 59) return false;
        zone = (sign == '-' ? -1 : 1) * (zone / 100 * 60 + zone % 100);
    }
    static const int kLength[12] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    if (day < 1 || day > kLength[month - 1] || (month == 2 && day == 29 && !leap) || year < 1900 || hh > 23 ||
        mm > 59 || ss > 60)
        return false;
    *seconds = DaysFromCivil(year, month, day) * 86400 + hh * 3600 + mm * 60 + ss - zone * 60;
    return true;
}

}  // namespace

void QuickDates(bool quick) { g_quickDates = quick; }

bool HeaderValue(const char* data, size_t size, const char* name, std::string* value) {
    std::string_view view;
    if (!HeaderView(data, size, name, &view, value)) return false;
    if (view.data() != value->data()) value->assign(view);
    return true;
}

bool HeaderView(const char* data, size_t size, const char* name, std::string_view* value, std::string* unfolded) {
    const size_t nameLength = std::strlen(name);
    const char first = AsciiLower(name[0]);
    bool found = false;
    for (size_t pos = 0; pos < size;) {
        const char* nl = static_cast<const char*>(std::memchr(data + pos, '\n', size - pos));
        size_t end = nl != nullptr ? static_cast<size_t>(nl - data) : size;
        size_t lineEnd = end > pos && data[end - 1] == '\r' ? end - 1 : end;
        if (lineEnd == pos) break;  // the blank line that ends the header section
        const bool continuation = data[pos] == ' ' || data[pos] == '\t';
        if (found) {
            if (!continuation) return true;
            // A folded value is unfolded into *unfolded; one of one line stays a view.
            if (value->data() != unfolded->data()) unfolded->assign(*value);
            unfolded->append(data + pos, lineEnd - pos);
            *value = *unfolded;
        } else if (AsciiLower(data[pos]) == first && lineEnd - pos > nameLength && data[pos + nameLength] == ':' &&
                   SameNoCase(data + pos, name, nameLength)) {
            found = true;
            *value = std::string_view(data + pos + nameLength + 1, lineEnd - pos - nameLength - 1);
        }
        pos = end + 1;
    }
    return found;
}

std::string_view AddrSpecView(std::string_view value, std::string* stripped) {
    bool angle = false;
    std::string_view inner = value;
    if (Bracketed(value)) inner = *stripped = StripComments(std::string(value), &angle);
    inner = Trim(inner);
    if (!angle) {
        // "a@b, c@d" or a display name without brackets: the first word with '@'.
        size_t at = inner.find('@');
        if (at == std::string_view::npos) return {};
        // By hand: find_first_of and find_last_of look up each byte in the set with a call.
        const auto splits = [](char c) { return c == ' ' || c == '\t' || c == ',' || c == ';'; };
        size_t b = at, e = at;
        while (b > 0 && !splits(inner[b - 1])) --b;
        while (e < inner.size() && !splits(inner[e])) ++e;
        inner = inner.substr(b, e - b);
    }
    for (char c : inner) {
        if (static_cast<unsigned char>(c) <= ' ' || c == 0x7F) return {};
    }
    return inner;
}

bool ParseDate(std::string_view date, int64_t* seconds) {
    if (g_quickDates && QuickDate(date, seconds)) return true;
    bool angle = false;
    std::string text = StripComments(std::string(date), &angle);
    if (angle) return false;
    std::vector<std::string> words;
    std::string word;
    for (char c : text + " ") {
        if (c == ' ' || c == '\t' || c == ',' || c == '\r' || c == '\n') {
            if (!word.empty()) words.push_back(word);
            word.clear();
        } else {
            word.push_back(c);
        }
    }
    size_t i = 0;
    if (i < words.size() && std::isalpha(static_cast<unsigned char>(words[i][0]))) ++i;  // the day of the week
    if (words.size() < i + 4) return false;
    const std::string& dayWord = words[i];
    const std::string& monthWord = words[i + 1];
    const std::string& yearWord = words[i + 2];
    const std::string& timeWord = words[i + 3];
    if (!AllDigits(dayWord) || dayWord.size() > 2 || !AllDigits(yearWord) || yearWord.size() < 2 ||
        yearWord.size() > 4)
        return false;
    int month = -1;
    for (int m = 0; m < 12; ++m) {
        if (EqualNoCase(monthWord.data(), monthWord.size(), kMonths[m])) month = m + 1;
    }
    int64_t year = std::stoi(yearWord);
    if (yearWord.size() == 2) year += year < 50 ? 2000 : 1900;  // two digits: 1950 to 2049
    else if (yearWord.size() == 3) year += 1900;
    const int day = std::stoi(dayWord);
    static const int kLength[12] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    if (month < 1 || day < 1 || day > kLength[month - 1] || (month == 2 && day == 29 && !leap) || year < 1900)
        return false;
    int hh = 0, mm = 0, ss = 0;
    char rest = 0;
    int fields = std::sscanf(timeWord.c_str(), "%2d:%2d:%2d%c", &hh, &mm, &ss, &rest);
    if (!(fields == 3 || (fields == 2 && timeWord.size() <= 5)) || hh > 23 || mm > 59 || ss > 60 || hh < 0 ||
        mm < 0 || ss < 0)
        return false;
    int offset = 0;
    if (words.size() > i + 4 && !ZoneOffset(words[i + 4], &offset)) return false;
    *seconds = DaysFromCivil(year, month, day) * 86400 + hh * 3600 + mm * 60 + ss - offset * 60;
    return true;
}

std::string Asctime(int64_t seconds) {
    std::string text;
    AppendAsctime(seconds, text);
    return text;
}

void AppendAsctime(int64_t seconds, std::string& text) {
    int64_t days = seconds >= 0 ? seconds / 86400 : -((-seconds + 86399) / 86400);
    const int64_t inDay = seconds - days * 86400;
    int64_t y = 0;
    int m = 0, d = 0;
    CivilFromDays(days, &y, &m, &d);
    // "%s %s %2d %02d:%02d:%02d %lld", written by hand: one per message.
    char out[32];
    char* o = out;
    const auto word = [&o](const char* w) {
        std::memcpy(o, w, 3);
        o[3] = ' ';
        o += 4;
    };
    const auto two = [&o](int n, char pad, char after) {
        *o++ = n < 10 ? pad : static_cast<char>('0' + n / 10);
        *o++ = static_cast<char>('0' + n % 10);
        *o++ = after;
    };
    word(kDays[((days % 7) + 11) % 7]);
    word(kMonths[m - 1]);
    two(d, ' ', ' ');
    two(static_cast<int>(inDay / 3600), '0', ':');
    two(static_cast<int>(inDay / 60 % 60), '0', ':');
    two(static_cast<int>(inDay % 60), '0', ' ');
    text.append(out, o);
    text += std::to_string(static_cast<long long>(y));
}

std::string AsctimeUtc(const std::string& date) {
    int64_t seconds = 0;
    return ParseDate(date, &seconds) ? Asctime(seconds) : kEpoch;
}

bool MessageTime(const char* data, size_t size, int64_t* seconds) {
    thread_local std::string unfolded;  // kept from message to message
    std::string_view value;
    if (HeaderView(data, size, "Date", &value, &unfolded) && ParseDate(value, seconds)) return true;
    if (!HeaderView(data, size, "Received", &value, &unfolded)) return false;
    const size_t semicolon = value.rfind(';');
    return semicolon != std::string_view::npos && ParseDate(value.substr(semicolon + 1), seconds);
}

std::string FromLine(const char* data, size_t size, int64_t time) {
    std::string line;
    AppendFromLine(data, size, time, line);
    return line;
}

void AppendFromLine(const char* data, size_t size, int64_t time, std::string& out) {
    thread_local std::string unfolded, stripped;  // kept from message to message
    std::string_view value, sender;
    if (HeaderView(data, size, "Return-Path", &value, &unfolded)) sender = AddrSpecView(value, &stripped);
    if (sender.empty() && HeaderView(data, size, "From", &value, &unfolded)) sender = AddrSpecView(value, &stripped);
    out += "From ";
    out += sender.empty() ? std::string_view("MAILER-DAEMON") : sender;
    out += ' ';
    if (time >= 0) AppendAsctime(time, out);
    else out += kEpoch;
    out += '\n';
}

bool BeginsWithHeader(const char* data, size_t size) {
    if (size > 0 && (data[0] == '\n' || (data[0] == '\r' && size > 1 && data[1] == '\n'))) return true;
    size_t i = 0;
    while (i < size && data[i] != ':' && data[i] > ' ' && data[i] < 127) ++i;
    return i > 0 && i < size && data[i] == ':';
}

namespace {

// Copies the line at data[pos] to o, its CR LF or LF as one LF (a last line
// without an end gets one), and returns where the next line starts. Sixteen
// bytes at a time where the CPU has SSE2: a line costs no call, which a
// short line's memchr and memcpy cost more than their bytes. Each block is
// stored whole before its LF is looked for: its bytes past the LF are
// overwritten by what follows, and never pass the message's room, as a
// line never writes more bytes than it reads but its LF.
size_t CopyLine(const char* data, size_t size, size_t pos, char*& o) {
    const size_t start = pos;
#if defined(__SSE2__)
    const __m128i lf = _mm_set1_epi8('\n');
    for (; pos + 16 <= size; pos += 16, o += 16) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(data + pos));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(o), block);
        const unsigned ends = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, lf)));
        if (ends != 0) {
            const unsigned k = static_cast<unsigned>(__builtin_ctz(ends));
            o += k;
            if (pos + k > start && data[pos + k - 1] == '\r') --o;  // the CR before the LF is taken back
            *o++ = '\n';
            return pos + k + 1;
        }
    }
#endif
    const char* nl = static_cast<const char*>(std::memchr(data + pos, '\n', size - pos));
    const size_t end = nl != nullptr ? static_cast<size_t>(nl - data) : size;
    std::memcpy(o, data + pos, end - pos);
    o += end - pos;
    if (nl != nullptr && end > start && data[end - 1] == '\r') --o;
    *o++ = '\n';
    return end + 1;
}

}  // namespace

void AppendMboxrd(const char* data, size_t size, std::string& out) {
    // Written in place, a line at a time: a line never grows but by the '>'
    // of a quote (room made as one is met), and the text by its last line's
    // end and the blank line.
    const size_t start = out.size();
    out.resize(start + size + 2);
    char* o = &out[start];
    for (size_t pos = 0; pos < size;) {
        if (data[pos] == '>' || data[pos] == 'F') {
            size_t q = pos;
            while (q < size && data[q] == '>') ++q;
            // "From " holds no line end: where it stands, it is in this line.
            if (size - q >= 5 && std::memcmp(data + q, "From ", 5) == 0) {
                const size_t at = static_cast<size_t>(o - out.data());
                out.resize(out.size() + 1);
                o = &out[at];
                *o++ = '>';
            }
        }
        pos = CopyLine(data, size, pos, o);
    }
    *o++ = '\n';
    out.resize(static_cast<size_t>(o - out.data()));
}

}  // namespace tqnralm

