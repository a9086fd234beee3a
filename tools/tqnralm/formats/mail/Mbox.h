// mboxrd: the "From " line that starts each message and the quoting of the
// body, as Thunderbird, mutt and Python's mailbox read them.
#ifndef TQNRALM_TOOL_MBOX_H
#define TQNRALM_TOOL_MBOX_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tqnralm {

// The first header field of this name (without regard to case) in the
// header section of a message, unfolded; false when there is none.
bool HeaderValue(const char* data, size_t size, const char* name, std::string* value);
// The same as a view into the message; a folded value is unfolded into
// *unfolded, which the view then shows.
bool HeaderView(const char* data, size_t size, const char* name, std::string_view* value, std::string* unfolded);

// The addr-spec in a Return-Path or From value ("Taro <taro@example.jp>",
// "taro@example.jp (Taro)"); empty when there is none usable on a From line.
// A view into the value, or into *stripped where comments or quoted strings
// had to be taken out.
std::string_view AddrSpecView(std::string_view value, std::string* stripped);

// An RFC 5322 date ("Fri, 14 Mar 2008 09:05:01 +0900") as seconds since
// 1970 (UTC); false when it cannot be read.
bool ParseDate(std::string_view date, int64_t* seconds);

// Whether ParseDate reads a date of the common form ("[Www, ]D Mmm YYYY
// HH:MM[:SS] [+-]ZZZZ", nothing else) by a quick path of its own (the
// default); false sends every date through the general reading (tests).
void QuickDates(bool quick);

// A time in UTC in the form of asctime ("Fri Mar 14 00:05:01 2008").
std::string Asctime(int64_t seconds);
void AppendAsctime(int64_t seconds, std::string& out);

// An RFC 5322 date in UTC in the form of asctime; "Thu Jan  1 00:00:00 1970"
// when it cannot be read.
std::string AsctimeUtc(const std::string& date);

// When a message came: its Date, else the date of its first Received field
// (which the last server put on top as it took the message in); false when
// neither can be read.
bool MessageTime(const char* data, size_t size, int64_t* seconds);

// "From <sender> <date>\n" for a message: the addr-spec of Return-Path, else
// of From, else MAILER-DAEMON; `time` in UTC (1970 when it is below 0).
std::string FromLine(const char* data, size_t size, int64_t time);
void AppendFromLine(const char* data, size_t size, int64_t time, std::string& out);

// Whether a message begins with a header: its first line is a field
// ("Name:", the name printable ASCII) or the blank line after an empty header.
bool BeginsWithHeader(const char* data, size_t size);

// Appends a message body in mboxrd form to `out`: CR LF becomes LF, a line
// that matches ^>*From gets one more ">", a last line without an end gets
// one, and a blank line ends the message.
void AppendMboxrd(const char* data, size_t size, std::string& out);

}  // namespace tqnralm

#endif
