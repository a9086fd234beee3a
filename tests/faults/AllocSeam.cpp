// AllocSeam.cpp - this test program's operator new and delete, on the
// allocation countdown (the library's C allocations count in its own heap).
#include "faults/AllocSeam.h"

#include <cstddef>
#include <cstdlib>
#include <new>

#include "platform/Faults.h"

namespace {

// Each block carries whether it counts as the library's.
struct alignas(std::max_align_t) Header {
    bool counted;
};

long g_live = 0;

void* Allocate(std::size_t n) {
    if (qvp::faults::AllocationFails()) return nullptr;
    Header* header = static_cast<Header*>(std::malloc(sizeof(Header) + n));
    if (header == nullptr) return nullptr;
    header->counted = !qvp::faults::AllocationPaused();
    if (header->counted) ++g_live;
    return header + 1;
}

void* AllocateOrThrow(std::size_t n) {
    void* p = Allocate(n);
    if (p == nullptr) throw std::bad_alloc();
    return p;
}

void Release(void* p) {
    if (p == nullptr) return;
    Header* header = static_cast<Header*>(p) - 1;
    if (header->counted) --g_live;
    std::free(header);
}

}  // namespace

long qvt::LiveBlocks() { return g_live; }

void* operator new(std::size_t n) { return AllocateOrThrow(n); }
void* operator new[](std::size_t n) { return AllocateOrThrow(n); }
void* operator new(std::size_t n, const std::nothrow_t&) noexcept { return Allocate(n); }
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept { return Allocate(n); }
void operator delete(void* p) noexcept { Release(p); }
void operator delete[](void* p) noexcept { Release(p); }
void operator delete(void* p, std::size_t) noexcept { Release(p); }
void operator delete[](void* p, std::size_t) noexcept { Release(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { Release(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { Release(p); }
