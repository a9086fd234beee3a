// QvErrors.h - file cause codes to result codes.
#ifndef QV_QVERRORS_H
#define QV_QVERRORS_H

#include <cstdint>

// The cause of a CFileException as a result code; causes without a code of
// their own, and numbers outside 0 to 14, give QV_E_UNEXPECTED.
int32_t QvFileCauseToError(int32_t nCause);

#endif  // QV_QVERRORS_H
