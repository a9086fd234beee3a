// QvTextBlocks.cpp - the kept text blocks. Each block starts with a header
// that holds its size, so that a freed block can serve any text that fits.
#include "QvV4Value/QvTextBlocks.h"

#include <mutex>

#include "platform/platform.h"

namespace {

// Sixteen bytes, so that the text keeps the heap's alignment.
struct Header {
    size_t nCapacity;
    char aPad[16 - sizeof(size_t)];
};
static_assert(sizeof(Header) == 16, "a text block's header is 16 bytes");

// Sizes are rounded up to eighths of their power of two (at most an eighth
// more), so that a block serves the next texts of about the same size; a
// host may hold many blocks at once. Texts past kLargest are not kept.
constexpr size_t kSmallest = 256;
constexpr size_t kLargest = 256 * 1024;
// A host may give back a batch of texts at once before it asks for the
// next batch: so many blocks, of at most so many bytes, are kept.
constexpr int kKept = 64;
constexpr size_t kKeptBytes = 1 << 20;

size_t Rounded(size_t nBytes) {
    if (nBytes <= kSmallest) return kSmallest;
    size_t nPower = kSmallest;
    while (nPower * 2 < nBytes) nPower *= 2;
    const size_t nGrain = nPower / 8;
    return (nBytes + nGrain - 1) / nGrain * nGrain;
}

// The kept blocks, the last given back on top.
struct Kept {
    std::mutex mutex;
    Header* aBlocks[kKept] = {};
    int nBlocks = 0;
    size_t nBytes = 0;
};

// Never destroyed: a host may free its last texts while the process exits.
Kept& TheKept() {
    static Kept* kept = new Kept;
    return *kept;
}

// The block nearest the top that holds nBytes, taken off the stack.
Header* TakeKept(Kept& kept, size_t nBytes) {
    for (int i = kept.nBlocks - 1; i >= 0; --i) {
        Header* pBlock = kept.aBlocks[i];
        if (pBlock->nCapacity < nBytes) continue;
        for (int k = i + 1; k < kept.nBlocks; ++k) kept.aBlocks[k - 1] = kept.aBlocks[k];
        --kept.nBlocks;
        kept.nBytes -= pBlock->nCapacity;
        return pBlock;
    }
    return nullptr;
}

}  // namespace

void* QvTextBlock_Take(size_t nBytes) {
    if (nBytes <= kLargest) {
        Kept& kept = TheKept();
        std::lock_guard<std::mutex> lock(kept.mutex);
        if (Header* pBlock = TakeKept(kept, nBytes)) return pBlock + 1;
    }
    const size_t nCapacity = nBytes <= kLargest ? Rounded(nBytes) : nBytes;
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
        if (kept.nBlocks < kKept && kept.nBytes + pBlock->nCapacity <= kKeptBytes) {
            kept.aBlocks[kept.nBlocks++] = pBlock;
            kept.nBytes += pBlock->nCapacity;
            return;
        }
    }
    qvp::Free(pBlock);
}

void QvTextBlock_Drop() {
    Kept& kept = TheKept();
    Header* aDropped[kKept];
    int nDropped = 0;
    {
        std::lock_guard<std::mutex> lock(kept.mutex);
        nDropped = kept.nBlocks;
        for (int i = 0; i < nDropped; ++i) aDropped[i] = kept.aBlocks[i];
        kept.nBlocks = 0;
        kept.nBytes = 0;
    }
    for (int i = 0; i < nDropped; ++i) qvp::Free(aDropped[i]);
}
