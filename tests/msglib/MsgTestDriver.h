// MsgTestDriver.h - drives the nine functions the way the mail reader does.
#ifndef QV_TESTS_MSGLIB_MSGTESTDRIVER_H
#define QV_TESTS_MSGLIB_MSGTESTDRIVER_H

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "sNqxMsgNet.h"
#include "support/WinePrefix.h"

namespace msgtest {

using qvt::Utf8;

struct MainPart {
    std::string type, body, charset, disposition, contentId;  // CP932; "-" when not handed out
    MT_WORD number, bodyLength, encoding, depth, offset;
};

struct Parsed {
    bool hasSubject = false, hasId = false;
    std::string subject, id;  // CP932, exactly the bytes handed out
    std::vector<MainPart> parts;
    MT_WORD attachResult = 0;
    std::vector<std::string> attachNames;  // the non-null slots, in order
    bool gapInSlots = false;               // a null slot before a filled one
};

// The text of a word the library handed out, freed; "-" for none.
inline std::string TakeText(MT_WORD word) {
    char* p = reinterpret_cast<char*>(word);
    std::string s = p ? std::string(p) : "-";
    MT_Free(p);
    return s;
}

// The subject or id: nothing handed out on failure, else a text ended by a zero byte.
inline bool Handed(MT_WORD (*get)(MT_WORD, char**, MT_WORD*), MT_WORD root, std::string* out) {
    char* text = nullptr;
    MT_WORD length = -1;
    if (!get(root, &text, &length)) {
        EXPECT_EQ(text, nullptr) << "text handed out on failure";
        return false;
    }
    if (text == nullptr) {
        ADD_FAILURE() << "success without a text";
        return false;
    }
    EXPECT_EQ(text[length], '\0');
    out->assign(text, static_cast<size_t>(length));
    MT_Free(text);
    return true;
}

// MT_GetMainNext and MT_GetAttach with all ten slots given.
inline MT_WORD MainNext(MT_WORD root, MT_WORD* pos, MT_WORD (&w)[10]) {
    return MT_GetMainNext(root, pos, &w[0], &w[1], &w[2], &w[3], &w[4], &w[5], &w[6], &w[7], &w[8], &w[9], 0, 0,
                          0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
}
inline MT_WORD Attach(MT_WORD root, MT_WORD (&a)[10]) {
    return MT_GetAttach(root, &a[0], &a[1], &a[2], &a[3], &a[4], &a[5], &a[6], &a[7], &a[8], &a[9]);
}

// Parses on a fresh root, reads and frees everything, ends the root.
inline Parsed ParseAll(std::string_view mail) {
    Parsed r;
    MT_WORD root = MT_Init();
    EXPECT_EQ(MT_ParseMailText(root, mail.data(), static_cast<MT_WORD>(mail.size())), 1);
    r.hasSubject = Handed(MT_GetSubjectD, root, &r.subject);
    r.hasId = Handed(MT_GetMessageIDD, root, &r.id);
    for (MT_WORD pos = MT_GetMainHeadPosition(root); pos != 0 && r.parts.size() <= MT_MAX_MAIN_PARTS;) {
        MT_WORD w[10] = {};
        EXPECT_EQ(MainNext(root, &pos, w), 1);
        std::string body = w[2] ? std::string(reinterpret_cast<char*>(w[2]), static_cast<size_t>(w[3])) : "-";
        MT_Free(reinterpret_cast<void*>(w[2]));
        r.parts.push_back({TakeText(w[0]), body, TakeText(w[4]), TakeText(w[6]), TakeText(w[8]), w[1], w[3], w[5],
                           w[7], w[9]});
    }
    EXPECT_LE(r.parts.size(), size_t{MT_MAX_MAIN_PARTS}) << "more main parts than the reader has slots";
    MT_WORD a[10] = {};
    r.attachResult = Attach(root, a);
    for (size_t i = 0; i < 10; ++i) {
        if (!a[i]) continue;
        r.gapInSlots |= r.attachNames.size() < i;
        r.attachNames.push_back(TakeText(a[i]));
    }
    MT_Term(root);
    return r;
}

// Header lines, an empty line, then the body.
inline std::string Entity(const std::vector<std::string>& headers, std::string_view body, const char* eol = "\r\n") {
    std::string out;
    for (const std::string& h : headers) out += h + eol;
    return out + eol + std::string(body);
}

}  // namespace msgtest

#endif  // QV_TESTS_MSGLIB_MSGTESTDRIVER_H
