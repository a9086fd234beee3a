// The tests' kill points: with TQNRALM_KILL_AT=POINT:N in the environment
// the export ends itself, as SIGKILL would, the Nth time it reaches POINT, so
// that a test can stop it at an exact place instead of at a time:
//   message      after the Nth message went to its file
//   mid-message  halfway through the bytes of the Nth message
//   journal      at the Nth commit, after the files were flushed and before
//                the journal says so
//   rename       1: before the finished manifest is renamed into place;
//                2: after it, before the journal is removed
//   file         after the Nth address book file was renamed into place
// POINT:N:stop asks the export to stop there instead, as SIGINT does;
// POINT:N:pause says "tqnralm: paused" on stderr and waits there for a line
// on stdin (a test runs a second export meanwhile).
// Without the variable each point costs one compare.
#ifndef TQNRALM_TOOL_KILLPOINT_H
#define TQNRALM_TOOL_KILLPOINT_H

namespace tqnralm {

enum class KillPoint { kMessage, kMidMessage, kJournal, kRename, kFile };

// Counts one arrival at `point`: true when the process must end here (the
// caller may leave a half-written state behind first).
bool KillPointReached(KillPoint point);
// Ends the process (or asks it to stop) when `point` is reached.
void KillAt(KillPoint point);

}  // namespace tqnralm

#endif
