// QvTextBlocks.cpp - the kept text blocks. Sizes round up within an eighth,
// since a host may hold many blocks at once; blocks of a quarter megabyte
// at most, and a megabyte in all, are kept, so that a batch of texts given
// back at once before the next batch is asked for is kept whole.
#include "QvV4Value/QvTextBlocks.h"

#include "platform/KeptBlocks.h"
#include "platform/platform.h"

namespace {

qvp::KeptBlocks g_kept({64, 1 << 20, 256, 256 * 1024, 8}, qvp::Malloc, qvp::Free);

}  // namespace

void* QvTextBlock_Take(size_t nBytes) { return g_kept.Take(nBytes); }

void QvTextBlock_Free(void* p) { g_kept.Give(p); }

void QvTextBlock_Drop() { g_kept.Drop(); }
