#pragma once

#include <compare>
#include <cstddef>
#include <string>

/// Something counted, in an order by its count.
template <class Object>
struct ZPObjectCount {
    Object object;
    std::size_t count = 0;

    std::strong_ordering compareCount(const ZPObjectCount &other) const {
        return count <=> other.count;
    }
    std::strong_ordering compareCountReverse(const ZPObjectCount &other) const {
        return other.count <=> count;
    }
    /// For objects that are text.
    std::string description() const { return object + " [" + std::to_string(count) + "]"; }
};
