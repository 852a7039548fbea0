#include "plugins/pixels.h"
#include "support/childProcess.h"
#include "support/tempDir.h"

#include <zel/zelFileConfig.h>
#include <zel/zelFormat.h>

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace zel::test {

namespace {

class Pnm : public testing::Test {
protected:
    std::string write(const std::string& name, const std::string& content) const {
        return dir_.write(name, content);
    }
    std::string path(const std::string& name) const { return dir_.path() / name; }

    // Runs a shell command in the directory; the test fails if it does.
    void run(const std::string& command) const {
        const std::string line =
            "cd '" + dir_.path().string() + "' && (" + command + ") 2>>messages";
        EXPECT_EQ(std::system(line.c_str()), 0) << command;
    }

    // The pixels of a name, as they are read.
    Pixels read(const std::string& name) const {
        zelFile* const file = open(name);
        if (!file)
            return Pixels(zelUChar, 0, 0, 1);
        Pixels pixels = readPixels(file);
        EXPECT_EQ(file->close(0), zelOKAY);
        return pixels;
    }

    zelFile* open(const std::string& name, int mode = 0) const {
        zelStatus status = zelOKAY;
        zelFile* const file = zelFile::open(path(name).c_str(), mode, &status);
        EXPECT_NE(file, nullptr) << name << ": " << zelMainStatusToString(zelStatusMain(status));
        return file;
    }

    zelStatus statusOfOpening(const std::string& content) const {
        write("bad.pnm", content);
        zelStatus status = zelOKAY;
        zelFile* const file = zelFile::open((path("bad.pnm") + "#PNM").c_str(), 0, &status);
        if (!file)
            return status;
        zelSize size;
        file->getSize(size, zelUpperLeftOrigin);
        Pixels pixels(file->getDataType(), size.x, size.y, size.c);
        status = readPixels(file, pixels);
        file->close(0);
        return status;
    }

    // Makes a file and writes the pixels.
    void create(const std::string& name, zelColorModel cm, const Pixels& pixels) const {
        const zelSize size(pixels.width, pixels.height, 1, pixels.channels);
        const zelFileConfig config(&size, pixels.type, zelInterleaved, cm);
        zelStatus status = zelOKAY;
        zelFile* const file =
            zelFile::create(path(name).c_str(), nullptr, &config, nullptr, &status);
        ASSERT_NE(file, nullptr) << zelMainStatusToString(zelStatusMain(status));
        EXPECT_EQ(writePixels(file, pixels), zelOKAY);
        EXPECT_EQ(file->close(0), zelOKAY);
    }

    std::string content(const std::string& name) const {
        std::ifstream in(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }

private:
    TempDir dir_;
};

std::vector<double> numbers(const Pixels& pixels) {
    std::vector<double> list;
    for (int y = 0; y < pixels.height; y++)
        for (int x = 0; x < pixels.width; x++)
            for (int c = 0; c < pixels.channels; c++)
                list.push_back(pixels.at(x, y, c));
    return list;
}

using Numbers = std::vector<double>;

struct Sample {
    const char* what;
    std::string content;
    zelDataType type;
    zelColorModel colorModel;
    Numbers pixels; ///< seen from the upper left
    double scaleMax;
};

TEST_F(Pnm, ReadsWhatTheFormatsAllow) {
    using namespace std::string_literals;
    const Sample samples[] = {
        {"bits without blanks, comments",
         "P1#c\n# more\n3 2 101\n0 1#x\n1\n",
         zelBit,
         zelNegative,
         {1, 0, 1, 0, 1, 1},
         1},
        {"packed bits, rows padded",
         "P4 10 2\n\xff\x40\x00\x80"s,
         zelBit,
         zelNegative,
         {1, 1, 1, 1, 1, 1, 1, 1, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0},
         1},
        {"grey of 4 bits is widened",
         "P2 3 1 15\n0 7 15",
         zelUChar,
         zelLuminance,
         {0, 119, 255},
         255},
        {"raw bytes above the maxval",
         "P5\n2 1\n15\n\x0f\x80",
         zelUChar,
         zelLuminance,
         {255, 255},
         255},
        {"two bytes keep their numbers",
         "P5 2 1 1000\n\x03\xe8\x01\x02",
         zelUShort,
         zelLuminance,
         {1000, 258},
         1000},
        {"a maxval of 1",
         "P6 1 2 1\n\x01\x00\x00\x00\x01\x01"s,
         zelBit,
         zelRGB,
         {1, 0, 0, 0, 1, 1},
         1},
        {"a comment behind the maxval", "P5 1 1 255#end\nA", zelUChar, zelLuminance, {65}, 255},
        {"bilevel PAM, 1 is white",
         "P7\n# c\nWIDTH 2\nHEIGHT 1\nDEPTH 1\nMAXVAL 1\nTUPLTYPE BLACKANDWHITE\nENDHDR\n\x01\x00"s,
         zelBit,
         zelLuminance,
         {1, 0},
         1},
        {"PAM without a tuple type",
         "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 2\nMAXVAL 255\nENDHDR\nab",
         zelUChar,
         zelLuminanceAlpha,
         {97, 98},
         255},
        {"PAM of an unknown tuple type",
         "P7\nHEIGHT 1\nWIDTH 1\nDEPTH 3\nMAXVAL 255\nTUPLTYPE A\nTUPLTYPE B\nENDHDR\nabc",
         zelUChar,
         zelMultiSpectral,
         {97, 98, 99},
         255},
        {"PFM, low row first, big-endian",
         "Pf 1 2\n2.0\n\x3f\x80\x00\x00\xc0\x00\x00\x00"s,
         zelFloat,
         zelLuminance,
         {-2, 1},
         2},
        {"PFM, little-endian", "Pf\n1 1\n-1\n\x00\x00\x80\x3f"s, zelFloat, zelLuminance, {1}, 1},
    };
    for (const Sample& sample : samples) {
        SCOPED_TRACE(sample.what);
        write("sample", sample.content);
        zelFile* const file = open("sample");
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(file->getDataType(), sample.type);
        EXPECT_EQ(file->getColorModel(), sample.colorModel);
        EXPECT_EQ(numbers(readPixels(file)), sample.pixels);
        double min = -1;
        double max = -1;
        EXPECT_EQ(file->getScaleMinMax(min, max), zelOKAY);
        EXPECT_EQ(min, 0);
        EXPECT_EQ(max, sample.scaleMax);
        EXPECT_EQ(file->close(0), zelOKAY);
    }
}

TEST_F(Pnm, TellsWhatIsWrong) {
    const std::pair<const char*, zelMainStatus> cases[] = {
        {"", zelPREMATUREEOF},
        {"P", zelPREMATUREEOF},
        {"Q5 1 1 255\na", zelBADMAGIC},
        {"P5 1", zelPREMATUREEOF},
        {"P5 2 2 255\nabc", zelPREMATUREEOF},
        {"P5 65000 65000 255\nabc", zelPREMATUREEOF},
        {"P5 2147483647 2147483647 65535\nabc", zelPREMATUREEOF},
        {"P5 99999999999 1 255\na", zelCORRUPTED},
        {"P5 0 1 255\na", zelCORRUPTED},
        {"P5 -1 1 255\na", zelCORRUPTED},
        {"P5 1 1 65536\naa", zelCORRUPTED},
        {"P5 1 1 255a", zelCORRUPTED},
        {"P2 2 1 255\n7 x", zelCORRUPTED},
        {"P2 2 1 255\n7 70000", zelCORRUPTED},
        {"P2 2 1 255\n7    ", zelPREMATUREEOF},
        {"P1 2 1 02", zelCORRUPTED},
        {"Pf 1 1 0\naaaa", zelCORRUPTED},
        {"Pf 1 1 nan\naaaa", zelCORRUPTED},
        {"P7\nWIDTH 1\nHEIGHT 1\nDEPTH 2147483647\nMAXVAL 65535\nENDHDR\na", zelPREMATUREEOF},
        {"P7\nWIDTH 1\nHEIGHT 1\nMAXVAL 255\nENDHDR\na", zelCORRUPTED},
        {"P7\nWIDTH 1\nHEIGTH 1\nDEPTH 1\nMAXVAL 255\nENDHDR\na", zelCORRUPTED},
    };
    for (const auto& [content, status] : cases)
        EXPECT_EQ(statusOfOpening(content), status) << content;
}

// Each command makes a file, and a plain one of equal pixels that the test reads for itself.
TEST_F(Pnm, ReadsTheFilesOfOthers) {
    const char* const commands[] = {
        "pbmmake -gray 37 11 >a",
        "pgmramp -ellipse 41 23 >a",
        "pgmramp -lr -maxval=1000 41 23 >a",
        "ppmmake -maxval=65535 rgb:12/80/ff 19 7 >a",
        "ppmrainbow -width=64 -height=9 red green blue | pnmtoplainpnm >a",
        "pgmramp -tb 13 29 | pamtopfm -endian=big | pfmtopam >a",
    };
    for (const char* const command : commands) {
        SCOPED_TRACE(command);
        run(std::string(command) + " && pnmtoplainpnm a >b");
        std::ifstream in(path("b"));
        std::string magic;
        int width = 0;
        int height = 0;
        int maxval = 1;
        in >> magic >> width >> height;
        if (magic != "P1")
            in >> maxval;
        Numbers expected;
        char digit = 0;
        int number = 0;
        while (magic == "P1" ? in >> digit && (number = digit - '0', true) : bool(in >> number))
            expected.push_back(number);
        const Pixels pixels = read("a");
        EXPECT_EQ(pixels.width, width);
        EXPECT_EQ(pixels.height, height);
        EXPECT_EQ(numbers(pixels), expected);
    }
}

TEST_F(Pnm, ReadsFloatsAndAlphaOfOthers) {
    run("pgmramp -lr 16 3 >a.pgm && pamtopfm -endian=little a.pgm >a.pfm");
    const Pixels grey = read("a.pgm");
    const Pixels floats = read("a.pfm");
    ASSERT_EQ(floats.type, zelFloat);
    for (int x = 0; x < 16; x++)
        EXPECT_NEAR(floats.at(x, 1, 0), grey.at(x, 2, 0) / 255, 0.002);

    run("ppmmake rgb:10/20/30 16 3 >c.ppm && pamstack -tupletype=RGB_ALPHA c.ppm a.pgm >d.pam");
    const Pixels alpha = read("d.pam");
    ASSERT_EQ(alpha.channels, 4);
    EXPECT_EQ(alpha.at(5, 1, 2), 0x30);
    EXPECT_EQ(alpha.at(5, 1, 3), grey.at(5, 1, 0));
}

// The other program turns our file into a form of its own choice that we read by another road.
TEST_F(Pnm, WritesFilesThatOthersRead) {
    struct Case {
        const char* name;
        zelDataType type;
        zelColorModel colorModel;
        int channels;
        const char* command;
    };
    const Case cases[] = {
        {"a.pbm", zelBit, zelNegative, 1, "pnmtoplainpnm a.pbm"},
        {"a.pbm%plain", zelBit, zelNegative, 1, "pamtopnm a.pbm"},
        {"a.pgm", zelUShort, zelLuminance, 1, "pnmtoplainpnm a.pgm"},
        {"a.pgm%plain", zelUShort, zelLuminance, 1, "pamtopnm a.pgm"},
        {"a.ppm", zelUChar, zelRGB, 3, "pnmtoplainpnm a.ppm"},
        {"a.ppm%plain", zelUChar, zelRGB, 3, "pamtopnm a.ppm"},
        {"a.pam", zelUChar, zelRGB, 3, "pamtopnm a.pam"},
        {"a.pam", zelUShort, zelRGBA, 4, "pamtopam <a.pam"},
        {"a.pfm", zelFloat, zelRGB, 3, "pfmtopam -maxval=255 a.pfm"},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        Pixels pixels = Pixels::pattern(test.type, 43, 19, test.channels, 4);
        if (test.type == zelFloat)
            for (int y = 0; y < 19; y++)
                for (int x = 0; x < 43; x++)
                    for (int c = 0; c < 3; c++)
                        pixels.set(x, y, c, ((x * 7 + y * 5 + c) % 256) / 255.0);
        create(test.name, test.colorModel, pixels);
        run(std::string(test.command) + " >out");
        Numbers expected = numbers(pixels);
        if (test.type == zelFloat)
            for (double& number : expected)
                number = std::round(number * 255);
        EXPECT_EQ(numbers(read("out")), expected);
    }
}

TEST_F(Pnm, ExchangesBlackAndWhiteWhereTheFileMeansTheOther) {
    Pixels pixels(zelBit, 9, 1, 1);
    pixels.set(1, 0, 0, 1);
    create("white.pbm", zelLuminance, pixels);
    EXPECT_EQ(content("white.pbm"), "P4\n9 1\n\xbf\x80");
    create("black.pgm", zelNegative, pixels);
    EXPECT_EQ(content("black.pgm"), std::string("P5\n9 1\n1\n\1\0\1\1\1\1\1\1\1", 18));

    // What was not written yet is 0 in the model of the one who writes.
    const zelSize size(2, 2, 1, 1);
    const zelFileConfig config(&size, zelBit, zelInterleaved, zelLuminance);
    zelFile* const file =
        zelFile::create(path("empty.pbm%plain").c_str(), nullptr, &config, nullptr);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(numbers(readPixels(file)), Numbers({0, 0, 0, 0}));
    EXPECT_EQ(content("empty.pbm"), "P1\n2 2\n1 1\n1 1\n");
    EXPECT_EQ(file->close(0), zelOKAY);
}

TEST_F(Pnm, NarrowsToTheMaxval) {
    Pixels bytes(zelUChar, 3, 1, 1);
    bytes.set(1, 0, 0, 119);
    bytes.set(2, 0, 0, 255);
    create("a.pgm%maxval=15", zelLuminance, bytes);
    EXPECT_EQ(content("a.pgm"), std::string("P5\n3 1\n15\n\0\7\17", 13));
    Pixels words(zelUShort, 2, 1, 1);
    words.set(0, 0, 0, 258);
    words.set(1, 0, 0, 5000);
    create("b.pgm%maxval=4095%plain", zelLuminance, words);
    EXPECT_EQ(content("b.pgm"), "P2\n2 1\n4095\n 258 4095\n");
}

TEST_F(Pnm, WritesToFilesOfOthersWhereTheNumbersFit) {
    write("a.pgm", "P5 3 1 15\n\001\002\003");
    zelFile* file = open("a.pgm", 2);
    ASSERT_NE(file, nullptr);
    Pixels one(zelUChar, 1, 1, 1);
    one.set(0, 0, 0, 255);
    EXPECT_EQ(writePixels(file, one, 1, 0), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);
    EXPECT_EQ(content("a.pgm"), "P5 3 1 15\n\001\017\003");

    write("b.pgm", "P2 2 1 9\n1 2\n");
    file = open("b.pgm", 2);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(writePixels(file, one), zelUNSUPPORTEDBYFILE);
    EXPECT_EQ(file->close(0), zelOKAY);
}

TEST_F(Pnm, FindsMixedImagesAndStopsAtWhatIsNone) {
    run("(pbmmake -black 9 2; pgmramp -lr 4 4; ppmmake red 2 3) >many.pnm");
    EXPECT_EQ(read("many.pnm:1").height, 4);
    EXPECT_EQ(numbers(read("many.pnm:2")).front(), 255);
    const std::string all = content("many.pnm");
    // A header whose samples are cut off counts, and says what is wrong; junk does not count.
    const std::pair<std::string, int> cases[] = {
        {all + "\n \n", 3}, {all + "P5 9 9 255\nabc", 4}, {all + "junk", 3}};
    for (const auto& [bytes, images] : cases) {
        const ChildResult result = runInChild([&, bytes = bytes] {
            write("more.pnm", bytes);
            zelFile* const file = open("more.pnm", 2);
            const int count = file->getNumImgs();
            const zelStatus last = file->setCurrentImg(3);
            zelFileConfig config;
            const zelSize size(1, 1, 1, 1);
            config.setDimensions(size);
            const zelStatus append = file->appendImg(nullptr, &config);
            return std::to_string(count) + " " + std::to_string(last) + " " +
                   std::to_string(append);
        });
        const bool clean = bytes.back() == '\n';
        EXPECT_EQ(result.text, std::to_string(images) + " " +
                                   std::to_string(images == 4 ? zelPREMATUREEOF : zelFILEINDEXOOB) +
                                   " " + std::to_string(clean ? 0 : zelCORRUPTED));
        EXPECT_EQ(result.reports.size(), bytes.ends_with("junk") ? 1u : 0u);
    }
}

TEST_F(Pnm, RefusesWhatTheSuffixCannotHold) {
    struct Case {
        const char* name;
        zelDataType type;
        zelColorModel colorModel;
        int channels;
    };
    const Case cases[] = {
        {"a.pbm", zelUChar, zelLuminance, 1}, {"a.pgm", zelUChar, zelRGB, 3},
        {"a.ppm", zelUChar, zelLuminance, 1}, {"a.PPM#PNM", zelFloat, zelRGB, 3},
        {"a.pfm", zelUChar, zelRGB, 3},       {"a.pam%plain", zelUChar, zelRGB, 3},
        {"a.pgm", zelUChar, zelNegative, 1},  {"a.pam", zelUChar, zelRGB, 4},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        const ChildResult result = runInChild([&] {
            const zelSize size(2, 2, 1, test.channels);
            const zelFileConfig config(&size, test.type, zelInterleaved, test.colorModel);
            zelStatus status = zelOKAY;
            zelFile::create(path(test.name).c_str(), nullptr, &config, nullptr, &status);
            return std::to_string(status);
        });
        EXPECT_EQ(result.text, std::to_string(zelUNSUPPORTEDBYFORMAT));
        ASSERT_EQ(result.reports.size(), 1u);
        EXPECT_NE(result.reports[0].find("/a."), std::string::npos) << result.reports[0];
    }
    EXPECT_TRUE(content("a.pgm").empty()) << "a refused file must not be made";
}

TEST_F(Pnm, WarnsOfArgumentsThatItCannotUse) {
    const std::pair<const char*, const char*> cases[] = {
        {"%colour=7", "\"colour\""},  {"%maxval=x", "\"maxval\""},   {"%maxval", "\"maxval\""},
        {"%max=70000", "\"maxval\""}, {"%maxval=300", "\"maxval\""}, {"%=1", "\"\""},
        {"%plain=2", "\"plain\""}};
    for (const auto& [arguments, named] : cases) {
        SCOPED_TRACE(arguments);
        const ChildResult result = runInChild([&, text = std::string(arguments)] {
            create("w.pgm" + text, zelLuminance, Pixels(zelUChar, 1, 1, 1));
            return content("w.pgm");
        });
        EXPECT_EQ(result.text, std::string("P5\n1 1\n255\n\0", 12));
        ASSERT_EQ(result.reports.size(), 1u);
        EXPECT_EQ(result.reports[0].substr(0, 2), "2 ");
        EXPECT_NE(result.reports[0].find("w.pgm"), std::string::npos) << result.reports[0];
        EXPECT_NE(result.reports[0].find(named), std::string::npos) << result.reports[0];
    }
}

TEST_F(Pnm, ReportsAFullDisk) {
    if (!std::filesystem::exists("/dev/full"))
        GTEST_SKIP() << "no /dev/full";
    const zelSize size(4, 4, 1, 1);
    const zelFileConfig config(&size, zelUChar);
    zelStatus status = zelOKAY;
    EXPECT_EQ(zelFile::create("/dev/full#PNM", nullptr, &config, nullptr, &status), nullptr);
    EXPECT_EQ(zelStatusMain(status), zelWRITEFAILED);
    EXPECT_EQ(zelStatusKind(status), 1);
    EXPECT_EQ(zelFile::create(path("no/such/dir.pgm").c_str(), nullptr, &config, nullptr, &status),
              nullptr);
    EXPECT_EQ(status, zelStatusEncode(zelOPENFAILED, 1, ENOENT));
}

TEST_F(Pnm, ReportsWhatTheSystemRefuses) {
    write("a.pgm", "P5 2 2 255\nabcd");
    zelFile* const file = open("a.pgm");
    ASSERT_NE(file, nullptr);
    std::filesystem::resize_file(path("a.pgm"), 12);
    Pixels pixels(zelUChar, 2, 2, 1);
    EXPECT_EQ(readPixels(file, pixels), zelPREMATUREEOF);
    EXPECT_EQ(file->close(0), zelOKAY);

    const int writeOnly = ::open(path("a.pgm").c_str(), O_WRONLY);
    zelStatus status = zelOKAY;
    zelFormat* const format = zelFormat::findByFormatName("pnm", 1);
    EXPECT_EQ(zelFile::open(writeOnly, nullptr, 0, format, &status), nullptr);
    EXPECT_EQ(status, zelStatusEncode(zelREADFAILED, 1, EBADF));
    EXPECT_EQ(::close(writeOnly), 0);
}

TEST_F(Pnm, AnswersWhatItCanStore) {
    zelFormat* const format = zelFormat::findByFormatName("PNM", 1);
    ASSERT_NE(format, nullptr);
    EXPECT_TRUE(format->haveDSOVersion(2, 1));
    const zelColorModel preferred[] = {zelLuminance, zelLuminance, zelLuminanceAlpha,
                                       zelRGB,       zelRGBA,      zelMultiSpectral};
    for (int channels = 0; channels < 6; channels++)
        EXPECT_EQ(format->getPreferredColorModel(channels), preferred[channels]) << channels;
    EXPECT_EQ(format->getPreferredColorModel(-1), 0);
    EXPECT_TRUE(format->typeIsSupported(zelFloat));
    EXPECT_FALSE(format->typeIsSupported(zelShort));
    EXPECT_FALSE(format->typeIsSupported(zelDataType(0)));
    EXPECT_FALSE(format->orientationIsSupported(zelUpperRightOrigin));
    EXPECT_FALSE(format->orientationIsSupported(zelOrientation(0)));
    EXPECT_FALSE(format->compressionIsSupported(zelUnknownCompression));
    EXPECT_FALSE(format->sizeIsSupported(1, 0, 1, 1, zelUpperLeftOrigin));
    EXPECT_FALSE(format->sizeIsSupported(1, 1, 2, 1, zelUpperLeftOrigin));
    struct Page {
        int x, y, z, c;
        bool fits;
    };
    for (const Page& page :
         {Page{100, 1, 1, 3, true}, Page{100, 50, 1, 3, true}, Page{100, 51, 1, 3, false},
          Page{99, 1, 1, 3, false}, Page{100, 1, 1, 1, false}, Page{100, 1, 2, 3, false}})
        EXPECT_EQ(format->pageSizeIsSupported(100, 50, 1, 3, page.x, page.y, page.z, page.c,
                                              zelUpperLeftOrigin) != 0,
                  page.fits);
    EXPECT_FALSE(
        format->pageSizeIsSupported(1 << 30, 9, 1, 3, 1 << 30, 1, 1, 3, zelUpperLeftOrigin));
    int x = 0, y = 0, z = 0, c = 0;
    format->getPreferredPageSize(1000, 5000, 1, 1, x, y, z, c, zelUpperLeftOrigin);
    EXPECT_EQ((std::array{x, y, z, c}), (std::array{1000, 131, 1, 1}));
}

// The files from outside the tree. What netpbm makes of them is the measure.
TEST_F(Pnm, ReadsTheCorpus) {
    const char* const corpus = std::getenv("ZEL_CORPUS");
    if (!corpus)
        GTEST_SKIP() << "ZEL_CORPUS is not set";
    std::ifstream manifest(std::string(corpus) + "/manifest.tsv");
    std::string line;
    int files = 0;
    while (std::getline(manifest, line)) {
        const std::string name = line.substr(0, line.find('\t'));
        if (!name.starts_with("pnm/"))
            continue;
        SCOPED_TRACE(name);
        files++;
        std::filesystem::copy_file(std::string(corpus) + "/" + name, path("file"),
                                   std::filesystem::copy_options::overwrite_existing);
        if (line.find("survive") != std::string::npos) {
            EXPECT_EQ(statusOfOpening(content("file")), zelPREMATUREEOF);
            continue;
        }
        const Pixels pixels = read("file");
        if (pixels.type == zelFloat) {
            // Numbers above the scale, which netpbm's programs cannot take: the last bytes of the
            // file are its upper row, in big-endian order.
            const std::string bytes = content("file");
            const std::size_t row = static_cast<std::size_t>(pixels.width) * 4;
            for (int x = 0; x < pixels.width; x++) {
                std::uint32_t word = 0;
                for (std::size_t i = 0; i < 4; i++)
                    word = word << 8 |
                           static_cast<std::uint8_t>(
                               bytes[bytes.size() - row + static_cast<std::size_t>(x) * 4 + i]);
                EXPECT_EQ(static_cast<float>(pixels.at(x, 0, 0)), std::bit_cast<float>(word));
            }
            continue;
        }
        run(content("file").starts_with("P1") ? "pamtopnm file >other"
                                              : "pnmtoplainpnm file >other");
        EXPECT_TRUE(read("other") == pixels);
    }
    EXPECT_GT(files, 0);
}

} // namespace

} // namespace zel::test
