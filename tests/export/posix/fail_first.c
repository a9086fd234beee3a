/* fail_first.c - loaded before the library (LD_PRELOAD), makes the store look
 * as if the first child of each list could not be read: the first
 * QV_Objects_GetNext of every enumerator of the classes named in
 * TQNRALM_FAIL_FIRST ("3,4,5": users, accounts, folders) fails with
 * QV_E_ACCESS_DENIED and leaves the position where it was, as the library
 * does for a folder it cannot open; the call after it goes through. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdlib.h>
#include <string.h>

#include "tqnralm.h"

enum { kSlots = 4096 };
static QV_OBJ g_armed[kSlots]; /* enumerators whose first call is still to fail */

static int Failing(int32_t nClass) {
    const char* classes = getenv("TQNRALM_FAIL_FIRST");
    return classes != NULL && nClass >= 1 && nClass <= 9 && strchr(classes, '0' + nClass) != NULL;
}

static int Disarm(QV_OBJ objs) {
    for (int i = 0; i < kSlots; ++i) {
        if (g_armed[i] == objs) {
            g_armed[i] = NULL;
            return 1;
        }
    }
    return 0;
}

int32_t QV_Object_GetChildObjects(QV_OBJ qvObj, int32_t nClass, QV_OBJ* pqvObjs) {
    int32_t (*real)(QV_OBJ, int32_t, QV_OBJ*) = (int32_t (*)(QV_OBJ, int32_t, QV_OBJ*))dlsym(RTLD_NEXT, __func__);
    int32_t code = real(qvObj, nClass, pqvObjs);
    if (code == QV_S_OK && Failing(nClass)) {
        Disarm(*pqvObjs); /* a handle that an old enumerator had */
        for (int i = 0; i < kSlots; ++i) {
            if (g_armed[i] == NULL) {
                g_armed[i] = *pqvObjs;
                break;
            }
        }
    }
    return code;
}

int32_t QV_Objects_GetNext(QV_OBJ qvObjs, QV_OBJ* pqvChildObj) {
    int32_t (*real)(QV_OBJ, QV_OBJ*) = (int32_t (*)(QV_OBJ, QV_OBJ*))dlsym(RTLD_NEXT, __func__);
    QV_BOOL more = 0;
    if (QV_Objects_HasNext(qvObjs, &more) == QV_S_OK && more && Disarm(qvObjs)) return QV_E_ACCESS_DENIED;
    return real(qvObjs, pqvChildObj);
}

int32_t QV_Object_Dispose(QV_OBJ qvObj) {
    int32_t (*real)(QV_OBJ) = (int32_t (*)(QV_OBJ))dlsym(RTLD_NEXT, __func__);
    Disarm(qvObj);
    return real(qvObj);
}
