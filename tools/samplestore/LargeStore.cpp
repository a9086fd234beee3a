// LargeStore.cpp - a store of many messages, written fast: the installation
// goes through the fixture writer, then the messages are written straight
// into the copied prefix, one buffer reused for all of them.
#include "LargeStore.h"

#include <cstdio>
#include <exception>

#include "support/SampleStore.h"

namespace qvt {
namespace {

const char kAccount[] = "C:\\AL-Mail\\Mailbox\\Account1";

// Subjects as ISO-2022-JP encoded words (会議のお知らせ, 見積もりの件, ...).
const char* const kSubjects[] = {
    "=?ISO-2022-JP?B?GyRCMnE1RCROJCpDTiRpJDsbKEI=?=", "=?ISO-2022-JP?B?GyRCOCtAUSRiJGokTjdvGyhC?=",
    "=?ISO-2022-JP?B?GyRCPTVLdiROTT1EahsoQg==?=",     "=?ISO-2022-JP?B?GyRCQEE1YT1xQXdJVSROJDQwRkZiGyhC?=",
    "=?ISO-2022-JP?B?GyRCQkckQTlnJG8kOzVEO3ZPPxsoQg==?=", "=?ISO-2022-JP?B?GyRCPzdHLyROJDQwJzsiGyhC?="};

// Body lines in ISO-2022-JP: いつもお世話になっております。 and so on.
const char* const kBodyLines[] = {
    "\x1b$B$$$D$b$*@$OC$K$J$C$F$*$j$^$9!#\x1b(B\r\n",
    "\x1b$BMh=5$NBG$A9g$o$;$N7o$G$4O\"Mm$$$?$7$^$9!#\x1b(B\r\n",
    "\x1b$B;qNA$rE:IU$$$?$7$^$9$N$G!\"$43NG'$/$@$5$$!#\x1b(B\r\n",
    "\x1b$B$h$m$7$/$*4j$$$$$?$7$^$9!#\x1b(B\r\n"};

std::string Number(long n) {
    char name[24];
    std::snprintf(name, sizeof name, "%08ld", n);
    return name;
}

// An RFC 5322 date, one message every 7 minutes 13 seconds from 2008-01-01 (JST).
std::string DateField(long index) {
    static const char* const kDays[] = {"Tue", "Wed", "Thu", "Fri", "Sat", "Sun", "Mon"};  // 2008-01-01 was a Tuesday
    static const char* const kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                          "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const long long seconds = static_cast<long long>(index) * 433;
    long long day = seconds / 86400;
    const long long second = seconds % 86400;
    const int weekday = static_cast<int>(day % 7);
    int year = 2008, month = 0;
    for (;;) {
        const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
        const int yearDays = leap ? 366 : 365;
        if (day < yearDays) {
            const int monthDays[] = {31, leap ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
            while (day >= monthDays[month]) day -= monthDays[month++];
            break;
        }
        day -= yearDays;
        ++year;
    }
    char text[64];
    std::snprintf(text, sizeof text, "%s, %d %s %d %02d:%02d:%02d +0900", kDays[weekday], static_cast<int>(day) + 1,
                  kMonths[month], year, static_cast<int>(second / 3600), static_cast<int>(second / 60 % 60),
                  static_cast<int>(second % 60));
    return text;
}

// The message with the given number across the store, into out.
void MakeLargeMessage(long index, long bytes, std::string* out) {
    out->clear();
    *out += "From: sender" + std::to_string(index % 97) + "@example.jp\r\nTo: receiver@example.jp\r\n";
    *out += std::string("Subject: ") + kSubjects[index % 6] + " " + std::to_string(index) + "\r\n";
    *out += "Message-ID: <" + std::to_string(index) + ".large@example.jp>\r\n";
    *out += "Date: " + DateField(index) + "\r\n";
    *out += "MIME-Version: 1.0\r\nContent-Type: text/plain; charset=ISO-2022-JP\r\n"
            "Content-Transfer-Encoding: 7bit\r\n\r\n";
    for (long line = index; out->size() < static_cast<size_t>(bytes); ++line) *out += kBodyLines[line % 4];
}

bool WriteBytes(const std::string& path, const std::string& bytes, std::string* error) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    bool ok = file != nullptr && std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    if (file != nullptr && std::fclose(file) != 0) ok = false;
    if (!ok) *error = "cannot write " + path;
    return ok;
}

}  // namespace

bool WriteLargeStore(const std::string& hostDir, const LargeStoreShape& shape, std::string* error) {
    if (shape.messages < 0 || shape.folders < 1 || shape.messageBytes < 0) {
        *error = "the counts must be positive";
        return false;
    }
    try {
        WinePrefix prefix;
        StoreWriter w(prefix);
        w.Install("C:\\Program Files\\AL-Mail\\AlMail.exe");
        w.RegistryMailbox("C:\\AL-Mail");
        w.Mailbox("C:\\AL-Mail\\Mailbox");
        w.Account(kAccount, "大量");
        std::vector<std::string> folders;
        for (int f = 1; f <= shape.folders; ++f) {
            folders.push_back(std::string(kAccount) + "\\" + Number(f) + ".box");
            w.FolderIni(folders.back(), "フォルダ " + std::to_string(f), false);
        }
        // The folders are written; the messages go straight into the copy.
        const std::string& root = prefix.Root();
        for (const std::string& folder : folders) {
            if (prefix.HostPath(folder).compare(0, root.size(), root) != 0) {
                *error = "a generated store needs a Wine prefix";
                return false;
            }
        }
        prefix.CopyTo(hostDir);
        std::string text;
        text.reserve(static_cast<size_t>(shape.messageBytes) + 512);
        long index = 0;
        for (int f = 0; f < shape.folders; ++f) {
            const long count = shape.messages / shape.folders + (f < shape.messages % shape.folders ? 1 : 0);
            const std::string dir = hostDir + prefix.HostPath(folders[static_cast<size_t>(f)]).substr(root.size());
            std::string entries;
            for (long n = 1; n <= count; ++n, ++index) {
                const std::string name = Number(n);
                MakeLargeMessage(index, shape.messageBytes, &text);
                if (!WriteBytes(dir + "/" + name + ".alm", text, error)) return false;
                entries += name + "=1,0\r\n";
            }
            if (!WriteBytes(dir + "/Entry.lst", entries, error)) return false;
        }
    } catch (const std::exception& e) {
        *error = e.what();
        return false;
    }
    return true;
}

}  // namespace qvt
