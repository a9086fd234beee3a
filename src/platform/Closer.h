// Closer.h - a platform handle that is closed however the reader leaves its
// scope: a return, or an exception on the way up to the barrier.
#ifndef QV_PLATFORM_CLOSER_H
#define QV_PLATFORM_CLOSER_H

#include "platform/platform.h"

namespace qvp {

template <class Handle, void (*Close)(Handle*)>
struct Closer {
    Handle* handle;
    ~Closer() {
        if (handle != nullptr) Close(handle);
    }
};

using FileCloser = Closer<File, FileClose>;
using FindCloser = Closer<FindHandle, FindClose>;
using KeyCloser = Closer<RegKey, RegCloseKey>;

}  // namespace qvp

#endif  // QV_PLATFORM_CLOSER_H
