#include "plugins/fileScene.h"

#include <zel/zelColormap.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sys/resource.h>
#include <unistd.h>

namespace zel::test {

std::vector<double> numbers(const Pixels& pixels) {
    std::vector<double> list;
    for (int y = 0; y < pixels.height; y++)
        for (int x = 0; x < pixels.width; x++)
            for (int c = 0; c < pixels.channels; c++)
                list.push_back(pixels.at(x, y, c));
    return list;
}

std::string FileScene::content(const std::string& name) const {
    std::ifstream in(path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void FileScene::run(const std::string& command) const {
    const std::string line = "cd '" + dir_.path().string() + "' && (" + command + ") 2>messages";
    EXPECT_EQ(std::system(line.c_str()), 0) << command << "\n" << content("messages");
}

std::string FileScene::output(const std::string& command) const {
    run("(" + command + ") >output");
    return content("output");
}

zelFile* FileScene::open(const std::string& name, int mode) const {
    zelStatus status = zelOKAY;
    zelFile* const file = zelFile::open(path(name).c_str(), mode, &status);
    EXPECT_NE(file, nullptr) << name << ": " << zelMainStatusToString(zelStatusMain(status));
    return file;
}

Pixels FileScene::read(const std::string& name) const {
    zelFile* const file = open(name);
    if (!file)
        return Pixels(zelUChar, 0, 0, 1);
    const Pixels pixels = readPixels(file);
    EXPECT_EQ(file->close(0), zelOKAY);
    return pixels;
}

std::vector<double> FileScene::colors(const std::string& name) const {
    zelFile* const file = open(name);
    if (!file)
        return {};
    const Pixels pixels = readPixels(file);
    const zelColormap* map = nullptr;
    if (file->getColorModel() == zelRGBPalette) {
        EXPECT_EQ(file->getColormap(map), zelOKAY);
    }
    const double factor = pixels.type == zelBit ? 255 : 1;
    const bool inverse = file->getColorModel() == zelNegative;
    std::vector<double> list;
    for (const double number : numbers(pixels))
        for (int c = 0; c < (pixels.channels == 1 ? 3 : 1); c++)
            list.push_back(map ? map->getVal(number, c) : factor * (inverse ? 1 - number : number));
    EXPECT_EQ(file->close(0), zelOKAY);
    return list;
}

zelFile* FileScene::create(const std::string& name, const zelFileConfig& config) const {
    zelStatus status = zelOKAY;
    zelFile* const file = zelFile::create(path(name).c_str(), nullptr, &config, nullptr, &status);
    EXPECT_NE(file, nullptr) << name << ": " << zelMainStatusToString(zelStatusMain(status));
    return file;
}

void FileScene::createFrom(const std::string& name, const Pixels& pixels, zelColorModel cm,
                           zelOrder order, zelCompression compression, const zelSize* page) const {
    const zelSize size(pixels.width, pixels.height, 1, pixels.channels);
    zelFile* const file = create(
        name, zelFileConfig(&size, pixels.type, order, cm, zelUpperLeftOrigin, compression, page));
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(writePixels(file, pixels), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);
}

zelStatus FileScene::statusOfReading(const std::string& name) const {
    zelStatus status = zelOKAY;
    zelFile* const file = zelFile::open(path(name).c_str(), 0, &status);
    if (!file)
        return status;
    zelSize size;
    file->getSize(size, zelUpperLeftOrigin);
    Pixels pixels(file->getDataType(), size.x, size.y, size.c);
    status = readPixels(file, pixels);
    EXPECT_EQ(file->close(0), zelOKAY);
    return status;
}

void FileScene::limitMemory([[maybe_unused]] std::size_t bytes) {
#if !defined(ZEL_SANITIZED)
    std::ifstream statm("/proc/self/statm");
    rlim_t pages = 0;
    statm >> pages;
    const rlim_t most = pages * static_cast<rlim_t>(getpagesize()) + bytes;
    const rlimit limit = {most, most};
    setrlimit(RLIMIT_AS, &limit);
#endif
}

} // namespace zel::test
