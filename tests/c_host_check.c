/* A host in plain C: the public header compiles as C, and the version and
   the records' layout are what a C host sees. */
#include <stddef.h>
#include <stdio.h>

#include "tqnralm.h"

int main(void) {
    QV_BOOL installed = 0;
    if (QV_GetVersion() != QV_VERSION) return 1;
    if (QV_IsMailerInstalled(NULL) != QV_E_INVALID_ARGUMENT) return 2;
    if (offsetof(QV_ADDRESS_DATA, lpszEmailInternet) != 6 * sizeof(void*)) return 3;
    if (QV_Object_Dispose(NULL) != QV_E_INVALID_ARGUMENT) return 4;
    (void)installed;
    puts("c host ok");
    return 0;
}
