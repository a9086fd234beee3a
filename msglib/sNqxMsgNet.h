/* sNqxMsgNet.h - the contract of the message library "sNqxMsgNet".
 *
 * The mail reader loads this library at run time (sNqxMsgNet.dll on Windows,
 * libsNqxMsgNet.so elsewhere) and calls nine functions of it by name. Every
 * argument and every result is one machine word. Texts handed out are new
 * allocations in code page 932, ended by a zero byte, and go back through
 * MT_Free. A root of 0 (what the binding's fallback gives for a missing
 * MT_Init) is accepted by every function, which then does nothing and gives 0.
 * No function throws or keeps a pointer into the caller's text.
 *
 * A main part is one displayable text part of the message (a leaf of type "text" that
 * is not marked as an attachment and names no file). MT_GetMainNext fills ten
 * words for it, five pairs of an owned text (or 0) and a plain word:
 *   pair 0: w0 the content type, "type/subtype" in lower case;
 *           w1 the part's number, 1 for the first leaf of the message.
 *   pair 1: w2 the body, transfer encoding undone, converted to CP932;
 *           w3 its length in bytes (the body may hold zero bytes).
 *   pair 2: w4 the charset the part declares, in lower case ("" if none);
 *           w5 the transfer encoding: MT_ENC_NONE, MT_ENC_QP, MT_ENC_BASE64
 *           or MT_ENC_OTHER.
 *   pair 3: w6 the Content-Disposition type in lower case, 0 if the field
 *           is missing;
 *           w7 the nesting depth of the part, 0 for a single-part message.
 *   pair 4: w8 the Content-ID field's value, 0 if the field is missing;
 *           w9 the offset in bytes of the part's raw body in the parsed text.
 * At most MT_MAX_MAIN_PARTS main parts are offered: the reader keeps that
 * many slots; further text parts are dropped.
 *
 * MT_GetAttach fills ten words: the file names of the first ten attachments
 * (RFC 2047 and RFC 2231 forms decoded, CP932), "" for an attachment that
 * names no file, 0 for slots beyond the last attachment. Its result is the
 * number of attachments in the message, which may exceed ten.
 */
#ifndef SNQXMSGNET_H
#define SNQXMSGNET_H

#include <stdint.h>

/* The exports carry default visibility on ELF targets, where the project
 * hides everything else; elsewhere a module definition file names them. */
#ifndef MT_API
#if defined(__GNUC__) && defined(__ELF__)
#define MT_API __attribute__((visibility("default")))
#else
#define MT_API
#endif
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef intptr_t MT_WORD;

/* Values of w5 of a main part. */
#define MT_ENC_NONE 0   /* 7bit, 8bit, binary or no field */
#define MT_ENC_QP 1     /* quoted-printable */
#define MT_ENC_BASE64 2 /* base64 */
#define MT_ENC_OTHER 3  /* an encoding we do not undo; the body is raw */

#define MT_MAX_MAIN_PARTS 5
#define MT_ATTACH_SLOTS 10

/* A new parse root, non-zero; 0 only when memory runs out. */
MT_API MT_WORD MT_Init(void);
/* Ends a parse root and all it holds. */
MT_API MT_WORD MT_Term(MT_WORD root);
/* Releases a text this library handed out; null does nothing. */
MT_API MT_WORD MT_Free(void* p);
/* Parses size bytes (zero bytes inside are data); replaces the previous
 * message of the root. Non-zero on success. */
MT_API MT_WORD MT_ParseMailText(MT_WORD root, const char* text, MT_WORD size);
/* The first position among the main parts, 0 when there is none. */
MT_API MT_WORD MT_GetMainHeadPosition(MT_WORD root);
/* Fills the ten words of the main part at *pos and moves *pos on (0 after
 * the last part). The fourteen trailing words are unused and should be 0.
 * Non-zero when a part was filled. */
MT_API MT_WORD MT_GetMainNext(MT_WORD root, MT_WORD* pos, MT_WORD* w0, MT_WORD* w1, MT_WORD* w2,
                              MT_WORD* w3, MT_WORD* w4, MT_WORD* w5, MT_WORD* w6, MT_WORD* w7,
                              MT_WORD* w8, MT_WORD* w9, MT_WORD z0, MT_WORD z1, MT_WORD z2,
                              MT_WORD z3, MT_WORD z4, MT_WORD z5, MT_WORD z6, MT_WORD z7,
                              MT_WORD z8, MT_WORD z9, MT_WORD z10, MT_WORD z11, MT_WORD z12,
                              MT_WORD z13);
/* Fills the ten attachment words; the result is the number of attachments. */
MT_API MT_WORD MT_GetAttach(MT_WORD root, MT_WORD* a0, MT_WORD* a1, MT_WORD* a2, MT_WORD* a3,
                            MT_WORD* a4, MT_WORD* a5, MT_WORD* a6, MT_WORD* a7, MT_WORD* a8,
                            MT_WORD* a9);
/* The Subject field, RFC 2047 words and raw Japanese bytes decoded, as a new
 * CP932 text and its length in bytes. Characters without a CP932 form
 * become '?'. Zero when the message has no Subject field. */
MT_API MT_WORD MT_GetSubjectD(MT_WORD root, char** text, MT_WORD* length);
/* The Message-ID field's value, unfolded and trimmed, angle brackets kept;
 * as MT_GetSubjectD otherwise. */
MT_API MT_WORD MT_GetMessageIDD(MT_WORD root, char** text, MT_WORD* length);

/* Pointer types for the run-time binding. */
typedef MT_WORD (*PFN_MT_Init)(void);
typedef MT_WORD (*PFN_MT_Term)(MT_WORD root);
typedef MT_WORD (*PFN_MT_Free)(void* p);
typedef MT_WORD (*PFN_MT_ParseMailText)(MT_WORD root, const char* text, MT_WORD size);
typedef MT_WORD (*PFN_MT_GetMainHeadPosition)(MT_WORD root);
typedef MT_WORD (*PFN_MT_GetMainNext)(MT_WORD root, MT_WORD* pos, MT_WORD* w0, MT_WORD* w1,
                                      MT_WORD* w2, MT_WORD* w3, MT_WORD* w4, MT_WORD* w5,
                                      MT_WORD* w6, MT_WORD* w7, MT_WORD* w8, MT_WORD* w9,
                                      MT_WORD z0, MT_WORD z1, MT_WORD z2, MT_WORD z3, MT_WORD z4,
                                      MT_WORD z5, MT_WORD z6, MT_WORD z7, MT_WORD z8, MT_WORD z9,
                                      MT_WORD z10, MT_WORD z11, MT_WORD z12, MT_WORD z13);
typedef MT_WORD (*PFN_MT_GetAttach)(MT_WORD root, MT_WORD* a0, MT_WORD* a1, MT_WORD* a2,
                                    MT_WORD* a3, MT_WORD* a4, MT_WORD* a5, MT_WORD* a6,
                                    MT_WORD* a7, MT_WORD* a8, MT_WORD* a9);
typedef MT_WORD (*PFN_MT_GetSubjectD)(MT_WORD root, char** text, MT_WORD* length);
typedef MT_WORD (*PFN_MT_GetMessageIDD)(MT_WORD root, char** text, MT_WORD* length);

#ifdef __cplusplus
}
#endif

#endif /* SNQXMSGNET_H */
