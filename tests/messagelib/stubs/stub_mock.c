/* stub_mock.c - a message library for the reader's tests: it counts how it
 * is driven and gives out texts that must all come back via MT_Free. The
 * subject is the message's first line, the message id "<parse-N>" for the
 * N-th parse; a message starting with '!' has neither. Each message offers
 * seven main parts, more than the reader keeps, and one attachment. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "sNqxMsgNet.h"

struct StubCounters {
    long inits, terms, parses, main_next, bad_trailing_words;
    long outstanding; /* texts given out and not yet freed */
};

static struct StubCounters g_counters;
static char* g_text;
static int g_root_tag;

MT_API struct StubCounters* StubCounters(void) { return &g_counters; }

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
    return 0;
}

MT_API MT_WORD MT_Free(void* p) {
    if (p != NULL) --g_counters.outstanding;
    free(p);
    return 0;
}

MT_API MT_WORD MT_ParseMailText(MT_WORD root, const char* text, MT_WORD size) {
    (void)root;
    ++g_counters.parses;
    free(g_text);
    g_text = (char*)malloc((size_t)size + 1);
    if (g_text == NULL) return 0;
    memcpy(g_text, text, (size_t)size);
    g_text[size] = 0;
    return 1;
}

MT_API MT_WORD MT_GetMainHeadPosition(MT_WORD root) { return (void)root, 1; }

MT_API MT_WORD MT_GetMainNext(MT_WORD root, MT_WORD* pos, MT_WORD* w0, MT_WORD* w1, MT_WORD* w2, MT_WORD* w3,
                              MT_WORD* w4, MT_WORD* w5, MT_WORD* w6, MT_WORD* w7, MT_WORD* w8, MT_WORD* w9,
                              MT_WORD z0, MT_WORD z1, MT_WORD z2, MT_WORD z3, MT_WORD z4, MT_WORD z5, MT_WORD z6,
                              MT_WORD z7, MT_WORD z8, MT_WORD z9, MT_WORD z10, MT_WORD z11, MT_WORD z12, MT_WORD z13) {
    (void)root;
    ++g_counters.main_next;
    if ((z0 | z1 | z2 | z3 | z4 | z5 | z6 | z7 | z8 | z9 | z10 | z11 | z12 | z13) != 0) ++g_counters.bad_trailing_words;
    *w0 = (MT_WORD)give("text/plain", 10);
    *w1 = *pos;
    *w2 = (MT_WORD)give("body", 4);
    *w3 = 4;
    *w4 = (MT_WORD)give("", 0);
    *w5 = *w6 = *w7 = *w8 = *w9 = 0;
    *pos = *pos < 7 ? *pos + 1 : 0;
    return 1;
}

MT_API MT_WORD MT_GetAttach(MT_WORD root, MT_WORD* a0, MT_WORD* a1, MT_WORD* a2, MT_WORD* a3, MT_WORD* a4,
                            MT_WORD* a5, MT_WORD* a6, MT_WORD* a7, MT_WORD* a8, MT_WORD* a9) {
    (void)root;
    *a0 = (MT_WORD)give("file.bin", 8);
    *a1 = *a2 = *a3 = *a4 = *a5 = *a6 = *a7 = *a8 = *a9 = 0;
    return 1;
}

MT_API MT_WORD MT_GetSubjectD(MT_WORD root, char** text, MT_WORD* length) {
    (void)root;
    if (g_text == NULL || g_text[0] == 0 || g_text[0] == '!') return 0;
    *length = (MT_WORD)strcspn(g_text, "\r\n");
    *text = give(g_text, (size_t)*length);
    return *text != NULL;
}

MT_API MT_WORD MT_GetMessageIDD(MT_WORD root, char** text, MT_WORD* length) {
    char id[32];
    (void)root;
    if (g_text == NULL || g_text[0] == 0 || g_text[0] == '!') return 0;
    *length = (MT_WORD)snprintf(id, sizeof id, "<parse-%ld>", g_counters.parses);
    *text = give(id, (size_t)*length);
    return *text != NULL;
}
