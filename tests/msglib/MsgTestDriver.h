// MsgTestDriver.h - drives the nine functions the way the mail reader does.
#ifndef QV_TESTS_MSGLIB_MSGTESTDRIVER_H
#define QV_TESTS_MSGLIB_MSGTESTDRIVER_H

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "platform/platform.h"
#include "sNqxMsgNet.h"

namespace msgtest {

struct MainPart {
    std::string type, body, charset, disposition, contentId;  // CP932
    MT_WORD number = 0, bodyLength = 0, encoding = 0, depth = 0, offset = 0;
    bool hasDisposition = false, hasContentId = false;
};

struct Parsed {
    bool hasSubject = false, hasId = false;
    std::string subject, id;  // CP932, exactly the bytes handed out
    std::vector<MainPart> parts;
    MT_WORD attachResult = 0;
    std::vector<std::string> attachNames;  // the non-null slots, in order
    bool gapInSlots = false;  // a null slot before a filled one
};

inline std::string TakeText(MT_WORD word) {
    char* p = reinterpret_cast<char*>(word);
    std::string s = p ? std::string(p) : std::string();
    MT_Free(p);
    return s;
}

inline bool Handed(MT_WORD (*get)(MT_WORD, char**, MT_WORD*), MT_WORD root, std::string* out) {
    char* text = nullptr;
    MT_WORD length = -1;
    if (!get(root, &text, &length)) {
        EXPECT_EQ(text, nullptr) << "text handed out on failure";
        return false;
    }
    EXPECT_NE(text, nullptr);
    if (!text) return false;
    EXPECT_EQ(text[length], '\0') << "text not ended by a zero byte";
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
    EXPECT_NE(root, 0);
    EXPECT_NE(MT_ParseMailText(root, mail.data(), static_cast<MT_WORD>(mail.size())), 0);
    r.hasSubject = Handed(MT_GetSubjectD, root, &r.subject);
    r.hasId = Handed(MT_GetMessageIDD, root, &r.id);
    for (MT_WORD pos = MT_GetMainHeadPosition(root); pos != 0;) {
        if (r.parts.size() >= MT_MAX_MAIN_PARTS) {
            ADD_FAILURE() << "more main parts than the reader has slots";
            break;
        }
        MT_WORD w[10] = {};
        MainNext(root, &pos, w);
        MainPart m;
        if (w[2]) m.body.assign(reinterpret_cast<char*>(w[2]), static_cast<size_t>(w[3]));
        MT_Free(reinterpret_cast<void*>(w[2]));
        m.hasDisposition = w[6] != 0;
        m.hasContentId = w[8] != 0;
        m.type = TakeText(w[0]), m.charset = TakeText(w[4]), m.disposition = TakeText(w[6]);
        m.contentId = TakeText(w[8]);
        m.number = w[1], m.bodyLength = w[3], m.encoding = w[5], m.depth = w[7], m.offset = w[9];
        r.parts.push_back(m);
    }
    MT_WORD a[10] = {};
    r.attachResult = Attach(root, a);
    for (size_t i = 0; i < 10; ++i) {
        if (!a[i]) continue;
        if (r.attachNames.size() < i) r.gapInSlots = true;
        r.attachNames.push_back(TakeText(a[i]));
    }
    MT_Term(root);
    return r;
}

inline std::string Utf8(std::string_view cp932) {
    if (cp932.empty()) return std::string();
    const int size = static_cast<int>(cp932.size());
    int n = qvp::MultiByteToWideChar(qvp::kCp932, 0, cp932.data(), size, nullptr, 0);
    std::u16string wide(static_cast<size_t>(n), u'\0');
    qvp::MultiByteToWideChar(qvp::kCp932, 0, cp932.data(), size, &wide[0], n);
    int m = qvp::WideCharToMultiByte(qvp::kCpUtf8, wide.data(), n, nullptr, 0);
    std::string out(static_cast<size_t>(m), '\0');
    qvp::WideCharToMultiByte(qvp::kCpUtf8, wide.data(), n, &out[0], m);
    return out;
}

// Header lines, an empty line, then the body.
inline std::string Entity(const std::vector<std::string>& headers, std::string_view body,
                          const char* eol = "\r\n") {
    std::string out;
    for (const std::string& h : headers) out += h + eol;
    return out + eol + std::string(body);
}

}  // namespace msgtest

#endif  // QV_TESTS_MSGLIB_MSGTESTDRIVER_H
