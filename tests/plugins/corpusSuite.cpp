#include "plugins/corpusSuite.h"

#include "plugins/fileScene.h"
#include "support/childProcess.h"

#include <zel/zelColormap.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <optional>
#include <random>
#include <sstream>
#include <sys/resource.h>
#include <unistd.h>

namespace zel::test {

namespace {

std::vector<std::string> cellsOf(const std::string& line) {
    std::vector<std::string> cells;
    std::istringstream in(line);
    for (std::string cell; std::getline(in, cell, '\t');)
        cells.push_back(cell);
    return cells;
}

std::string corpusPath(const std::string& file) {
    const char* const folder = std::getenv("ZEL_CORPUS");
    return std::string(folder ? folder : "") + "/" + file;
}

// A file in the frame that it is stored in, or seen from the upper left.
class StoredImage {
public:
    StoredImage(const std::string& name, bool upright)
        : file_(zelFile::open(name.c_str(), 0, &status)) {
        if (!file_)
            return;
        frame_ = upright ? zelUpperLeftOrigin : file_->getOrientation();
        file_->getSize(size, frame_);
    }
    ~StoredImage() {
        if (file_)
            file_->close(0);
    }
    StoredImage(const StoredImage&) = delete;
    StoredImage& operator=(const StoredImage&) = delete;

    bool isOpen() const { return file_ != nullptr; }
    zelDataType type() const { return file_->getDataType(); }

    std::optional<Pixels> read(int x, int y, int nx, int ny) {
        Pixels pixels(type(), nx, ny, size.c);
        const zelConfig config(pixels.type, zelInterleaved, size.c, nullptr, 0, frame_);
        status = file_->getTile(x, y, 0, nx, ny, 1, pixels.bytes.data(), &config);
        return status == zelOKAY ? std::optional(pixels) : std::nullopt;
    }

    // The elements; of a palette image the colours instead of the indexes.
    std::vector<double> values(const Pixels& pixels) {
        const zelColormap* map = nullptr;
        if (file_->getColorModel() != zelRGBPalette || file_->getColormap(map) != zelOKAY)
            return numbers(pixels);
        std::vector<double> list;
        for (const double index : numbers(pixels))
            for (int c = 0; c < 3; c++)
                list.push_back(map->getVal(index, c));
        return list;
    }

    zelSize size;
    zelStatus status = zelOKAY;

private:
    zelFile* file_;
    zelOrientation frame_ = zelUpperLeftOrigin;
};

// Samples that were spread to fill their type get back the numbers of the file.
void unspread(Pixels& pixels, int bits) {
    const double range = pixels.type & (zelUChar | zelUShort) ? zelDataMax(pixels.type) : 0;
    const double stored = std::ldexp(1.0, bits) - 1;
    if (bits <= 1 || range <= stored)
        return;
    for (int y = 0; y < pixels.height; y++)
        for (int x = 0; x < pixels.width; x++)
            for (int c = 0; c < pixels.channels; c++)
                pixels.set(x, y, c, std::round(pixels.at(x, y, c) * stored / range));
}

bool tilesAgree(StoredImage& image, const Pixels& whole) {
    std::mt19937 random(17);
    const auto below = [&](int end) {
        return static_cast<int>(random() % static_cast<unsigned>(end));
    };
    for (int i = 0; i < 6; i++) {
        const int x = below(image.size.x), y = below(image.size.y);
        const int nx = 1 + below(image.size.x - x), ny = 1 + below(image.size.y - y);
        const auto part = image.read(x, y, nx, ny);
        if (!part || !(*part == whole.cut(x, y, nx, ny)))
            return false;
    }
    return true;
}

// "WxHxC", or what kept the file from being read.
std::string readFile(const ManifestRow& row, const std::string& samplesFile, bool upright) {
    StoredImage image(corpusPath(row.at("file")), upright);
    const auto failure = [&] {
        return std::string("refused: ") + zelMainStatusToString(zelStatusMain(image.status));
    };
    if (!image.isOpen())
        return failure();
    const zelSize size = image.size;
    if (double{1} * size.x * size.y * size.c > 64e6)
        return "read in part";
    auto whole = image.read(0, 0, size.x, size.y);
    if (!whole)
        return failure();
    if (!tilesAgree(image, *whole))
        return "tiles differ from the whole";
    unspread(*whole, std::atoi(row.at("depth").c_str()));
    std::ofstream(samplesFile, std::ios::binary)
        .write(reinterpret_cast<const char*>(whole->bytes.data()),
               static_cast<std::streamsize>(whole->bytes.size()));
    return std::to_string(size.x) + "x" + std::to_string(size.y) + "x" + std::to_string(size.c);
}

ChildResult readInChild(const ManifestRow& row, const std::string& samplesFile, bool upright) {
    return runInChild([&]() -> std::string {
        alarm(10);
#if !defined(ZEL_SANITIZED)
        const rlimit limit = {512u << 20, 512u << 20};
        setrlimit(RLIMIT_AS, &limit);
#endif
        return readFile(row, samplesFile, upright);
    });
}

class Corpus : public FileScene {
public:
    void TestBody() override {}
    void check(const ManifestRow& row, const CorpusFolder& folder);

    int read = 0, refused = 0, notCompared = 0;

private:
    void compareSamples(const ManifestRow& row, const std::string& result, bool upright);
    void compareReference(const ManifestRow& row, bool upright);
};

void Corpus::compareSamples(const ManifestRow& row, const std::string& result, bool upright) {
    EXPECT_EQ(result, row.at("WxHxC"));
    if (!row.at("samples_sha256").empty()) {
        EXPECT_EQ(output("sha256sum samples").substr(0, 64), row.at("samples_sha256"));
    }
    compareReference(row, upright);
}

// A reference of the same samples: the manifest says how far apart the two may be.
void Corpus::compareReference(const ManifestRow& row, bool upright) {
    const std::string& match = row.at("reference_match");
    constexpr const char* bounded = "max difference ";
    const double most = match == "exact"               ? 0
                        : match.rfind(bounded, 0) == 0 ? std::atof(match.c_str() + strlen(bounded))
                                                       : -1;
    if (most < 0)
        return;
    StoredImage mine(corpusPath(row.at("file")), upright);
    StoredImage other(corpusPath(row.at("reference")), upright);
    if (!mine.isOpen() || !other.isOpen() || other.size.c != mine.size.c ||
        other.type() != mine.type())
        return;
    const auto a = mine.read(0, 0, mine.size.x, mine.size.y);
    const auto b = other.read(0, 0, other.size.x, other.size.y);
    ASSERT_TRUE(a && b);
    ASSERT_EQ(a->bytes.size(), b->bytes.size());
    const std::vector<double> left = mine.values(*a), right = other.values(*b);
    ASSERT_EQ(left.size(), right.size());
    double worst = 0;
    for (std::size_t i = 0; i < left.size(); i++)
        worst = std::max(worst, std::fabs(left[i] - right[i]));
    EXPECT_LE(worst, most) << "against " << row.at("reference");
}

void Corpus::check(const ManifestRow& row, const CorpusFolder& folder) {
    const std::string& file = row.at("file");
    const std::string name = file.substr(file.find('/') + 1);
    const bool decodes =
        row.at("expectation").rfind("survive", 0) != 0 && !folder.refused.count(name);
    const ChildResult result = readInChild(row, path("samples"), folder.upright);
    EXPECT_EQ(result.status, 0) << "a crash, or too much time or memory";
    const bool wasRefused = result.text.rfind("refused", 0) == 0;
    (wasRefused ? refused : read)++;
    if (wasRefused)
        std::cout << "    " << file << ": " << result.text << "\n";
    EXPECT_NE(result.text, "tiles differ from the whole");
    if (folder.refused.count(name)) {
        EXPECT_TRUE(wasRefused) << "now it decodes: " << folder.refused.at(name);
    }
    if (decodes && folder.notCompared.count(name)) {
        EXPECT_FALSE(wasRefused) << result.text;
        std::cout << "    " << file << ": not compared: " << folder.notCompared.at(name) << "\n";
        notCompared++;
    } else if (decodes) {
        compareSamples(row, result.text, folder.upright);
    }
}

} // namespace

std::vector<ManifestRow> manifestRows(const std::string& folder) {
    std::ifstream in(corpusPath("manifest.tsv"));
    std::string line;
    std::getline(in, line);
    const std::vector<std::string> names = cellsOf(line);
    std::vector<ManifestRow> rows;
    while (std::getline(in, line)) {
        if (line.rfind(folder + "/", 0) != 0)
            continue;
        const std::vector<std::string> cells = cellsOf(line);
        ManifestRow& row = rows.emplace_back();
        for (std::size_t i = 0; i < names.size(); i++)
            row[names[i]] = i < cells.size() ? cells[i] : "";
    }
    return rows;
}

// Not every format has a folder.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(CorpusSuite);

TEST_P(CorpusSuite, IsReadAsItsManifestSays) {
    if (!std::getenv("ZEL_CORPUS"))
        GTEST_SKIP() << "ZEL_CORPUS is not set";
    const std::vector<ManifestRow> rows = manifestRows(GetParam().name);
    ASSERT_FALSE(rows.empty());
    Corpus corpus;
    for (const ManifestRow& row : rows) {
        SCOPED_TRACE(row.at("file"));
        corpus.check(row, GetParam());
    }
    std::cout << "    " << GetParam().name << ": " << corpus.read << " files read, "
              << corpus.refused << " refused, " << corpus.notCompared << " of them not compared\n";
}

} // namespace zel::test
