/* stub_mock.c - a message library for the reader's tests: it keeps count of
 * how it is driven and gives out texts that must all come back via MT_Free.
 *
 * The subject is the message's first line, the message id "<parse-N>" for the
 * N-th parse; a message whose first byte is '!' has neither. Each message
 * offers StubSetMainParts(n) main parts (seven unless set), more than the
 * reader keeps, and one attachment. */
#include <stdlib.h>
#include <string.h>

#include "sNqxMsgNet.h"

struct StubCounters {
    long inits, terms, frees, null_frees, parses, main_next, attach, bad_trailing_words;
    long outstanding; /* texts given out and not yet freed */
    long last_size;
};

static struct StubCounters g_counters;
static int g_main_parts = 7;
static char* g_text;
static long g_size;
static int g_root_tag;

MT_API struct StubCounters* StubCounters(void) { return &g_counters; }
MT_API void StubSetMainParts(int n) { g_main_parts = n; }

static char* give(const char* s, size_t n) {
    char* p = (char*)malloc(n + 1);
    if (p == NULL) return NULL;
    memcpy(p, s, n);
    p[n] = 0;
    ++g_counters.outstanding;
    return p;
}

MT_API MT_WORD MT_Init(void) {
    ++g_counters.inits;
    return (MT_WORD)&g_root_tag;
}

MT_API MT_WORD MT_Term(MT_WORD root) {
    (void)root;
    ++g_counters.terms;
    free(g_text);
    g_text = NULL;
    g_size = 0;
    return 0;
}

MT_API MT_WORD MT_Free(void* p) {
    ++g_counters.frees;
    if (p == NULL) {
        ++g_counters.null_frees;
        return 0;
    }
    --g_counters.outstanding;
    free(p);
    return 0;
}

MT_API MT_WORD MT_ParseMailText(MT_WORD root, const char* text, MT_WORD size) {
    (void)root;
    ++g_counters.parses;
    g_counters.last_size = (long)size;
    free(g_text);
    g_text = (char*)malloc((size_t)size + 1);
    if (g_text == NULL) return 0;
    memcpy(g_text, text, (size_t)size);
    g_text[size] = 0;
    g_size = (long)size;
    return 1;
}

MT_API MT_WORD MT_GetMainHeadPosition(MT_WORD root) {
    (void)root;
    return g_main_parts > 0 ? 1 : 0;
}

MT_API MT_WORD MT_GetMainNext(MT_WORD root, MT_WORD* pos, MT_WORD* w0, MT_WORD* w1, MT_WORD* w2,
                              MT_WORD* w3, MT_WORD* w4, MT_WORD* w5, MT_WORD* w6, MT_WORD* w7,
                              MT_WORD* w8, MT_WORD* w9, MT_WORD z0, MT_WORD z1, MT_WORD z2,
                              MT_WORD z3, MT_WORD z4, MT_WORD z5, MT_WORD z6, MT_WORD z7,
                              MT_WORD z8, MT_WORD z9, MT_WORD z10, MT_WORD z11, MT_WORD z12,
                              MT_WORD z13) {
    (void)root;
    ++g_counters.main_next;
    if ((z0 | z1 | z2 | z3 | z4 | z5 | z6 | z7 | z8 | z9 | z10 | z11 | z12 | z13) != 0)
        ++g_counters.bad_trailing_words;
    *w0 = (MT_WORD)give("text/plain", 10);
    *w1 = *pos;
    *w2 = (MT_WORD)give("body", 4);
    *w3 = 4;
    *w4 = (MT_WORD)give("", 0);
    *w5 = 0;
    *w6 = 0;
    *w7 = 0;
    *w8 = 0;
    *w9 = 0;
    *pos = *pos < g_main_parts ? *pos + 1 : 0;
    return 1;
}

MT_API MT_WORD MT_GetAttach(MT_WORD root, MT_WORD* a0, MT_WORD* a1, MT_WORD* a2, MT_WORD* a3,
                            MT_WORD* a4, MT_WORD* a5, MT_WORD* a6, MT_WORD* a7, MT_WORD* a8,
                            MT_WORD* a9) {
    (void)root;
    ++g_counters.attach;
    *a0 = (MT_WORD)give("file.bin", 8);
    *a1 = *a2 = *a3 = *a4 = *a5 = *a6 = *a7 = *a8 = *a9 = 0;
    return 1;
}

static MT_WORD give_field(int subject, char** text, MT_WORD* length) {
    if (g_text == NULL || g_size == 0 || g_text[0] == '!') return 0;
    if (subject) {
        size_t n = 0;
        while ((long)n < g_size && g_text[n] != '\n' && g_text[n] != '\r') ++n;
        *text = give(g_text, n);
        *length = (MT_WORD)n;
    } else {
        char id[32];
        size_t n = 0;
        long k = g_counters.parses;
        char digits[24];
        int d = 0;
        do {
            digits[d++] = (char)('0' + k % 10);
            k /= 10;
        } while (k > 0);
        id[n++] = '<';
        memcpy(id + n, "parse-", 6);
        n += 6;
        while (d > 0) id[n++] = digits[--d];
        id[n++] = '>';
        *text = give(id, n);
        *length = (MT_WORD)n;
    }
    return *text != NULL;
}

MT_API MT_WORD MT_GetSubjectD(MT_WORD root, char** text, MT_WORD* length) {
    (void)root;
    return give_field(1, text, length);
}

MT_API MT_WORD MT_GetMessageIDD(MT_WORD root, char** text, MT_WORD* length) {
    (void)root;
    return give_field(0, text, length);
}
