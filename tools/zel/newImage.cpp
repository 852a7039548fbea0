#include "newImage.h"

#include "formatList.h"
#include "valueNames.h"

#include <zel/zelTypeNames.h>

#include <algorithm>

namespace zel::tool {
namespace {

template <class T>
void addOnce(std::vector<T>& list, T value) {
    if (std::find(list.begin(), list.end(), value) == list.end()) {
        list.push_back(value);
    }
}

/// The models that an image of another can take, the best first. A palette that has colours
/// reduced is better than no colours.
std::vector<zelColorModel> neighboursOf(zelColorModel own, bool alpha) {
    const bool grey = own == zelNegative || own == zelLuminance || own == zelLuminanceAlpha;
    if (grey && alpha) {
        return {zelLuminanceAlpha, zelRGBA, zelABGR, zelRGBPalette, zelLuminance,
                zelNegative,       zelRGB,  zelBGR,  zelCMY};
    }
    if (grey) {
        return {zelLuminance, zelNegative, zelLuminanceAlpha, zelRGB, zelBGR, zelRGBA,
                zelABGR,      zelCMY,      zelRGBPalette};
    }
    if (alpha) {
        return {zelRGBA,       zelABGR,           zelRGB,       zelBGR,     zelCMY,
                zelRGBPalette, zelLuminanceAlpha, zelLuminance, zelNegative};
    }
    return {zelRGB,        zelBGR,       zelRGBA,     zelABGR,          zelCMY,
            zelRGBPalette, zelLuminance, zelNegative, zelLuminanceAlpha};
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
    if (own != zelRGBPalette ||
        keepsIndexes(source, options, options.type.value_or(source.layout.type))) {
        wanted.push_back(own);
    }
    for (const zelColorModel model : neighboursOf(own, hasAlpha(source))) {
        wanted.push_back(model);
    }
    std::vector<zelColorModel> choices;
    for (const zelColorModel model : wanted) {
        if (canBecome(own, model) && format.colorModelIsSupported(model)) {
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

bool isOfFormat(const SourceImage& source, const zelFormat& format) {
    return source.file.getFormat() == &format;
}

/// As it was in the same format. In another it is upright, since many programs do not look for an
/// orientation. 0 leaves the choice to the library.
zelOrientation orientationFor(const SourceImage& source, const ConvertOptions& options,
                              zelFormat& format) {
    if (options.orientation) {
        return *options.orientation;
    }
    const bool keeps =
        isOfFormat(source, format) || !format.orientationIsSupported(zelUpperLeftOrigin);
    return keeps ? zelOrientation{} : zelUpperLeftOrigin;
}

std::vector<zelCompression> compressionChoices(const SourceImage& source,
                                               const ConvertOptions& options, zelFormat& format) {
    if (options.compression) {
        return {*options.compression};
    }
    // What a picture lost in one format is no reason to lose more in another.
    const zelCompression own = source.file.getCompression();
    const bool inherits = own != zelJPEG || isOfFormat(source, format);
    std::vector<zelCompression> choices;
    for (const zelCompression compression : {inherits ? own : format.getPreferredCompression(),
                                             format.getPreferredCompression(), zelNoCompression}) {
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
    config.setOrientation(orientationFor(source, options, format));
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
            const std::vector<zelDataType> types = typesFor(model);
            if (types.empty() && !refusal.text) {
                refusal.text = "colours are reduced to indexes of type uchar only";
            }
            for (const zelDataType type : types) {
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
    std::vector<zelDataType> typesFor(zelColorModel model) const {
        const zelDataType own = source.layout.type;
        if (model != zelRGBPalette) {
            return typeChoices(source.palette ? source.palette->colorType() : own, options, format);
        }
        // The indexes of the source, or those that its colours are reduced to.
        std::vector<zelDataType> types;
        if (keepsIndexes(source, options, own)) {
            types.push_back(own);
        }
        if (mayReduce(model)) {
            addOnce(types, zelUChar);
        }
        std::erase_if(types, [&](zelDataType type) { return options.type.value_or(type) != type; });
        if (types.empty() && !format.typeIsSupported(*options.type)) {
            types.push_back(*options.type); // to be told so
        }
        return types;
    }

    /// A reduction may cost colours and alpha: where the format has full colours, they come first.
    bool mayReduce(zelColorModel model) const {
        const zelDataType own = source.layout.type;
        const bool alpha = hasAlpha(source);
        const bool mayLose = alpha || zelDataSize(own, 8) > 8;
        return options.model == model || !mayLose ||
               !keepsIndexes(source, options, options.type.value_or(own)) ||
               !format.colorModelIsSupported(alpha ? zelRGBA : zelRGB);
    }

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

bool keepsIndexes(const SourceImage& source, const ConvertOptions& options, zelDataType type) {
    return source.palette && !options.pixels.inputRange && type == source.layout.type;
}

void makeImage(const SourceImage& source, const ConvertOptions& options, zelFormat& format,
               const std::string& name, const MakeImage& make) {
    if (options.model && !canBecome(source.layout.model, *options.model)) {
        throw Failure{name, std::string("there is no way from colour model ") +
                                zelColorModelName(source.layout.model) + " to " +
                                zelColorModelName(*options.model)};
    }
    Attempts(source, options, format, name, make).run();
}

} // namespace zel::tool
