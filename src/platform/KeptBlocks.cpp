// KeptBlocks.cpp - the kept blocks. Each block starts with a head that holds
// its room, so that a freed block can serve any text that fits.
#include "platform/KeptBlocks.h"

#include <thread>
#include <type_traits>

namespace qvp {

static_assert(std::is_trivially_destructible<KeptBlocks>::value, "kept blocks outlive the exit");

// Sixteen bytes, so that the text keeps the heap's alignment. Padded, not
// aligned: a 32-bit heap gives blocks of eight, on which a type aligned to
// sixteen may not stand.
struct KeptBlocks::Block {
    size_t room;  // bytes after the head
    char pad[16 - sizeof(size_t)];
};

// The lock is held for a few instructions and seldom wanted by two threads
// at once: a flag, spun on, costs a fraction of a mutex.
class KeptBlocks::Hold {
public:
    explicit Hold(std::atomic_flag& lock) : lock_(lock) {
        while (lock_.test_and_set(std::memory_order_acquire)) std::this_thread::yield();
    }
    ~Hold() { lock_.clear(std::memory_order_release); }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

private:
    std::atomic_flag& lock_;
};

// Rooms round up to a grain of their power of two, so that texts of about
// the same size find each other's blocks; larger than kept, exact.
size_t KeptBlocks::Room(size_t bytes) const noexcept {
    if (bytes > limits_.largest) return bytes;
    if (bytes <= limits_.smallest) return limits_.smallest;
    size_t power = limits_.smallest;
    while (power * 2 < bytes) power *= 2;
    const size_t grain = power / limits_.grain;
    return (bytes + grain - 1) / grain * grain;
}

// Takes the i-th kept block off the stack, keeping the others' order.
KeptBlocks::Block* KeptBlocks::Remove(size_t i) noexcept {
    Block* block = kept_[i];
    for (size_t k = i + 1; k < count_; ++k) kept_[k - 1] = kept_[k];
    --count_;
    keptBytes_ -= block->room;
    return block;
}

// The kept block nearest the top that holds bytes in less than twice their
// room, else the smallest that holds them: the usual text looks no further
// than the top, and a small one takes a body's block only when no smaller
// block is there.
KeptBlocks::Block* KeptBlocks::TakeKept(size_t bytes) noexcept {
    Hold hold(lock_);
    size_t best = count_;
    for (size_t i = count_; i-- > 0;) {
        const size_t room = kept_[i]->room;
        if (room < bytes) continue;
        if (room / 2 < bytes || room == limits_.smallest) return Remove(i);
        if (best == count_ || room < kept_[best]->room) best = i;
    }
    return best == count_ ? nullptr : Remove(best);
}

void* KeptBlocks::Take(size_t bytes) noexcept {
    Block* block = bytes <= limits_.largest ? TakeKept(bytes) : nullptr;
    if (block == nullptr) {
        const size_t room = Room(bytes);
        if (room > static_cast<size_t>(-1) - sizeof(Block)) return nullptr;
        block = static_cast<Block*>(allocate_(sizeof(Block) + room));
        if (block == nullptr) return nullptr;
        block->room = room;
    }
    return block + 1;
}

// Keeps block. When the bounds are met, it takes the place of the smallest
// kept block if that is smaller, so that small texts do not crowd out the
// bodies; below the least room kept, nothing is searched. Returns the block
// to release, if any.
KeptBlocks::Block* KeptBlocks::Keep(Block* block) noexcept {
    Hold hold(lock_);
    if (count_ < limits_.blocks && keptBytes_ + block->room <= limits_.bytes) {
        kept_[count_++] = block;
        keptBytes_ += block->room;
        if (block->room < leastRoom_) leastRoom_ = block->room;
        return nullptr;
    }
    if (count_ == 0 || block->room <= leastRoom_) return block;
    size_t smallest = 0;
    for (size_t i = 1; i < count_; ++i) {
        if (kept_[i]->room < kept_[smallest]->room) smallest = i;
    }
    leastRoom_ = kept_[smallest]->room;
    if (leastRoom_ >= block->room || keptBytes_ - leastRoom_ + block->room > limits_.bytes) return block;
    Block* out = Remove(smallest);
    kept_[count_++] = block;
    keptBytes_ += block->room;
    return out;
}

void KeptBlocks::Give(void* p) noexcept {
    if (p == nullptr) return;
    Block* block = static_cast<Block*>(p) - 1;
    if (block->room <= limits_.largest) block = Keep(block);
    if (block != nullptr) release_(block);
}

void KeptBlocks::Drop() noexcept {
    Block* dropped[kMostBlocks];
    size_t count = 0;
    {
        Hold hold(lock_);
        for (; count < count_; ++count) dropped[count] = kept_[count];
        count_ = 0;
        keptBytes_ = 0;
        leastRoom_ = static_cast<size_t>(-1);
    }
    for (size_t i = 0; i < count; ++i) release_(dropped[i]);
}

}  // namespace qvp
