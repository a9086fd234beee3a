// AddrList.h - the list of the address model: a singly linked chain of
// (entry, next) nodes that always ends in one empty node, with an index
// vector beside it so that the n-th entry is found without a walk.
//
// The list never owns its entries; the owner frees them (or not, for the
// book's flat item list) before the list goes.
#ifndef QV_ADDRLIST_H
#define QV_ADDRLIST_H

#include <cstddef>
#include <cstdint>
#include <vector>

template <class T>
class CAddrList {
public:
    struct Node {
        T* pEntry;
        Node* pNext;
    };

    CAddrList() : m_pHead(new Node{nullptr, nullptr}), m_pTail(m_pHead), m_nCount(0) {}
    ~CAddrList() { FreeNodes(); }
    CAddrList(const CAddrList&) = delete;
    CAddrList& operator=(const CAddrList&) = delete;

    // Writes the entry into the empty last node and links a new empty one
    // behind it. On a failure to allocate, the list is as before and the
    // caller still owns the entry.
    void Append(T* pEntry) {
        Node* pNew = new Node{nullptr, nullptr};
        try {
            m_Index.push_back(pEntry);
        } catch (...) {
            delete pNew;
            throw;
        }
        m_pTail->pEntry = pEntry;
        m_pTail->pNext = pNew;
        m_pTail = pNew;
        ++m_nCount;
    }

    int32_t Count() const { return m_nCount; }

    // The entry at that position. A negative index reads as 0, as a walk from
    // the first node would; at or past the end, null (the empty node's entry).
    T* At(int32_t nIndex) const {
        if (nIndex < 0) nIndex = 0;
        return nIndex < m_nCount ? m_Index[static_cast<size_t>(nIndex)] : nullptr;
    }

    const Node* Head() const { return m_pHead; }

    // Takes the chain of filled nodes out of the list, which is empty again
    // afterwards; *ppLast receives the chain's last node. The caller frees the
    // nodes. Needs no memory, so that a destructor can use it.
    Node* DetachChain(Node** ppLast) noexcept {
        Node* pChain = m_nCount > 0 ? m_pHead : nullptr;
        *ppLast = nullptr;
        if (pChain != nullptr) {
            Node* pLast = pChain;
            while (pLast->pNext != m_pTail) pLast = pLast->pNext;
            pLast->pNext = nullptr;
            *ppLast = pLast;
            m_pHead = m_pTail;
        }
        m_nCount = 0;
        std::vector<T*>().swap(m_Index);
        return pChain;
    }

private:
    void FreeNodes() noexcept {
        Node* p = m_pHead;
        while (p != nullptr) {
            Node* pNext = p->pNext;
            delete p;
            p = pNext;
        }
    }

    Node* m_pHead;
    Node* m_pTail;
    int32_t m_nCount;
    std::vector<T*> m_Index;
};

#endif  // QV_ADDRLIST_H
