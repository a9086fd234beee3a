// KeptBlocks.h - heap blocks freed by a caller and kept for the next ones.
//
// The library and the message library each hand out one text of a few
// kilobytes per message, which the caller gives back as it goes. Blocks that
// size lie above the C runtime's per-thread caches, so a malloc and a free
// per message cost more than the copy into them; the freed blocks kept here
// serve the next texts instead. A block is reused only after it was given
// back, from any thread. What is kept is bounded by count and by bytes.
#ifndef QV_PLATFORM_KEPTBLOCKS_H
#define QV_PLATFORM_KEPTBLOCKS_H

#include <atomic>
#include <cstddef>

namespace qvp {

class KeptBlocks {
public:
    struct Limits {
        size_t blocks;    // kept at most (no more than kMostBlocks)
        size_t bytes;     // kept at most, all blocks together
        size_t smallest;  // the least room a block gets
        size_t largest;   // a block with more room is never kept
        size_t grain;     // rooms round up to a 1/grain of their power of two
    };
    using Allocate = void* (*)(size_t);
    using Release = void (*)(void*);
    static constexpr size_t kMostBlocks = 64;

    // Constant-initialised and never destroyed: a host may give back its last
    // texts while the process exits.
    constexpr KeptBlocks(Limits limits, Allocate allocate, Release release) noexcept
        : limits_(limits), allocate_(allocate), release_(release) {}
    KeptBlocks(const KeptBlocks&) = delete;
    KeptBlocks& operator=(const KeptBlocks&) = delete;

    // A block with room for at least bytes, uninitialised; nullptr when no
    // memory is left. Only Give may release it.
    void* Take(size_t bytes) noexcept;
    // Keeps the block for a later Take or releases it; nullptr is nothing.
    void Give(void* p) noexcept;
    // Releases every kept block.
    void Drop() noexcept;

private:
    struct Block;
    class Hold;
    size_t Room(size_t bytes) const noexcept;
    Block* TakeKept(size_t bytes) noexcept;
    Block* Remove(size_t i) noexcept;
    Block* Keep(Block* block) noexcept;

    const Limits limits_;
    const Allocate allocate_;
    const Release release_;
    std::atomic_flag lock_ = ATOMIC_FLAG_INIT;
    Block* kept_[kMostBlocks] = {};  // the last given back on top
    size_t count_ = 0;
    size_t keptBytes_ = 0;
    size_t leastRoom_ = static_cast<size_t>(-1);  // no kept block has less
};

}  // namespace qvp

#endif  // QV_PLATFORM_KEPTBLOCKS_H
