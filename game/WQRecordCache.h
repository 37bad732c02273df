#pragma once

#include "game/WQUndecodedObject.h"

#include <list>
#include <mutex>
#include <unordered_map>
#include <utility>

/// Portal records by identifier, of which those that nobody uses may be evicted, the least recently
/// used first. A record is in use while an Access to it lives.
///
/// Safe from several threads. The lock is public: whoever wants to build a missing record only once
/// holds it from the look-up to the insertion.
class WQRecordCache {
    struct Entry {
        std::uint32_t identifier;
        std::unique_ptr<const WQUndecodedPortalObject> record;
        std::size_t cost;
        std::size_t accessCount;
    };
    /// The most recently used in front.
    using Entries = std::list<Entry>;

  public:
    /// Holds a record of a cache in use; must not outlive the cache. May be empty.
    class Access {
      public:
        Access() = default;
        Access(Access &&other) noexcept
            : _cache(std::exchange(other._cache, nullptr)), _entry(other._entry) {}
        Access &operator=(Access other) noexcept {
            std::swap(_cache, other._cache);
            std::swap(_entry, other._entry);
            return *this;
        }
        ~Access();

        explicit operator bool() const { return _cache != nullptr; }
        const WQUndecodedPortalObject &operator*() const { return *_entry->record; }
        const WQUndecodedPortalObject *operator->() const { return _entry->record.get(); }

      private:
        friend class WQRecordCache;
        Access(WQRecordCache &cache, Entries::iterator entry);

        WQRecordCache *_cache = nullptr;
        Entries::iterator _entry;
    };

    explicit WQRecordCache(std::string name) : _name(std::move(name)) {}
    WQRecordCache(const WQRecordCache &) = delete;
    WQRecordCache &operator=(const WQRecordCache &) = delete;

    const std::string &name() const { return _name; }
    std::recursive_mutex &lock() { return _lock; }

    /// Empty when the record is not in the cache.
    Access objectForKey(std::uint32_t identifier);
    /// Takes a record that is not in the cache yet. A pinned one stays in use, and so in the cache,
    /// for as long as the cache lives.
    Access setObject(std::unique_ptr<const WQUndecodedPortalObject> record, std::uint32_t forKey,
                     std::size_t cost, bool isPinned);

    std::size_t count() const;
    std::size_t totalCost() const;
    /// 0, as at first: no limit. What is in use may exceed it.
    void setTotalCostLimit(std::size_t limit);
    /// Evicts every record that is not in use.
    void removeUnusedObjects();

  private:
    void evictDownToCost(std::size_t limit);

    std::string _name;
    mutable std::recursive_mutex _lock;
    Entries _entries;
    std::unordered_map<std::uint32_t, Entries::iterator> _entriesByIdentifier;
    std::size_t _totalCost = 0;
    std::size_t _totalCostLimit = 0;
};
