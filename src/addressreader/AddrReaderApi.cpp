// AddrReaderApi.cpp - the flat functions of the address reader.
//
// Every function that touches an object runs behind a barrier that catches
// whatever the call raises and answers -2, so that no failure of the reader
// leaves a flat function.
#include <memory>
#include <new>

#include "QvV4Value/QvBarrier.h"
#include "addressreader/AddrBook.h"
#include "addressreader/AddrReader.h"
#include "addressreader/AddrReaderImpl.h"
#include "addressreader/AddrUser.h"
#include "platform/platform.h"

namespace {

// What every flat function answers for a failure, out of memory or not.
constexpr int32_t kFailed = -2;

// Thrown for a pointer that the barrier must refuse; caught there like any
// other failure.
struct BadPointer {};

template <class T>
T* Require(T* p) {
    if (p == nullptr) throw BadPointer();
    return p;
}

IAddrNamed* Named(ADDROBJECT_HANDLE h) {
    return static_cast<IAddrNamed*>(Require(h));
}

IAddrContainer* Container(ADDROBJECT_HANDLE h) {
    return Require(dynamic_cast<IAddrContainer*>(Named(h)));
}

ADDROBJECT_HANDLE Handle(IAddrNamed* p) {
    return p;
}

CAddrReader* Reader(ADDRREADER_HANDLE h) {
    return static_cast<CAddrReader*>(h);
}

// The property keys an item answers to, by property index.
const char* const kPropertyKeys[] = {"FN", "EMAIL;INTERNET"};
const int32_t kPropertyCount = 2;

bool KeyEquals(const char* pszRowKey, const char16_t* pszKey) {
    char16_t szWide[16] = {};
    if (qvp::MultiByteToWideChar(qvp::kCpAcp, 0, pszRowKey, -1, szWide, 16) == 0) return false;
    const char16_t* a = szWide;
    const char16_t* b = pszKey;
    for (; *a != u'\0' && *a == *b; ++a, ++b) {
    }
    return *a == *b;
}

}  // namespace

// The open has no barrier: a reader that cannot be made is -1, and whatever
// fails in its discovery (no memory, a file) goes up to the caller's
// barrier, the half-made reader given back on the way.
int32_t AddrReader_Open(ADDRREADER_HANDLE* phReader) {
    if (phReader == nullptr) return -3;
    std::unique_ptr<CAddrReader> reader;
    try {
        reader.reset(new CAddrReader());
    } catch (const std::bad_alloc&) {
        *phReader = nullptr;
        return -1;
    } catch (const CMemoryException&) {
        *phReader = nullptr;
        return -1;
    }
    const int32_t nDiscovery = reader->Discover();
    // No InstallPath or no user: nothing to read, and no reader handed out.
    if (nDiscovery < 0) {
        *phReader = nullptr;
        return -3;
    }
    // A reader whose installation file is gone is handed out all the same;
    // the caller must close it.
    CAddrReader* pReader = reader.release();
    *phReader = pReader;
    return pReader->IsInstalled() == 1 ? 0 : -3;
}

int32_t AddrReader_Close(ADDRREADER_HANDLE hReader) {
    return Barrier(kFailed, kFailed, [&] {
        delete Reader(hReader);
        return 0;
    });
}

int32_t AddrReader_GetName(ADDRREADER_HANDLE, ADDROBJECT_HANDLE hObject, QvV4Value* pValue) {
    return Barrier(kFailed, kFailed, [&] { return Named(hObject)->GetName(Require(pValue)); });
}

int32_t AddrReader_IsInstalled(ADDRREADER_HANDLE hReader, int32_t* pbInstalled) {
    if (hReader == nullptr || pbInstalled == nullptr) return -3;
    *pbInstalled = Reader(hReader)->IsInstalled();
    return 0;
}

int32_t AddrReader_GetUserCount(ADDRREADER_HANDLE hReader, int32_t* pnCount) {
    if (hReader == nullptr || pnCount == nullptr) return -3;
    *pnCount = Reader(hReader)->UserCount();
    return 0;
}

int32_t AddrReader_GetUser(ADDRREADER_HANDLE hReader, int32_t nIndex, ADDROBJECT_HANDLE* phUser) {
    return Barrier(
        kFailed, kFailed, [&] {
            CAddrUser* pUser = nullptr;
            int32_t nResult = Require(Reader(hReader))->GetUser(nIndex, &pUser);
            if (nResult == 0) *Require(phUser) = Handle(pUser);
            return nResult;
        },
        [&] {
            if (phUser != nullptr) *phUser = nullptr;
        });
}

int32_t AddrReader_GetUserIndex(ADDRREADER_HANDLE, void*, int32_t* pnIndex) {
    // The address side keeps no link to the mail side's users.
    if (pnIndex == nullptr) return -3;
    *pnIndex = -1;
    return 0;
}

int32_t AddrReader_OpenBook(ADDRREADER_HANDLE, ADDROBJECT_HANDLE hUser, int32_t, ADDROBJECT_HANDLE* phBook) {
    return Barrier(kFailed, kFailed, [&] {
        CAddrUser* pUser = Require(dynamic_cast<CAddrUser*>(Named(hUser)));
        Require(phBook);
        CAddrBook* pBook = nullptr;
        int32_t nResult = pUser->OpenBook(&pBook);
        *phBook = Handle(pBook);
        return nResult;
    });
}

int32_t AddrReader_CloseBook(ADDRREADER_HANDLE, ADDROBJECT_HANDLE, int32_t, ADDROBJECT_HANDLE hBook) {
    return Barrier(kFailed, kFailed, [&] {
        if (hBook == nullptr) return 0;
        return CAddrUser::CloseBook(Require(dynamic_cast<CAddrBook*>(Named(hBook))));
    });
}

int32_t AddrReader_GetGroupCount(ADDRREADER_HANDLE, ADDROBJECT_HANDLE hContainer, int32_t* pnCount) {
    return Barrier(kFailed, kFailed, [&] { return Container(hContainer)->GetGroupCount(Require(pnCount)); },
                   [&] {
                       if (pnCount != nullptr) *pnCount = 0;
                   });
}

int32_t AddrReader_GetGroup(ADDRREADER_HANDLE, ADDROBJECT_HANDLE hContainer, int32_t nIndex,
                            ADDROBJECT_HANDLE* phGroup) {
    return Barrier(
        kFailed, kFailed, [&] {
            IAddrContainer* pContainer = Container(hContainer);
            Require(phGroup);
            CAddrGroup* pGroup = nullptr;
            int32_t nResult = pContainer->GetGroup(nIndex, &pGroup);
            if (nResult == 0) *phGroup = pGroup != nullptr ? Handle(pGroup) : nullptr;
            return nResult;
        },
        [&] {
            if (phGroup != nullptr) *phGroup = nullptr;
        });
}

int32_t AddrReader_FindProperty(ADDRREADER_HANDLE, ADDROBJECT_HANDLE, const char16_t* pszKey, int32_t* pnIndex) {
    return Barrier(kFailed, kFailed, [&] {
        Require(pnIndex);
        Require(pszKey);
        for (*pnIndex = 0; *pnIndex < kPropertyCount; ++*pnIndex) {
            if (KeyEquals(kPropertyKeys[*pnIndex], pszKey)) return 0;
        }
        // Not found leaves 0, a valid index: the result is what counts.
        *pnIndex = 0;
        return -3;
    });
}

int32_t AddrReader_GetItemCount(ADDRREADER_HANDLE, ADDROBJECT_HANDLE hContainer, int32_t* pnCount) {
    return Barrier(kFailed, kFailed, [&] { return Container(hContainer)->GetItemCount(Require(pnCount)); });
}

int32_t AddrReader_GetItem(ADDRREADER_HANDLE, ADDROBJECT_HANDLE hContainer, int32_t nIndex,
                           ADDROBJECT_HANDLE* phItem) {
    return Barrier(kFailed, kFailed, [&] {
        IAddrContainer* pContainer = Container(hContainer);
        CAddrItem* pItem = nullptr;
        int32_t nResult = pContainer->GetItem(nIndex, &pItem);
        *Require(phItem) = pItem;
        return nResult;
    });
}

int32_t AddrReader_GetItemProperty(ADDRREADER_HANDLE, ADDROBJECT_HANDLE hItem, int32_t nProperty,
                                   QvV4Value* pValue) {
    return Barrier(kFailed, kFailed, [&] {
        return static_cast<CAddrItem*>(Require(hItem))->GetProperty(nProperty, Require(pValue));
    });
}
