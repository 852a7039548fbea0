// The TIFF files of ZEL_CORPUS, by its manifest.

#include "plugins/tiffScene.h"

#include "support/childProcess.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <unistd.h>

namespace zel::test {

namespace {

using Row = std::map<std::string, std::string>;

std::vector<std::string> split(const std::string& line) {
    std::vector<std::string> cells;
    std::istringstream in(line);
    for (std::string cell; std::getline(in, cell, '\t');)
        cells.push_back(cell);
    return cells;
}

std::vector<Row> manifest(const std::string& folder) {
    std::ifstream in(folder + "/manifest.tsv");
    std::string line;
    std::getline(in, line);
    const std::vector<std::string> names = split(line);
    std::vector<Row> rows;
    while (std::getline(in, line)) {
        if (line.rfind("tiff/", 0) != 0)
            continue;
        const std::vector<std::string> cells = split(line);
        Row row;
        for (std::size_t i = 0; i < std::min(names.size(), cells.size()); i++)
            row[names[i]] = cells[i];
        rows.push_back(row);
    }
    return rows;
}

class TiffCorpus : public TiffScene {
protected:
    // The image's samples as they are stored: not turned, and spread ones brought back.
    std::string storedSamples(const std::string& name, int bits) const {
        zelFile* const file = zelFile::open(name.c_str(), 0);
        if (!file)
            return "";
        zelSize size;
        file->getSize(size, file->getOrientation());
        Pixels pixels(file->getDataType(), size.x, size.y, size.c);
        const zelConfig config(pixels.type, zelInterleaved, size.c, nullptr, 0,
                               file->getOrientation());
        const zelStatus status =
            file->getTile(0, 0, 0, size.x, size.y, 1, pixels.bytes.data(), &config);
        if (file->close(0) != zelOKAY || status != zelOKAY)
            return "";
        const double range = pixels.type & (zelUChar | zelUShort) ? zelDataMax(pixels.type) : 0;
        const double stored = std::ldexp(1.0, bits) - 1;
        if (range > stored && bits > 1)
            for (int y = 0; y < size.y; y++)
                for (int x = 0; x < size.x; x++)
                    for (int c = 0; c < size.c; c++)
                        pixels.set(x, y, c, std::round(pixels.at(x, y, c) * stored / range));
        return {pixels.bytes.begin(), pixels.bytes.end()};
    }

    std::string sha256(const std::string& bytes) const {
        write("samples", bytes);
        return output("sha256sum samples").substr(0, 64);
    }
};

TEST_F(TiffCorpus, IsReadAsItsManifestSays) {
    const char* const folder = std::getenv("ZEL_CORPUS");
    if (!folder)
        GTEST_SKIP() << "ZEL_CORPUS is not set";
    const std::vector<Row> rows = manifest(folder);
    ASSERT_FALSE(rows.empty());
    for (Row row : rows) {
        const std::string name = std::string(folder) + "/" + row["file"];
        SCOPED_TRACE(row["file"]);
        const int bits = std::atoi(row["depth"].c_str());
        const bool decodes = row["expectation"].rfind("survive", 0) != 0;
        const ChildResult result = runInChild([&, this]() -> std::string {
            alarm(60);
            const std::string samples = storedSamples(name, bits);
            return samples.empty() ? "refused" : "read " + sha256(samples);
        });
        EXPECT_EQ(result.status, 0);
        if (decodes) {
            EXPECT_EQ(result.text.substr(0, 4), "read");
        }
        if (!row["samples_sha256"].empty()) {
            EXPECT_EQ(result.text, "read " + row["samples_sha256"]);
        }
    }
}

} // namespace

} // namespace zel::test
