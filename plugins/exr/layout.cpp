#include "layout.h"

#include "kit/sizes.h"

#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfPartType.h>
#include <OpenEXR/ImfTileDescription.h>
#include <algorithm>
#include <climits>
#include <cstdio>

namespace zelexr {

namespace {

// Colours first, as programs expect them, with alpha behind them and all else by name.
int rankOf(const std::string& name) {
    constexpr const char* first[] = {"R", "G", "B", "Y", "A"};
    const auto* const found = std::find(std::begin(first), std::end(first), name);
    return static_cast<int>(found - std::begin(first));
}

zelColorModel modelOf(const std::vector<std::string>& names) {
    using Names = std::vector<std::string>;
    if (names.size() == 1)
        return zelLuminance;
    if (names == Names{"Y", "A"})
        return zelLuminanceAlpha;
    if (names == Names{"R", "G", "B"})
        return zelRGB;
    return names == Names{"R", "G", "B", "A"} ? zelRGBA : zelMultiSpectral;
}

int rowsInBlock(Imf::Compression compression) {
    switch (compression) {
    case Imf::NO_COMPRESSION:
    case Imf::RLE_COMPRESSION:
    case Imf::ZIPS_COMPRESSION:
        return 1;
    case Imf::ZIP_COMPRESSION:
    case Imf::PXR24_COMPRESSION:
        return 16;
    case Imf::DWAB_COMPRESSION:
        return 256;
    default:
        return 32;
    }
}

zelCompression compressionOf(Imf::Compression compression) {
    if (compression == Imf::NO_COMPRESSION)
        return zelNoCompression;
    const bool zip = compression == Imf::ZIP_COMPRESSION || compression == Imf::ZIPS_COMPRESSION;
    return zip ? zelZIP : zelUnknownCompression;
}

// Tiles that are not too large are the pages; of others OpenEXR keeps a row.
void describeTiles(const Imf::Header& header, Layout& layout) {
    constexpr std::int64_t mostBytes = 16 << 20;
    if (!header.hasTileDescription() || layout.chroma || layout.deep)
        return;
    const Imf::TileDescription& tiles = header.tileDescription();
    const auto channels = static_cast<std::int64_t>(layout.channels.size());
    const auto bytes = zelkit::checkedProduct({tiles.xSize, tiles.ySize, channels, 4});
    if (!bytes || *bytes < 1 || *bytes > mostBytes)
        return;
    layout.tileWidth =
        static_cast<int>(std::min<unsigned>(tiles.xSize, static_cast<unsigned>(layout.width)));
    layout.tileHeight =
        static_cast<int>(std::min<unsigned>(tiles.ySize, static_cast<unsigned>(layout.height)));
}

// True if the blocks, and the rows of tiles that OpenEXR keeps, are no larger than the file
// justifies.
bool blocksFit(const Imf::Header& header, const Layout& layout, std::int64_t fileBytes) {
    const auto limit = zelkit::checkedProduct({fileBytes, 4096});
    const auto channels = static_cast<std::int64_t>(layout.channels.size());
    std::int64_t rows = std::min(rowsInBlock(header.compression()), layout.height);
    std::int64_t width = layout.width;
    if (header.hasTileDescription() && !layout.deep) {
        const Imf::TileDescription& tiles = header.tileDescription();
        rows = tiles.ySize;
        width = layout.tileWidth > 0 ? tiles.xSize : std::max<std::int64_t>(width, tiles.xSize);
    }
    const auto bytes = zelkit::checkedProduct({rows, width, channels, 4});
    return bytes && limit && *bytes <= *limit + (16 << 20);
}

zelStatus describeChannels(const Imf::Header& header, Layout& layout) {
    const Imf::ChannelList& list = header.channels();
    const bool chroma = list.findChannel("Y") && list.findChannel("RY") && list.findChannel("BY");
    bool numbers = true;
    bool dense = true;
    for (auto channel = list.begin(); channel != list.end(); ++channel) {
        // Numbers of things are not to be mixed as colours are.
        if (layout.deep && channel.channel().type == Imf::UINT)
            continue;
        layout.channels.emplace_back(channel.name());
        numbers = numbers && channel.channel().type == Imf::UINT;
        dense = dense && channel.channel().xSampling == 1 && channel.channel().ySampling == 1;
    }
    layout.chroma = chroma && !dense;
    if (layout.channels.empty() || (!dense && !chroma))
        return zelStatusEncode(zelUNSUPPORTEDBYFILE);
    if (layout.chroma) {
        layout.channels = {"R", "G", "B"};
        if (list.findChannel("A"))
            layout.channels.emplace_back("A");
    }
    // The list is sorted by name.
    std::ranges::stable_sort(layout.channels, {}, rankOf);
    layout.type = numbers && !layout.chroma && !layout.deep ? zelUInt : zelFloat;
    layout.colorModel = modelOf(layout.channels);
    return zelOKAY;
}

} // namespace

zelStatus describe(const Imf::Header& header, std::int64_t fileBytes, Layout& layout) {
    layout = {};
    layout.deep = header.hasType() && Imf::isDeepData(header.type());
    if (layout.deep && header.type() != Imf::DEEPSCANLINE)
        return zelStatusEncode(zelUNSUPPORTEDBYFILE);
    layout.window = header.dataWindow();
    const std::int64_t width = std::int64_t{layout.window.max.x} - layout.window.min.x + 1;
    const std::int64_t height = std::int64_t{layout.window.max.y} - layout.window.min.y + 1;
    if (width < 1 || width > INT_MAX || height < 1 || height > INT_MAX)
        return zelStatusEncode(zelCORRUPTED);
    layout.width = static_cast<int>(width);
    layout.height = static_cast<int>(height);
    layout.compression = compressionOf(header.compression());
    const zelStatus status = describeChannels(header, layout);
    if (status != zelOKAY)
        return status;
    describeTiles(header, layout);
    return blocksFit(header, layout, fileBytes) ? zelOKAY : zelStatusEncode(zelCORRUPTED);
}

std::vector<std::string> channelNames(zelColorModel model, int channels) {
    switch (model) {
    case zelLuminance:
        return {"Y"};
    case zelLuminanceAlpha:
        return {"Y", "A"};
    case zelRGB:
        return {"R", "G", "B"};
    case zelRGBA:
        return {"R", "G", "B", "A"};
    default:
        break;
    }
    // Such that the order by name is the order by number.
    std::vector<std::string> names;
    for (int i = 0; i < channels; i++) {
        char name[24];
        std::snprintf(name, sizeof name, "channel%05d", i);
        names.emplace_back(name);
    }
    return names;
}

} // namespace zelexr
