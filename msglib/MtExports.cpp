// MtExports.cpp - the nine exported functions of the message library.
//
// A root is a MsgParseRoot behind a word. Nothing throws out of here: every
// failure, memory included, is a result of 0 with no text handed out.
#include <atomic>
#include <string>
#include <string_view>

#include "MsgHandedText.h"
#include "MsgParseRoot.h"
#include "sNqxMsgNet.h"

namespace {

msg::MsgParseRoot* RootOf(MT_WORD root) { return reinterpret_cast<msg::MsgParseRoot*>(root); }

// A text for the caller, released with MT_Free.
char* NewText(std::string_view s) { return msg::NewHandedText(s); }

// The room kept for a subject or an id on its way out, at most.
constexpr size_t kKeptOutRoom = 1 << 16;

// Roots alive: the kept blocks go with the last one.
std::atomic<long> g_roots{0};

MT_WORD TextWord(char* p) { return reinterpret_cast<MT_WORD>(p); }

void Store(MT_WORD* slot, MT_WORD value) {
    if (slot) *slot = value;
}

// Subject and Message-ID hand out alike.
template <typename Getter>
MT_WORD HandOut(MT_WORD root, char** text, MT_WORD* length, Getter get) {
    if (!root || !text) return 0;
    try {
        std::string& value = RootOf(root)->OutRoom();
        const bool got = get(*RootOf(root), &value);
        char* p = got ? NewText(value) : nullptr;
        const size_t size = value.size();
        if (value.capacity() > kKeptOutRoom) std::string().swap(value);  // a huge one is not kept
        if (!p) return 0;
        *text = p;
        Store(length, static_cast<MT_WORD>(size));
        return 1;
    } catch (...) {
        return 0;
    }
}

}  // namespace

extern "C" {

MT_API MT_WORD MT_Init(void) {
    try {
        const MT_WORD root = reinterpret_cast<MT_WORD>(new msg::MsgParseRoot());
        ++g_roots;
        return root;
    } catch (...) {
        return 0;
    }
}

MT_API MT_WORD MT_Term(MT_WORD root) {
    if (!root) return 0;
    delete RootOf(root);
    if (--g_roots == 0) msg::ReleaseKeptTexts();
    return 1;
}

MT_API MT_WORD MT_Free(void* p) {
    msg::FreeHandedText(p);
    return 0;
}

MT_API MT_WORD MT_ParseMailText(MT_WORD root, const char* text, MT_WORD size) {
    if (!root) return 0;
    msg::MsgParseRoot* r = RootOf(root);
    if (size < 0 || (size > 0 && !text)) {
        r->Clear();
        return 0;
    }
    try {
        r->Parse(text, static_cast<size_t>(size));
        return 1;
    } catch (...) {
        return 0;
    }
}

MT_API MT_WORD MT_GetMainHeadPosition(MT_WORD root) {
    if (!root) return 0;
    return RootOf(root)->Structure().MainParts().empty() ? 0 : 1;
}

MT_API MT_WORD MT_GetMainNext(MT_WORD root, MT_WORD* pos, MT_WORD* w0, MT_WORD* w1, MT_WORD* w2,
                              MT_WORD* w3, MT_WORD* w4, MT_WORD* w5, MT_WORD* w6, MT_WORD* w7,
                              MT_WORD* w8, MT_WORD* w9, MT_WORD, MT_WORD, MT_WORD, MT_WORD,
                              MT_WORD, MT_WORD, MT_WORD, MT_WORD, MT_WORD, MT_WORD, MT_WORD,
                              MT_WORD, MT_WORD, MT_WORD) {
    MT_WORD* const words[10] = {w0, w1, w2, w3, w4, w5, w6, w7, w8, w9};
    for (MT_WORD* w : words) Store(w, 0);
    if (!root || !pos) return 0;
    const msg::MsgParseRoot& r = *RootOf(root);
    const auto& parts = r.Structure().MainParts();
    if (*pos <= 0 || static_cast<size_t>(*pos) > parts.size()) {
        *pos = 0;
        return 0;
    }
    const size_t index = static_cast<size_t>(*pos - 1);
    const msg::MimeLeaf& leaf = parts[index];
    *pos = index + 1 < parts.size() ? *pos + 1 : 0;
    try {
        const std::string_view body = r.MainPartBody(index);
        // Texts are made only for slots the caller gave, so none is lost.
        char* texts[5] = {
            w0 ? NewText(leaf.contentType) : nullptr,
            w2 ? NewText(body) : nullptr,
            w4 ? NewText(leaf.charset) : nullptr,
            (w6 && leaf.hasDisposition) ? NewText(leaf.disposition) : nullptr,
            (w8 && leaf.hasContentId) ? NewText(leaf.contentId) : nullptr,
        };
        const bool wanted[5] = {w0 != nullptr, w2 != nullptr, w4 != nullptr,
                                w6 && leaf.hasDisposition, w8 && leaf.hasContentId};
        for (int i = 0; i < 5; ++i) {
            if (wanted[i] && !texts[i]) {
                for (char* t : texts) msg::FreeHandedText(t);
                return 0;
            }
        }
        const MT_WORD plain[5] = {leaf.number, static_cast<MT_WORD>(body.size()), leaf.encoding,
                                  leaf.depth, static_cast<MT_WORD>(leaf.bodyBegin)};
        for (int i = 0; i < 5; ++i) {
            Store(words[2 * i], TextWord(texts[i]));
            Store(words[2 * i + 1], plain[i]);
        }
        return 1;
    } catch (...) {
        return 0;
    }
}

MT_API MT_WORD MT_GetAttach(MT_WORD root, MT_WORD* a0, MT_WORD* a1, MT_WORD* a2, MT_WORD* a3,
                            MT_WORD* a4, MT_WORD* a5, MT_WORD* a6, MT_WORD* a7, MT_WORD* a8,
                            MT_WORD* a9) {
    MT_WORD* const slots[MT_ATTACH_SLOTS] = {a0, a1, a2, a3, a4, a5, a6, a7, a8, a9};
    for (MT_WORD* s : slots) Store(s, 0);
    if (!root) return 0;
    const msg::MimeStructure& mime = RootOf(root)->Structure();
    const auto& names = mime.AttachmentNames();
    for (size_t i = 0; i < names.size() && i < MT_ATTACH_SLOTS; ++i) {
        if (!slots[i]) continue;
        char* p = NewText(names[i]);
        if (!p) {
            for (size_t k = 0; k < i; ++k) {
                if (slots[k]) {
                    msg::FreeHandedText(reinterpret_cast<void*>(*slots[k]));
                    *slots[k] = 0;
                }
            }
            return 0;
        }
        *slots[i] = TextWord(p);
    }
    return static_cast<MT_WORD>(mime.AttachmentCount());
}

MT_API MT_WORD MT_GetSubjectD(MT_WORD root, char** text, MT_WORD* length) {
    return HandOut(root, text, length,
                   [](const msg::MsgParseRoot& r, std::string* out) { return r.Subject(out); });
}

MT_API MT_WORD MT_GetMessageIDD(MT_WORD root, char** text, MT_WORD* length) {
    return HandOut(root, text, length,
                   [](const msg::MsgParseRoot& r, std::string* out) { return r.MessageId(out); });
}

}  // extern "C"
