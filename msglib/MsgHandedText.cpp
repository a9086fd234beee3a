// MsgHandedText.cpp - handed-out texts and the blocks kept for reuse.
//
// Each block starts with its room, so that a freed one can serve any text
// that fits. Rooms are rounded up to a power of two (64 bytes at least), so
// that bodies of slightly different sizes find each other's blocks.
#include "MsgHandedText.h"

#include <cstdlib>
#include <cstring>
#include <atomic>
#include <thread>
#include <utility>

namespace msg {
namespace {

struct alignas(16) Block {
    size_t room;  // bytes after the block's head
};

constexpr size_t kKept = 8;               // blocks kept at most
constexpr size_t kLargestKept = 1 << 20;  // a larger one goes back at once

// The lock is held for a few instructions and seldom wanted by two threads
// at once: a flag, spun on, costs a fraction of a mutex.
std::atomic_flag g_lock = ATOMIC_FLAG_INIT;

class Hold {
public:
    Hold() {
        while (g_lock.test_and_set(std::memory_order_acquire)) std::this_thread::yield();
    }
    ~Hold() { g_lock.clear(std::memory_order_release); }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;
};

Block* g_kept[kKept];
size_t g_count = 0;

size_t RoomFor(size_t n) {
    size_t room = 64;
    while (room < n && room < kLargestKept) room <<= 1;
    return room < n ? n : room;
}

// The smallest kept block with room for n bytes, taken off the list.
Block* TakeKept(size_t n) {
    Hold hold;
    size_t best = g_count;
    for (size_t i = 0; i < g_count; ++i) {
        if (g_kept[i]->room >= n && (best == g_count || g_kept[i]->room < g_kept[best]->room)) best = i;
    }
    if (best == g_count) return nullptr;
    Block* b = g_kept[best];
    g_kept[best] = g_kept[--g_count];
    return b;
}

}  // namespace

char* NewHandedText(std::string_view s) noexcept {
    const size_t n = s.size() + 1;
    Block* b = TakeKept(n);
    if (!b) {
        const size_t room = RoomFor(n);
        if (room > static_cast<size_t>(-1) - sizeof(Block)) return nullptr;
        b = static_cast<Block*>(std::malloc(sizeof(Block) + room));
        if (!b) return nullptr;
        b->room = room;
    }
    char* p = reinterpret_cast<char*>(b + 1);
    if (!s.empty()) std::memcpy(p, s.data(), s.size());
    p[s.size()] = '\0';
    return p;
}

void FreeHandedText(void* p) noexcept {
    if (!p) return;
    Block* b = static_cast<Block*>(p) - 1;
    if (b->room <= kLargestKept) {
        Hold hold;
        if (g_count < kKept) {
            g_kept[g_count++] = b;
            return;
        }
        // Full: a larger block takes the smallest one's place, so that the
        // small texts do not crowd out the body's.
        size_t smallest = 0;
        for (size_t i = 1; i < g_count; ++i) {
            if (g_kept[i]->room < g_kept[smallest]->room) smallest = i;
        }
        if (g_kept[smallest]->room < b->room) std::swap(g_kept[smallest], b);
    }
    std::free(b);
}

void ReleaseKeptTexts() noexcept {
    Hold hold;
    while (g_count > 0) std::free(g_kept[--g_count]);
}

}  // namespace msg
