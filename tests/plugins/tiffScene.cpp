#include "plugins/tiffScene.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace zel::test {

namespace {

class Bytes {
public:
    explicit Bytes(bool bigEndian) : bigEndian_(bigEndian) {}
    void put(std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; i++)
            text.push_back(static_cast<char>(value >> 8 * (bigEndian_ ? bytes - 1 - i : i)));
    }
    std::string text;

private:
    bool bigEndian_;
};

} // namespace

std::string handMadeTiff(bool bigEndian, int width, int height, std::vector<HandTag> tags,
                         const std::string& data) {
    const bool tiled = std::ranges::any_of(tags, [](const auto& tag) { return tag.number == 322; });
    tags.push_back({256, 4, {static_cast<std::uint32_t>(width)}});
    tags.push_back({257, 4, {static_cast<std::uint32_t>(height)}});
    tags.push_back({tiled ? 324 : 273, 4, {8}});
    tags.push_back({tiled ? 325 : 279, 4, {static_cast<std::uint32_t>(data.size())}});
    std::ranges::sort(tags, {}, &HandTag::number);

    const auto directory = static_cast<std::uint32_t>(8 + data.size() + data.size() % 2);
    auto behind = directory + 6 + 12 * static_cast<std::uint32_t>(tags.size());
    Bytes file(bigEndian), entries(bigEndian), values(bigEndian);
    for (const HandTag& tag : tags) {
        const int width1 = tag.type == 3 ? 2 : 4;
        const std::size_t bytes = tag.values.size() * static_cast<std::size_t>(width1);
        entries.put(static_cast<std::uint32_t>(tag.number), 2);
        entries.put(static_cast<std::uint32_t>(tag.type), 2);
        entries.put(static_cast<std::uint32_t>(tag.values.size()), 4);
        Bytes& to = bytes > 4 ? values : entries;
        if (bytes > 4)
            entries.put(behind + static_cast<std::uint32_t>(values.text.size()), 4);
        for (const std::uint32_t value : tag.values)
            to.put(value, width1);
        if (bytes < 4)
            entries.put(0, 4 - static_cast<int>(bytes));
    }
    file.text = bigEndian ? "MM" : "II";
    file.put(42, 2);
    file.put(directory, 4);
    file.text += data + std::string(data.size() % 2, '\0');
    file.put(static_cast<std::uint32_t>(tags.size()), 2);
    file.text += entries.text;
    file.put(0, 4);
    return file.text + values.text;
}

std::vector<double> numbers(const Pixels& pixels) {
    std::vector<double> list;
    for (int y = 0; y < pixels.height; y++)
        for (int x = 0; x < pixels.width; x++)
            for (int c = 0; c < pixels.channels; c++)
                list.push_back(pixels.at(x, y, c));
    return list;
}

std::string TiffScene::content(const std::string& name) const {
    std::ifstream in(path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void TiffScene::run(const std::string& command) const {
    const std::string line = "cd '" + dir_.path().string() + "' && (" + command + ") 2>messages";
    EXPECT_EQ(std::system(line.c_str()), 0) << command << "\n" << content("messages");
}

std::string TiffScene::output(const std::string& command) const {
    run("(" + command + ") >output");
    return content("output");
}

zelFile* TiffScene::open(const std::string& name, int mode) const {
    zelStatus status = zelOKAY;
    zelFile* const file = zelFile::open(path(name).c_str(), mode, &status);
    EXPECT_NE(file, nullptr) << name << ": " << zelMainStatusToString(zelStatusMain(status));
    return file;
}

Pixels TiffScene::read(const std::string& name) const {
    zelFile* const file = open(name);
    if (!file)
        return Pixels(zelUChar, 0, 0, 1);
    const Pixels pixels = readPixels(file);
    EXPECT_EQ(file->close(0), zelOKAY);
    return pixels;
}

zelFile* TiffScene::create(const std::string& name, const zelFileConfig& config) const {
    zelStatus status = zelOKAY;
    zelFile* const file = zelFile::create(path(name).c_str(), nullptr, &config, nullptr, &status);
    EXPECT_NE(file, nullptr) << name << ": " << zelMainStatusToString(zelStatusMain(status));
    return file;
}

void TiffScene::createFrom(const std::string& name, const Pixels& pixels, zelColorModel cm,
                           zelOrder order, zelCompression compression, const zelSize* page) const {
    const zelSize size(pixels.width, pixels.height, 1, pixels.channels);
    zelFile* const file = create(
        name, zelFileConfig(&size, pixels.type, order, cm, zelUpperLeftOrigin, compression, page));
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(writePixels(file, pixels), zelOKAY);
    EXPECT_EQ(file->close(0), zelOKAY);
}

zelStatus TiffScene::statusOfReading(const std::string& name) const {
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

} // namespace zel::test
