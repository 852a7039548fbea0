// Who the plug-in says it is, and whether what it says it can do is what it does.

#include "checks.h"

#include <zel/zelDictionary.h>
#include <zel/zelFormatDB.h>
#include <zel/zelList.h>
#include <zel/zelTypeNames.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <strings.h>

namespace zel::check {

namespace {

std::vector<std::string> suffixesOf(const Subject& subject) {
    if (!subject.options.suffix.empty())
        return {subject.options.suffix};
    const zelFormat* const format = subject.format;
    std::vector<std::string> suffixes;
    zelDictionary* const entries = zelFormatDB::getDictionary();
    const auto* const entry = dynamic_cast<const zelFormatDB*>(
        entries && format->getName() ? entries->find(format->getName(), 0) : nullptr);
    if (entry && entry->getSuffixes()) {
        zelListIter<zelSuffixItem> items(*entry->getSuffixes());
        while (const zelSuffixItem* item = items.next())
            suffixes.emplace_back(item->suffix);
    }
    if (suffixes.empty())
        suffixes.emplace_back("");
    return suffixes;
}

void requirePreferences(zelFormat* format) {
    require(format->typeIsSupported(format->getPreferredType()), "the type");
    require(format->orderIsSupported(format->getPreferredOrder()), "the order");
    require(format->orientationIsSupported(format->getPreferredOrientation()), "the orientation");
    require(format->compressionIsSupported(format->getPreferredCompression()), "the compression");
    for (int channels = 0; channels <= 5; channels++) {
        const zelColorModel model = format->getPreferredColorModel(channels);
        const std::string title = "the colour model for " + std::to_string(channels) + " channels";
        if (model == 0 && channels != 0)
            continue; // none for that count
        require(format->colorModelIsSupported(model), title);
        const int fixed = zelColorModelChans(model);
        require(channels == 0 || fixed == 0 || fixed == channels, title + " has others");
    }
}

void requirePreferredPage(zelFormat* format, const zelSize& size, zelOrientation orientation) {
    zelSize page(0, 0, 0, 0);
    format->getPreferredPageSize(size.x, size.y, size.z, size.c, page.x, page.y, page.z, page.c,
                                 orientation);
    require(page.x > 0 && page.y > 0 && page.z > 0 && page.c > 0, "a page without extent");
    require(format->pageSizeIsSupported(size.x, size.y, size.z, size.c, page.x, page.y, page.z,
                                        page.c, orientation),
            "the preferred page is not supported");
}

// Whether the format takes any page that is smaller than the image.
bool takesSmallPages(zelFormat* format, const zelSize& size, zelOrientation orientation) {
    zelSize page(0, 0, 0, 0);
    format->getPreferredPageSize(size.x, size.y, size.z, size.c, page.x, page.y, page.z, page.c,
                                 orientation);
    if ((page.x < size.x || page.y < size.y) &&
        format->pageSizeIsSupported(size.x, size.y, size.z, size.c, page.x, page.y, page.z, page.c,
                                    orientation) != 0) {
        return true;
    }
    const auto takes = [&](int x, int y) {
        return std::ranges::any_of(std::array{size.c, 1}, [&](int c) {
            return format->pageSizeIsSupported(size.x, size.y, size.z, size.c, x, y, 1, c,
                                               orientation) != 0;
        });
    };
    return std::ranges::any_of(std::array{1, 5, 16, 32, 64, 128, 256, 512, 1024}, [&](int extent) {
        return takes(size.x, extent) || takes(extent, size.y) || takes(extent, extent);
    });
}

void requirePageClaims(zelFormat* format, zelOrientation orientation) {
    const zelSize size(3000, 2000, 1, 1);
    const bool paging = format->pagingIsSupported() != 0;
    require(takesSmallPages(format, size, orientation) == paging,
            paging ? "supported, but no page smaller than the image is"
                   : "not supported, but pages smaller than the image are");
    for (const zelSize& page :
         {zelSize(-1, 5, 1, 1), zelSize(5, -1, 1, 1), zelSize(5, 5, -1, 1), zelSize(5, 5, 1, -1)})
        require(
            !format->pageSizeIsSupported(5, 5, 1, 1, page.x, page.y, page.z, page.c, orientation),
            "pages below 0 are supported");
}

void checkPages(const Subject& subject, Tally& tally) {
    zelFormat* const format = subject.format;
    for (const zelOrientation orientation : allOrientations()) {
        if (!format->orientationIsSupported(orientation))
            continue;
        for (const auto& [width, height] : {std::pair{1, 1}, {7, 5}, {3000, 2000}})
            for (const int channels : {1, 3})
                if (format->sizeIsSupported(width, height, 1, channels, orientation))
                    tally.run("pages of an image of " + std::to_string(width) + " x " +
                                  std::to_string(height) + ", " + zelOrientationName(orientation),
                              [&, w = width, h = height] {
                                  requirePreferredPage(format, zelSize(w, h, 1, channels),
                                                       orientation);
                              });
        if (format->sizeIsSupported(3000, 2000, 1, 1, orientation))
            tally.run(std::string("paging, ") + zelOrientationName(orientation),
                      [&] { requirePageClaims(format, orientation); });
        tally.run("sizes below 0", [&] {
            require(!format->sizeIsSupported(-1, 5, 1, 1, orientation) &&
                        !format->sizeIsSupported(5, -1, 1, 1, orientation) &&
                        !format->sizeIsSupported(5, 5, -1, 1, orientation) &&
                        !format->sizeIsSupported(5, 5, 1, -1, orientation),
                    "supported");
        });
    }
}

// Whether a small image of the kind can be made, and whether it comes back as it was.
bool isAccepted(const Subject& subject, Kind& kind, const std::vector<std::string>& suffixes) {
    const zelSize size = kind.sizeOf(7, 5);
    for (const std::string& suffix : suffixes) {
        std::strncpy(kind.suffix, suffix.c_str(), sizeof kind.suffix - 1);
        zelStatus status = zelOKAY;
        OpenFile file = subject.tryCreate(kind, size, nullptr, status);
        // A format may take another compression for what does not suit the pixels, if it says so.
        if (!file || (file->getCompression() != kind.compression && !subject.hasWishes()))
            continue;
        kind.stated = file->getCompression();
        require(file->getDataType() == kind.type && file->getColorModel() == kind.model &&
                    file->getCsize() == kind.channels,
                "the file that is created has another type or colour model");
        const Picture written = Picture::noise(kind.type, size, 1);
        if (written.write(file.get(), wholeBox(size)) != zelOKAY)
            return true; // the round trip will say it
        file.reset();
        OpenFile again = subject.tryOpen(Subject::nameOf(kind), status);
        Picture read(kind.type, size);
        kind.exact = again && again->getDataType() == kind.type &&
                     again->getCsize() == kind.channels &&
                     read.read(again.get(), wholeBox(size)) == zelOKAY && read == written;
        return true;
    }
    return false;
}

// A quick run tries orders and orientations with the first type and compression of each model only.
bool isTried(const Subject& subject, const std::vector<Kind>& all, std::size_t index) {
    const Kind& kind = all[index];
    const Kind& best = all.front();
    return !subject.options.quick ||
           (kind.order == best.order && kind.orientation == best.orientation) ||
           (kind.type == best.type && kind.compression == best.compression);
}

template <typename Value>
void requireCreated(const std::vector<Kind>& kinds, const std::vector<Value>& all,
                    Value Kind::*member, zelFormat* format, int (zelFormat::*query)(Value),
                    const char* (*name)(Value), Tally& tally) {
    for (const Value value : all)
        if ((format->*query)(value))
            tally.run(name(value), [&] {
                require(std::ranges::any_of(
                            kinds, [&](const Kind& kind) { return kind.*member == value; }),
                        "supported, but no such file can be created");
            });
}

void requireAllCreated(zelFormat* format, const std::vector<Kind>& kinds, Tally& tally) {
    requireCreated(kinds, allTypes(), &Kind::type, format, &zelFormat::typeIsSupported,
                   zelDataTypeName, tally);
    requireCreated(kinds, allModels(), &Kind::model, format, &zelFormat::colorModelIsSupported,
                   zelColorModelName, tally);
    requireCreated(kinds, allCompressions(), &Kind::compression, format,
                   &zelFormat::compressionIsSupported, zelCompressionName, tally);
    requireCreated(kinds, allOrders(), &Kind::order, format, &zelFormat::orderIsSupported,
                   zelOrderName, tally);
    requireCreated(kinds, allOrientations(), &Kind::orientation, format,
                   &zelFormat::orientationIsSupported, zelOrientationName, tally);
}

void requireDefaults(const Subject& subject) {
    const zelSize size(7, 5, 0, 0);
    const zelFileConfig config(&size);
    const std::string name = "image" + suffixesOf(subject).front();
    zelStatus status = zelOKAY;
    OpenFile file(zelFile::create(name.c_str(), nullptr, &config, subject.format, &status));
    require(file != nullptr, statusText(status));
    require(file->getCsize() > 0 && file->getZsize() > 0, "the file has no channels or no planes");
}

void requireNoFiles(const Subject& subject) {
    const zelSize size(7, 5, 1, 1);
    const zelFileConfig config(&size, zelUChar, zelInterleaved, zelLuminance, zelUpperLeftOrigin,
                               zelNoCompression, &size);
    zelStatus status = zelOKAY;
    OpenFile file(zelFile::create("image", nullptr, &config, subject.format, &status));
    require(!file && status == zelUNSUPPORTEDBYFORMAT, "a file was created");
}

} // namespace

void checkRegistration(const Subject& subject, Tally& tally) {
    tally.run("loading", [&] { require(subject.format != nullptr, "the plug-in does not load"); });
    if (!subject.format)
        return;
    zelFormat* const format = subject.format;
    tally.run("the format's name", [&] {
        require(format->getName() != nullptr, "it has none");
        require(strcasecmp(format->getName(), subject.options.format.c_str()) == 0,
                format->getName());
    });
    tally.run("the entry", [&] {
        require(format->getDescription() != nullptr, "it has no description");
        require(format->accessModeIsSupported(0), "files cannot be opened to be read");
    });
    tally.run("the tags", [&] {
        int count = 0;
        const zelTagDescription* const tags = format->getTagDescriptions(count);
        require(count >= 0 && (count == 0 || tags), "there is no table of them");
    });
    tally.note(format->haveDSOVersion(2, 1) ? "version 2.1" : "version below 2.1");
}

void checkCapabilities(const Subject& subject, Tally& tally, std::vector<Kind>& kinds) {
    zelFormat* const format = subject.format;
    if (!subject.canWrite()) {
        tally.run("creating a file without access", [&] { requireNoFiles(subject); });
        tally.note("the format only reads");
        return;
    }
    tally.run("a preference that is not supported", [&] { requirePreferences(format); });
    checkPages(subject, tally);
    if (!subject.hasWishes())
        tally.run("a file of nothing but a size", [&] { requireDefaults(subject); });
    const std::vector<std::string> suffixes = suffixesOf(subject);
    std::vector<Kind> all = candidates(format);
    for (std::size_t i = 0; i < all.size(); i++)
        if (isTried(subject, all, i))
            tally.run(all[i].text(), [&] {
                if (isAccepted(subject, all[i], suffixes))
                    kinds.push_back(all[i]);
            });
    if (!subject.hasWishes())
        requireAllCreated(format, kinds, tally);
    tally.note(std::to_string(kinds.size()) + " of " + std::to_string(all.size()) +
               " combinations can be created");
}

} // namespace zel::check
