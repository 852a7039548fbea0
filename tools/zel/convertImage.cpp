#include "convertImage.h"

#include "formatList.h"
#include "imageName.h"
#include "metadata.h"
#include "newImage.h"
#include "safeOutput.h"
#include "transfer.h"
#include "valueNames.h"

#include <set>

namespace zel::tool {
namespace {

/// The new file, which gains an image at a time.
class Output {
public:
    Output(const std::string& fullName, const ConvertOptions& opts)
        : name(splitImageName(fullName)), shownName(fullName), options(opts),
          format(findOutputFormat(name, opts.format)), safe(name.file, fullName) {}

    void add(zelFile& sourceFile, const std::string& sourceName) {
        const WorkingOn working(shownName);
        const SourceImage source = describeSource(sourceFile, sourceName, options);
        makeImage(source, options, format, shownName,
                  [&](zelFileConfig& config) { return file ? append(config) : create(config); });
        carryPalette(source);
        fill(source);
    }

    void commit() {
        require(shownName, file.release()->close(0));
        safe.commit();
        for (const std::string& note : notes) {
            printMessage(shownName, note);
        }
    }

private:
    zelStatus create(zelFileConfig& config) {
        ImageName temporary;
        temporary.file = safe.temporaryFile();
        temporary.arguments = name.arguments;
        zelStatus status = zelOKAY;
        file.reset(
            zelFile::create(joinImageName(temporary).c_str(), nullptr, &config, &format, &status));
        return status;
    }

    zelStatus append(zelFileConfig& config) {
        const zelStatus status = file->appendImg(nullptr, &config);
        if (status == zelUNSUPPORTEDBYFILE) {
            throw Failure{shownName, "this file cannot hold more than one image"};
        }
        return status;
    }

    void carryPalette(const SourceImage& source) {
        if (source.palette && file->getColorModel() == zelRGBPalette) {
            const zelColormap* map = nullptr;
            require(source.name, source.file.getColormap(map));
            require(shownName, file->setColormap(map));
        }
    }

    PlaneView viewOf(const SourceImage& source) const {
        const zelOrientation orientation = file->getOrientation();
        zelSize size;
        source.file.getSize(size, orientation);
        zelTile2D<int> tile = source.region;
        zelMapTile(zelUpperLeftOrigin, tile, orientation, size);
        return {orientation, tile};
    }

    void fill(const SourceImage& source) {
        const PixelLayout out{file->getDataType(), modelFor(source), file->getCsize()};
        const bool expands = source.palette && out.model != zelRGBPalette;
        PixelPipeline pipeline(source.layout, out, options.pixels,
                               expands ? source.palette : std::nullopt);
        if (!options.strip) {
            const auto lost = carryMetadata(source, *file, pipeline.values());
            if (!lost.empty()) {
                notes.insert("not carried: " + joinWords(lost));
            }
        }
        Progress progress(shownName, static_cast<double>(source.region.nx) * source.region.ny *
                                         source.region.nz);
        transferPixels({source.file, source.name, *file, shownName, viewOf(source), source.region.z,
                        source.region.nz, source.channels, source.layout, out, pipeline,
                        safe.folder(), progress});
        noteChanges(source, out, pipeline);
    }

    zelColorModel modelFor(const SourceImage& source) const {
        const zelColorModel model = file->getColorModel();
        // A format may have told apart what the conversion cannot: channels without a meaning.
        return ColorConverter::isPossible(source.layout.model, model) ? model : source.layout.model;
    }

    void noteChanges(const SourceImage& source, const PixelLayout& out,
                     const PixelPipeline& pipeline) {
        if (zelColorModelHasAlpha(source.layout.model) && !zelColorModelHasAlpha(out.model)) {
            notes.insert("alpha was dropped");
        }
        const std::string summary = pipeline.values().summary();
        if (!summary.empty()) {
            notes.insert(summary);
        }
    }

    ImageName name;
    std::string shownName;
    const ConvertOptions& options;
    zelFormat& format;
    SafeOutput safe;
    ImageFile file;
    std::set<std::string> notes;
};

void checkNames(const ImageName& in, const ImageName& out, const ConvertOptions& options) {
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
    Output output(out, options);
    const int images = options.allImages ? source->getNumImgs() : 1;
    for (int i = 0; i < images; ++i) {
        ImageName imageName = inName;
        if (options.allImages) {
            imageName.index = images > 1 ? i : -1;
            selectImage(*source, joinImageName(imageName), i);
        }
        output.add(*source, joinImageName(imageName));
    }
    output.commit();
}

} // namespace zel::tool
