#pragma once

#include "io/ZPExtensions.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

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
    /// Ascending identifiers, none twice.
    explicit WQFileDigestMap(std::vector<WQFileDigest> digests) : _digests(std::move(digests)) {}

    std::size_t size() const { return _digests.size(); }
    auto begin() const { return _digests.begin(); }
    auto end() const { return _digests.end(); }

    /// The digest's text; none for a file that is not there or could not be read.
    std::optional<std::string> find(std::uint32_t identifier) const {
        const auto digest =
            std::ranges::lower_bound(_digests, identifier, {}, &WQFileDigest::identifier);
        if (digest == _digests.end() || digest->identifier != identifier)
            return std::nullopt;
        return digest->text();
    }

  private:
    std::vector<WQFileDigest> _digests;
};
