#pragma once

#include "game/WQIdentifier.h"

#include <bitset>
#include <cstdint>
#include <span>
#include <vector>

/// A set of land-block numbers (column in the high byte, row in the low one): a bit each, since the
/// map asks for every block of the world.
class WQLandBlockSet {
  public:
    WQLandBlockSet() = default;
    /// The blocks that files of a cell archive belong to.
    explicit WQLandBlockSet(std::span<const std::uint32_t> fileIdentifiers) {
        for (const std::uint32_t identifier : fileIdentifiers)
            _blocks.set(WQLandBlockNumberOfIdentifier(identifier));
    }

    [[nodiscard]] bool contains(std::uint32_t number) const {
        return number < _blocks.size() && _blocks.test(number);
    }
    std::size_t size() const { return _blocks.count(); }
    /// Ascending.
    std::vector<std::uint32_t> numbers() const {
        std::vector<std::uint32_t> numbers;
        for (std::uint32_t number = 0; number < _blocks.size(); ++number)
            if (_blocks.test(number))
                numbers.push_back(number);
        return numbers;
    }

  private:
    std::bitset<0x10000> _blocks;
};
