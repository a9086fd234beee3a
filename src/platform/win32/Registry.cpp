// Registry.cpp - RegOpenKeyExA and RegQueryValueExA on Windows: the running
// machine's registry, or the hives of a copied drive (DriveHives.h). Names
// and strings are code page 932 text (WidePath.h), so the wide calls are
// used and the text converted here.
//
// The mail client is a 32-bit program: its HKLM\Software keys lie in the
// 32-bit view, which a 64-bit build asks for first, then the native view; a
// copied drive's hives are asked the same way (KeyPaths.h).
#include "platform/platform.h"
#include "platform/CaseFold.h"
#include "platform/KeyPaths.h"
#include "platform/win32/Causes.h"
#include "platform/win32/DriveHives.h"
#include "platform/win32/WidePath.h"

#include <windows.h>

#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace qvp {

struct RegKey {
    HKEY key = nullptr;                       // the machine's key, or
    std::unique_ptr<win32::HiveFile> hive;    // a copied drive's hive
    std::vector<std::u16string> paths;        // folded, in the order they are searched
};

namespace {

std::u16string FoldedAnsi(const char* ansi) {
    const std::wstring wide = win32::AnsiToWide(ansi);
    return Fold(std::u16string(wide.begin(), wide.end()));
}

// Wide text with its NUL as ANSI text with its NUL; false when it has none.
bool WideToAnsi(const std::wstring& text, std::string* ansi) {
    const int n =
        ::WideCharToMultiByte(win32::kAnsiCodePage, 0, text.c_str(), -1, nullptr, 0, nullptr, nullptr);
    if (n <= 0) return false;
    ansi->assign(static_cast<size_t>(n), '\0');
    ::WideCharToMultiByte(win32::kAnsiCodePage, 0, text.c_str(), -1, &(*ansi)[0], n, nullptr, nullptr);
    return true;
}

bool OpenDriveKey(Hive hive, const char* subKey, RegKey* key) {
    std::u16string path = FoldedAnsi(subKey);
    while (!path.empty() && path.back() == u'\\') path.pop_back();
    if (!path.empty() && path.front() == u'\\') return false;
    key->hive = win32::OpenDriveHive(hive, path);
    if (key->hive == nullptr) return false;
    key->paths = HivePaths(hive, *key->hive, path);
    return !key->paths.empty();
}

bool OpenMachineKey(Hive hive, const char* subKey, RegKey* key) {
    const HKEY root = hive == Hive::LocalMachine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
    // A key that could not be looked for is no missing key.
    const std::wstring path = win32::AnsiToWide(subKey);
    if (path.empty() && *subKey != 0) return false;
    LONG error = ::RegOpenKeyExW(root, path.c_str(), 0, KEY_QUERY_VALUE | KEY_WOW64_32KEY, &key->key);
    win32::ThrowIfNoMemory(static_cast<DWORD>(error));
    if (error != ERROR_SUCCESS) {
        error = ::RegOpenKeyExW(root, path.c_str(), 0, KEY_QUERY_VALUE, &key->key);
        win32::ThrowIfNoMemory(static_cast<DWORD>(error));
    }
    if (error != ERROR_SUCCESS) key->key = nullptr;
    return error == ERROR_SUCCESS;
}

// A copied drive's value as RegQueryValueExA gives it: strings in the ANSI
// code page with their NUL, other types as stored.
bool QueryDrive(const RegKey& key, const char* valueName, std::string* ansi) {
    const std::u16string name = FoldedAnsi(valueName);
    win32::HiveFile::Value value;
    bool found = false;
    for (const std::u16string& path : key.paths) {
        if ((found = key.hive->Find(path, name, &value))) break;
    }
    if (!found) return false;
    if (!value.isText) {
        *ansi = value.bytes + '\0';
        return true;
    }
    return WideToAnsi(std::wstring(value.text.begin(), value.text.end()), ansi);
}

// The running machine's value as RegQueryValueExA gives it.
bool QueryMachine(const RegKey& key, const char* valueName, std::string* ansi) {
    const std::wstring name = win32::AnsiToWide(valueName);
    DWORD type = 0;
    DWORD size = 0;
    LONG error = ::RegQueryValueExW(key.key, name.c_str(), nullptr, &type, nullptr, &size);
    win32::ThrowIfNoMemory(static_cast<DWORD>(error));
    if (error != ERROR_SUCCESS) return false;
    std::string bytes(size + 2 * sizeof(wchar_t), '\0');
    error = ::RegQueryValueExW(key.key, name.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(&bytes[0]), &size);
    win32::ThrowIfNoMemory(static_cast<DWORD>(error));
    if (error != ERROR_SUCCESS) return false;
    if (type != REG_SZ && type != REG_EXPAND_SZ) {
        ansi->assign(bytes, 0, size);
        return true;
    }
    std::wstring text(size / sizeof(wchar_t), L'\0');
    std::memcpy(&text[0], bytes.data(), text.size() * sizeof(wchar_t));
    text.resize(std::wcslen(text.c_str()));
    return WideToAnsi(text, ansi);
}

}  // namespace

bool RegOpen(Hive hive, const char* subKey, RegKey** out) {
    if (subKey == nullptr || out == nullptr) return false;
    std::unique_ptr<RegKey> key(new RegKey);
    const bool opened = WindowsRoot().empty() ? OpenMachineKey(hive, subKey, key.get())
                                                     : OpenDriveKey(hive, subKey, key.get());
    if (!opened) return false;
    *out = key.release();
    return true;
}

bool RegQueryString(RegKey* key, const char* valueName, char* data, uint32_t* pcbData) {
    if (key == nullptr || data == nullptr || pcbData == nullptr) return false;
    std::string ansi;
    const bool found = key->hive != nullptr ? QueryDrive(*key, valueName, &ansi) : QueryMachine(*key, valueName, &ansi);
    if (!found || ansi.size() > UINT32_MAX) return false;
    const uint32_t needed = static_cast<uint32_t>(ansi.size());
    if (*pcbData < needed) {
        *pcbData = needed;
        return false;
    }
    std::memcpy(data, ansi.data(), ansi.size());
    *pcbData = needed;
    return true;
}

void RegCloseKey(RegKey* key) {
    if (key == nullptr) return;
    if (key->key != nullptr) ::RegCloseKey(key->key);
    delete key;
}

}  // namespace qvp
