#include "convertImage.h"

#include "colorSurvey.h"
#include "formatList.h"
#include "imageName.h"
#include "metadata.h"
#include "newImage.h"
#include "safeOutput.h"
#include "transfer.h"
#include "valueNames.h"

#include <algorithm>
#include <string_view>

namespace zel::tool {
namespace {

/// The bytes of an image's numbers.
double sampleBytes(const zelSize& size, zelDataType type) {
    const double samples = static_cast<double>(size.x) * size.y * size.z * size.c;
    return samples * static_cast<double>(zelDataSize(type, 8)) / 8;
}

/// Whether a file might not fit into the 4 GiB of a TIFF that is no BigTIFF. The plug-in has to
/// choose before it knows of any image but the first.
bool mayBeBigTiff(const zelFormat& format, const zelFileConfig& first, double laterBytes) {
    constexpr double limit = 63.0 * (1 << 26);
    // Compressed noise grows.
    const double growth = first.getCompression() == zelNoCompression ? 1 : 2;
    const double bytes = sampleBytes(first.getDimensions(), first.getDataType()) + laterBytes;
    return std::string_view(format.getName()) == "TIFF" && laterBytes > 0 && growth * bytes > limit;
}

/// The new file, which gains an image at a time.
class Output {
public:
    /// `bytes` is about the size of the images that will be added behind the first.
    Output(const std::string& fullName, const ConvertOptions& opts, double bytes)
        : laterBytes(bytes), name(splitImageName(fullName)), shownName(fullName), options(opts),
          format(findOutputFormat(name, opts.format)), safe(name.file, fullName) {}

    ~Output() {
        const WorkingOn working(shownName, safe.temporaryFile());
        file.reset();
    }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    void add(zelFile& sourceFile, const std::string& sourceName) {
        const WorkingOn working(shownName, safe.temporaryFile());
        const SourceImage source = describeSource(sourceFile, sourceName, options);
        if (file) {
            append(source);
        } else {
            makeImage(source, options, format, shownName,
                      [&](zelFileConfig& config) { return create(config, source); });
        }
        fill(source);
    }

    void commit() {
        const WorkingOn working(shownName, safe.temporaryFile());
        require(shownName, file.release()->close(0));
        safe.commit();
        printNotes();
    }

private:
    zelStatus create(zelFileConfig& config, const SourceImage& source) {
        ImageName temporary;
        temporary.file = safe.temporaryFile();
        temporary.arguments = name.arguments;
        std::string arguments = name.arguments.value_or("");
        if (mayBeBigTiff(format, config, laterBytes) &&
            arguments.find("bigtiff") == std::string::npos) {
            temporary.arguments = arguments + (arguments.empty() ? "bigtiff" : "%bigtiff");
        }
        zelStatus status = zelOKAY;
        file.reset(
            zelFile::create(joinImageName(temporary).c_str(), nullptr, &config, &format, &status));
        if (status == zelOKAY && mayLoseAlpha(config, source)) {
            carryPalette(source);
            if (!paletteHasAlpha()) {
                file.reset();
                return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
            }
        }
        if (status != zelOKAY || hasCompressionAskedFor()) {
            first = config;
            return status;
        }
        const bool mayExpand = config.getColorModel() == zelRGBPalette && !options.model;
        if (!mayExpand) {
            throw Failure{shownName, refusalText(format, config)};
        }
        file.reset();
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    }

    void append(const SourceImage& source) {
        try {
            makeImage(source, options, format, shownName, [&](zelFileConfig& config) {
                if (mayLoseAlpha(config, source) && !palettesHoldAlpha) {
                    return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
                }
                const zelStatus status = file->appendImg(nullptr, &config);
                if (status == zelOKAY && !hasCompressionAskedFor()) {
                    throw Failure{shownName, refusalText(format, config)};
                }
                return status;
            });
        } catch (const Failure&) {
            // The file is lost anyway: does it refuse this image, or even its first one again?
            const zelMainStatus status = zelStatusMain(file->appendImg(nullptr, &first));
            if (status == zelUNSUPPORTEDBYFORMAT || status == zelUNSUPPORTEDBYFILE) {
                throw Failure{shownName, "this file cannot hold more than one image"};
            }
            throw;
        }
    }

    /// A format may take another compression for one that does not suit the pixels.
    bool hasCompressionAskedFor() const {
        return !options.compression || file->getCompression() == *options.compression;
    }

    /// Whether the indexes of a palette with alpha could become colours with alpha.
    bool mayLoseAlpha(const zelFileConfig& config, const SourceImage& source) const {
        return config.getColorModel() == zelRGBPalette && source.palette && hasAlpha(source) &&
               !options.model && format.colorModelIsSupported(zelRGBA);
    }

    /// Whether the colour map that was set last has been taken with its alpha.
    bool paletteHasAlpha() {
        const zelColormap* map = nullptr;
        const bool has = file->getColormap(map) == zelOKAY && map && map->getNumChans() > 3;
        palettesHoldAlpha = palettesHoldAlpha || has;
        return has;
    }

    void carryPalette(const SourceImage& source) {
        const zelColormap* map = nullptr;
        require(source.name, source.file.getColormap(map));
        require(shownName, file->setColormap(map));
    }

    PaletteMapper makePalette(const SourceImage& source, const PixelPipeline::Options& pixels) {
        const ColorHistogram colors = surveyColors(source, pixels, shownName);
        ReducedPalette palette = reduceColors(colors);
        const zelColormap map = palette.colormap();
        require(shownName, file->setColormap(&map));
        dropsAlpha = dropsAlpha || (palette.hasTransparent && !paletteHasAlpha());
        reducesColors = reducesColors || !palette.exact;
        cutsAlpha = cutsAlpha || colors.hasPartialAlpha();
        return {std::move(palette), options.dithers};
    }

    /// The numbers that the source says to stand for black and white count as its full range,
    /// unless the new image keeps them and says so too.
    PixelPipeline::Options pixelOptions(const SourceImage& source) {
        PixelPipeline::Options pixels = options.pixels;
        const std::optional<ValueRange> shown = shownRange(source);
        if (pixels.mode != ValueMode::scale || pixels.inputRange || !shown) {
            return pixels;
        }
        const zelDataType type = file->getDataType();
        const bool keepsReals = !zelDataIsIntegral(source.layout.type) && !zelDataIsIntegral(type);
        const bool keepsNumbers =
            type == source.layout.type && modelFor(source) == source.layout.model;
        const bool says = !options.strip && keepsNumbers &&
                          file->setScaleMinMax(shown->low, shown->high) == zelOKAY;
        if (!keepsReals && !says) {
            pixels.inputRange = shown;
        }
        return pixels;
    }

    void fill(const SourceImage& source) {
        const PixelLayout out{file->getDataType(), modelFor(source), file->getCsize()};
        const PixelPipeline::Options pixels = pixelOptions(source);
        const bool indexed = out.model == zelRGBPalette;
        const bool keeps = indexed && keepsIndexes(source, options, out.type);
        std::optional<PaletteMapper> mapper;
        if (keeps) {
            carryPalette(source);
            dropsAlpha = dropsAlpha || (hasAlpha(source) && !paletteHasAlpha());
            cutsAlpha = cutsAlpha || (source.palette->hasPartialAlpha() && paletteHasAlpha() &&
                                      !format.colorModelIsSupported(zelRGBA));
        } else if (indexed) {
            mapper.emplace(makePalette(source, pixels));
        }
        PixelPipeline pipeline(source.layout, mapper ? kReducibleLayout : out, pixels,
                               keeps ? std::nullopt : source.palette);
        if (!options.strip) {
            for (const std::string& what : carryMetadata(source, *file, pipeline.values())) {
                if (std::find(lost.begin(), lost.end(), what) == lost.end()) {
                    lost.push_back(what);
                }
            }
        }
        Progress progress(shownName, static_cast<double>(source.region.nx) * source.region.ny *
                                         source.region.nz);
        transferPixels({source, *file, shownName, viewOf(source, file->getOrientation()), out,
                        pipeline, mapper ? &*mapper : nullptr, safe.folder(), progress});
        dropsAlpha =
            dropsAlpha || (hasAlpha(source) && !indexed && !zelColorModelHasAlpha(out.model));
        noteValues(pipeline.values());
    }

    zelColorModel modelFor(const SourceImage& source) const {
        const zelColorModel model = file->getColorModel();
        // A format may have told apart what the conversion cannot: channels without a meaning.
        return canBecome(source.layout.model, model) ? model : source.layout.model;
    }

    /// Images of the same types share a note.
    void noteValues(const ValueMap& map) {
        for (ValueMap& other : valueMaps) {
            if (other.join(map)) {
                return;
            }
        }
        valueMaps.push_back(map);
    }

    void printNotes() const {
        std::vector<std::string> notes;
        if (reducesColors) {
            notes.emplace_back("colours reduced to a palette of 256");
        }
        if (cutsAlpha) {
            notes.emplace_back("alpha cut: half and more is opaque, the rest transparent");
        }
        if (dropsAlpha) {
            notes.emplace_back("alpha was dropped");
        }
        if (!lost.empty()) {
            notes.push_back("not carried: " + joinWords(lost));
        }
        std::string values;
        for (const ValueMap& map : valueMaps) {
            const std::string summary = map.summary();
            values += values.empty() || summary.empty() ? summary : "; " + summary;
        }
        if (!values.empty()) {
            notes.push_back(values);
        }
        for (const std::string& note : notes) {
            printMessage(shownName, note);
        }
    }

    double laterBytes;
    ImageName name;
    std::string shownName;
    const ConvertOptions& options;
    zelFormat& format;
    SafeOutput safe;
    ImageFile file;
    zelFileConfig first; ///< of the file's first image
    bool reducesColors = false;
    bool cutsAlpha = false;
    bool palettesHoldAlpha = false; ///< as far as is known
    bool dropsAlpha = false;
    std::vector<std::string> lost; ///< what could not be carried
    std::vector<ValueMap> valueMaps;
};

void checkNames(const ImageName& in, const ImageName& out, const ConvertOptions& options) {
    requireFileName(joinImageName(out));
    if (out.index >= 0) {
        throw UsageError{"OUT names a whole new file and takes no image index"};
    }
    if (in.index >= 0 && options.allImages) {
        throw UsageError{"--all takes every image, but IN names image " + std::to_string(in.index)};
    }
}

} // namespace

void convertImage(const std::string& in, const std::string& out, const ConvertOptions& options) {
    const ImageName inName = splitImageName(in);
    checkNames(inName, splitImageName(out), options);
    const WorkingOn working(in);
    const ImageFile source = openImage(in);
    const int images = options.allImages ? source->getNumImgs() : 1;
    const auto select = [&](int index) {
        ImageName imageName = inName;
        if (options.allImages) {
            imageName.index = images > 1 ? index : -1;
            selectImage(*source, joinImageName(imageName), index);
        }
        return joinImageName(imageName);
    };
    double laterBytes = 0;
    for (int i = 1; i < images; ++i) {
        const SourceImage image = describeSource(*source, select(i), options);
        // Colours in place of indexes take four times as much.
        const bool expands = image.palette && options.model != zelRGBPalette;
        const zelSize size(image.region.nx, image.region.ny, image.region.nz,
                           static_cast<int>(image.channels.size()) * (expands ? 4 : 1));
        laterBytes += sampleBytes(size, options.type.value_or(image.layout.type));
    }
    Output output(out, options, laterBytes);
    for (int i = 0; i < images; ++i) {
        const std::string imageName = select(i);
        output.add(*source, imageName);
    }
    output.commit();
    if (const int all = source->getNumImgs(); all > 1 && !options.allImages && inName.index < 0) {
        printMessage(out, "this is the first of " + std::to_string(all) +
                              " images; --all takes every one");
    }
}

} // namespace zel::tool
