// The assistant's texts, in Japanese and in English: the window shows the
// Japanese ones when the user's UI language is Japanese, else the English.
// Texts are UTF-8; a '&' marks a control's mnemonic. An English noun after a
// count is written "{user|users}": Format takes the first form when the
// placeholder filled last was "1". Japanese counts need no such choice.
#ifndef TQNRALM_GUI_STRINGS_H
#define TQNRALM_GUI_STRINGS_H

#include <cstdint>
#include <initializer_list>
#include <string>

namespace tqnralm {
namespace gui {

enum class Text {
    kTitle,
    kNext,
    kCancel,
    kClose,
    kStepSearching,
    kStepFound,
    kStepNotFound,
    kStepChooseUser,
    kStepWhere,
    kStepExport,
    kStepDone,
    kStepStopped,
    kStepNotFinished,
    kSearching,
    kReadOnly,
    kNotInstalled,
    kFoundTotals,      // %1 users, %2 folders, %3 messages, %4 address books, %5 addresses
    kBookRow,          // %1 the book, %2 its addresses
    kBookSame,         // %1 the book
    kDestination,
    kBrowse,
    kFormat,
    kFormatMbox,
    kFormatMboxHint,
    kFormatMaildir,
    kFormatMaildirHint,
    kFormatEml,
    kFormatEmlHint,
    kAddressBooks,
    kUsers,
    kNoUsers,
    kCounting,         // %1 MB free on the destination
    kPlanTotals,       // %1 messages, %2 MB to write, %3 MB free
    kShortOfSpace,     // %1 MB missing
    kChooseFolder,
    kNeedFolder,
    kProgress,         // %1 of %2 messages, %3 MB, %4 messages/s, %5 left
    kFolderNow,        // %1 the folder being written
    kStopping,
    kDoneTotals,       // %1 written, %2 failed, %3 unread
    kDoneOk,
    kDoneProblems,
    kDoneStopped,
    kDoneOutput,
    kDoneFailed,       // %1 the exit code
    kProblemRow,       // %1 the item (kItem...), %2 its index, %3 the library's code
    kItemUser,
    kItemAccount,
    kItemFolder,
    kItemMessage,
    kOpenFolder,
    kThunderbird,
    kThunderbirdSteps,  // %1 the destination folder
    kReadDisk,
    kReadDiskInstead,
    kNotInstalledHint,
    kDrivePickerTitle,
    kDriveSearching,    // %1 the disk's folder
    kDriveReading,      // %1 the disk's folder, %2 the Windows user
    kDriveNotADrive,    // %1 the folder
    kDriveHintRoot,
    kDriveNoSuchUser,   // %1 the Windows user
    kDriveHintUser,
    kDriveSeveral,
    kDriveHintSeveral,
    kDriveNoUser,
    kDriveHintOtherDisk,
    kDriveUnreadable,
    kDriveNotFound,
    kDriveHintDamaged,
    kReadProfile,
    kDriveDetails,      // %1 the host's message
    kReadHere,
    kReadOtherDisk,
    kCount  // not a text
};

// Picks the language: Japanese for a UI language whose primary language is
// Japanese (LANGID 0x0411 and its kin), else English.
void ChooseLanguage(uint16_t uiLanguage);
bool Japanese();

const char* Str(Text id);
// `Str(id)` with %1 ... %9 replaced by the arguments in order, and each
// "{one|other}" by the form that agrees with the placeholder before it.
std::string Format(Text id, std::initializer_list<std::string> args);

}  // namespace gui
}  // namespace tqnralm

#endif
