#include "plugins/pixels.h"
#include "support/tempDir.h"

#include <zel/zelFileConfig.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace zel::test {

namespace {

std::string card(std::string text) {
    text.resize(80, ' ');
    return text;
}

// A unit as the format's own text lays it out.
std::string unit(const std::vector<std::string>& cards, std::string data) {
    std::string header;
    for (const std::string& text : cards)
        header += card(text);
    header += card("END");
    header.resize((header.size() + 2879) / 2880 * 2880, ' ');
    data.resize((data.size() + 2879) / 2880 * 2880);
    return header + data;
}

class Fits : public testing::Test {
protected:
    zelFile* open(const std::string& name, int mode = 0) const {
        zelStatus status = zelOKAY;
        zelFile* const file = zelFile::open((dir_.path() / name).c_str(), mode, &status);
        EXPECT_NE(file, nullptr) << zelMainStatusToString(zelStatusMain(status));
        return file;
    }
    bool run(const std::string& command) const {
        return std::system(("cd " + dir_.path().string() + " && " + command).c_str()) == 0;
    }
    TempDir dir_;
};

TEST_F(Fits, AppliesScaleZeroAndBlank) {
    // 16-bit numbers -1, 2, 7 (no value) and 300, seen as 10 + 0.5 n.
    const std::string bytes("\xff\xff\x00\x02\x00\x07\x01\x2c", 8);
    dir_.write("a[1].fits",
               unit({"SIMPLE  =                    T", "BITPIX  =                   16",
                     "NAXIS   =                    3", "NAXIS1  =                    2",
                     "NAXIS2  =                    1", "NAXIS3  =                    2",
                     "BSCALE  =                  0.5", "BZERO   =                   10",
                     "BLANK   =                    7", "OBJECT  = 'M 31    '"},
                    bytes));
    zelFile* file = open("a[1].fits", 2);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->getDataType(), zelFloat);
    EXPECT_EQ(file->getZsize(), 2);
    float seen[4] = {};
    EXPECT_EQ(file->getTile(0, 0, 0, 2, 1, 2, seen, nullptr), zelOKAY);
    EXPECT_EQ(seen[0], 9.5f);
    EXPECT_EQ(seen[1], 11.f);
    EXPECT_TRUE(std::isnan(seen[2]));
    EXPECT_EQ(seen[3], 160.f);
    EXPECT_EQ(file->setTile(0, 0, 0, 2, 1, 2, seen, nullptr), zelUNSUPPORTEDBYFILE);
    char* object = nullptr;
    EXPECT_EQ(file->getTag(1, &object), zelOKAY);
    EXPECT_STREQ(object, "M 31");
    EXPECT_EQ(file->close(0), zelOKAY);

    file = open("a[1].fits%raw");
    ASSERT_NE(file, nullptr);
    short raw[4] = {};
    ASSERT_EQ(file->getDataType(), zelShort);
    EXPECT_EQ(file->getTile(0, 0, 0, 2, 1, 2, raw, nullptr), zelOKAY);
    EXPECT_EQ(raw[0], -1);
    EXPECT_EQ(raw[3], 300);
    EXPECT_EQ(file->close(0), zelOKAY);
}

TEST_F(Fits, KeepsImagesWhenAHeaderGrows) {
    const zelSize size(9, 7, 1, 1);
    const zelFileConfig config(&size, zelUShort);
    const Pixels first = Pixels::pattern(zelUShort, 9, 7, 1, 1);
    const Pixels second = Pixels::pattern(zelUShort, 9, 7, 1, 2);
    zelFile* file = zelFile::create((dir_.path() / "a.fits").c_str(), nullptr, &config, nullptr);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(writePixels(file, first), zelOKAY);
    zelFileConfig again = config;
    EXPECT_EQ(file->appendImg(nullptr, &again), zelOKAY);
    EXPECT_EQ(writePixels(file, second), zelOKAY);
    EXPECT_EQ(file->setCurrentImg(0), zelOKAY);
    for (int tag = 1; tag <= 11; tag++)
        // Long texts of which two fill a block.
        EXPECT_EQ(file->setTag(tag, std::string(60, static_cast<char>('a' + tag)).c_str()),
                  zelOKAY);
    for (int tag = 12; tag <= 13; tag++)
        EXPECT_EQ(file->setTag(tag, 2.5), zelOKAY);
    EXPECT_EQ(file->setStatMinMax(-1, 1e9), zelOKAY);
    EXPECT_EQ(file->setTag(4, static_cast<char*>(nullptr)), zelOKAY);
    for (int pass = 0; pass < 2; pass++) {
        double low = 0, high = 0;
        char* text = nullptr;
        EXPECT_EQ(file->getStatMinMax(low, high), zelOKAY);
        EXPECT_EQ(high, 1e9);
        EXPECT_EQ(file->getTag(4, &text), zelBADFIELDGET);
        EXPECT_EQ(file->getTag(5, &text), zelOKAY);
        EXPECT_STREQ(text, std::string(60, 'f').c_str());
        EXPECT_TRUE(readPixels(file) == first);
        EXPECT_EQ(file->setCurrentImg(1), zelOKAY);
        EXPECT_TRUE(readPixels(file) == second);
        EXPECT_EQ(file->close(0), zelOKAY);
        file = open("a.fits");
        ASSERT_NE(file, nullptr);
    }
    EXPECT_EQ(file->close(0), zelOKAY);
    // Without the filling of the last block the image is whole; without its last byte it is not.
    ASSERT_TRUE(run("truncate -s $(($(stat -c %s a.fits) - 2880 + 126)) a.fits"));
    file = open("a.fits:1");
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(readPixels(file) == second);
    EXPECT_EQ(file->close(0), zelOKAY);
    ASSERT_TRUE(run("truncate -s -1 a.fits"));
    zelStatus status = zelOKAY;
    EXPECT_EQ(zelFile::open((dir_.path() / "a.fits:1").c_str(), 0, &status), nullptr);
    EXPECT_EQ(status, zelPREMATUREEOF);
}

TEST_F(Fits, AgreesWithAnotherProgram) {
    ASSERT_TRUE(run("pgmramp -ellipse 40 30 | pamcut -top 3 -width 31 | pnmdepth 65535 >a.pgm && "
                    "convert-im6.q16 a.pgm a.fits"));
    zelFile* theirs = open("a.fits");
    zelFile* pgm = open("a.pgm");
    ASSERT_TRUE(theirs && pgm);
    const Pixels expected = readPixels(pgm);
    EXPECT_TRUE(readPixels(theirs) == expected);
    EXPECT_EQ(theirs->close(0), zelOKAY);
    EXPECT_EQ(pgm->close(0), zelOKAY);
    const zelSize size(expected.width, expected.height, 1, 1);
    const zelFileConfig config(&size, zelUShort);
    zelFile* ours = zelFile::create((dir_.path() / "b.fits").c_str(), nullptr, &config, nullptr);
    ASSERT_NE(ours, nullptr);
    EXPECT_EQ(writePixels(ours, expected), zelOKAY);
    EXPECT_EQ(ours->close(0), zelOKAY);
    EXPECT_TRUE(run("convert-im6.q16 b.fits b.pgm && cmp a.pgm b.pgm"));
}

} // namespace

} // namespace zel::test
