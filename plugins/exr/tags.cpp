#include "tags.h"

#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfCompression.h>
#include <OpenEXR/ImfFloatAttribute.h>
#include <OpenEXR/ImfStringAttribute.h>
#include <array>
#include <cmath>

namespace zelexr {

namespace {

enum : int {
    channelsTag = 20,
    compressionTag,
    dataXTag = 30,
    dataYTag,
    displayXTag,
    displayYTag,
    displayWidthTag,
    displayHeightTag
};

constexpr unsigned text = zelkit::oneOf(zelTagString);
constexpr unsigned real = zelkit::oneOf(zelTagFloat);
constexpr unsigned whole = zelkit::oneOf(zelTagInt);

// Tags below channelsTag are attributes of the part's header of the same name.
constexpr zelTagDescription descriptions[] = {
    {1, text, "Owner of the image", "owner", "", nullptr},
    {2, text, "Comments", "comments", "", nullptr},
    {3, text, "Local time of capture, as YYYY:MM:DD hh:mm:ss", "capDate", "", nullptr},
    {4, text, "Program that made the image", "software", "", nullptr},
    {5, text, "Name of the part", "name", "", nullptr},
    {6, text, "View of a stereo image that the part is", "view", "", nullptr},
    {7, real, "Horizontal pixels per inch", "xDensity", "", nullptr},
    {8, real, "Width of a pixel by its height", "pixelAspectRatio", "1", nullptr},
    {9, real, "Luminance of R, G, B = 1 in candela per square metre", "whiteLuminance", "",
     nullptr},
    {10, real, "Exposure in seconds", "expTime", "", nullptr},
    {channelsTag, text, "Names of the part's channels as stored", "channels", "", nullptr},
    {compressionTag, text, "Compression of the part", "compression", "", nullptr},
    {dataXTag, whole, "Left edge of the data window, which is the image", "dataWindowX", "0",
     nullptr},
    {dataYTag, whole, "Upper edge of the data window", "dataWindowY", "0", nullptr},
    {displayXTag, whole, "Left edge of the display window", "displayWindowX", "", nullptr},
    {displayYTag, whole, "Upper edge of the display window", "displayWindowY", "", nullptr},
    {displayWidthTag, whole, "Width of the display window", "displayWindowWidth", "", nullptr},
    {displayHeightTag, whole, "Height of the display window", "displayWindowHeight", "", nullptr},
};

const char* compressionName(Imf::Compression compression) {
    constexpr std::array names = {"none",  "rle", "zips", "zip",  "piz",
                                  "pxr24", "b44", "b44a", "dwaa", "dwab"};
    const auto index = static_cast<std::size_t>(compression);
    return index < names.size() ? names[index] : "unknown";
}

std::string channelList(const Imf::Header& header) {
    std::string names;
    const Imf::ChannelList& list = header.channels();
    for (auto channel = list.begin(); channel != list.end(); ++channel)
        names += (names.empty() ? "" : ", ") + std::string(channel.name());
    return names;
}

double extent(int low, int high) {
    return static_cast<double>(high) - low + 1;
}

bool placeBox(double x, double y, double width, double height, Imath::Box2i& box) {
    constexpr double most = 1 << 30;
    if (!(std::fabs(x) < most && std::fabs(y) < most && width >= 1 && height >= 1) ||
        x + width >= most || y + height >= most)
        return false;
    box.min = {static_cast<int>(x), static_cast<int>(y)};
    box.max = {static_cast<int>(x + width - 1), static_cast<int>(y + height - 1)};
    return true;
}

} // namespace

std::span<const zelTagDescription> tagTable() {
    return descriptions;
}

bool isReadOnly(int tag) {
    return tag == channelsTag || tag == compressionTag;
}

void readTags(const Imf::Header& header, zelkit::Fields& fields) {
    fields.clear();
    for (const zelTagDescription& known : descriptions) {
        if (known.tag >= channelsTag)
            break;
        if (const auto* words = header.findTypedAttribute<Imf::StringAttribute>(known.name))
            fields.set(known.tag, words->value());
        else if (const auto* number = header.findTypedAttribute<Imf::FloatAttribute>(known.name))
            fields.set(known.tag, double{number->value()});
    }
    fields.set(channelsTag, channelList(header));
    fields.set(compressionTag, std::string(compressionName(header.compression())));
    const Imath::Box2i& data = header.dataWindow();
    const Imath::Box2i& display = header.displayWindow();
    fields.set(dataXTag, double(data.min.x));
    fields.set(dataYTag, double(data.min.y));
    fields.set(displayXTag, double(display.min.x));
    fields.set(displayYTag, double(display.min.y));
    fields.set(displayWidthTag, extent(display.min.x, display.max.x));
    fields.set(displayHeightTag, extent(display.min.y, display.max.y));
}

void writeTags(const zelkit::Fields& fields, Imf::Header& header) {
    for (const zelTagDescription& known : descriptions) {
        if (known.tag >= channelsTag)
            break;
        if (const std::string* const words = fields.text(known.tag))
            header.insert(known.name, Imf::StringAttribute(*words));
        else if (const double* const number = fields.number(known.tag))
            header.insert(known.name, Imf::FloatAttribute(static_cast<float>(*number)));
    }
}

bool placeWindows(const zelkit::Fields& fields, int width, int height, Imath::Box2i& data,
                  Imath::Box2i& display) {
    const double x = fields.numberOr(dataXTag, 0);
    const double y = fields.numberOr(dataYTag, 0);
    return placeBox(x, y, width, height, data) &&
           placeBox(fields.numberOr(displayXTag, x), fields.numberOr(displayYTag, y),
                    fields.numberOr(displayWidthTag, width),
                    fields.numberOr(displayHeightTag, height), display);
}

} // namespace zelexr
