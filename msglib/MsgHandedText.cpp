// MsgHandedText.cpp - handed-out texts, in blocks kept for reuse. Rooms are
// powers of two, so that bodies of slightly different sizes find each
// other's blocks; the few kept may each be as large as a big body.
#include "MsgHandedText.h"

#include <cstdlib>
#include <cstring>

#include "platform/KeptBlocks.h"

namespace msg {
namespace {

qvp::KeptBlocks g_kept({8, 8 << 20, 64, 1 << 20, 1}, std::malloc, std::free);

}  // namespace

char* NewHandedText(std::string_view s) noexcept {
    char* p = static_cast<char*>(g_kept.Take(s.size() + 1));
    if (!p) return nullptr;
    if (!s.empty()) std::memcpy(p, s.data(), s.size());
    p[s.size()] = '\0';
    return p;
}

void FreeHandedText(void* p) noexcept { g_kept.Give(p); }

void ReleaseKeptTexts() noexcept { g_kept.Drop(); }

}  // namespace msg
