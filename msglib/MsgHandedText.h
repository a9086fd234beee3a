// MsgHandedText.h - the texts the library hands out, which the caller gives
// back through MT_Free.
//
// A folder's walk takes a body of a few kilobytes per message and frees it
// before the next: too large for the allocator's small caches, so each such
// pair went to the general heap. The blocks freed are kept for the next
// texts instead, a few of them, under a lock, since MT_Free may come from
// any thread. A text is never reused before the caller has freed it.
#ifndef QV_MSGLIB_MSGHANDEDTEXT_H
#define QV_MSGLIB_MSGHANDEDTEXT_H

#include <string_view>

namespace msg {

// A NUL-ended copy of s, or nullptr when there is no memory.
char* NewHandedText(std::string_view s) noexcept;
// Gives back a text from NewHandedText (nullptr is nothing).
void FreeHandedText(void* p) noexcept;
// Lets go of the kept blocks (when the last root goes).
void ReleaseKeptTexts() noexcept;

}  // namespace msg

#endif  // QV_MSGLIB_MSGHANDEDTEXT_H
