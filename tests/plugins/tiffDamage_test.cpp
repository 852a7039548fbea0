// Broken TIFF files, little memory and full disks.

#include "plugins/tiffScene.h"

#include "support/childProcess.h"

#include <zel/zelFormat.h>

#include <cerrno>
#include <csignal>
#include <random>
#include <sys/resource.h>
#include <unistd.h>

namespace zel::test {

namespace {

using namespace std::string_literals;

class TiffDamage : public TiffScene {
protected:
    static std::string words(zelStatus status) {
        return zelMainStatusToString(zelStatusMain(status)) +
               (zelStatusKind(status) ? ", errno " + std::to_string(zelStatusErrno(status)) : "");
    }
};

struct Broken {
    const char* what;
    int width, height;
    std::vector<HandTag> tags;
    std::string data;
    zelMainStatus status;
};

TEST_F(TiffDamage, SaysWhatIsWrong) {
    const HandTag grey[] = {{258, 3, {8}}, {262, 3, {1}}, {259, 3, {5}}};
    const Broken files[] = {
        {"too little data", 100, 100, {grey[0], grey[1]}, std::string(50, 'x'), zelPREMATUREEOF},
        {"rows that the data does not justify",
         2000000000,
         10,
         {grey[0], grey[1]},
         "x",
         zelCORRUPTED},
        {"LZW of nonsense", 10, 10, {grey[0], grey[1], grey[2]}, "\xff\xff\xff\xff", zelCORRUPTED},
        {"a tile that the data does not justify",
         10,
         10,
         {grey[0], grey[1], grey[2], {322, 4, {65536}}, {323, 4, {65520}}},
         "\x80\x0b\x60"s,
         zelCORRUPTED},
        {"no width", 0, 10, {grey[0], grey[1]}, "x", zelCORRUPTED},
        {"complex numbers",
         1,
         1,
         {{258, 3, {64}}, grey[1], {339, 3, {6}}},
         "12345678",
         zelUNSUPPORTEDBYFILE},
        {"an unknown compression",
         1,
         1,
         {grey[0], grey[1], {259, 3, {4711}}},
         "x",
         zelUNSUPPORTEDBYFILE},
    };
    for (const Broken& file : files) {
        SCOPED_TRACE(file.what);
        write("a.tif", handMadeTiff(false, file.width, file.height, file.tags, file.data));
        const ChildResult result = runInChild([this] {
            limitMemory(100 << 20);
            return words(statusOfReading("a.tif"));
        });
        EXPECT_EQ(result.text, words(zelStatusEncode(file.status)));
        for (const std::string& report : result.reports)
            EXPECT_EQ(report[0], '2') << "a warning: " << report;
    }
    std::string cut = handMadeTiff(false, 10, 10, {grey[0], grey[1]}, std::string(100, 'x'));
    cut[8 + 100 + 2 + 12 * 4 + 8 - 12] = '\xf0'; // somewhere in the directory
    write("cut.tif", cut.substr(0, 120));
    EXPECT_EQ(statusOfReading("cut.tif#TIFF"), zelPREMATUREEOF);
}

TEST_F(TiffDamage, EndsAChainThatLeadsBack) {
    std::string loop =
        handMadeTiff(false, 1, 1, {{258, 3, {8}}, {262, 3, {1}}, {259, 3, {1}}}, "xx");
    loop.replace(loop.size() - 4, 4, "\x0a\0\0\0"s);
    write("loop.tif", loop);
    zelFile* const file = open("loop.tif", 2);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->getNumImgs(), 1);
    EXPECT_EQ(file->setCurrentImg(1), zelFILEINDEXOOB);
    EXPECT_EQ(numbers(readPixels(file)), std::vector<double>({'x'}));
    const zelSize size(4, 4, 1, 1);
    zelFileConfig wish(&size);
    EXPECT_EQ(file->appendImg(nullptr, &wish), zelCORRUPTED);
    EXPECT_EQ(file->close(0), zelOKAY);
}

TEST_F(TiffDamage, SurvivesFilesOfOthersWithBytesChanged) {
    run("ppmrainbow -width=40 -height=40 red green blue | pamtotiff -truecolor -none >a.tif; "
        "ppmmake white 40 40 | ppmtopgm | pamditherbw | pamtopnm | pamtotiff -none >b.tif");
    for (const char* const options :
         {"-c jpeg -t -w 16 -l 16 a.tif", "-c jpeg -r 16 a.tif", "-c g3:2d b.tif", "-c g4 b.tif",
          "-c zip:2 -p separate -t -w 16 -l 16 a.tif", "-c lzw:2 -8 -r 3 a.tif",
          "-c lzma -r 10 a.tif", "-c zstd a.tif", "-c webp a.tif", "-c lerc a.tif"}) {
        SCOPED_TRACE(options);
        run(std::string("tiffcp ") + options + " c.tif");
        const std::string whole = content("c.tif");
        const ChildResult result = runInChild([&, this]() -> std::string {
            alarm(120);
            limitMemory(200 << 20);
            std::mt19937 random(17);
            for (int i = 0; i < 250; i++) {
                std::string bytes = whole;
                for (int n = 0; n < 1 + i % 4; n++)
                    bytes[random() % bytes.size()] = static_cast<char>(random());
                write("d.tif", bytes);
                zelFile* const file = zelFile::open((path("d.tif") + "#TIFF").c_str(), 0);
                if (!file)
                    continue;
                zelSize size;
                file->getSize(size, zelUpperLeftOrigin);
                Pixels pixels(file->getDataType(), std::min(size.x, 300), std::min(size.y, 300),
                              std::min(size.c, 8));
                readPixels(file, pixels);
                file->close(0);
            }
            return "survived";
        });
        EXPECT_EQ(result.text, "survived") << result.status;
    }
}

// Each step in turn meets the limit; a failure comes once, and with the system's reason.
TEST_F(TiffDamage, TellsOfAFullDisk) {
    for (const zelCompression compression : {zelNoCompression, zelLZW})
        for (const bool tiled : {false, true}) {
            SCOPED_TRACE(compression * 10 + tiled);
            const ChildResult result = runInChild([&, this]() -> std::string {
                signal(SIGXFSZ, SIG_IGN);
                const zelSize size(300, 300, 1, 3), page(64, 64, 1, 3);
                const zelFileConfig wish(&size, zelUChar, zelInterleaved, zelRGB,
                                         zelUpperLeftOrigin, compression, tiled ? &page : nullptr);
                zelFile* const file = create("full.tif", wish);
                const rlimit limit = {100000, 100000};
                setrlimit(RLIMIT_FSIZE, &limit);
                zelStatus status = writePixels(file, Pixels::pattern(zelUChar, 300, 300, 3, 1));
                if (status == zelOKAY)
                    status = file->flush();
                const zelStatus closed = file->close(0);
                return words(status) + "; " + (closed == zelOKAY ? "closed" : words(closed));
            });
            EXPECT_EQ(result.text.substr(0, result.text.find(';')),
                      "File write failed, errno " + std::to_string(EFBIG));
        }
    const zelSize size(3, 3, 1, 1);
    const zelFileConfig wish(&size);
    zelStatus status = zelOKAY;
    EXPECT_EQ(zelFile::create(path("none/a.tif").c_str(), nullptr, &wish, nullptr, &status),
              nullptr);
    EXPECT_EQ(status, zelStatusEncode(zelOPENFAILED, 1, ENOENT));
}

TEST_F(TiffDamage, ReadsOneGreatStripInLittleMemory) {
    run("pgmramp -lr 6000 6000 >r.pgm; tiffcp -v >/dev/null; "
        "ppmtoppm <r.pgm >r.ppm; ppm2tiff -r 10000 -c zip r.ppm r.tif; "
        "tiffcp -c none -r 10000 r.tif n.tif; exit 0");
    for (const char* const name : {"r.tif", "n.tif"}) {
        SCOPED_TRACE(name);
        const ChildResult result = runInChild([&, this]() -> std::string {
            limitMemory(12 << 20);
            zelFile* const file = open(name);
            Pixels row(zelUChar, 6000, 1, 3);
            for (const int y : {0, 2000, 5999, 10}) {
                if (readPixels(file, row, 0, y) != zelOKAY || row.at(5999, 0, 0) != 255)
                    return "row " + std::to_string(y);
            }
            return words(file->close(0));
        });
        EXPECT_EQ(result.text, "Successful operation");
    }
}

} // namespace

} // namespace zel::test
