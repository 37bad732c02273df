#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <vector>

/// Which identifiers the unreadable parts of a directory may have had: of a file with one of these
/// nobody can say that it is not there.
class ZPGorvaneLostIdentifiers {
  public:
    /// Adds the identifiers between two, both of them left out; -1 and 2^32 are the ends.
    void addBetween(std::int64_t above, std::int64_t below) {
        if (below - above > 1)
            _ranges.push_back({above + 1, below - 1});
    }
    /// Once they are tidy.
    bool contains(std::uint32_t identifier) const {
        const auto next =
            std::ranges::upper_bound(_ranges, std::int64_t{identifier}, {}, &Range::first);
        return next != _ranges.begin() && identifier <= std::prev(next)->last;
    }
    bool empty() const { return _ranges.empty(); }
    /// Puts the ranges in order and joins those that touch; after the last one was added.
    void tidy() {
        std::ranges::sort(_ranges, {}, &Range::first);
        std::vector<Range> joined;
        for (const Range &range : _ranges)
            if (joined.empty() || range.first > joined.back().last + 1)
                joined.push_back(range);
            else
                joined.back().last = std::max(joined.back().last, range.last);
        _ranges = std::move(joined);
    }

  private:
    struct Range {
        std::int64_t first, last;
    };
    std::vector<Range> _ranges;
};
