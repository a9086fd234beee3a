// fuzz_msglib.cpp - the message library through its nine functions: parse
// arbitrary bytes, then read and free everything the way the mail reader
// does. The input is parsed twice on one root, the second time from its
// second half, so that replacing a message is covered too. A subject or id
// must be text that the reader's strict code page 932 conversion takes.
#include "FuzzCheck.h"

#include "platform/platform.h"
#include "sNqxMsgNet.h"

namespace {

void ReadAll(MT_WORD root) {
    for (const auto get : {MT_GetSubjectD, MT_GetMessageIDD}) {
        char* text = nullptr;
        MT_WORD length = 0;
        if (!get(root, &text, &length)) continue;
        const int strict = length == 0 ? 1 : qvp::MultiByteToWideChar(qvp::kCp932, qvp::kMbErrInvalidChars, text,
                                                                       static_cast<int>(length), nullptr, 0);
        fuzzcheck::Check(text[length] == '\0' && strict > 0);
        MT_Free(text);
    }
    MT_WORD pos = MT_GetMainHeadPosition(root);
    int parts = 0;
    while (pos != 0) {
        if (++parts > MT_MAX_MAIN_PARTS) __builtin_trap();
        MT_WORD w[10] = {};
        MT_GetMainNext(root, &pos, &w[0], &w[1], &w[2], &w[3], &w[4], &w[5], &w[6], &w[7], &w[8], &w[9],
                       0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
        const char* body = reinterpret_cast<const char*>(w[2]);
        if (body && body[w[3]] != '\0') __builtin_trap();
        for (int i = 0; i < 10; i += 2) MT_Free(reinterpret_cast<void*>(w[i]));
    }
    MT_WORD a[10] = {};
    MT_GetAttach(root, &a[0], &a[1], &a[2], &a[3], &a[4], &a[5], &a[6], &a[7], &a[8], &a[9]);
    for (MT_WORD x : a) MT_Free(reinterpret_cast<void*>(x));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    MT_WORD root = MT_Init();
    if (!root) return 0;
    const char* text = reinterpret_cast<const char*>(data);
    MT_ParseMailText(root, text, static_cast<MT_WORD>(size));
    ReadAll(root);
    MT_ParseMailText(root, text + size / 2, static_cast<MT_WORD>(size - size / 2));
    ReadAll(root);
    MT_Term(root);
    return 0;
}
