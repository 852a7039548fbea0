#include "plugins/pluginSuite.h"

#include "plugins/pixels.h"
#include "support/childProcess.h"
#include "support/tempDir.h"

#include <zel/zelFileConfig.h>
#include <zel/zelFormat.h>
#include <zel/zelTypeNames.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <random>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

namespace zel::test {

std::vector<Combo> makeCombos(const Combo& kind, const std::vector<zelDataType>& types,
                              const std::vector<zelOrder>& orders,
                              const std::vector<zelOrientation>& orientations) {
    std::vector<Combo> combos;
    for (const zelDataType type : types)
        for (const zelOrder order : orders)
            for (const zelOrientation orientation : orientations) {
                combos.push_back(kind);
                combos.back().type = type;
                combos.back().order = order;
                combos.back().orientation = orientation;
            }
    return combos;
}

namespace {

struct Size {
    int width;
    int height;
};

std::string describe(const Combo& combo) {
    return combo.suffix + combo.arguments + ", " + zelDataTypeName(combo.type) + ", " +
           zelColorModelName(combo.colorModel) + ", " + zelOrderName(combo.order) + ", " +
           zelOrientationName(combo.orientation) + ", " + zelCompressionName(combo.compression);
}

// A page size smaller than the image that the format takes: bands, tiles, or its own choice.
zelSize smallPages(zelFormat* format, const Combo& combo, Size size) {
    const int c = combo.order == zelSeparate ? 1 : combo.channels;
    for (const zelSize& page : {zelSize(size.width, 5, 1, c), zelSize(16, 16, 1, c)})
        if (format->pageSizeIsSupported(size.width, size.height, 1, combo.channels, page.x, page.y,
                                        1, c, combo.orientation))
            return page;
    return zelSize(0, 0, 0, 0);
}

zelFileConfig configOf(const Combo& combo, Size size, const zelSize* page) {
    const zelSize dimensions(size.width, size.height, 1, combo.channels);
    return zelFileConfig(&dimensions, combo.type, combo.order, combo.colorModel, combo.orientation,
                         combo.compression, page);
}

// What is written in the tests: a picture that tells each place from the others, or a smooth one.
Pixels pictureOf(const Combo& combo, int width, int height, unsigned seed) {
    if (combo.tolerance == 0) {
        Pixels pixels = Pixels::pattern(combo.type, width, height, combo.channels, seed);
        if (combo.adapt)
            combo.adapt(pixels);
        return pixels;
    }
    Pixels smooth(combo.type, width, height, combo.channels);
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++)
            for (int c = 0; c < combo.channels; c++)
                smooth.set(x, y, c, 30 + 110 * x / width + 70 * y / height + 8 * c + int(seed));
    return smooth;
}

bool isSame(const Pixels& read, const Pixels& written, const Combo& combo) {
    if (combo.tolerance == 0 || read.bytes.size() != written.bytes.size())
        return read == written;
    for (int y = 0; y < read.height; y++)
        for (int x = 0; x < read.width; x++)
            for (int c = 0; c < read.channels; c++)
                if (std::fabs(read.at(x, y, c) - written.at(x, y, c)) > combo.tolerance)
                    return false;
    return true;
}

class Scene {
public:
    Scene(const PluginTraits& traits, const Combo& combo)
        : combo_(combo), format_(zelFormat::findByFormatName(traits.format.c_str(), 1)),
          path_(dir_.path() / ("image" + combo.suffix)) {}

    const std::string& path() const { return path_; }
    zelFormat* format() const { return format_; }

    zelFile* create(Size size, bool smallPagesWanted = true) const {
        const zelSize page = smallPages(format_, combo_, size);
        const zelFileConfig config = configOf(combo_, size, smallPagesWanted ? &page : nullptr);
        zelStatus status = zelOKAY;
        zelFile* const file =
            zelFile::create((path_ + combo_.arguments).c_str(), nullptr, &config, format_, &status);
        EXPECT_NE(file, nullptr) << zelMainStatusToString(zelStatusMain(status));
        return file;
    }

    zelFile* open(int mode = 0, const std::string& piece = "") const {
        zelStatus status = zelOKAY;
        zelFile* const file = zelFile::open((path_ + piece).c_str(), mode, &status);
        EXPECT_NE(file, nullptr) << zelMainStatusToString(zelStatusMain(status));
        return file;
    }

private:
    TempDir dir_;
    const Combo& combo_;
    zelFormat* format_;
    std::string path_;
};

// The steps of a test end at the first failure.
#define ZEL_OR_RETURN(condition)                                                                   \
    if (!(condition)) {                                                                            \
        ADD_FAILURE() << #condition;                                                               \
        return;                                                                                    \
    }

void expectAttributes(const zelFile* file, const Combo& combo, Size size) {
    zelSize dimensions;
    file->getDimensions(dimensions);
    EXPECT_EQ(dimensions.x, size.width);
    EXPECT_EQ(dimensions.y, size.height);
    EXPECT_EQ(dimensions.z, 1);
    EXPECT_EQ(dimensions.c, combo.channels);
    EXPECT_EQ(file->getDataType(), combo.type);
    EXPECT_EQ(file->getColorModel(), combo.colorModel);
    EXPECT_EQ(file->getCompression(),
              combo.statedCompression ? combo.statedCompression : combo.compression);
    EXPECT_EQ(file->getOrientation(),
              combo.statedOrientation ? combo.statedOrientation : combo.orientation);
    if (combo.channels > 1) {
        EXPECT_EQ(file->getOrder(), combo.order);
    }
}

// An image of a given width with more than two pages of 256 KiB.
Size severalPages(const Combo& combo) {
    const int width = 311;
    const std::int64_t rowBits = std::int64_t{width} * combo.channels *
                                 (combo.type == zelBit ? 1 : 8 * zelDataSize(combo.type, 1));
    return {width, static_cast<int>(600 * 1024 * 8 / rowBits) + 1};
}

void roundTrip(const PluginTraits& traits, const Combo& combo, Size size) {
    const Scene scene(traits, combo);
    const Pixels written = pictureOf(combo, size.width, size.height, 7);
    zelFile* file = scene.create(size, size.height < 100);
    ZEL_OR_RETURN(file);
    EXPECT_EQ(writePixels(file, written), zelOKAY);
    if (traits.randomAccessWrite) {
        EXPECT_TRUE(isSame(readPixels(file), written, combo)) << "before it is closed";
    }
    EXPECT_EQ(file->close(0), zelOKAY);
    file = scene.open();
    ZEL_OR_RETURN(file);
    expectAttributes(file, combo, size);
    EXPECT_TRUE(isSame(readPixels(file), written, combo));
    EXPECT_EQ(file->close(0), zelOKAY);
}

} // namespace

TEST_P(PluginSuite, CarriesEveryKindOfImageUnchanged) {
    ASSERT_FALSE(GetParam().combos.empty());
    for (const Combo& combo : GetParam().combos) {
        std::vector<Size> sizes = {{1, 1}, {7, 5}, {17, 23}};
        // The large ones once for each kind: they take their time.
        if (combo.orientation == zelUpperLeftOrigin || combo.orientation == combo.statedOrientation)
            sizes.push_back(severalPages(combo));
        for (const Size size : sizes) {
            SCOPED_TRACE(describe(combo) + ", " + std::to_string(size.width) + " x " +
                         std::to_string(size.height));
            roundTrip(GetParam(), combo, size);
        }
    }
}

namespace {

// Boxes that cover the image page by page, in the file's own frame and a random order.
std::vector<zelTile2D<int>> shuffledPages(const zelFile* file, std::mt19937& random) {
    zelSize size;
    zelSize page;
    file->getSize(size, file->getOrientation());
    file->getPageSize(page, file->getOrientation());
    std::vector<zelTile2D<int>> pages;
    for (int y = 0; y < size.y; y += page.y)
        for (int x = 0; x < size.x; x += page.x)
            pages.emplace_back(x, y, std::min(page.x, size.x - x), std::min(page.y, size.y - y));
    std::shuffle(pages.begin(), pages.end(), random);
    return pages;
}

// Moves every page to or from its place in `whole`, which is seen from the upper left.
void movePages(zelFile* file, Pixels& whole, bool write, std::mt19937& random) {
    zelSize size;
    file->getSize(size, zelUpperLeftOrigin);
    for (zelTile2D<int> page : shuffledPages(file, random)) {
        zelMapTile(file->getOrientation(), page, zelUpperLeftOrigin, size);
        Pixels part = whole.cut(page.x, page.y, page.nx, page.ny);
        EXPECT_EQ(write ? writePixels(file, part, page.x, page.y)
                        : readPixels(file, part, page.x, page.y),
                  zelOKAY);
        if (!write)
            whole.paste(part, page.x, page.y);
    }
}

void moveInRandomOrder(const PluginTraits& traits, const Combo& combo, std::mt19937& random) {
    const Scene scene(traits, combo);
    const Size size = {37, 41};
    Pixels written = pictureOf(combo, size.width, size.height, 3);
    zelFile* file = scene.create(size);
    ZEL_OR_RETURN(file);
    if (traits.randomAccessWrite)
        movePages(file, written, true, random);
    else
        EXPECT_EQ(writePixels(file, written), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);
    file = scene.open();
    ZEL_OR_RETURN(file);
    Pixels read(combo.type, size.width, size.height, combo.channels);
    movePages(file, read, false, random);
    EXPECT_TRUE(isSame(read, written, combo));
    EXPECT_EQ(file->close(0), zelOKAY);
}

void writeParts(const PluginTraits& traits, const Combo& combo, std::mt19937& random) {
    const Scene scene(traits, combo);
    const Size size = {29, 34};
    Pixels expected(combo.type, size.width, size.height, combo.channels);
    zelFile* file = scene.create(size);
    ZEL_OR_RETURN(file);
    for (unsigned i = 0; i < 12; i++) {
        const int x = static_cast<int>(random() % 20), y = static_cast<int>(random() % 20);
        const Pixels part = Pixels::pattern(combo.type, 1 + static_cast<int>(random() % 9),
                                            1 + static_cast<int>(random() % 14), combo.channels, i);
        EXPECT_EQ(writePixels(file, part, x, y), zelOKAY);
        expected.paste(part, x, y);
    }
    EXPECT_EQ(file->close(0), zelOKAY);
    file = scene.open();
    ZEL_OR_RETURN(file);
    EXPECT_TRUE(readPixels(file) == expected) << "what was never written is 0";
    EXPECT_EQ(file->close(0), zelOKAY);
}

} // namespace

TEST_P(PluginSuite, MovesPagesInAnyOrder) {
    std::mt19937 random(11);
    for (const Combo& combo : GetParam().combos) {
        SCOPED_TRACE(describe(combo));
        moveInRandomOrder(GetParam(), combo, random);
    }
}

TEST_P(PluginSuite, WritesPartsOfPages) {
    if (!GetParam().randomAccessWrite)
        GTEST_SKIP() << "the format writes whole pages in their order";
    std::mt19937 random(5);
    for (const Combo& combo : GetParam().combos) {
        SCOPED_TRACE(describe(combo));
        writeParts(GetParam(), combo, random);
    }
}

TEST_P(PluginSuite, AnswersWritesToReadOnlyFiles) {
    for (const Combo& combo : GetParam().combos) {
        SCOPED_TRACE(describe(combo));
        const Scene scene(GetParam(), combo);
        const Size size = {6, 3};
        zelFile* file = scene.create(size);
        ASSERT_NE(file, nullptr);
        const Pixels pixels = pictureOf(combo, 6, 3, 1);
        EXPECT_EQ(writePixels(file, pixels), zelOKAY);
        EXPECT_EQ(file->close(0), zelOKAY);
        file = scene.open();
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(writePixels(file, Pixels(combo.type, 6, 3, combo.channels)), zelREADONLY);
        EXPECT_TRUE(isSame(readPixels(file), pixels, combo));
        EXPECT_EQ(file->close(0), zelOKAY);
    }
}

namespace {

void carrySeveralImages(const PluginTraits& traits, const Combo& combo) {
    const Scene scene(traits, combo);
    const std::array<Size, 3> sizes = {{{9, 4}, {3, 11}, {20, 20}}};
    std::vector<Pixels> images;
    zelFile* file = scene.create(sizes[0]);
    ZEL_OR_RETURN(file);
    for (unsigned i = 0; i < sizes.size(); i++) {
        zelFileConfig config = configOf(combo, sizes[i], nullptr);
        if (i > 0) {
            EXPECT_EQ(file->appendImg(nullptr, &config), zelOKAY);
        }
        EXPECT_EQ(file->getCurrentImg(), static_cast<int>(i));
        images.push_back(
            Pixels::pattern(combo.type, sizes[i].width, sizes[i].height, combo.channels, i));
        EXPECT_EQ(writePixels(file, images.back()), zelOKAY);
    }
    EXPECT_EQ(file->close(0), zelOKAY);

    file = scene.open();
    ZEL_OR_RETURN(file);
    EXPECT_EQ(file->getNumImgs(), 3);
    for (const int i : {2, 0, 1}) {
        EXPECT_EQ(file->setCurrentImg(i), zelOKAY);
        EXPECT_TRUE(file->haveAttributesChanged());
        expectAttributes(file, combo, sizes[static_cast<std::size_t>(i)]);
        EXPECT_TRUE(readPixels(file) == images[static_cast<std::size_t>(i)]) << "image " << i;
    }
    EXPECT_EQ(file->setCurrentImg(3), zelFILEINDEXOOB);
    EXPECT_EQ(file->setCurrentImg(-1), zelFILEINDEXOOB);
    EXPECT_EQ(file->getCurrentImg(), 1);
    zelFileConfig config = configOf(combo, sizes[0], nullptr);
    EXPECT_EQ(file->appendImg(nullptr, &config), zelREADONLY);
    EXPECT_EQ(file->close(0), zelOKAY);
    file = scene.open(0, ":2");
    ZEL_OR_RETURN(file);
    EXPECT_TRUE(readPixels(file) == images[2]);
    EXPECT_EQ(file->close(0), zelOKAY);
}

} // namespace

TEST_P(PluginSuite, CarriesSeveralImages) {
    for (const Combo& combo : GetParam().combos) {
        if (!combo.severalImages)
            continue;
        SCOPED_TRACE(describe(combo));
        carrySeveralImages(GetParam(), combo);
    }
}

namespace {

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::string smallFile(const Scene& scene, const Combo& combo) {
    zelFile* const file = scene.create({5, 4});
    if (!file)
        return "";
    EXPECT_EQ(writePixels(file, Pixels::pattern(combo.type, 5, 4, combo.channels, 9)), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);
    return readFile(scene.path());
}

// Opens and reads all images. Returns whether all went well; an image of any size is well, but only
// a small one is read.
bool readAll(int fd, zelFormat* format) {
    zelFile* const file = zelFile::open(fd, nullptr, 0, format);
    if (!file)
        return false;
    bool good = true;
    const int images = std::min(file->getNumImgs(), 4);
    for (int i = 0; i < images; i++) {
        good = file->setCurrentImg(i) == zelOKAY && good;
        zelSize size;
        file->getSize(size, zelUpperLeftOrigin);
        const double elements = double{1} * size.x * size.y * size.c;
        if (elements > 1e6)
            continue;
        Pixels pixels(file->getDataType(), size.x, size.y, size.c);
        good = readPixels(file, pixels) == zelOKAY && good;
    }
    return file->close(0) == zelOKAY && good;
}

// The child's limits: more memory than any small file justifies fails, and so does a hang.
void limitChild() {
    alarm(120);
#if !defined(__SANITIZE_ADDRESS__)
    std::ifstream statm("/proc/self/statm");
    rlim_t pages = 0;
    statm >> pages;
    const rlim_t bytes = pages * static_cast<rlim_t>(getpagesize()) + (64u << 20);
    const rlimit limit = {bytes, bytes};
    setrlimit(RLIMIT_AS, &limit);
#endif
}

// The damaged forms of a file: cut at every length, then every byte changed in several ways.
struct Damage {
    std::size_t length;
    std::size_t at;
    char byte;
    bool cut() const { return byte == 0 && at == length; }
};

std::vector<Damage> damagesOf(const std::string& whole) {
    std::vector<Damage> damages;
    for (std::size_t length = 0; length < whole.size(); length++)
        damages.push_back({length, length, 0});
    for (std::size_t at = 0; at < whole.size(); at++)
        for (const int change : {0x01, 0x10, 0x80, 0xff})
            damages.push_back({whole.size(), at, static_cast<char>(whole[at] ^ change)});
    return damages;
}

void survive(const PluginTraits& traits, const Combo& combo) {
    const Scene scene(traits, combo);
    const std::string whole = smallFile(scene, combo);
    ZEL_OR_RETURN(!whole.empty());
    const std::vector<Damage> damages = damagesOf(whole);
    // Shared with the child, so that a crash tells where it happened.
    auto* const step = static_cast<std::size_t*>(mmap(
        nullptr, sizeof(std::size_t), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    ZEL_OR_RETURN(step != MAP_FAILED);
    const ChildResult result = runInChild([&]() -> std::string {
        limitChild();
        for (; *step < damages.size(); ++*step) {
            const Damage& damage = damages[*step];
            std::string bytes = whole.substr(0, damage.length);
            if (!damage.cut())
                bytes[damage.at] = damage.byte;
            const int fd = memfd_create("damaged", 0);
            if (write(fd, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
                return "no memory file";
            const bool good = readAll(fd, scene.format());
            close(fd); // already closed if it could be opened as an image
            if (good && damage.cut() && combo.noticesTruncation)
                return "a file of " + std::to_string(damage.length) + " bytes passes as whole";
        }
        return "done";
    });
    const std::size_t last = std::min(*step, damages.size() - 1);
    EXPECT_EQ(result.status, 0) << "length " << damages[last].length << ", byte "
                                << damages[last].at << " set to " << int(damages[last].byte);
    EXPECT_EQ(result.text, "done");
    munmap(step, sizeof(std::size_t));
}

} // namespace

TEST_P(PluginSuite, SurvivesDamage) {
    for (const Combo& combo : GetParam().combos) {
        if (combo.orientation != zelUpperLeftOrigin && combo.orientation != combo.statedOrientation)
            continue;
        SCOPED_TRACE(describe(combo));
        survive(GetParam(), combo);
    }
}

TEST_P(PluginSuite, LeavesTheClientsDescriptorOpenOnFailure) {
    const Combo& combo = GetParam().combos.front();
    const Scene scene(GetParam(), combo);
    const std::string whole = smallFile(scene, combo);
    ASSERT_FALSE(whole.empty());
    std::ofstream(scene.path(), std::ios::binary) << whole.substr(0, whole.size() / 4);
    const int fd = open(scene.path().c_str(), O_RDONLY);
    ASSERT_GE(fd, 0);
    EXPECT_EQ(zelFile::open(fd, nullptr, 0, scene.format()), nullptr);
    EXPECT_EQ(fcntl(fd, F_GETFD), 0) << "the descriptor is closed";
    EXPECT_EQ(close(fd), 0);
}

} // namespace zel::test
