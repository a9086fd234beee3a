// QvBarrier.h - the barrier of a reader's flat function: whatever the body
// raises ends as a result code there, so that no failure leaves a reader.
#ifndef QV_QVBARRIER_H
#define QV_QVBARRIER_H

#include <cstdint>
#include <new>

#include "QvV4Value/QvExceptions.h"

// An allocation failure (std::bad_alloc or CMemoryException) ends as
// nMemory, anything else raised as nOther, after onFailure has tidied up
// (set the outputs, given back what the body took).
template <class Body, class OnFailure>
int32_t Barrier(int32_t nMemory, int32_t nOther, Body body, OnFailure onFailure) {
    int32_t nResult;
    try {
        return body();
    } catch (const std::bad_alloc&) {
        nResult = nMemory;
    } catch (const CMemoryException&) {
        nResult = nMemory;
    } catch (...) {
        nResult = nOther;
    }
    try {
        onFailure();
    } catch (...) {
    }
    return nResult;
}

template <class Body>
int32_t Barrier(int32_t nMemory, int32_t nOther, Body body) {
    return Barrier(nMemory, nOther, body, [] {});
}

#endif  // QV_QVBARRIER_H
