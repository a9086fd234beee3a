/* stub_onlyfree.c - a message library with MT_Free alone: the binding's other entries fall back. */
#include <stdlib.h>

#include "sNqxMsgNet.h"

MT_API MT_WORD MT_Free(void* p) {
    free(p);
    return 0;
}
