// QvTextBlocks.cpp - the kept text blocks. Each block starts with a header
// that holds its size, so that a freed block can serve any text that fits.
#include "QvV4Value/QvTextBlocks.h"

#include <mutex>

#include "platform/platform.h"

namespace {

// The header keeps the text at the heap's alignment.
struct alignas(16) Header {
    size_t nCapacity;
};

// Texts are rounded up to whole pages, so that a block serves the next
// message of about the same size; texts past kLargest are not kept.
constexpr size_t kGrain = 4096;
constexpr size_t kLargest = 256 * 1024;
constexpr int kKept = 4;

struct Kept {
    std::mutex mutex;
    Header* aBlocks[kKept] = {};
};

// Never destroyed: a host may free its last texts while the process exits.
Kept& TheKept() {
    static Kept* kept = new Kept;
    return *kept;
}

}  // namespace

void* QvTextBlock_Take(size_t nBytes) {
    if (nBytes <= kLargest) {
        Kept& kept = TheKept();
        std::lock_guard<std::mutex> lock(kept.mutex);
        // The smallest kept block that fits.
        int nBest = -1;
        for (int i = 0; i < kKept; ++i) {
            Header* pBlock = kept.aBlocks[i];
            if (pBlock != nullptr && pBlock->nCapacity >= nBytes &&
                (nBest < 0 || pBlock->nCapacity < kept.aBlocks[nBest]->nCapacity)) {
                nBest = i;
            }
        }
        if (nBest >= 0) {
            Header* pBlock = kept.aBlocks[nBest];
            kept.aBlocks[nBest] = nullptr;
            return pBlock + 1;
        }
    }
    const size_t nCapacity = nBytes <= kLargest ? (nBytes + kGrain - 1) / kGrain * kGrain : nBytes;
    if (nCapacity > static_cast<size_t>(-1) - sizeof(Header)) return nullptr;
    Header* pBlock = static_cast<Header*>(qvp::Malloc(sizeof(Header) + nCapacity));
    if (pBlock == nullptr) return nullptr;
    pBlock->nCapacity = nCapacity;
    return pBlock + 1;
}

void QvTextBlock_Free(void* p) {
    if (p == nullptr) return;
    Header* pBlock = static_cast<Header*>(p) - 1;
    if (pBlock->nCapacity <= kLargest) {
        Kept& kept = TheKept();
        std::lock_guard<std::mutex> lock(kept.mutex);
        for (Header*& pSlot : kept.aBlocks) {
            if (pSlot == nullptr) {
                pSlot = pBlock;
                return;
            }
        }
    }
    qvp::Free(pBlock);
}

void QvTextBlock_Drop() {
    Kept& kept = TheKept();
    Header* aDropped[kKept];
    {
        std::lock_guard<std::mutex> lock(kept.mutex);
        for (int i = 0; i < kKept; ++i) {
            aDropped[i] = kept.aBlocks[i];
            kept.aBlocks[i] = nullptr;
        }
    }
    for (Header* pBlock : aDropped) qvp::Free(pBlock);
}
