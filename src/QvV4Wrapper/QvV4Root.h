// QvV4Root.h - the root of the tree (class 1) and the enumerator of its users.
#ifndef QV_QVV4ROOT_H
#define QV_QVV4ROOT_H

#include "QvV4Wrapper/QvV4Lazy.h"

class CQvV4User;

class CQvV4Root : public CQvIRoot {
public:
    CQvV4Root();
    ~CQvV4Root() override;

    void OnChildDisposed(CQvIObject* pChild) override;
    int32_t GetDisplayName(QV_WCHAR* lpszName, uint32_t* lpcNameLen) override;
    int32_t GetChildCount(int32_t nClass, int32_t* pnChildCount) override;
    int32_t CreateChildObjects(int32_t nClass, CQvIObject** ppObjs) override;

    int32_t GetUserAt(int32_t nIndex, CQvIObject** ppChild);

private:
    int32_t FetchUserCount();

    QvV4Value m_valDisplayName;
    CQvV4User** m_ppUsers = nullptr;
    int32_t m_nUserCount = -1;
};

using CQvV4UserObjects = CQvV4IndexObjects<CQvV4Root, &CQvV4Root::GetUserAt>;

#endif  // QV_QVV4ROOT_H
