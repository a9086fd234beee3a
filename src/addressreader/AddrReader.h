// AddrReader.h - the flat functions of the address book reader.
//
// Opaque pointers: reader (AddrReader_Open to AddrReader_Close), user
// (until the reader closes), book (AddrReader_OpenBook to AddrReader_CloseBook),
// group and item (until their book closes). A container is a book or a group.
// Results: 0, -1 no memory, -2 a failure caught at the barrier, -3 not there.
//
// What a handle is: a reader is its CAddrReader*. A user, a book and a group
// are handed out as the object's IAddrNamed* (AddrInterfaces.h), so that
// AddrReader_GetName takes any of them; the container functions reach
// IAddrContainer from that pointer by dynamic_cast, and a named object that
// is no container (a user) fails there like a bad pointer, with -2. An item is
// its CAddrItem*. A null object, container or item gives -2 from every
// function with a barrier (all but Open, IsInstalled, GetUserCount and
// GetUserIndex, which give -3 for a null pointer).
//
// Texts come out through a QvV4Value whose nKind the caller has set; the
// caller owns the text. Item properties: 0 "FN" (the heading), 1
// "EMAIL;INTERNET" (the address).
#ifndef QV_ADDRREADER_H
#define QV_ADDRREADER_H

#include <cstdint>

#include "QvV4Value/QvV4Value.h"

typedef void* ADDRREADER_HANDLE;
typedef void* ADDROBJECT_HANDLE;

// 0, -1 (no reader could be made) or -3; what fails in the discovery is
// thrown on to the caller's barrier.
int32_t AddrReader_Open(ADDRREADER_HANDLE* phReader);
int32_t AddrReader_Close(ADDRREADER_HANDLE hReader);
int32_t AddrReader_GetName(ADDRREADER_HANDLE hReader, ADDROBJECT_HANDLE hObject, QvV4Value* pValue);
int32_t AddrReader_IsInstalled(ADDRREADER_HANDLE hReader, int32_t* pbInstalled);
int32_t AddrReader_GetUserCount(ADDRREADER_HANDLE hReader, int32_t* pnCount);
int32_t AddrReader_GetUser(ADDRREADER_HANDLE hReader, int32_t nIndex, ADDROBJECT_HANDLE* phUser);
int32_t AddrReader_GetUserIndex(ADDRREADER_HANDLE hReader, void* hMailUser, int32_t* pnIndex);
int32_t AddrReader_OpenBook(ADDRREADER_HANDLE hReader, ADDROBJECT_HANDLE hUser, int32_t nId,
                            ADDROBJECT_HANDLE* phBook);
int32_t AddrReader_CloseBook(ADDRREADER_HANDLE hReader, ADDROBJECT_HANDLE hUser, int32_t nId,
                             ADDROBJECT_HANDLE hBook);
int32_t AddrReader_GetGroupCount(ADDRREADER_HANDLE hReader, ADDROBJECT_HANDLE hContainer, int32_t* pnCount);
int32_t AddrReader_GetGroup(ADDRREADER_HANDLE hReader, ADDROBJECT_HANDLE hContainer, int32_t nIndex,
                            ADDROBJECT_HANDLE* phGroup);
int32_t AddrReader_FindProperty(ADDRREADER_HANDLE hReader, ADDROBJECT_HANDLE hBook, const char16_t* pszKey,
                                int32_t* pnIndex);
int32_t AddrReader_GetItemCount(ADDRREADER_HANDLE hReader, ADDROBJECT_HANDLE hContainer, int32_t* pnCount);
int32_t AddrReader_GetItem(ADDRREADER_HANDLE hReader, ADDROBJECT_HANDLE hContainer, int32_t nIndex,
                           ADDROBJECT_HANDLE* phItem);
int32_t AddrReader_GetItemProperty(ADDRREADER_HANDLE hReader, ADDROBJECT_HANDLE hItem, int32_t nProperty,
                                   QvV4Value* pValue);

#endif  // QV_ADDRREADER_H
