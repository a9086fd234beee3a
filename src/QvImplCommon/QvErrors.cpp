// QvErrors.cpp - the one mapping of file causes to result codes.
#include "QvImplCommon/QvErrors.h"

#include "tqnralm.h"

int32_t QvFileCauseToError(int32_t nCause) {
    switch (nCause) {
    case 0: return QV_S_OK;
    case 2: return QV_E_FILE_NOT_FOUND;
    case 3: return QV_E_BAD_PATH;
    case 5: return QV_E_ACCESS_DENIED;
    case 11: return QV_E_SHARING_VIOLATION;
    case 13: return QV_E_DISK_FULL;
    default: return QV_E_UNEXPECTED;
    }
}
