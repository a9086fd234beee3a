/* stub_onlyfree.c - a message library that exports MT_Free and nothing else:
 * every other entry of the binding falls back. */
#include <stdlib.h>

#include "sNqxMsgNet.h"

MT_API MT_WORD MT_Free(void* p) {
    free(p);
    return 0;
}
