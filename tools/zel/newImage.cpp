#include "newImage.h"

#include "formatList.h"
#include "valueNames.h"

#include <zel/zelTypeNames.h>

#include <algorithm>
#include <numeric>

namespace zel::tool {
namespace {

template <class T>
void addOnce(std::vector<T>& list, T value) {
    if (std::find(list.begin(), list.end(), value) == list.end()) {
        list.push_back(value);
    }
}

zelTile3D<int> regionOf(const zelFile& file, const std::string& name,
                        const ConvertOptions& options) {
    zelSize size;
    file.getSize(size, zelUpperLeftOrigin);
    const zelTile3D<int> whole(0, 0, 0, size.x, size.y, size.z);
    if (!options.region) {
        return whole;
    }
    zelTile3D<int> region = *options.region;
    if (region.nz == 0) {
        region.nz = size.z;
    }
    if (!whole.contains(region)) {
        throw Failure{name, "the region is not wholly inside the image of " +
                                std::to_string(size.x) + "x" + std::to_string(size.y) + "x" +
                                std::to_string(size.z)};
    }
    return region;
}

std::vector<int> channelsOf(const zelFile& file, const std::string& name,
                            const ConvertOptions& options) {
    std::vector<int> channels = options.channels;
    if (channels.empty()) {
        channels.resize(static_cast<size_t>(file.getCsize()));
        std::iota(channels.begin(), channels.end(), 0);
    }
    for (const int channel : channels) {
        if (channel < 0 || channel >= file.getCsize()) {
            throw Failure{name, "there is no channel " + std::to_string(channel) +
                                    "; the image has " + std::to_string(file.getCsize()) +
                                    ", counted from 0"};
        }
    }
    return channels;
}

std::optional<Palette> paletteOf(zelFile& file, const std::string& name) {
    const zelColormap* map = nullptr;
    const zelStatus status = file.getColormap(map);
    if (status == zelOKAY && map) {
        return Palette(*map);
    }
    throw Failure{name, "the image is a palette of colours, but its colour map cannot be read"};
}

/// Whether the indexes of a palette can stay as they are.
bool keepsPalette(const SourceImage& source, const ConvertOptions& options) {
    return source.palette && !options.pixels.inputRange &&
           options.type.value_or(source.layout.type) == source.layout.type;
}

/// The colour models to try for a source, the nearest first.
std::vector<zelColorModel> modelChoices(const SourceImage& source, const ConvertOptions& options,
                                        zelFormat& format) {
    if (options.model) {
        return {*options.model};
    }
    const zelColorModel own = source.layout.model;
    std::vector<zelColorModel> wanted;
    if (own == zelNegative && options.type.value_or(zelBit) != zelBit) {
        // Only bits are commonly stored with 0 as white.
        wanted.push_back(zelLuminance);
    }
    if (own != zelRGBPalette || keepsPalette(source, options)) {
        wanted.push_back(own);
    }
    const bool grey = own == zelNegative || own == zelLuminance || own == zelLuminanceAlpha;
    const auto grays = zelColorModelHasAlpha(own)
                           ? std::vector{zelLuminanceAlpha, zelLuminance, zelNegative}
                           : std::vector{zelLuminance, zelNegative, zelLuminanceAlpha};
    const auto colors = zelColorModelHasAlpha(own)
                            ? std::vector{zelRGBA, zelABGR, zelRGB, zelBGR, zelCMY}
                            : std::vector{zelRGB, zelBGR, zelRGBA, zelABGR, zelCMY};
    wanted.insert(wanted.end(), (grey ? grays : colors).begin(), (grey ? grays : colors).end());
    wanted.insert(wanted.end(), (grey ? colors : grays).begin(), (grey ? colors : grays).end());
    std::vector<zelColorModel> choices;
    for (const zelColorModel model : wanted) {
        if (ColorConverter::isPossible(own, model) && format.colorModelIsSupported(model)) {
            addOnce(choices, model);
        }
    }
    return choices.empty() ? std::vector{own} : choices;
}

/// The element types to try, the best first: 0 leaves the choice to the library.
std::vector<zelDataType> typeChoices(zelDataType base, const ConvertOptions& options,
                                     zelFormat& format) {
    if (options.type) {
        return {*options.type};
    }
    const auto types = allDataTypes();
    const auto own = std::find(types.begin(), types.end(), base);
    std::vector<zelDataType> choices;
    const auto addSupported = [&](zelDataType type) {
        if (format.typeIsSupported(type)) {
            addOnce(choices, type);
        }
    };
    // Reals run from 0 to 1, so that types without sign hold them best.
    const bool wantsSign = zelDataIsIntegral(base) && zelDataIsSigned(base);
    const auto sameSign = [&](zelDataType type) {
        return !zelDataIsIntegral(type) || !zelDataIsSigned(type) == !wantsSign;
    };
    addSupported(base);
    // Programs expect reals in a format that is made for them.
    const zelDataType preferred = format.getPreferredType();
    if (zelDataIsIntegral(base) && preferred && !zelDataIsIntegral(preferred)) {
        addSupported(preferred);
    }
    // Wider types lose nothing. Of the others the widest loses least.
    for (auto type = own; type != types.end(); ++type) {
        if (sameSign(*type)) {
            addSupported(*type);
        }
    }
    for (auto type = own; type != types.begin();) {
        if (sameSign(*--type)) {
            addSupported(*type);
        }
    }
    choices.push_back(zelDataType{});
    for (auto type = own; type != types.begin();) {
        addSupported(*--type);
    }
    for (const zelDataType type : types) {
        addSupported(type);
    }
    return choices;
}

std::vector<zelCompression> compressionChoices(const SourceImage& source,
                                               const ConvertOptions& options, zelFormat& format) {
    if (options.compression) {
        return {*options.compression};
    }
    std::vector<zelCompression> choices;
    for (const zelCompression compression :
         {source.file.getCompression(), format.getPreferredCompression(), zelNoCompression}) {
        if (format.compressionIsSupported(compression)) {
            addOnce(choices, compression);
        }
    }
    return choices.empty() ? std::vector{zelCompression{}} : choices;
}

/// Settles all attributes. A status other than zelOKAY means that the format refuses them.
zelStatus settle(const SourceImage& source, const ConvertOptions& options, zelFormat& format,
                 zelFileConfig& config) {
    const zelColorModel model = config.getColorModel();
    const int channels =
        model == source.layout.model ? source.layout.channels : zelColorModelChans(model);
    config.setDimensions({source.region.nx, source.region.ny, source.region.nz, channels});
    config.setOrder(options.order.value_or(zelOrder{}));
    config.setOrientation(options.orientation.value_or(zelOrientation{}));
    zelStatus status = format.applyDefaults(&source.file, config);
    if (options.page) {
        const int pageChannels = config.getOrder() == zelSeparate ? 1 : channels;
        config.setPageDimensions({options.page->x, options.page->y, 1, pageChannels});
        status = format.applyDefaults(&source.file, config);
    }
    return status;
}

/// The first refusal, which is the one nearest to what the user asked for.
struct Refusal {
    std::optional<std::string> text;
    std::vector<std::pair<std::string, std::string>> warnings;
};

class Attempts {
public:
    Attempts(const SourceImage& src, const ConvertOptions& opts, zelFormat& fmt, std::string name,
             const MakeImage& make)
        : source(src), options(opts), format(fmt), shownName(std::move(name)), makeOne(make) {}

    void run() {
        for (const zelColorModel model : modelChoices(source, options, format)) {
            const bool expanded = source.palette && model != zelRGBPalette;
            const zelDataType base = expanded ? source.palette->colorType() : source.layout.type;
            const bool fixedType = model == zelRGBPalette && source.palette;
            for (const zelDataType type :
                 fixedType ? std::vector{base} : typeChoices(base, options, format)) {
                for (const zelCompression compression :
                     compressionChoices(source, options, format)) {
                    if (attempt(model, type, compression)) {
                        return;
                    }
                }
            }
        }
        for (const auto& [name, text] : refusal.warnings) {
            printWarning(name, text);
        }
        throw Failure{shownName, refusal.text.value_or("there is nothing that the format takes")};
    }

private:
    bool attempt(zelColorModel model, zelDataType type, zelCompression compression) {
        HeldWarnings held;
        zelFileConfig config;
        config.setColorModel(model);
        config.setDataType(type);
        config.setCompression(compression);
        zelStatus status = settle(source, options, format, config);
        if (status == zelOKAY) {
            status = makeOne(config);
        }
        const auto warnings = held.take();
        if (status == zelUNSUPPORTEDBYFORMAT) {
            if (!refusal.text) {
                refusal = {refusalText(format, config), warnings};
            }
            return false;
        }
        for (const auto& [name, text] : warnings) {
            printWarning(name, text);
        }
        require(shownName, status);
        return true;
    }

    const SourceImage& source;
    const ConvertOptions& options;
    zelFormat& format;
    std::string shownName;
    const MakeImage& makeOne;
    Refusal refusal;
};

} // namespace

SourceImage describeSource(zelFile& file, const std::string& name, const ConvertOptions& options) {
    const std::vector<int> channels = channelsOf(file, name, options);
    const int count = static_cast<int>(channels.size());
    const zelColorModel own = file.getColorModel();
    const int ownChannels = zelColorModelChans(own);
    const bool sameCount = own == zelMultiSpectral || count == ownChannels;
    const zelColorModel model = sameCount ? own : zelColorModelFromChans(count);
    return {file,
            name,
            regionOf(file, name, options),
            channels,
            {file.getDataType(), model, count},
            model == zelRGBPalette ? paletteOf(file, name) : std::nullopt};
}

void makeImage(const SourceImage& source, const ConvertOptions& options, zelFormat& format,
               const std::string& name, const MakeImage& make) {
    if (options.model && !ColorConverter::isPossible(source.layout.model, *options.model)) {
        throw Failure{name, std::string("there is no way from colour model ") +
                                zelColorModelName(source.layout.model) + " to " +
                                zelColorModelName(*options.model)};
    }
    Attempts(source, options, format, name, make).run();
}

} // namespace zel::tool
