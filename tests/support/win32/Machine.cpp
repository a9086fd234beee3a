// Machine.cpp - the machine of a test where the library calls Windows: the
// running one, HKLM values in its 32-bit view, every key written deleted
// again when the machine closes.
#include "support/WinePrefix.h"

#include <windows.h>

#include <cstdlib>
#include <set>
#include <stdexcept>
#include <utility>

namespace qvt {
namespace machine {
namespace {

std::wstring Wide(const std::string& utf8) {
    const std::u16string text = Utf16(utf8);
    return std::wstring(text.begin(), text.end());
}

// Keys written by the open machine: (hklm, key).
std::set<std::pair<bool, std::wstring>> g_written;

HKEY Root(bool hklm) { return hklm ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER; }
REGSAM View(bool hklm) { return hklm ? KEY_WOW64_32KEY : 0; }

void DeleteKey(bool hklm, const std::wstring& key) {
    HKEY handle = nullptr;
    if (::RegOpenKeyExW(Root(hklm), key.c_str(), 0, KEY_ALL_ACCESS | View(hklm), &handle) != ERROR_SUCCESS) return;
    ::RegDeleteTreeW(handle, nullptr);
    ::RegCloseKey(handle);
    ::RegDeleteKeyExW(Root(hklm), key.c_str(), View(hklm), 0);
}

}  // namespace

void Open(const std::string&, bool* hadPrefix, std::string*) {
    *hadPrefix = false;
    // The mail client's keys start empty.
    DeleteKey(true, L"Software\\CREAR");
    DeleteKey(false, L"Software\\CREAR");
}

void Close(const std::string&, bool, const std::string&) {
    for (const auto& key : g_written) DeleteKey(key.first, key.second);
    g_written.clear();
    DeleteKey(true, L"Software\\CREAR");
    DeleteKey(false, L"Software\\CREAR");
}

void WriteRegistry(const std::string&, bool hklm, WinePrefix::Arch, const WinePrefix::Hive& hive) {
    for (const std::string& key : hive.order) {
        const std::wstring wideKey = Wide(key);
        HKEY handle = nullptr;
        if (::RegCreateKeyExW(Root(hklm), wideKey.c_str(), 0, nullptr, 0, KEY_SET_VALUE | View(hklm), nullptr,
                              &handle, nullptr) != ERROR_SUCCESS)
            throw std::runtime_error("cannot create the key " + key);
        g_written.emplace(hklm, wideKey);
        for (const auto& value : hive.keys.at(key)) {
            const std::wstring name = Wide(value.first), data = Wide(value.second);
            ::RegSetValueExW(handle, value.first.empty() ? nullptr : name.c_str(), 0, REG_SZ,
                             reinterpret_cast<const BYTE*>(data.c_str()),
                             static_cast<DWORD>((data.size() + 1) * sizeof(wchar_t)));
        }
        ::RegCloseKey(handle);
    }
}

std::string HostPath(const std::string&, const std::string& winPathUtf8) { return winPathUtf8; }

std::string WindowsPath(const std::string& hostPathUtf8) { return hostPathUtf8; }

void SetEnvironment(const char* name, const char* value) {
    ::_wputenv_s(Wide(name).c_str(), value != nullptr ? Wide(value).c_str() : L"");
}

const char* TempVariable() { return "TMP"; }

// The Windows platform layer keeps no folders of its own.
void ForgetFolders() {}

}  // namespace machine
}  // namespace qvt
