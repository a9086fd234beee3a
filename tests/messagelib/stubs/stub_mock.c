/* stub_mock.c - a counting message library for the reader's tests; every text it gives out must
 * come back via MT_Free (outstanding counts them). Subject: the first line; message id: "<parse-N>"
 * for the N-th parse; neither when the message starts with '!'. Seven main parts, one attachment. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "sNqxMsgNet.h"

struct StubCounters { long inits, terms, parses, main_next, bad_trailing_words, outstanding; };

static struct StubCounters g_counters;
static char* g_text; /* the parsed message */
static int g_root_tag;

MT_API struct StubCounters* StubCounters(void) { return &g_counters; }

/* A zero-ended copy; a counted one must come back via MT_Free. */
static char* copy(const char* s, size_t n, int counted) {
    char* p = (char*)malloc(n + 1);
    if (p == NULL) return NULL;
    memcpy(p, s, n);
    p[n] = 0;
    g_counters.outstanding += counted;
    return p;
}

MT_API MT_WORD MT_Init(void) {
    ++g_counters.inits;
    return (MT_WORD)&g_root_tag;
}

MT_API MT_WORD MT_Term(MT_WORD root) {
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
    ++g_counters.parses;
    free(g_text);
    g_text = copy(text, (size_t)size, 0);
    return g_text != NULL;
}

MT_API MT_WORD MT_GetMainHeadPosition(MT_WORD root) { return 1; }

MT_API MT_WORD MT_GetMainNext(MT_WORD root, MT_WORD* pos, MT_WORD* w0, MT_WORD* w1, MT_WORD* w2, MT_WORD* w3,
                              MT_WORD* w4, MT_WORD* w5, MT_WORD* w6, MT_WORD* w7, MT_WORD* w8, MT_WORD* w9,
                              MT_WORD z0, MT_WORD z1, MT_WORD z2, MT_WORD z3, MT_WORD z4, MT_WORD z5, MT_WORD z6,
                              MT_WORD z7, MT_WORD z8, MT_WORD z9, MT_WORD z10, MT_WORD z11, MT_WORD z12, MT_WORD z13) {
    ++g_counters.main_next;
    if ((z0 | z1 | z2 | z3 | z4 | z5 | z6 | z7 | z8 | z9 | z10 | z11 | z12 | z13) != 0) ++g_counters.bad_trailing_words;
    *w0 = (MT_WORD)copy("text/plain", 10, 1);
    *w1 = *pos;
    *w2 = (MT_WORD)copy("body", 4, 1);
    *w3 = 4;
    *w4 = (MT_WORD)copy("", 0, 1);
    *w5 = *w6 = *w7 = *w8 = *w9 = 0;
    *pos = *pos < 7 ? *pos + 1 : 0;
    return 1;
}

MT_API MT_WORD MT_GetAttach(MT_WORD root, MT_WORD* a0, MT_WORD* a1, MT_WORD* a2, MT_WORD* a3, MT_WORD* a4,
                            MT_WORD* a5, MT_WORD* a6, MT_WORD* a7, MT_WORD* a8, MT_WORD* a9) {
    *a0 = (MT_WORD)copy("file.bin", 8, 1);
    *a1 = *a2 = *a3 = *a4 = *a5 = *a6 = *a7 = *a8 = *a9 = 0;
    return 1;
}

MT_API MT_WORD MT_GetSubjectD(MT_WORD root, char** text, MT_WORD* length) {
    if (g_text == NULL || g_text[0] == 0 || g_text[0] == '!') return 0;
    *length = (MT_WORD)strcspn(g_text, "\r\n");
    *text = copy(g_text, (size_t)*length, 1);
    return *text != NULL;
}

MT_API MT_WORD MT_GetMessageIDD(MT_WORD root, char** text, MT_WORD* length) {
    char id[32];
    if (g_text == NULL || g_text[0] == 0 || g_text[0] == '!') return 0;
    *length = (MT_WORD)snprintf(id, sizeof id, "<parse-%ld>", g_counters.parses);
    *text = copy(id, (size_t)*length, 1);
    return *text != NULL;
}
