// MsgTestDriver.h - builds mail in code and drives the library through its
// nine functions the way the mail reader does, collecting what it hands out.
#ifndef QV_TESTS_MSGLIB_MSGTESTDRIVER_H
#define QV_TESTS_MSGLIB_MSGTESTDRIVER_H

#include <string>
#include <string_view>
#include <vector>

#include "sNqxMsgNet.h"

namespace msgtest {

struct MainPart {
    std::string type;
    MT_WORD number = 0;
    std::string body;  // CP932
    MT_WORD bodyLength = 0;
    std::string charset;
    MT_WORD encoding = 0;
    bool hasDisposition = false;
    std::string disposition;
    MT_WORD depth = 0;
    bool hasContentId = false;
    std::string contentId;
    MT_WORD offset = 0;
};

struct Parsed {
    bool hasSubject = false;
    std::string subject;  // CP932, exactly the bytes handed out
    bool hasId = false;
    std::string id;
    std::vector<MainPart> parts;
    MT_WORD attachResult = 0;
    std::vector<std::string> attachNames;  // the non-null slots, in order
    int nullSlotsBeforeLast = 0;           // a null slot before a filled one
};

// Parses on a fresh root, reads everything, frees everything, ends the root.
Parsed ParseAll(std::string_view mail);

// CP932 text to UTF-8 through the platform's converter.
std::string Utf8(std::string_view cp932);

// Header lines joined by CR LF, an empty line, then the body.
std::string Entity(const std::vector<std::string>& headers, std::string_view body);
// The same with bare LF line ends.
std::string EntityLf(const std::vector<std::string>& headers, std::string_view body);
// A multipart body: each part after a delimiter line, then the close line.
std::string MultipartBody(std::string_view boundary, const std::vector<std::string>& parts);

}  // namespace msgtest

#endif  // QV_TESTS_MSGLIB_MSGTESTDRIVER_H
