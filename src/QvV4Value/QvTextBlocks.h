// QvTextBlocks.h - the heap blocks that carry a message's whole text to the
// host, and the freed ones kept for the next texts.
//
// A walk hands the host one text of a few kilobytes per message, and the
// host gives the blocks back as it goes. Blocks that size lie above the C
// runtime's per-thread caches, so a malloc and free per message cost more
// than the copy into them; the blocks kept here serve the next texts
// instead. The host may free from any thread: the kept blocks are guarded
// by a lock.
#ifndef QV_QVTEXTBLOCKS_H
#define QV_QVTEXTBLOCKS_H

#include <cstddef>

// A block of at least nBytes bytes, uninitialised; nullptr when no memory
// is left. Only QvTextBlock_Free may release it.
void* QvTextBlock_Take(size_t nBytes);
// Keeps the block for a later Take, or gives it back to the heap; 0 is
// accepted.
void QvTextBlock_Free(void* p);
// Gives every kept block back to the heap (the library's exit).
void QvTextBlock_Drop();

#endif  // QV_QVTEXTBLOCKS_H
