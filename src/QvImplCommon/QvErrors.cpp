// QvErrors.cpp - the one mapping of file causes to result codes.
#include "QvImplCommon/QvErrors.h"

#include "platform/platform.h"
#include "tqnralm.h"

int32_t QvFileCauseToError(int32_t nCause) {
    switch (nCause) {
    case qvp::kCauseNone: return QV_S_OK;
    case qvp::kCauseFileNotFound: return QV_E_FILE_NOT_FOUND;
    case qvp::kCauseBadPath: return QV_E_BAD_PATH;
    case qvp::kCauseAccessDenied: return QV_E_ACCESS_DENIED;
    case qvp::kCauseSharingViolation: return QV_E_SHARING_VIOLATION;
    case qvp::kCauseDiskFull: return QV_E_DISK_FULL;
    default: return QV_E_UNEXPECTED;
    }
}
