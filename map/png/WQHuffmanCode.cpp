#include "map/png/WQHuffmanCode.h"

#include <algorithm>
#include <array>
#include <vector>

namespace {

constexpr unsigned kLongest = 15;

struct Leaf {
    std::uint64_t weight;
    std::size_t symbol;
};

/// How many codes of each length a Huffman tree over these leaves has; the leaves ascend by weight.
/// Codes that would be longer than the limit are counted at the limit.
std::vector<unsigned> countLengths(const std::vector<Leaf> &leaves, unsigned maximumLength) {
    struct Node {
        std::uint64_t weight;
        std::size_t parent;
    };
    const std::size_t leafCount = leaves.size();
    std::vector<Node> nodes;
    nodes.reserve(2 * leafCount - 1);
    for (const Leaf &leaf : leaves)
        nodes.push_back({leaf.weight, 0});

    // Leaves and the nodes made of them both ascend by weight, so the two lightest are always at
    // the front of one of two queues.
    std::size_t nextLeaf = 0, nextNode = leafCount;
    const auto takeLightest = [&] {
        const bool isLeaf =
            nextLeaf < leafCount &&
            (nextNode == nodes.size() || nodes[nextLeaf].weight <= nodes[nextNode].weight);
        return isLeaf ? nextLeaf++ : nextNode++;
    };
    while (nodes.size() < 2 * leafCount - 1) {
        const std::size_t left = takeLightest(), right = takeLightest();
        nodes[left].parent = nodes[right].parent = nodes.size();
        nodes.push_back({nodes[left].weight + nodes[right].weight, 0});
    }

    std::vector<unsigned> depths(nodes.size());
    std::vector<unsigned> counts(maximumLength + 1);
    for (std::size_t index = nodes.size() - 1; index-- > 0;) {
        depths[index] = depths[nodes[index].parent] + 1;
        if (index < leafCount)
            ++counts[std::min(depths[index], maximumLength)];
    }
    return counts;
}

/// Lengthens shorter codes until all fit: the shares 2^-length of the codes must add up to 1.
void makeLengthsFit(std::vector<unsigned> &counts) {
    const std::size_t maximumLength = counts.size() - 1;
    std::uint64_t total = 0;
    for (std::size_t length = 1; length <= maximumLength; ++length)
        total += std::uint64_t{counts[length]} << (maximumLength - length);
    for (; total > std::uint64_t{1} << maximumLength; --total) {
        std::size_t length = maximumLength - 1;
        while (counts[length] == 0)
            --length;
        --counts[length];
        counts[length + 1] += 2;
        --counts[maximumLength];
    }
}

std::uint16_t reversedBits(unsigned bits, unsigned length) {
    unsigned reversed = 0;
    for (unsigned index = 0; index < length; ++index)
        reversed |= (bits >> index & 1) << (length - 1 - index);
    return static_cast<std::uint16_t>(reversed);
}

/// Codes in order of length, and of symbol among equal lengths (RFC 1951, 3.2.2).
void assignCodes(std::span<WQHuffmanCode> codes) {
    std::array<unsigned, kLongest + 2> next{};
    for (const WQHuffmanCode &code : codes)
        if (code.length > 0)
            ++next[code.length + 1u];
    for (unsigned length = 1; length <= kLongest; ++length)
        next[length + 1] = (next[length] + next[length + 1]) << 1;
    for (WQHuffmanCode &code : codes)
        if (code.length > 0)
            code.bits = reversedBits(next[code.length]++, code.length);
}

} // namespace

void WQMakeHuffmanCodes(std::span<const std::uint32_t> frequencies, unsigned maximumLength,
                        std::span<WQHuffmanCode> codes) {
    std::vector<Leaf> leaves;
    for (std::size_t symbol = 0; symbol < frequencies.size(); ++symbol) {
        codes[symbol] = {};
        if (frequencies[symbol] > 0)
            leaves.push_back({frequencies[symbol], symbol});
    }
    if (leaves.empty())
        return;
    if (leaves.size() == 1) {
        codes[leaves.front().symbol] = {0, 1};
        return;
    }
    std::ranges::stable_sort(leaves, {}, &Leaf::weight);
    std::vector<unsigned> counts = countLengths(leaves, maximumLength);
    makeLengthsFit(counts);
    auto leaf = leaves.begin();
    for (unsigned length = maximumLength; length >= 1; --length)
        for (unsigned count = counts[length]; count > 0; --count)
            codes[(leaf++)->symbol].length = static_cast<std::uint8_t>(length);
    assignCodes(codes);
}
