// QvExceptions.h - the library's three failure types.
//
// Out-of-memory and file failures travel as exceptions up to a barrier: the
// call frame of an exported function, or the barrier of a flat reader
// function. A std::bad_alloc from the allocator counts as a CMemoryException
// at every barrier. They are thrown by value and caught by reference.
#ifndef QV_QVEXCEPTIONS_H
#define QV_QVEXCEPTIONS_H

#include <cstdint>

class CException {
public:
    virtual ~CException() = default;
};

class CMemoryException : public CException {};

// A file failure with its cause code: 0 none, 1 generic, 2 file not found,
// 3 bad path, 4 too many open files, 5 access denied, 6 invalid file,
// 7 removal of the current directory, 8 directory full, 9 bad seek,
// 10 hard I/O error, 11 sharing violation, 12 lock violation, 13 disk full,
// 14 end of file.
class CFileException : public CException {
public:
    explicit CFileException(int32_t cause) : m_cause(cause) {}
    int32_t m_cause;
};

#endif  // QV_QVEXCEPTIONS_H
