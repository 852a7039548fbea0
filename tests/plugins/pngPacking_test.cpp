// The packing of PNG's pixels, which is our own: what it makes is unpacked by zlib, and compared in
// size with what zlib makes.
#include <gtest/gtest.h>

#include "png/deflater.h"
#include "png/huffman.h"
#include "png/rowFilter.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <numeric>
#include <queue>
#include <random>
#include <vector>

#include <png.h>
#include <zlib.h>

namespace {

using Bytes = std::vector<std::uint8_t>;

std::mt19937& generator() {
    static std::mt19937 instance(7);
    return instance;
}

Bytes made(std::size_t count, const std::function<int(std::size_t)>& byteAt) {
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; i++)
        bytes[i] = static_cast<std::uint8_t>(byteAt(i));
    return bytes;
}

Bytes noise(std::size_t count, unsigned values = 256) {
    return made(count, [=](std::size_t) { return static_cast<int>(generator()() % values); });
}

Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

Bytes packed(const Bytes& bytes, int level, int shortest, std::size_t piece) {
    zelpng::Deflater deflater;
    EXPECT_TRUE(deflater.start(level, shortest));
    Bytes out;
    const auto fetch = [&] {
        out.insert(out.end(), deflater.output().begin(), deflater.output().end());
        deflater.clearOutput();
    };
    for (std::size_t at = 0; at < bytes.size();) {
        at += deflater.take(std::span(bytes).subspan(at, std::min(piece, bytes.size() - at)));
        fetch();
    }
    deflater.finish();
    fetch();
    return out;
}

Bytes unpacked(const Bytes& stream, std::size_t expected) {
    Bytes bytes(expected + 1);
    uLongf count = bytes.size();
    EXPECT_EQ(uncompress(bytes.data(), &count, stream.data(), stream.size()), Z_OK);
    bytes.resize(count);
    return bytes;
}

std::size_t sizeByZlib(const Bytes& bytes, int level) {
    z_stream stream{};
    deflateInit2(&stream, level, Z_DEFLATED, 15, 8, Z_FILTERED);
    Bytes out(compressBound(bytes.size()));
    stream.next_in = const_cast<Bytef*>(bytes.data());
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = out.data();
    stream.avail_out = static_cast<uInt>(out.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    deflateEnd(&stream);
    return stream.total_out;
}

// A waving picture after a filter: small differences with a little noise.
Bytes residuals(std::size_t count) {
    return made(count, [](std::size_t i) {
        const double wave =
            3 * std::sin(static_cast<double>(i) / 50) * std::cos(static_cast<double>(i) / 7001);
        return static_cast<int>(wave) + static_cast<int>(generator()() % 100 == 0);
    });
}

TEST(PngDeflater, zlibUnpacksWhatWasPacked) {
    const Bytes random = noise(40000);
    const Bytes gap32767(32767 - 300), gap32768(32768 - 300), gap32769(32769 - 300);
    const Bytes some(random.begin(), random.begin() + 300);
    const std::vector<Bytes> cases = {
        {},
        {42},
        {1, 2, 3},
        Bytes(1000000),
        noise(300000),
        noise(300000, 2),
        noise(200000, 30),
        joined({random, random, random}),
        joined({some, gap32767, some, gap32768, some, gap32769, some}),
        joined({Bytes(500000), noise(150000), Bytes(500000), noise(1000)}),
        residuals(500000),
    };
    for (std::size_t i = 0; i < cases.size(); i++)
        for (const int level : {0, 1, 4, 6, 9})
            for (const int shortest : {4, 6}) {
                SCOPED_TRACE(testing::Message() << "case " << i << ", level " << level);
                const Bytes stream = packed(cases[i], level, shortest, 9001);
                ASSERT_TRUE(unpacked(stream, cases[i].size()) == cases[i]);
                EXPECT_LE(stream.size(), cases[i].size() + cases[i].size() / 1000 + 32);
            }
}

TEST(PngDeflater, piecesDoNotMatter) {
    const Bytes bytes = joined({residuals(150000), noise(50000)});
    const Bytes whole = packed(bytes, 6, 6, bytes.size());
    for (const std::size_t piece : {1, 4099, 65536})
        EXPECT_TRUE(packed(bytes, 6, 6, piece) == whole) << piece;
}

TEST(PngDeflater, isAsSmallAsZlib) {
    for (const Bytes& bytes : {residuals(600000), noise(200000, 30), Bytes(3000000)})
        for (const int level : {1, 4, 6, 9}) {
            const std::size_t limit = sizeByZlib(bytes, level);
            EXPECT_LE(packed(bytes, level, 6, 9001).size(), limit + limit / 50 + 16) << level;
        }
}

// The bits of all symbols by Huffman's own rule: join the two smallest until one is left.
std::uint64_t smallestCost(const std::vector<std::uint32_t>& counts) {
    std::priority_queue<std::uint64_t, std::vector<std::uint64_t>, std::greater<>> queue;
    for (const std::uint32_t count : counts)
        if (count > 0)
            queue.push(count);
    std::uint64_t cost = 0;
    while (queue.size() > 1) {
        std::uint64_t sum = queue.top();
        queue.pop();
        sum += queue.top();
        queue.pop();
        queue.push(sum);
        cost += sum;
    }
    return cost;
}

TEST(PngHuffman, lengthsAreCompleteLimitedAndBest) {
    std::vector<std::uint32_t> fibonacci = {1, 1};
    while (fibonacci.size() < 30)
        fibonacci.push_back(fibonacci.back() + fibonacci[fibonacci.size() - 2]);
    std::vector<std::uint32_t> some(286);
    for (std::uint32_t& count : some)
        count = static_cast<std::uint32_t>(
            std::max<long>(0, static_cast<long>(generator()() % 3000) - 2000));
    struct {
        std::vector<std::uint32_t> counts;
        int longest;
        bool limits;
    } const cases[] = {{some, 15, false},      {std::vector<std::uint32_t>(288, 5), 15, false},
                       {fibonacci, 15, true},  {{0, 0, 7}, 15, false},
                       {{0, 0, 0}, 15, false}, {{9, 1, 1, 2, 3, 5, 8, 13, 21, 34}, 7, true}};
    for (const auto& [counts, longest, limits] : cases) {
        std::vector<std::uint8_t> lengths(counts.size());
        zelpng::setCodeLengths(counts, longest, lengths);
        double filled = 0;
        std::uint64_t cost = 0;
        for (std::size_t i = 0; i < counts.size(); i++) {
            filled += lengths[i] > 0 ? std::ldexp(1.0, -lengths[i]) : 0;
            cost += std::uint64_t{counts[i]} * lengths[i];
            EXPECT_TRUE(counts[i] == 0 || lengths[i] > 0);
            EXPECT_LE(lengths[i], longest);
        }
        EXPECT_EQ(filled, 1);
        if (!limits && smallestCost(counts) > 0) {
            EXPECT_EQ(cost, smallestCost(counts));
        }
    }
}

// Undoes a filter as PNG defines it.
Bytes restored(std::span<const std::uint8_t> filtered, const Bytes& above, std::size_t step) {
    Bytes row(filtered.begin() + 1, filtered.end());
    for (std::size_t i = 0; i < row.size(); i++) {
        const int a = i < step ? 0 : row[i - step];
        const int b = above[i];
        const int c = i < step ? 0 : above[i - step];
        const int p = a + b - c;
        const int pa = std::abs(p - a), pb = std::abs(p - b), pc = std::abs(p - c);
        const int paeth = pa <= pb && pa <= pc ? a : pb <= pc ? b : c;
        const int foretold[] = {0, a, b, (a + b) / 2, paeth};
        row[i] = static_cast<std::uint8_t>(row[i] + foretold[filtered[0]]);
    }
    return row;
}

int distanceFromZero(std::span<const std::uint8_t> filtered) {
    return std::accumulate(filtered.begin() + 1, filtered.end(), 0, [](int sum, std::uint8_t byte) {
        return sum + std::abs(static_cast<std::int8_t>(byte));
    });
}

TEST(PngRowFilter, isUndoneByItsDefinitionAndChosenBySize) {
    constexpr int masks[] = {PNG_FILTER_NONE, PNG_FILTER_SUB, PNG_FILTER_UP, PNG_FILTER_AVG,
                             PNG_FILTER_PAETH};
    for (const std::size_t step : {1, 3, 8})
        for (const std::size_t bytes : {step, 24 * step}) {
            zelpng::RowFilter single[5], chooser;
            for (int i = 0; i < 5; i++)
                ASSERT_TRUE(single[i].start(bytes, step, masks[i], false));
            ASSERT_TRUE(chooser.start(bytes, step, PNG_ALL_FILTERS, false));
            Bytes above(bytes);
            for (int y = 0; y < 40; y++) {
                const Bytes row = y % 2 == 0 ? noise(bytes) : noise(bytes, 9);
                int least = INT_MAX;
                for (int i = 0; i < 5; i++) {
                    const auto filtered = single[i].apply(row.data());
                    EXPECT_EQ(filtered[0], i);
                    EXPECT_EQ(restored(filtered, above, step), row);
                    least = std::min(least, distanceFromZero(filtered));
                }
                const auto chosen = chooser.apply(row.data());
                EXPECT_EQ(restored(chosen, above, step), row);
                EXPECT_EQ(distanceFromZero(chosen), least);
                above = row;
            }
        }
}

} // namespace
