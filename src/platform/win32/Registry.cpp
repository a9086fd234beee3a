// Registry.cpp - RegOpenKeyExA and RegQueryValueExA on Windows.
//
// The mail client is a 32-bit program: its HKLM\Software keys lie in the
// 32-bit view, which a 64-bit build asks for first, then the native view.
#include "platform/platform.h"
#include "platform/win32/Causes.h"

#include <windows.h>

#include <new>

namespace qvp {

struct RegKey {
    HKEY key;
};

bool RegOpen(Hive hive, const char* subKey, RegKey** out) {
    if (subKey == nullptr || out == nullptr) return false;
    const HKEY root = hive == Hive::LocalMachine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
    HKEY key = nullptr;
    // A key that could not be looked for is no missing key.
    LONG error = ::RegOpenKeyExA(root, subKey, 0, KEY_QUERY_VALUE | KEY_WOW64_32KEY, &key);
    win32::ThrowIfNoMemory(static_cast<DWORD>(error));
    if (error != ERROR_SUCCESS) {
        error = ::RegOpenKeyExA(root, subKey, 0, KEY_QUERY_VALUE, &key);
        win32::ThrowIfNoMemory(static_cast<DWORD>(error));
        if (error != ERROR_SUCCESS) return false;
    }
    RegKey* result = new (std::nothrow) RegKey{key};
    if (result == nullptr) {
        ::RegCloseKey(key);
        throw std::bad_alloc();
    }
    *out = result;
    return true;
}

bool RegQueryString(RegKey* key, const char* valueName, char* data, uint32_t* pcbData) {
    if (key == nullptr || data == nullptr || pcbData == nullptr) return false;
    DWORD size = *pcbData;
    const LONG error =
        ::RegQueryValueExA(key->key, valueName, nullptr, nullptr, reinterpret_cast<BYTE*>(data), &size);
    win32::ThrowIfNoMemory(static_cast<DWORD>(error));
    if (error != ERROR_SUCCESS) return false;
    *pcbData = size;
    return true;
}

void RegCloseKey(RegKey* key) {
    if (key == nullptr) return;
    ::RegCloseKey(key->key);
    delete key;
}

}  // namespace qvp
