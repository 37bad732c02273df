#include "game/WQRecordCache.h"

WQRecordCache::Access::Access(WQRecordCache &cache, Entries::iterator entry)
    : _cache(&cache), _entry(entry) {
    ++_entry->accessCount;
}

WQRecordCache::Access::~Access() {
    if (_cache == nullptr)
        return;
    const std::lock_guard guard(_cache->_lock);
    --_entry->accessCount;
    if (_cache->_totalCostLimit != 0)
        _cache->evictDownToCost(_cache->_totalCostLimit);
}

WQRecordCache::Access WQRecordCache::objectForKey(std::uint32_t identifier) {
    const std::lock_guard guard(_lock);
    const auto found = _entriesByIdentifier.find(identifier);
    if (found == _entriesByIdentifier.end())
        return {};
    _entries.splice(_entries.begin(), _entries, found->second);
    return {*this, found->second};
}

WQRecordCache::Access
WQRecordCache::setObject(std::unique_ptr<const WQUndecodedPortalObject> record,
                         std::uint32_t forKey, std::size_t cost, bool isPinned) {
    const std::lock_guard guard(_lock);
    _entries.push_front({forKey, std::move(record), cost, isPinned ? 1u : 0u});
    _entriesByIdentifier[forKey] = _entries.begin();
    _totalCost += cost;
    Access access(*this, _entries.begin());
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
        if (entry->accessCount > 0)
            continue;
        _totalCost -= entry->cost;
        _entriesByIdentifier.erase(entry->identifier);
        entry = _entries.erase(entry);
    }
}
