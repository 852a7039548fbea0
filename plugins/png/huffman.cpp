#include "huffman.h"

#include <algorithm>
#include <array>
#include <utility>

namespace zelpng {

namespace {

constexpr int deepest = 32;

struct Leaf {
    std::uint32_t count;
    std::uint16_t symbol;
};

struct Leaves {
    std::array<Leaf, mostSymbols> all;
    int used = 0;

    void add(std::uint32_t count, std::size_t symbol) {
        all[static_cast<std::size_t>(used++)] = {count, static_cast<std::uint16_t>(symbol)};
    }
};

Leaves leavesOf(std::span<const std::uint32_t> counts) {
    Leaves leaves;
    for (std::size_t i = 0; i < counts.size(); i++)
        if (counts[i] > 0)
            leaves.add(counts[i], i);
    for (std::size_t i = 0; leaves.used < 2; i++)
        if (counts[i] == 0)
            leaves.add(0, i);
    std::stable_sort(leaves.all.begin(), leaves.all.begin() + leaves.used,
                     [](const Leaf& a, const Leaf& b) { return a.count < b.count; });
    return leaves;
}

// How many leaves of Huffman's tree lie at each depth. Nodes are made in the order of their counts,
// so that the two smallest are always at the front of the leaves or of the nodes.
std::array<int, deepest> depthsOf(const Leaves& leaves) {
    std::array<std::uint64_t, mostSymbols> weight{};
    std::array<int, mostSymbols> parent{}; // of nodes
    std::array<int, mostSymbols> leafParent{};
    int leaf = 0, node = 0;
    const int nodes = leaves.used - 1;
    for (int made = 0; made < nodes; made++) {
        for (int child = 0; child < 2; child++) {
            const bool takesLeaf =
                leaf < leaves.used && (node == made || leaves.all[leaf].count <= weight[node]);
            weight[made] += takesLeaf ? leaves.all[leaf].count : weight[node];
            (takesLeaf ? leafParent[leaf++] : parent[node++]) = made;
        }
    }
    std::array<int, mostSymbols> depth{};
    for (int i = nodes - 2; i >= 0; i--)
        depth[i] = depth[parent[i]] + 1;
    std::array<int, deepest> count{};
    for (int i = 0; i < leaves.used; i++)
        count[std::min(depth[leafParent[i]] + 1, deepest - 1)]++;
    return count;
}

// Brings what lies too deep up to `longest`, and makes place for it by pushing others down.
void limitDepths(std::array<int, deepest>& count, int longest) {
    for (int depth = longest + 1; depth < deepest; depth++)
        count[longest] += count[depth];
    std::int64_t total = 0;
    for (int depth = 1; depth <= longest; depth++)
        total += std::int64_t{count[depth]} << (longest - depth);
    for (; total > std::int64_t{1} << longest; total--) {
        int depth = longest - 1;
        while (count[depth] == 0)
            depth--;
        count[longest]--;
        count[depth]--;
        count[depth + 1] += 2;
    }
}

} // namespace

void setCodeLengths(std::span<const std::uint32_t> counts, int longest,
                    std::span<std::uint8_t> lengths) {
    const Leaves leaves = leavesOf(counts);
    std::array<int, deepest> count = depthsOf(leaves);
    limitDepths(count, longest);
    std::fill(lengths.begin(), lengths.end(), std::uint8_t{0});
    int leaf = 0;
    for (int length = longest; length > 0; length--)
        for (int i = 0; i < count[length]; i++)
            lengths[leaves.all[leaf++].symbol] = static_cast<std::uint8_t>(length);
}

void setCodes(std::span<const std::uint8_t> lengths, std::span<std::uint16_t> codes) {
    std::array<unsigned, 16> next{};
    for (const std::uint8_t length : lengths)
        next[length]++;
    next[0] = 0;
    unsigned code = 0;
    for (unsigned& entry : next)
        code = (code + std::exchange(entry, code)) << 1;
    for (std::size_t i = 0; i < lengths.size(); i++) {
        const unsigned straight = next[lengths[i]]++;
        unsigned turned = 0;
        for (int bit = 0; bit < lengths[i]; bit++)
            turned |= (straight >> bit & 1u) << (lengths[i] - 1 - bit);
        codes[i] = static_cast<std::uint16_t>(turned);
    }
}

} // namespace zelpng
