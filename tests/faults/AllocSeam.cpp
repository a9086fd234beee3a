// AllocSeam.cpp - this test program's operator new and delete: each
// allocation counts on the allocation countdown, and the one it names throws
// std::bad_alloc (the nothrow forms give null). The library's C allocations
// count through its own heap functions.
#include <cstdlib>
#include <new>

#include "platform/Faults.h"

namespace {

void* Allocate(std::size_t n) {
    if (qvp::faults::AllocationFails()) return nullptr;
    return std::malloc(n != 0 ? n : 1);
}

void* AllocateOrThrow(std::size_t n) {
    void* p = Allocate(n);
    if (p == nullptr) throw std::bad_alloc();
    return p;
}

}  // namespace

void* operator new(std::size_t n) { return AllocateOrThrow(n); }
void* operator new[](std::size_t n) { return AllocateOrThrow(n); }
void* operator new(std::size_t n, const std::nothrow_t&) noexcept { return Allocate(n); }
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept { return Allocate(n); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { std::free(p); }
