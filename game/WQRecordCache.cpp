#include "game/WQRecordCache.h"

WQRecordCache::Access::Access(WQRecordCache &cache, Entries::iterator entry)
    : _cache(&cache), _entry(entry) {
    ++_entry->accessCount;
}

WQRecordCache::Access::~Access() {
    if (_cache == nullptr)
        return;
    const std::lock_guard guard(_cache->_lock);
    _cache->release(_entry);
}

/// Ends one use of a record.
void WQRecordCache::release(Entries::iterator entry) {
    --entry->accessCount;
    if (entry->isReplaced && entry->accessCount == 0)
        evict(entry);
    if (_totalCostLimit != 0)
        evictDownToCost(_totalCostLimit);
}

WQRecordCache::Access WQRecordCache::objectForKey(std::uint32_t identifier) {
    const std::lock_guard guard(_lock);
    const auto found = _entriesByIdentifier.find(identifier);
    if (found == _entriesByIdentifier.end())
        return {};
    _entries.splice(_entries.begin(), _entries, found->second);
    return {*this, found->second};
}

WQRecordCache::Access WQRecordCache::setObject(std::unique_ptr<const ZPGorvaneStoredObject> record,
                                               std::uint32_t forKey, std::size_t cost,
                                               bool isPinned) {
    const std::lock_guard guard(_lock);
    // The pin of a record counts as one use of it.
    _entries.push_front({forKey, std::move(record), cost, isPinned ? 1u : 0u, isPinned, false});
    _totalCost += cost;
    Access access(*this, _entries.begin());
    const auto [slot, isNew] = _entriesByIdentifier.try_emplace(forKey, _entries.begin());
    if (!isNew) {
        replace(slot->second);
        slot->second = _entries.begin();
    }
    if (_totalCostLimit != 0)
        evictDownToCost(_totalCostLimit);
    return access;
}

std::size_t WQRecordCache::count() const {
    const std::lock_guard guard(_lock);
    return _entries.size();
}

std::size_t WQRecordCache::totalCost() const {
    const std::lock_guard guard(_lock);
    return _totalCost;
}

void WQRecordCache::setTotalCostLimit(std::size_t limit) {
    const std::lock_guard guard(_lock);
    _totalCostLimit = limit;
    if (limit != 0)
        evictDownToCost(limit);
}

void WQRecordCache::removeUnusedObjects() {
    const std::lock_guard guard(_lock);
    evictDownToCost(0);
}

void WQRecordCache::evictDownToCost(std::size_t limit) {
    for (auto entry = _entries.end(); entry != _entries.begin() && _totalCost > limit;) {
        --entry;
        if (entry->accessCount == 0)
            evict(entry++);
    }
}

/// Makes room for another record under the same key.
void WQRecordCache::replace(Entries::iterator entry) {
    entry->isReplaced = true;
    if (entry->isPinned)
        --entry->accessCount;
    if (entry->accessCount == 0)
        evict(entry);
}

void WQRecordCache::evict(Entries::iterator entry) {
    if (_delegate != nullptr)
        _delegate->cache(*this, *entry->record);
    _totalCost -= entry->cost;
    if (!entry->isReplaced)
        _entriesByIdentifier.erase(entry->identifier);
    _entries.erase(entry);
}
