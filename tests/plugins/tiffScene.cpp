#include "plugins/tiffScene.h"

#include <algorithm>

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

} // namespace zel::test
