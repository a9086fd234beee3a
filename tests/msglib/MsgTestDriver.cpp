// MsgTestDriver.cpp - the test driver of the message library.
#include "MsgTestDriver.h"

#include <gtest/gtest.h>

#include "platform/platform.h"

namespace msgtest {

namespace {

std::string TakeText(MT_WORD word) {
    char* p = reinterpret_cast<char*>(word);
    std::string s = p ? std::string(p) : std::string();
    MT_Free(p);
    return s;
}

bool Handed(MT_WORD (*get)(MT_WORD, char**, MT_WORD*), MT_WORD root, std::string* out) {
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

}  // namespace

Parsed ParseAll(std::string_view mail) {
    Parsed r;
    MT_WORD root = MT_Init();
    EXPECT_NE(root, 0);
    EXPECT_NE(MT_ParseMailText(root, mail.data(), static_cast<MT_WORD>(mail.size())), 0);
    r.hasSubject = Handed(MT_GetSubjectD, root, &r.subject);
    r.hasId = Handed(MT_GetMessageIDD, root, &r.id);

    MT_WORD pos = MT_GetMainHeadPosition(root);
    while (pos != 0) {
        if (r.parts.size() >= MT_MAX_MAIN_PARTS) {
            ADD_FAILURE() << "more main parts than the reader has slots";
            break;
        }
        MT_WORD w[10] = {};
        MT_GetMainNext(root, &pos, &w[0], &w[1], &w[2], &w[3], &w[4], &w[5], &w[6], &w[7], &w[8],
                       &w[9], 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
        MainPart part;
        char* body = reinterpret_cast<char*>(w[2]);
        part.bodyLength = w[3];
        if (body) part.body.assign(body, static_cast<size_t>(w[3]));
        MT_Free(body);
        part.type = TakeText(w[0]);
        part.number = w[1];
        part.charset = TakeText(w[4]);
        part.encoding = w[5];
        part.hasDisposition = w[6] != 0;
        part.disposition = TakeText(w[6]);
        part.depth = w[7];
        part.hasContentId = w[8] != 0;
        part.contentId = TakeText(w[8]);
        part.offset = w[9];
        r.parts.push_back(part);
    }

    MT_WORD a[10] = {};
    r.attachResult = MT_GetAttach(root, &a[0], &a[1], &a[2], &a[3], &a[4], &a[5], &a[6], &a[7],
                                  &a[8], &a[9]);
    int nulls = 0;
    for (MT_WORD word : a) {
        if (word == 0) {
            ++nulls;
            continue;
        }
        r.nullSlotsBeforeLast += nulls;
        nulls = 0;
        r.attachNames.push_back(TakeText(word));
    }
    MT_Term(root);
    return r;
}

std::string Utf8(std::string_view cp932) {
    if (cp932.empty()) return std::string();
    int n = qvp::MultiByteToWideChar(qvp::kCp932, 0, cp932.data(), static_cast<int>(cp932.size()),
                                     nullptr, 0);
    std::u16string wide(static_cast<size_t>(n), u'\0');
    qvp::MultiByteToWideChar(qvp::kCp932, 0, cp932.data(), static_cast<int>(cp932.size()), &wide[0], n);
    int m = qvp::WideCharToMultiByte(qvp::kCpUtf8, wide.data(), n, nullptr, 0);
    std::string out(static_cast<size_t>(m), '\0');
    qvp::WideCharToMultiByte(qvp::kCpUtf8, wide.data(), n, &out[0], m);
    return out;
}

std::string Entity(const std::vector<std::string>& headers, std::string_view body) {
    std::string out;
    for (const std::string& h : headers) out += h + "\r\n";
    out += "\r\n";
    out += body;
    return out;
}

std::string EntityLf(const std::vector<std::string>& headers, std::string_view body) {
    std::string out;
    for (const std::string& h : headers) out += h + "\n";
    out += "\n";
    out += body;
    return out;
}

std::string MultipartBody(std::string_view boundary, const std::vector<std::string>& parts) {
    std::string out = "This is a multi-part message in MIME format.\r\n";
    for (const std::string& p : parts) {
        out += "--";
        out += boundary;
        out += "\r\n" + p + "\r\n";
    }
    out += "--";
    out += boundary;
    out += "--\r\nepilogue\r\n";
    return out;
}

}  // namespace msgtest
