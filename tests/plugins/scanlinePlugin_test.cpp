// What the formats share whose codecs go through the rows once: the order of writing, tags,
// profile, memory. Each has its other tests in <format>Plugin_test.cpp.

#include "plugins/fileScene.h"
#include "support/childProcess.h"

#include <zel/zelFormat.h>
#include <zel/zelTag.h>

#include <algorithm>
#include <csignal>
#include <ostream>
#include <sys/resource.h>

namespace zel::test {

namespace {

struct Scanline {
    std::string format;
    std::string name;
    bool exact;
};

void PrintTo(const Scanline& scanline, std::ostream* out) {
    *out << scanline.format;
}

// A profile that passes for sound: a header, no tags, and bytes that do not compress. It is longer
// than one marker of a JPEG.
std::string soundProfile() {
    std::string profile(132, '\0');
    unsigned state = 1;
    while (profile.size() < 0x11384) {
        state = state * 1103515245 + 12345;
        profile += static_cast<char>(state >> 16);
    }
    const auto put = [&](std::size_t at, const std::string& text) {
        profile.replace(at, text.size(), text);
    };
    put(0, std::string("\0\x01\x13\x84", 4));
    put(8, "\x02\x40");
    put(12, "mntrRGB XYZ ");
    put(36, "acsp");
    put(68, std::string("\0\0\xf6\xd6\0\1\0\0\0\0\xd3\x2d", 12));
    return profile;
}

class ScanlinePlugin : public FileScene, public testing::WithParamInterface<Scanline> {
protected:
    zelFile* createNew(int width, int height, int pageHeight, const std::string& arguments = "") {
        const zelSize size(width, height, 1, 3), page(width, pageHeight, 1, 3);
        return create(GetParam().name + arguments,
                      zelFileConfig(&size, zelUChar, zelInterleaved, zelRGB, zelUpperLeftOrigin,
                                    zelCompression(0), &page));
    }

    // A box of one value.
    static zelStatus fill(zelFile* file, int x, int y, int nx, int ny, int value) {
        Pixels box(zelUChar, nx, ny, 3);
        std::fill(box.bytes.begin(), box.bytes.end(), static_cast<std::uint8_t>(value));
        return writePixels(file, box, x, y);
    }
};

TEST_P(ScanlinePlugin, WritesPagesOnceInRisingOrder) {
    const ChildResult result = runInChild([this]() -> std::string {
        zelFile* const file = createNew(32, 64, 16);
        std::string answers;
        const auto note = [&](zelStatus status) {
            answers += std::to_string(zelStatusMain(status)) + " ";
        };
        note(fill(file, 0, 16, 8, 8, 50)); // a part of the second page
        note(fill(file, 8, 24, 24, 8, 100));
        Pixels box(zelUChar, 8, 8, 3);
        note(readPixels(file, box, 0, 16));
        answers += std::to_string(box.bytes.front()) + " ";
        note(readPixels(file, box, 0, 40)); // not yet written
        answers += std::to_string(box.bytes.front()) + " ";
        note(readPixels(file, box, 0, 0)); // passed over
        note(fill(file, 0, 0, 32, 16, 1));
        note(fill(file, 0, 48, 32, 8, 200));
        note(file->setICCProfile(132, box.bytes.data()));
        note(fill(file, 0, 16, 32, 16, 1));
        note(file->close(0));
        return answers;
    });
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.text, "0 0 0 50 0 0 23 5 0 5 5 0 ");
    EXPECT_EQ(result.reports.size(), 3u);

    const Pixels read = FileScene::read(GetParam().name);
    const double tolerance = GetParam().exact ? 0 : 12;
    const auto at = [&](int x, int y) { return read.at(x, y, 1); };
    EXPECT_EQ(at(2, 2), 0);
    EXPECT_NEAR(at(2, 18), 50, tolerance);
    EXPECT_NEAR(at(30, 29), 100, tolerance);
    EXPECT_EQ(at(2, 40), 0);
    EXPECT_NEAR(at(20, 50), 200, tolerance);
    EXPECT_EQ(at(20, 63), 0);
}

TEST_P(ScanlinePlugin, LeavesExistingFilesAsTheyAre) {
    zelFile* file = createNew(8, 8, 8);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->close(0), zelOKAY);
    const std::string before = content(GetParam().name);
    EXPECT_GT(before.size(), 20u) << "an image never written to is one of zeros";
    const ChildResult result = runInChild([this]() -> std::string {
        zelFile* const again = open(GetParam().name, 2);
        const zelStatus status = fill(again, 0, 0, 8, 8, 9);
        return std::to_string(status) + " " + std::to_string(again->close(0));
    });
    EXPECT_EQ(result.text, "5 0");
    EXPECT_EQ(result.reports.size(), 1u);
    EXPECT_EQ(content(GetParam().name), before);
}

TEST_P(ScanlinePlugin, KeepsAFailureToWrite) {
    const ChildResult result = runInChild([this]() -> std::string {
        std::signal(SIGXFSZ, SIG_IGN);
        const auto limitFiles = [](rlim_t bytes) {
            const rlimit limit = {bytes, RLIM_INFINITY};
            setrlimit(RLIMIT_FSIZE, &limit);
        };
        zelFile* const file = createNew(800, 4096, 64, GetParam().exact ? "%level=0" : "");
        const Pixels noise = Pixels::pattern(zelUChar, 800, 64, 3, 1);
        limitFiles(100'000);
        zelStatus status = zelOKAY;
        int y = 0;
        for (; y < 4096 && status == zelOKAY; y += 64)
            status = writePixels(file, noise, 0, y);
        // There is room again, but the rows that failed are lost.
        limitFiles(RLIM_INFINITY);
        return std::to_string(zelStatusMain(status)) + (y < 4096 ? " early " : " late ") +
               std::to_string(zelStatusMain(file->close(0)));
    });
    const std::string failed = std::to_string(zelWRITEFAILED);
    EXPECT_EQ(result.text, failed + " early " + failed);
    EXPECT_EQ(result.reports.size(), 1u);
}

// A text for each tag that its type and names take.
std::string sampleText(const zelTagDescription& description) {
    switch (description.flags & 0xF0) {
    case zelTagString:
        return description.tag % 2 ? "one, two" : "1987:06:05 04:03:02";
    case zelTagShortEnum:
    case zelTagIntEnum:
        return static_cast<zelEnumSpec*>(description.spec)[2].name;
    case zelTagShort:
    case zelTagInt:
        return "400";
    default:
        return "0.25";
    }
}

TEST_P(ScanlinePlugin, CarriesTagsAndProfile) {
    zelFile* file = createNew(9, 7, 7);
    ASSERT_NE(file, nullptr);
    int count = 0;
    zelTagDescription* const table = file->getFormat()->getTagDescriptions(count);
    ASSERT_GT(count, 10);
    for (int i = 0; i < count; i++) {
        zelTag tag(&table[i]);
        EXPECT_EQ(tag.decode(sampleText(table[i]).c_str()), zelOKAY);
        EXPECT_EQ(tag.write(file), zelOKAY) << table[i].name;
    }
    const std::string profile = soundProfile();
    EXPECT_EQ(file->setICCProfile(static_cast<int>(profile.size()), profile.data()), zelOKAY);
    EXPECT_EQ(fill(file, 0, 0, 9, 7, 1), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);

    file = open(GetParam().name);
    ASSERT_NE(file, nullptr);
    for (int i = 0; i < count; i++) {
        zelTag tag(&table[i]);
        EXPECT_EQ(tag.read(file), zelOKAY) << table[i].name;
        char text[100] = "";
        tag.encode(text);
        EXPECT_EQ(text, sampleText(table[i])) << table[i].name;
    }
    void* stored = nullptr;
    int bytes = 0;
    ASSERT_EQ(file->getICCProfile(bytes, stored), zelOKAY);
    EXPECT_EQ(std::string(static_cast<char*>(stored), static_cast<std::size_t>(bytes)), profile);
    EXPECT_EQ(file->freeICCProfile(stored), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);
    // Another program finds them too.
    run("convert-im6.q16 " + GetParam().name + " other.icc");
    EXPECT_EQ(content("other.icc"), profile);
    const std::string seen = output("identify-im6.q16 -verbose " + GetParam().name);
    for (const char* const text : {"one, two", "1987:06:05 04:03:02", "0.25"})
        EXPECT_NE(seen.find(text), std::string::npos) << text << " is not in\n" << seen;
}

// Moves an image of 180 MB in bands.
std::string moveLargeImage(zelFile* file, bool write) {
    zelSize page;
    zelSize size;
    file->getPageSize(page, zelUpperLeftOrigin);
    file->getSize(size, zelUpperLeftOrigin);
    for (int y = 0; y < size.y; y += page.y) {
        Pixels band(zelUChar, size.x, std::min(page.y, size.y - y), 3);
        std::fill(band.bytes.begin(), band.bytes.end(), static_cast<std::uint8_t>(y / page.y));
        const zelStatus status =
            write ? writePixels(file, band, 0, y) : readPixels(file, band, 0, y);
        if (status != zelOKAY)
            return "failed at row " + std::to_string(y);
        if (!write && std::abs(band.at(5, 0, 1) - y / page.y % 256) > 3)
            return "wrong at row " + std::to_string(y);
    }
    return file->close(0) == zelOKAY ? "done" : "not closed";
}

TEST_P(ScanlinePlugin, NeedsLittleMemoryForLargeImages) {
#if defined(ZEL_SANITIZED)
    GTEST_SKIP() << "the sanitizer takes memory of its own";
#endif
    for (const bool write : {true, false}) {
        const ChildResult result = runInChild([&, this]() -> std::string {
            zelFile* const file = write ? createNew(10000, 6000, 8) : open(GetParam().name);
            limitMemory(8u << 20);
            return moveLargeImage(file, write);
        });
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.text, "done") << (write ? "writing" : "reading");
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, ScanlinePlugin,
                         testing::Values(Scanline{"PNG", "image.png", true},
                                         Scanline{"JPEG", "image.jpg", false}));

} // namespace

} // namespace zel::test
