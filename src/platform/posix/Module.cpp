// Module.cpp - dynamic libraries and the critical section on POSIX.
//
// A Windows library name "name.dll" is the shared object "libname.so". A bare
// name is looked for first beside the module that holds this code (what the
// RUNPATH $ORIGIN of our library says, done by hand because a sanitizer's
// runtime that intercepts dlopen hides the caller's RUNPATH), then by the
// normal search.
#include "platform/platform.h"
#include "platform/posix/DirStream.h"

#include <dlfcn.h>
#include <strings.h>

#include <cstring>
#include <mutex>
#include <new>
#include <string>

namespace qvp {

struct Module {
    void* handle;
};

struct CriticalSection {
    std::recursive_mutex mutex;  // a Windows critical section is re-entrant
};

namespace {

// "sNqxMsgNet.dll" -> "libsNqxMsgNet.so"; a name without ".dll" keeps its
// whole name. A directory part, if any, is kept in front.
std::string SharedObjectName(const std::string& name) {
    const size_t slash = name.find_last_of("/\\");
    const std::string dir = slash == std::string::npos ? std::string() : name.substr(0, slash + 1);
    std::string base = slash == std::string::npos ? name : name.substr(slash + 1);
    if (base.size() >= 4 && strcasecmp(base.c_str() + base.size() - 4, ".dll") == 0)
        base.resize(base.size() - 4);
    std::string result = dir;
    for (char& c : result)
        if (c == '\\') c = '/';
    return result + "lib" + base + ".so";
}

// The folder of the module that holds this code, with a final slash.
std::string OwnFolder() {
    Dl_info info;
    if (dladdr(reinterpret_cast<void*>(&OwnFolder), &info) == 0 || info.dli_fname == nullptr) return std::string();
    const std::string path = info.dli_fname;
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

}  // namespace

Module* ModuleLoad(const char* fileName) {
    if (fileName == nullptr || *fileName == 0) return nullptr;
    if (posix::InjectedFailure()) {
        posix::ThrowIfNoMemory(errno);
        return nullptr;
    }
    const std::string name = SharedObjectName(fileName);
    void* handle = nullptr;
    if (name.find('/') == std::string::npos) {
        const std::string folder = OwnFolder();
        if (!folder.empty()) handle = dlopen((folder + name).c_str(), RTLD_NOW | RTLD_LOCAL);
    }
    if (handle == nullptr) handle = dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) return nullptr;
    Module* module = new (std::nothrow) Module{handle};
    if (module == nullptr) {
        dlclose(handle);
        throw std::bad_alloc();
    }
    return module;
}

void* ModuleSymbol(Module* module, const char* name) {
    if (module == nullptr || name == nullptr) return nullptr;
    return dlsym(module->handle, name);
}

bool ModuleFree(Module* module) {
    if (module == nullptr) return false;
    const bool ok = dlclose(module->handle) == 0;
    delete module;
    return ok;
}

CriticalSection* CriticalSectionCreate() { return new (std::nothrow) CriticalSection; }

void CriticalSectionEnter(CriticalSection* cs) {
    if (cs != nullptr) cs->mutex.lock();
}

void CriticalSectionLeave(CriticalSection* cs) {
    if (cs != nullptr) cs->mutex.unlock();
}

void CriticalSectionDestroy(CriticalSection* cs) { delete cs; }

}  // namespace qvp
