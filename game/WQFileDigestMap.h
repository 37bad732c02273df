#pragma once

#include "io/ZPExtensions.h"
#include "io/ZPLargeArray.h"
#include "io/ZPSHA1.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>

struct WQFileDigest {
    std::uint32_t identifier;
    ZPSHA1Digest digest;

    /// 40 lower-case hexadecimal digits.
    std::string text() const { return ZPHexString(digest); }
};

/// The SHA-1 digests of an archive's files, by identifier: one sorted flat array of 24 bytes a
/// file. Text is made only for those that somebody asks for.
class WQFileDigestMap {
  public:
    WQFileDigestMap() = default;
    /// The first `count` digests: ascending identifiers, none twice.
    WQFileDigestMap(ZPLargeArray<WQFileDigest> digests, std::size_t count)
        : _digests(std::move(digests)), _count(count) {}

    std::size_t size() const { return _count; }
    const WQFileDigest *begin() const { return _digests.data(); }
    const WQFileDigest *end() const { return _digests.data() + _count; }

    /// The digest's text; none for a file that is not there or could not be read.
    std::optional<std::string> find(std::uint32_t identifier) const {
        const auto *digest =
            std::ranges::lower_bound(begin(), end(), identifier, {}, &WQFileDigest::identifier);
        if (digest == end() || digest->identifier != identifier)
            return std::nullopt;
        return digest->text();
    }
    bool contains(std::uint32_t identifier) const {
        return std::ranges::binary_search(begin(), end(), identifier, {},
                                          &WQFileDigest::identifier);
    }

  private:
    ZPLargeArray<WQFileDigest> _digests;
    std::size_t _count = 0;
};
