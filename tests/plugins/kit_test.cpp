// The parts of the kit by themselves, against values worked by hand or a naive second way.

#include "support/tempDir.h"

#include "kit/arguments.h"
#include "kit/bits.h"
#include "kit/byteReader.h"
#include "kit/byteWriter.h"
#include "kit/exif.h"
#include "kit/fields.h"
#include "kit/fileIo.h"
#include "kit/fixedRows.h"
#include "kit/jumpGuard.h"
#include "kit/packedPixels.h"
#include "kit/palette.h"
#include "kit/sizes.h"
#include "kit/tableFormat.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <random>
#include <unistd.h>

namespace zelkit {

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes noise(std::size_t count, unsigned seed) {
    std::mt19937 random(seed);
    Bytes bytes(count);
    std::ranges::generate(bytes, [&] { return static_cast<std::uint8_t>(random()); });
    return bytes;
}

/// A file that goes with the object.
class OpenBytes {
public:
    explicit OpenBytes(const Bytes& bytes)
        : fd(open(home_.write("file", {reinterpret_cast<const char*>(bytes.data()), bytes.size()})
                      .c_str(),
                  O_RDWR)) {}
    ~OpenBytes() { close(fd); }
    OpenBytes(const OpenBytes&) = delete;
    OpenBytes& operator=(const OpenBytes&) = delete;

private:
    zel::test::TempDir home_;

public:
    const int fd;
};

} // namespace

TEST(KitSizes, NoticeWhatPasses63Bits) {
    EXPECT_EQ(checkedProduct({3, 5, 7}), 105);
    EXPECT_EQ(checkedProduct({1LL << 31, (1LL << 32) - 1}), ((1LL << 32) - 1) << 31);
    EXPECT_EQ(checkedProduct({1LL << 32, 1LL << 31}), std::nullopt);
    EXPECT_EQ(checkedProduct({5, -1}), std::nullopt);
    EXPECT_EQ(bandRows(1024, 10000), 256);
    EXPECT_EQ(bandRows(1024, 100), 100);
    EXPECT_EQ(bandRows(1LL << 40, 100), 1);
    EXPECT_EQ(bandRows(0, 100), 100);
}

TEST(KitBits, MoveAsOneByOne) {
    std::mt19937 random(3);
    for (int round = 0; round < 500; round++) {
        const auto count = static_cast<std::int64_t>(random() % 70);
        const auto toBit = static_cast<std::int64_t>(random() % 19);
        const auto fromBit = static_cast<std::int64_t>(random() % 19);
        const std::uint8_t flip = random() % 2 ? 0xff : 0;
        // Exactly as many bytes as hold a bit, so that a sanitizer sees one too far.
        const Bytes from = noise(static_cast<std::size_t>((fromBit + count + 7) / 8),
                                 static_cast<unsigned>(random()));
        Bytes moved = noise(static_cast<std::size_t>((toBit + count + 7) / 8),
                            static_cast<unsigned>(random()));
        Bytes expected = moved;
        for (std::int64_t i = 0; i < count; i++)
            setBit(expected.data(), toBit + i, getBit(from.data(), fromBit + i) ^ (flip & 1));
        moveBits(moved.data(), toBit, from.data(), fromBit, count, flip);
        ASSERT_EQ(moved, expected) << count << " bits from " << fromBit << " to " << toBit;
    }
}

TEST(KitPackedPixels, SpreadEachChannelOverAByte) {
    EXPECT_TRUE(PackedPixels::isMask(0x7e0, 2));
    EXPECT_TRUE(PackedPixels::isMask(0, 2));
    EXPECT_FALSE(PackedPixels::isMask(0x5, 2)) << "two runs";
    EXPECT_FALSE(PackedPixels::isMask(0x1f000, 2)) << "beyond the pixel";

    const PackedPixels::Masks masks[] = {{0xf800, 0x7e0, 0x1f, 0},
                                         PackedPixels::argb1555,
                                         {0x3ff00000, 0xffc00, 0x3ff, 0},
                                         PackedPixels::argb8888,
                                         {0xff, 0, 0xff00, 0xff0000}};
    for (const PackedPixels::Masks& mask : masks) {
        const int pixelBytes = mask[0] > 0xffff || mask[3] > 0xffff ? 4 : 2;
        const PackedPixels packed(pixelBytes, mask);
        const Bytes stored = noise(static_cast<std::size_t>(40 * pixelBytes), 8);
        Bytes elements(static_cast<std::size_t>(40 * packed.channels()));
        packed.decode(stored.data(), elements.data(), 40);
        for (std::size_t i = 0; i < elements.size(); i++) {
            const auto channels = static_cast<std::size_t>(packed.channels());
            std::uint32_t pixel = 0;
            for (int b = pixelBytes - 1; b >= 0; b--)
                pixel = pixel << 8 | stored[i / channels * static_cast<std::size_t>(pixelBytes) +
                                            static_cast<std::size_t>(b)];
            const std::uint32_t part = mask[i % channels];
            const double share = part ? double(pixel & part) / part : 0;
            ASSERT_EQ(elements[i], std::lround(share * 255)) << "element " << i;
        }
    }
}

TEST(KitPalette, TakesColorsOfAnyTypeAsBytes) {
    zelColormap wide(3, zelUShort, 0, 299);
    for (int i = 0; i < 300; i++)
        for (int c = 0; c < 3; c++)
            wide.setVal(i * 200 + c, i, c);
    const auto palette = paletteOf(wide);
    ASSERT_NE(palette, nullptr);
    EXPECT_EQ(palette->getLength(), largestPalette);
    EXPECT_EQ(paletteByte(*palette, 255, 0), std::lround(255 * 200 / 257.));
    EXPECT_EQ(paletteByte(*palette, 256, 0), 0) << "there is no such entry";
    EXPECT_EQ(paletteByte(*palette, 7, 3), 255) << "opaque";
    const auto grey = greyPalette(4);
    for (int i = 0; i < 4; i++)
        EXPECT_EQ(paletteByte(*grey, i, 1), 85 * i);
    EXPECT_EQ(makePalette(Bytes(3 * 257), 3), nullptr);
    EXPECT_EQ(makePalette({}, 3), nullptr);
    EXPECT_EQ(paletteOf(zelColormap(2, zelUChar, 0, 3)), nullptr);
}

TEST(KitFileIo, ReadsWhatIsThere) {
    const Bytes content = noise(9000, 4);
    const OpenBytes file(content);
    lseek(file.fd, 77, SEEK_SET);
    Bytes read(1000);
    EXPECT_EQ(readExact(file.fd, read.data(), read.size(), 8000), zelOKAY);
    EXPECT_TRUE(std::equal(read.begin(), read.end(), content.begin() + 8000));
    EXPECT_EQ(readExact(file.fd, read.data(), read.size(), 8001), zelPREMATUREEOF);
    std::size_t got = 0;
    EXPECT_EQ(readSome(file.fd, read.data(), read.size(), 8990, got), zelOKAY);
    EXPECT_EQ(got, 10u);
    EXPECT_EQ(zelStatusMain(readExact(-1, read.data(), 1, 0)), zelREADFAILED);
    EXPECT_EQ(lseek(file.fd, 0, SEEK_CUR), 77) << "the position stays";

    ByteReader reader(file.fd, 100);
    EXPECT_EQ(reader.peek(), content[100]);
    for (std::size_t at = 100; at < 5000; at++)
        ASSERT_EQ(reader.next(), content[at]) << at;
    Bytes rest(4000);
    EXPECT_EQ(reader.read(rest.data(), rest.size()), zelOKAY);
    EXPECT_TRUE(std::equal(rest.begin(), rest.end(), content.begin() + 5000));
    EXPECT_EQ(reader.position(), 9000);
    EXPECT_EQ(reader.next(), -1);
    EXPECT_EQ(reader.endStatus(), zelPREMATUREEOF);
}

TEST(KitByteWriter, WritesWhatIsPendingBehindTheRest) {
    const OpenBytes file(Bytes(3, 9));
    ByteWriter writer;
    writer.begin(file.fd, 3);
    writer.pending = {1, 2};
    EXPECT_EQ(writer.position(), 5);
    EXPECT_EQ(writer.flush(), zelOKAY);
    writer.pending = {3};
    EXPECT_EQ(writer.flush(), zelOKAY);
    EXPECT_EQ(writer.position(), 6);
    Bytes read(6);
    EXPECT_EQ(readExact(file.fd, read.data(), read.size(), 0), zelOKAY);
    EXPECT_EQ(read, (Bytes{9, 9, 9, 1, 2, 3}));
    writer.begin(-1, 0);
    writer.pending = {4};
    EXPECT_EQ(zelStatusMain(writer.flush()), zelWRITEFAILED);
}

namespace {

std::string warnings;

void keepWarning(void*, int, const char* format, va_list arguments) {
    char text[300];
    std::vsnprintf(text, sizeof text, format, arguments);
    warnings += std::string(text) + "\n";
}

zelStatus set(Fields& fields, std::span<const zelTagDescription> known, int tag, ...) {
    va_list arguments;
    va_start(arguments, tag);
    const zelStatus status = setField(fields, known, tag, arguments);
    va_end(arguments);
    return status;
}

zelStatus get(const Fields& fields, std::span<const zelTagDescription> known, int tag, ...) {
    va_list arguments;
    va_start(arguments, tag);
    const zelStatus status = getField(fields, known, tag, arguments);
    va_end(arguments);
    return status;
}

} // namespace

TEST(KitArguments, TakeWhatTheirTableSays) {
    zelSetErrorHandler(keepWarning, nullptr);
    bool flag = false;
    int level = 5, filter = 0;
    const zelNameDesc filters[] = {{"none", 1}, {"all", 9}, {nullptr, 0}};
    const Argument table[] = {
        {"flag", &flag}, {"level", &level, 0, 9}, {"filter", &filter, 0, 0, filters}};
    const auto give = [](std::string name, const char* value, const Argument* known) {
        std::string text = value ? value : "";
        warnings.clear();
        storeArgument("a.png", {name.data(), value ? text.data() : nullptr}, known);
        return warnings;
    };
    EXPECT_EQ(give("flag", nullptr, &table[0]), "");
    EXPECT_TRUE(flag);
    EXPECT_EQ(give("flag", "0", &table[0]), "");
    EXPECT_FALSE(flag);
    EXPECT_EQ(give("level", "9", &table[1]) + give("filter", "all", &table[2]), "");
    EXPECT_EQ(level, 9);
    EXPECT_EQ(filter, 9);
    for (const char* bad : {"10", "-1", "", "7x", "99999999999"})
        EXPECT_EQ(give("level", bad, &table[1]), std::string("a.png: format argument \"level\": ") +
                                                     "bad value " + bad +
                                                     ", expected 0 to 9; ignored\n");
    EXPECT_EQ(give("level", nullptr, &table[1]),
              "a.png: format argument \"level\": no value, expected 0 to 9; ignored\n");
    EXPECT_EQ(give("filter", "some", &table[2]),
              "a.png: format argument \"filter\": bad value some, expected none, all; ignored\n");
    EXPECT_EQ(give("depth", "8", nullptr), "a.png: unknown format argument \"depth\"; ignored\n");
    EXPECT_EQ(level, 9) << "what is ignored changes nothing";
    EXPECT_EQ(filter, 9);
    zelSetErrorHandler(nullptr, nullptr);
}

TEST(KitFields, GoThroughTheTypesOfTheirTags) {
    zelEnumSpec units[] = {{"none", 1}, {"inch", 2}, {nullptr, 0}};
    const zelTagDescription known[] = {{1, oneOf(zelTagString), "", "text", "", nullptr},
                                       {2, oneOf(zelTagShort), "", "short", "", nullptr},
                                       {3, oneOf(zelTagFloat), "", "float", "", nullptr},
                                       {4, oneOf(zelTagShortEnum), "", "unit", "", units}};
    Fields fields;
    char* text = nullptr;
    short number = 0;
    float real = 0;
    EXPECT_EQ(get(fields, known, 1, &text), zelBADFIELDGET);
    EXPECT_EQ(get(fields, known, 5, &text), zelUNSUPPORTEDBYFORMAT);
    EXPECT_EQ(set(fields, known, 5, 0), zelUNSUPPORTEDBYFORMAT);
    EXPECT_EQ(set(fields, known, 1, "hello"), zelOKAY);
    EXPECT_EQ(get(fields, known, 1, &text), zelOKAY);
    EXPECT_STREQ(text, "hello");
    EXPECT_EQ(set(fields, known, 1, static_cast<char*>(nullptr)), zelOKAY);
    EXPECT_EQ(fields.text(1), nullptr);
    EXPECT_EQ(set(fields, known, 2, 40000), zelBADFIELDSET);
    EXPECT_EQ(set(fields, known, 2, -30000), zelOKAY);
    EXPECT_EQ(get(fields, known, 2, &number), zelOKAY);
    EXPECT_EQ(number, -30000);
    EXPECT_EQ(set(fields, known, 3, 1e300), zelBADFIELDSET);
    EXPECT_EQ(set(fields, known, 3, std::nan("")), zelBADFIELDSET);
    EXPECT_EQ(set(fields, known, 3, 0.5), zelOKAY);
    EXPECT_EQ(get(fields, known, 3, &real), zelOKAY);
    EXPECT_EQ(real, 0.5f);
    EXPECT_EQ(set(fields, known, 4, 7), zelBADFIELDSET);
    EXPECT_EQ(set(fields, known, 4, 2), zelOKAY);
    // A number from a file that the type of the tag cannot hold.
    fields.set(2, 1e6);
    EXPECT_EQ(get(fields, known, 2, &number), zelBADFIELDGET);
}

TEST(KitFixedRows, MoveRowsInBands) {
    constexpr std::int64_t rowBytes = 100003; // two rows in a band
    const OpenBytes file(noise(7, 1));
    FixedRows rows;
    ASSERT_EQ(rows.begin(file.fd, 7, rowBytes, 5), zelOKAY);
    std::uint8_t number = 0;
    const auto fill = [&](std::uint8_t* row) { std::memset(row, ++number, rowBytes); };
    EXPECT_EQ(rows.write(3, fill), zelOKAY);
    EXPECT_EQ(rows.write(2, fill), zelOKAY);
    std::int64_t length = 0;
    EXPECT_EQ(getFileLength(file.fd, length), zelOKAY);
    EXPECT_EQ(length, 7 + 5 * rowBytes);

    ASSERT_EQ(rows.begin(file.fd, 7, rowBytes, 6), zelOKAY);
    rows.skip(1);
    std::vector<int> seen;
    const auto take = [&](const std::uint8_t* row) { seen.push_back(row[0] * 10 + row[100002]); };
    EXPECT_EQ(rows.read(4, take), zelOKAY);
    EXPECT_EQ(seen, (std::vector<int>{22, 33, 44, 55}));
    EXPECT_EQ(rows.read(1, take), zelPREMATUREEOF);
}

TEST(KitJumpGuard, TellsAJumpFromAReturn) {
    JumpGuard guard;
    int steps = 0;
    EXPECT_TRUE(guard.run([&] { steps++; }));
    EXPECT_FALSE(guard.run([&] {
        steps++;
        guard.jump();
    }));
    EXPECT_TRUE(guard.run([&] { steps++; })) << "it can be used again";
    EXPECT_EQ(steps, 3);
}

TEST(KitExif, ReadsBothByteOrders) {
    // One directory of the orientation, 6, and the resolution, 300 / 2, behind it.
    const Bytes little = {'I', 'I', 42, 0, 8, 0, 0,    0, 2, 0, 0x12, 1, 3, 0, 1,  0,
                          0,   0,   6,  0, 0, 0, 0x1a, 1, 5, 0, 1,    0, 0, 0, 38, 0,
                          0,   0,   0,  0, 0, 0, 44,   1, 0, 0, 2,    0, 0, 0};
    const Bytes big = {'M', 'M', 0, 42, 0, 0, 0, 8,    0, 2,  1, 0x12, 0, 3, 0, 0,
                       0,   1,   0, 6,  0, 0, 1, 0x1a, 0, 5,  0, 0,    0, 1, 0, 0,
                       0,   38,  0, 0,  0, 0, 0, 0,    1, 44, 0, 0,    0, 2};
    for (const Bytes& block : {little, big}) {
        Fields fields;
        readExif(block, fields);
        EXPECT_EQ(orientationOf(fields), zelRightUpperOrigin);
        EXPECT_EQ(fields.numberOr(exifXResolution, 0), 150);
        const Fields whole = fields;
        Fields again;
        readExif(writeExif(whole), again);
        EXPECT_EQ(again.all(), whole.all()) << "what is written reads as the same";
        for (std::size_t length = 0; length < block.size(); length++) {
            Fields cut;
            readExif(std::span(block).first(length), cut);
            EXPECT_LE(cut.all().size(), whole.all().size());
        }
    }
    EXPECT_TRUE(writeExif(Fields()).empty());
    Fields strange;
    strange.set(exifOrientation, 9.0);
    EXPECT_EQ(orientationOf(strange), zelUpperLeftOrigin);
}

TEST(KitTableFormat, MasksHoldEveryEnumerator) {
    static_assert(maskOf({zelUpperLeftOrigin, zelUpperRightOrigin, zelLowerRightOrigin,
                          zelLowerLeftOrigin, zelLeftUpperOrigin, zelRightUpperOrigin,
                          zelRightLowerOrigin, zelLeftLowerOrigin}) == allOrientations);
    static_assert(maskOf({zelUnknownCompression}) != 0);
    static_assert((maskOf({zelUnknownCompression}) & maskOf({zelNoCompression, zelZIP})) == 0);
}

} // namespace zelkit
