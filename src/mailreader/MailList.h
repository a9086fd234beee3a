// MailList.h - the list of the mail reader's records: users, accounts,
// folder entries and message entries, each kept in file or listing order and
// found by index without a walk.
//
// The list owns its entries and frees them, first to last, when it is
// cleared or goes.
#ifndef QV_MAILREADER_MAILLIST_H
#define QV_MAILREADER_MAILLIST_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

template <class T>
class CMailList {
public:
    CMailList() = default;
    ~CMailList() { Clear(); }
    CMailList(const CMailList&) = delete;
    CMailList& operator=(const CMailList&) = delete;

    // Takes the entry at the end. On a failure to allocate, the list is as
    // before and the entry is freed.
    T* Append(std::unique_ptr<T> entry) {
        m_entries.push_back(entry.get());
        return entry.release();
    }

    int32_t Count() const { return static_cast<int32_t>(m_entries.size()); }

    // The entry at that position, or null outside the list.
    T* At(int32_t nIndex) const {
        return nIndex >= 0 && nIndex < Count() ? m_entries[static_cast<size_t>(nIndex)] : nullptr;
    }

    // Hands each entry to release, first to last, then frees it; the list is
    // empty afterwards.
    template <class Release>
    void Clear(Release release) noexcept {
        for (T* p : m_entries) {
            release(p);
            delete p;
        }
        std::vector<T*>().swap(m_entries);
    }
    void Clear() noexcept {
        Clear([](T*) {});
    }

private:
    std::vector<T*> m_entries;
};

#endif  // QV_MAILREADER_MAILLIST_H
