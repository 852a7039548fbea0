#include "metadata.h"

#include "iccProfile.h"
#include "tagTexts.h"

#include <zel/zelFormat.h>

#include <array>
#include <numeric>

namespace zel::tool {
namespace {

using GetRange = zelStatus (zelFile::*)(double&, double&);
using SetRange = zelStatus (zelFile::*)(double, double);

// These stand for the statistics and the scale values, which are carried as numbers of the new
// image; others tell how the pixels are stored, which is settled for the new file by itself.
const std::vector<std::string> kSettledTags{"MinSampleValue",  "MaxSampleValue", "SMinSampleValue",
                                            "SMaxSampleValue", "channels",       "compression"};

// These are told along the rows and the columns of the file.
const TagNames kAxisTags{{"XResolution", "YResolution"}, {"YResolution", "XResolution"}};

/// Whether the rows of one file are the columns of the other.
bool isTransposed(const zelFile& from, const zelFile& to) {
    zelFlip flip{};
    int transposed = 0;
    zelMapFlipTrans(from.getOrientation(), flip, transposed, to.getOrientation());
    return transposed != 0;
}

/// Whether all pixels of the source are taken, and all of each.
bool isWhole(const SourceImage& source) {
    zelSize size;
    source.file.getSize(size, zelUpperLeftOrigin);
    std::vector<int> all(static_cast<size_t>(size.c));
    std::iota(all.begin(), all.end(), 0);
    return source.channels == all &&
           source.region == zelTile3D<int>(0, 0, 0, size.x, size.y, size.z);
}

/// The tags of an image's windows, where they say no more than that it is shown as it is.
std::vector<std::string> emptyTags(const SourceImage& source) {
    zelSize size;
    source.file.getSize(size, zelUpperLeftOrigin);
    const TagNames plain{{"dataWindowX", "0"},
                         {"dataWindowY", "0"},
                         {"displayWindowX", "0"},
                         {"displayWindowY", "0"},
                         {"displayWindowWidth", std::to_string(size.x)},
                         {"displayWindowHeight", std::to_string(size.y)}};
    std::vector<std::string> names;
    for (const TagText& tag : readTags(source.file)) {
        const auto found = plain.find(tag.name);
        if (found != plain.end() && found->second == tag.text) {
            names.push_back(tag.name);
        }
    }
    // One window lies in the other: without some of the numbers the rest mean another place.
    return names.size() == plain.size() ? names : std::vector<std::string>{};
}

/// What a profile tells colours from: grey, RGB or inks.
int colourSpace(zelColorModel model) {
    switch (model) {
    case zelLuminance:
    case zelLuminanceAlpha:
        return zelLuminance;
    case zelRGB:
    case zelRGBA:
    case zelBGR:
    case zelABGR:
    case zelRGBPalette:
        return zelRGB;
    default:
        return model;
    }
}

/// False if there is something to carry and the target does not take it.
bool carryRange(zelFile& from, zelFile& to, ValueMap map, GetRange get, SetRange set) {
    std::array<double, 2> range{};
    const auto isFull = [&range](const zelFile& file) {
        const ValueRange full = fullRange(file.getDataType());
        return range[0] == full.low && range[1] == full.high;
    };
    if ((from.*get)(range[0], range[1]) != zelOKAY || isFull(from)) {
        return true;
    }
    map.apply(range);
    return isFull(to) || (to.*set)(range[0], range[1]) == zelOKAY;
}

bool carryProfile(const SourceImage& source, zelFile& target) {
    const auto profile = readProfile(source.file);
    return !profile ||
           (colourSpace(source.file.getColorModel()) == colourSpace(target.getColorModel()) &&
            target.setICCProfile(static_cast<int>(profile->size()), profile->data()) == zelOKAY);
}

} // namespace

std::vector<std::string> carryMetadata(const SourceImage& source, zelFile& target,
                                       const ValueMap& values) {
    std::vector<std::string> lost;
    const auto note = [&](bool carried, const char* what) {
        if (!carried) {
            lost.emplace_back(what);
        }
    };
    // Where colours became others, the ranges of the old ones say nothing.
    if (source.file.getColorModel() == target.getColorModel()) {
        note(carryRange(source.file, target, values, &zelFile::getScaleMinMax,
                        &zelFile::setScaleMinMax),
             "scale values");
        note(!isWhole(source) || carryRange(source.file, target, values, &zelFile::getStatMinMax,
                                            &zelFile::setStatMinMax),
             "statistics");
    }
    note(carryProfile(source, target), "ICC profile");
    std::vector<std::string> except = emptyTags(source);
    except.insert(except.end(), kSettledTags.begin(), kSettledTags.end());
    const bool transposed = isTransposed(source.file, target);
    for (const std::string& name :
         copyTags(source.file, target, except, transposed ? kAxisTags : TagNames{})) {
        lost.push_back("tag " + name);
    }
    return lost;
}

} // namespace zel::tool
