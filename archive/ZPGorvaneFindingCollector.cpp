#include "archive/ZPGorvaneFindingCollector.h"

#include <iterator>

bool ZPGorvaneFindingCollector::add(ZPGorvaneFinding finding) {
    const std::lock_guard guard(_lock);
    const bool isOfFile = finding.identifier.has_value();
    auto &places = isOfFile ? _placesOfFiles : _places;
    // An offset has 32 bits in an archive.
    const std::uint64_t place =
        std::uint64_t{finding.identifier.value_or(0)} << 32 | (finding.offset & 0xFFFFFFFF);
    if (places.contains(place))
        return false;
    if (places.size() < kMostPlaces)
        places.insert(place);
    const std::pair<std::int64_t, std::uint64_t> key =
        isOfFile ? std::pair{std::int64_t{*finding.identifier}, finding.offset}
                 : std::pair{std::int64_t{-1}, std::uint64_t{_countWithoutFile}};
    _countWithoutFile += !isOfFile;
    ++_count;
    _kept.try_emplace(key, std::move(finding));
    if (_kept.size() > kMostKept)
        _kept.erase(std::prev(_kept.end()));
    return true;
}

std::size_t ZPGorvaneFindingCollector::count() const {
    const std::lock_guard guard(_lock);
    return _count;
}

std::size_t ZPGorvaneFindingCollector::countWithoutFile() const {
    const std::lock_guard guard(_lock);
    return _countWithoutFile;
}

ZPGorvaneFindings ZPGorvaneFindingCollector::kept() const {
    const std::lock_guard guard(_lock);
    ZPGorvaneFindings findings;
    for (const auto &[key, finding] : _kept)
        findings.push_back(finding);
    return findings;
}
