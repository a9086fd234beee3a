// AddrInterfaces.h - the two faces through which the flat functions see the
// objects of the address side.
//
// Users, books and groups have a name; books and groups also hold items and
// groups. The flat functions hand out every named object as its IAddrNamed*
// and reach the container face from there (AddrReader.h).
#ifndef QV_ADDRINTERFACES_H
#define QV_ADDRINTERFACES_H

#include <cstdint>

#include "QvV4Value/QvV4Value.h"

class CAddrItem;
class CAddrGroup;

class IAddrNamed {
public:
    virtual ~IAddrNamed() = default;
    // Delivers the name through QvV4Value_FromText: 0, -1 or -3.
    virtual int32_t GetName(QvV4Value* pValue) = 0;
};

class IAddrContainer {
public:
    virtual ~IAddrContainer() = default;
    virtual int32_t GetItemCount(int32_t* pnCount) = 0;
    // Out of range: null written, -3. A negative index reads as 0.
    virtual int32_t GetItem(int32_t nIndex, CAddrItem** ppItem) = 0;
    virtual int32_t GetGroupCount(int32_t* pnCount) = 0;
    // Out of range: -3 and the output untouched. A negative index reads as 0.
    virtual int32_t GetGroup(int32_t nIndex, CAddrGroup** ppGroup) = 0;
};

#endif  // QV_ADDRINTERFACES_H
