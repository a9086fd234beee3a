// platform.h - the one seam between the library and the operating system.
//
// The readers see a Windows machine: ANSI paths in code page 932 with drive
// letters and backslashes, a registry, shortcuts, initialisation files. Each
// operation here is shaped after the Win32 or C runtime call that the readers
// would make on Windows (same inputs, same outputs), so that the Windows
// implementation is a thin pass-through and the POSIX one answers the same
// questions from a Wine prefix. No native type, handle or error number leaves
// this layer: failures come back as the file cause codes of CFileException
// (0 none, 1 generic, 2 file not found, 3 bad path, 4 too many open files,
// 5 access denied, 11 sharing violation, 13 disk full, ...).
//
// Nothing here throws but std::bad_alloc, and a call that fails for want of
// memory (an allocation of the layer's own, ENOMEM, ERROR_NOT_ENOUGH_MEMORY)
// throws it rather than answer as though the key, file or folder were not
// there. Names that are macros in <windows.h> are avoided.
#ifndef QV_PLATFORM_PLATFORM_H
#define QV_PLATFORM_PLATFORM_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace qvp {

// The file cause codes that failures come back as (those of CFileException).
// A file that is there but is no regular file (a directory, a FIFO, a socket,
// a device) is refused as access denied, as Windows refuses a directory.
enum FileCause : int {
    kCauseNone = 0,
    kCauseGeneric = 1,
    kCauseFileNotFound = 2,
    kCauseBadPath = 3,
    kCauseTooManyOpenFiles = 4,
    kCauseAccessDenied = 5,
    kCauseInvalidFile = 6,
    kCauseHardIo = 10,
    kCauseSharingViolation = 11,
    kCauseLockViolation = 12,
    kCauseDiskFull = 13,
    kCauseEndOfFile = 14,
};

// -------------------------------------------------------------- memory ----

// The library's C heap: malloc, calloc and free. Texts handed to a host and
// given back through a record's free function come from here.
void* Malloc(size_t bytes);
void* Calloc(size_t count, size_t size);
void Free(void* p);

// ---------------------------------------------------------------- text ----

// Code page numbers as Windows knows them. The message library also converts
// from the charsets of mail: UTF-8, ISO-2022-JP, EUC-JP, ISO-8859-1, US-ASCII
// here, and any other code page that the system has a converter for.
enum : uint32_t {
    kCpAcp = 0,
    kCp932 = 932,
    kCpUtf8 = 65001,
    kCpIso2022Jp = 50220,
    kCpEucJp = 51932,
    kCpLatin1 = 28591,
    kCpAscii = 20127,
    kCp1252 = 1252,
    kCpUtf16Le = 1200,
    kCpUtf16Be = 1201,
};
// MultiByteToWideChar flag: an invalid sequence fails the whole conversion.
enum : uint32_t { kMbErrInvalidChars = 0x8 };

// MultiByteToWideChar: cbMulti -1 converts up to and including the NUL.
// cchWide 0 asks for the size. Returns the number of 16-bit units written
// (or needed), 0 on failure (invalid sequence with the flag, buffer too
// small, a code page without a converter). kCpAcp is the readers' ANSI code
// page, the mail client's 932 on every system. Without the flag an invalid sequence becomes
// the code page's replacement character (U+30FB in the Japanese ones, U+FFFD
// in UTF-8 and UTF-16, '?' in most others).
int MultiByteToWideChar(uint32_t codePage, uint32_t flags, const char* multi,
                        int cbMulti, char16_t* wide, int cchWide);

// WideCharToMultiByte into the given code page; a character without a form
// there becomes '?'. cchWide -1 converts up to and including the NUL. cbMulti
// 0 asks for the size. Returns bytes written (or needed), 0 on failure.
int WideCharToMultiByte(uint32_t codePage, const char16_t* wide, int cchWide,
                        char* multi, int cbMulti);

// Text in a mail charset built on code page 932 (kCpIso2022Jp, kCpEucJp)
// straight into code page 932: the bytes that MultiByteToWideChar without
// flags and then WideCharToMultiByte into kCp932 give, with no UTF-16 text
// between, appended to *out. False, with nothing appended, for another code page.
bool JapaneseToAnsi(uint32_t codePage, const char* multi, size_t count, std::string* out);
// The same into the caller's room of at least 2 * count bytes (no text takes
// more), *written set to the bytes written.
bool JapaneseToAnsi(uint32_t codePage, const char* multi, size_t count, char* out, size_t* written);

// Is this byte a lead byte of a double-byte character in the readers' ANSI
// code page (932)?
bool IsDBCSLeadByte(unsigned char byte);

// ---------------------------------------------------------------- time ----

struct LocalTime {
    uint16_t year, month, day, hour, minute, second, milliseconds;
};
// GetLocalTime.
void LocalTimeNow(LocalTime* out);

// ------------------------------------------------------------ log file ----

struct LogFile;
// Opens for writing, shared, created if missing, never truncated.
// Returns 0 and the file, or a file cause code.
int LogFileOpen(const char16_t* path, LogFile** out);
// Seeks to the end, then writes the bytes. Returns 0 or a cause code.
int LogFileAppend(LogFile* file, const void* data, size_t bytes);
// Flushes to the system. Returns 0 or a cause code.
int LogFileFlush(LogFile* file);
// Closes and frees. Returns 0 or a cause code; the object is gone either way.
int LogFileClose(LogFile* file);

// ------------------------------------------------------------ registry ----

enum class Hive { LocalMachine, CurrentUser };
struct RegKey;
// RegOpenKeyExA with KEY_QUERY_VALUE. Returns true and the key, false when
// there is none; running out of memory throws std::bad_alloc, for no key
// must be read where one could not be looked for.
bool RegOpen(Hive hive, const char* subKey, RegKey** out);
// RegQueryValueExA of a string value as ANSI text. *pcbData holds the
// buffer's size in bytes; on success it receives the bytes stored, the
// terminator included. A value that does not fit, with its terminator, fails.
bool RegQueryString(RegKey* key, const char* valueName, char* data, uint32_t* pcbData);
// RegCloseKey.
void RegCloseKey(RegKey* key);

// ------------------------------------------------------ system folders ----

// GetWindowsDirectoryA: length stored (without NUL), 0 on failure.
uint32_t WindowsDirectory(char* buffer, uint32_t size);
// GetTempPathA: length stored (without NUL, ends in a backslash), 0 on failure.
uint32_t TempPath(uint32_t size, char* buffer);
// _getcwd: the buffer, or nullptr on failure.
char* GetCwd(char* buffer, int size);

// ----------------------------------------------------- files and dirs ----

// _access(path, 0): 0 if the path exists, -1 otherwise.
int Access(const char* path);
// remove(): 0 on success.
int Remove(const char* path);

enum : uint32_t { kAttribDirectory = 0x10, kAttribArchive = 0x20 };
struct FindData {
    uint32_t attrib;
    char name[260];  // ANSI (CP932), NUL-terminated
};
struct FindHandle;
// _findfirst with '*' and '?' (matched in any case). Returns nullptr when
// nothing matches or the directory cannot be read.
FindHandle* FindFirst(const char* pattern, FindData* data);
// _findnext: true while there is one more match.
bool FindNext(FindHandle* handle, FindData* data);
// _findclose.
void FindClose(FindHandle* handle);

struct File;
// fopen with mode "rt" (CR LF read as LF, Ctrl-Z ends the file) or "rb".
// Only a regular file opens, and the open never waits (a FIFO in the store
// would wait for a writer forever). Returns nullptr on failure and, when
// `cause` is given, why: kCauseFileNotFound for a file that is not there,
// kCauseBadPath for a folder on the way that is not, kCauseAccessDenied for
// one that may not be read or is no regular file, others for I/O and limits.
File* FileOpen(const char* path, const char* mode, int* cause = nullptr);
// fgets: at most n-1 bytes, the newline kept. nullptr at the end.
char* FileGets(char* buffer, int n, File* file);
// fread of bytes.
size_t FileRead(void* buffer, size_t bytes, File* file);
// feof.
bool FileEof(File* file);
// ferror: a read failed, so what was read is not the whole file. Rewind
// clears it.
bool FileError(File* file);
// rewind.
void FileRewind(File* file);
// _filelength: the size on disk when the file was opened, -1 on failure.
long FileLength(File* file);
// fclose.
void FileClose(File* file);

// ------------------------------------------------------ initialisation ----

// GetPrivateProfileStringA with a section, a key and a default (none of
// them nullptr). Returns the number of bytes stored (size-1 when cut).
uint32_t ProfileString(const char* section, const char* key,
                       const char* defaultValue, char* buffer,
                       uint32_t size, const char* fileName);

// ----------------------------------------------------------- shortcuts ----

// CoInitialize(NULL) results.
enum : int32_t { kSOk = 0, kSFalse = 1 };
int32_t CoInitialize();
void CoUninitialize();

struct ShellLink;
// CoCreateInstance of the shell link object. nullptr on failure.
ShellLink* ShellLinkCreate();
// IPersistFile::Load of a .lnk file (ANSI path). true on success.
bool ShellLinkLoad(ShellLink* link, const char* path);
// IShellLinkA::GetArguments into the buffer as ANSI text. true on success.
bool ShellLinkGetArguments(ShellLink* link, char* buffer, int size);
// Release.
void ShellLinkRelease(ShellLink* link);

// ------------------------------------------------- dynamic libraries ----

struct Module;
// LoadLibraryA with a bare Windows file name ("sNqxMsgNet.dll").
Module* ModuleLoad(const char* fileName);
// GetProcAddress.
void* ModuleSymbol(Module* module, const char* name);
// FreeLibrary: true on success.
bool ModuleFree(Module* module);

struct CriticalSection;
CriticalSection* CriticalSectionCreate();
void CriticalSectionEnter(CriticalSection* cs);
void CriticalSectionLeave(CriticalSection* cs);
void CriticalSectionDestroy(CriticalSection* cs);

}  // namespace qvp

#endif  // QV_PLATFORM_PLATFORM_H
