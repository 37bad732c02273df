#pragma once

#include "archive/ZPGorvaneStoredObject.h"

#include <list>
#include <mutex>
#include <unordered_map>
#include <utility>

/// Records by identifier, of which those that nobody uses may be evicted, the least recently
/// used first. A record is in use while an Access to it lives.
///
/// Safe from several threads. The lock is public: whoever wants to build a missing record only once
/// holds it from the look-up to the insertion.
class WQRecordCache {
    struct Entry {
        std::uint32_t identifier;
        std::unique_ptr<const ZPGorvaneStoredObject> record;
        std::size_t cost;
        std::size_t accessCount;
        bool isPinned;
        /// Another record took its place; it stays for as long as it is in use.
        bool isReplaced;
    };
    /// The most recently used in front.
    using Entries = std::list<Entry>;

  public:
    /// Told of each record that is evicted, just before, under the cache's lock. Leaves the cache
    /// alone and does not throw.
    class Delegate {
      public:
        virtual ~Delegate() = default;
        virtual void cache(WQRecordCache &cache, const ZPGorvaneStoredObject &willEvictObject) = 0;
    };

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
        const ZPGorvaneStoredObject &operator*() const { return *_entry->record; }
        const ZPGorvaneStoredObject *operator->() const { return _entry->record.get(); }

      private:
        friend class WQRecordCache;
        Access(WQRecordCache &cache, Entries::iterator entry);

        WQRecordCache *_cache = nullptr;
        Entries::iterator _entry;
    };

    /// The delegate, if any, must outlive the cache. The end of the cache itself is no eviction.
    explicit WQRecordCache(std::string name, Delegate *delegate = nullptr)
        : _name(std::move(name)), _delegate(delegate) {}
    WQRecordCache(const WQRecordCache &) = delete;
    WQRecordCache &operator=(const WQRecordCache &) = delete;

    const std::string &name() const { return _name; }
    std::recursive_mutex &lock() { return _lock; }

    /// Empty when the record is not in the cache.
    [[nodiscard]] Access objectForKey(std::uint32_t identifier);
    /// Takes a record, in place of one that is there under the same key. A pinned one stays in use,
    /// and so in the cache, until it is replaced or the cache ends. `cost` is in bytes.
    Access setObject(std::unique_ptr<const ZPGorvaneStoredObject> record, std::uint32_t forKey,
                     std::size_t cost, bool isPinned);

    // With replaced records that are still in use.
    std::size_t count() const;
    std::size_t totalCost() const;
    /// 0, as at first: no limit. What is in use may exceed it.
    void setTotalCostLimit(std::size_t limit);
    /// Evicts every record that is not in use.
    void removeUnusedObjects();

  private:
    void release(Entries::iterator entry);
    void replace(Entries::iterator entry);
    void evict(Entries::iterator entry);
    void evictDownToCost(std::size_t limit);

    std::string _name;
    Delegate *_delegate;
    mutable std::recursive_mutex _lock;
    Entries _entries;
    std::unordered_map<std::uint32_t, Entries::iterator> _entriesByIdentifier;
    std::size_t _totalCost = 0;
    std::size_t _totalCostLimit = 0;
};
