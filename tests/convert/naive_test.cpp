// The engine against the naive conversion, over random descriptions. Both get equal memory, and
// every byte has to be the same afterwards, so that a stray write shows too.

#include "support/naiveConvert.h"

#include <gtest/gtest.h>
#include <zel/zelConverter.h>
#include <zel/zelPixel.h>

#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr zelDataType types[] = {zelBit,  zelUChar, zelChar,  zelUShort, zelShort,
                                 zelUInt, zelInt,   zelFloat, zelDouble};
constexpr zelOrder orders[] = {zelInterleaved, zelSequential, zelSeparate};

class Random {
public:
    explicit Random(unsigned seed) : engine(seed) {}

    /// From `low` to `high`, both included.
    int in(int low, int high) {
        const auto span = static_cast<unsigned>(high - low) + 1;
        return low + static_cast<int>(engine() % span);
    }
    bool once(int times) { return in(1, times) == 1; }
    template <class T, std::size_t n>
    T of(const T (&values)[n]) {
        return values[in(0, static_cast<int>(n) - 1)];
    }

    naive::Box box(int origin, int extent) {
        return {in(-origin, origin), in(-origin, origin), in(-1, 1),
                in(1, extent),       in(1, extent),       in(1, 3)};
    }

    double real() {
        static const double special[] = {0.0,
                                         -0.0,
                                         0.9,
                                         -0.9,
                                         -2.7,
                                         255.9,
                                         70000.5,
                                         2147483647.5,
                                         2147483648.0,
                                         -2147483648.0,
                                         3e9,
                                         4294967296.0,
                                         9.3e18,
                                         -9223372036854775808.0,
                                         1e-50,
                                         1e40,
                                         -1e300,
                                         std::numeric_limits<double>::infinity(),
                                         std::numeric_limits<double>::quiet_NaN()};
        return once(3) ? of(special) : in(-4000000, 4000000) / 7.0;
    }

    void fill(std::vector<unsigned char>& bytes, zelDataType type) {
        // Whole numbers that fit an int are the common case, so some areas hold nothing else.
        const bool ordinary = once(2);
        const std::size_t size = zelDataSize(type, 1);
        for (std::size_t i = 0; i + size <= bytes.size(); i += size) {
            const double value = ordinary ? in(-300, 300) / 2.0 : real();
            const float single = static_cast<float>(value);
            if (type == zelDouble)
                std::memcpy(&bytes[i], &value, size);
            else if (type == zelFloat)
                std::memcpy(&bytes[i], &single, size);
            else
                for (std::size_t b = 0; b < size; ++b)
                    bytes[i + b] = static_cast<unsigned char>(in(0, 255));
        }
    }

private:
    std::mt19937 engine;
};

/// An area with its own memory and a guard around it.
struct Block {
    naive::Area area;
    std::vector<unsigned char> bytes;

    void allocate(Random& random) {
        const int count = area.box.nx * area.box.ny * area.box.nz * area.channels;
        bytes.resize(zelDataSize(area.type, count) + 2 * guard);
        random.fill(bytes, area.type);
        area.data = bytes.data() + guard;
    }

    static constexpr std::size_t guard = 16;
};

/// An area that its neighbour of the shared space may share in part, in full or not at all.
naive::Area randomArea(Random& random, const naive::Area* like) {
    naive::Area area;
    if (like != nullptr && random.once(2))
        area = *like;
    if (like == nullptr || random.once(2))
        area.type = random.of(types);
    if (like == nullptr || random.once(3))
        area.order = random.of(orders);
    if (like == nullptr || random.once(3))
        area.box = random.box(2, random.once(20) ? 700 : 12);
    // Long rows in both directions, and areas of several squares with uneven edges.
    if (area.box.nx > 12 && area.box.ny > 12 && random.once(2))
        area.box = {1, 1, 0, random.in(13, 90), random.in(13, 90), 1};
    else if (area.box.nx > 12)
        area.box.ny = random.in(1, 3);
    else if (area.box.ny > 12)
        area.box.nx = random.in(1, 3);
    if (like == nullptr || random.once(3)) {
        const bool manyChannels = random.once(6);
        area.channels = manyChannels ? random.of({8, 9, 16, 66}) : random.in(1, 7);
        if (area.channels > 16)
            area.box = {0, 0, 0, random.in(1, 20), random.in(1, 20), 1};
        area.firstChannel = random.in(-1, 2);
        area.list.clear();
        if (random.once(3)) {
            const bool inverse = random.once(3);
            for (int slot = 0; slot < area.channels; ++slot)
                area.list.push_back(inverse ? area.channels - 1 - slot : random.in(-1, 6));
        }
    }
    if (like == nullptr || random.once(3)) {
        area.flipX = random.once(3);
        area.flipY = random.once(3);
        area.transposeXY = random.once(4);
    }
    area.clipped = random.once(5);
    area.clip = random.box(4, 12);
    area.mask = random.once(4) ? random.box(4, 8) : naive::Box();
    if (random.once(8))
        area.mask.nz = 0;
    return area;
}

void describe(zelConverter& out, const naive::Area& area) {
    const naive::Box& b = area.box;
    const zelTile3D<int> mask(area.mask.x, area.mask.y, area.mask.z, area.mask.nx, area.mask.ny,
                              area.mask.nz);
    const int* list = area.list.empty() ? nullptr : area.list.data();
    out.init(area.data, area.type, area.order, area.channels, list, b.nx, b.ny, b.nz, b.x, b.y, b.z,
             area.firstChannel);
    out.setTransposeXY(area.transposeXY ? 1 : 0);
    out.setFlip(static_cast<zelFlip>((area.flipX ? zelXFlip : 0) | (area.flipY ? zelYFlip : 0)));
    if (area.clipped)
        out.setClip(area.clip.x, area.clip.y, area.clip.z, area.clip.nx, area.clip.ny,
                    area.clip.nz);
    out.setMask(&mask);
}

std::string text(const naive::Area& a) {
    std::string list;
    for (int channel : a.list)
        list += std::to_string(channel) + " ";
    const auto box = [](const naive::Box& b) {
        std::string s;
        for (int v : {b.x, b.y, b.z, b.nx, b.ny, b.nz})
            s += std::to_string(v) + " ";
        return s;
    };
    return "type " + std::to_string(a.type) + " order " + std::to_string(a.order) + " box " +
           box(a.box) + "channels " + std::to_string(a.channels) + " from " +
           std::to_string(a.firstChannel) + " list " + list + "flips " + std::to_string(a.flipX) +
           std::to_string(a.flipY) + std::to_string(a.transposeXY) +
           (a.clipped ? " clip " + box(a.clip) : std::string()) + " mask " + box(a.mask);
}

/// Converts with the engine and naively, starting from the same memory; gives whether anything was
/// written.
bool expectAgreement(Block& to, const naive::Area& source, zelConverter& from) {
    const std::vector<unsigned char> before = to.bytes;
    zelConverter destination;
    describe(destination, to.area);
    destination = from;
    const std::vector<unsigned char> result = to.bytes;

    to.bytes = before;
    naive::convert(to.area, source);
    EXPECT_EQ(result, to.bytes) << "destination: " << text(to.area) << "\nsource: " << text(source);
    return result != before;
}

TEST(NaiveConversion, BlocksAgree) {
    Random random(20240611);
    int written = 0;
    for (int round = 0; round < 20000 && !HasFailure(); ++round) {
        Block from;
        Block to;
        from.area = randomArea(random, nullptr);
        to.area = randomArea(random, &from.area);
        from.allocate(random);
        to.allocate(random);
        const std::vector<unsigned char> source = from.bytes;
        zelConverter description;
        describe(description, from.area);
        written += expectAgreement(to, from.area, description) ? 1 : 0;
        EXPECT_EQ(source, from.bytes);
    }
    EXPECT_GT(written, 5000); // the areas do meet
}

TEST(NaiveConversion, ConstantPixelsAgree) {
    Random random(77);
    int written = 0;
    for (int round = 0; round < 5000 && !HasFailure(); ++round) {
        Block from;
        Block to;
        from.area = randomArea(random, nullptr);
        to.area = randomArea(random, &from.area);
        from.area.fill = true;
        from.area.clipped = false;
        from.area.box = {0, 0, 0, 1, 1, 1};
        // A list has to be as long as that of the destination.
        from.area.list.clear();
        from.allocate(random);
        to.allocate(random);
        const zelPixel pixel(from.area.type, from.area.channels, from.area.data);
        const naive::Box& m = from.area.mask;
        const zelTile3D<int> mask(m.x, m.y, m.z, m.nx, m.ny, m.nz);
        zelConverter description(pixel, &mask, nullptr, from.area.firstChannel);
        written += expectAgreement(to, from.area, description) ? 1 : 0;
    }
    EXPECT_GT(written, 1500);
}

} // namespace
