// Whether pixels come back, by whatever road they went.

#include "checks.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <zel/zelTypeNames.h>

namespace zel::check {

namespace {

std::string title(const Kind& kind, const zelSize& size) {
    return kind.text() + ", " + std::to_string(size.x) + " x " + std::to_string(size.y) + " x " +
           std::to_string(size.z);
}

bool takes(const Subject& subject, const Kind& kind, const zelSize& size) {
    return subject.format->sizeIsSupported(size.x, size.y, size.z, size.c, kind.orientation) != 0;
}

// More than two pages of the format's own choice, with an odd edge.
zelSize severalPages(zelFormat* format, const Kind& kind) {
    zelSize size = kind.sizeOf(311, 3001);
    zelSize page(0, 0, 0, 0);
    format->getPreferredPageSize(size.x, size.y, size.z, size.c, page.x, page.y, page.z, page.c,
                                 kind.orientation);
    size.y = std::clamp(2 * std::min(page.y, 1500) + 3, 40, 3001);
    return size;
}

void requireAttributes(const zelFile& file, const Kind& kind, const zelSize& size) {
    zelSize found;
    file.getDimensions(found);
    require(found.x == size.x && found.y == size.y && found.z == size.z && found.c == size.c,
            "opens with another size");
    require(file.getDataType() == kind.type, "opens with another element type");
    require(file.getColorModel() == kind.model, std::string("opens with another colour model: ") +
                                                    zelColorModelName(file.getColorModel()));
    require(file.getCompression() == kind.stated, std::string("opens with another compression: ") +
                                                      zelCompressionName(file.getCompression()));
    require(kind.channels == 1 || file.getOrder() == kind.order, "opens with another order");
    zelSize page;
    file.getPageSize(page, file.getOrientation());
    require(page.x > 0 && page.y > 0 && page.z > 0 && page.c > 0, "has pages without extent");
}

void roundTrip(const Subject& subject, const Kind& kind, const zelSize& size, double& worst) {
    const auto page = size.y < 100 ? subject.smallPages(kind, size) : std::nullopt;
    const Picture written = subject.picture(kind, size, 7);
    OpenFile file = subject.create(kind, size, page ? &*page : nullptr);
    requireOkay(written.write(file.get(), wholeBox(size)), "writing");
    if (subject.format->randomAccessWriteIsSupported())
        requireImage(file.get(), written, subject.tolerance(kind), "before it is closed", &worst);
    finish(std::move(file));
    file = subject.open(Subject::nameOf(kind));
    requireIdentity(*file);
    requireFilledAttributes(*file);
    requireAttributes(*file, kind, size);
    requireImage(file.get(), written, subject.tolerance(kind), "opened again", &worst);
    finish(std::move(file));
    require(kind.exact || subject.options.lossy,
            "the pixels come back changed, which only --lossy permits");
}

std::vector<zelSize> sizesFor(const Subject& subject, const Kind& kind, bool large) {
    std::vector<zelSize> sizes = {kind.sizeOf(1, 1), kind.sizeOf(17, 23)};
    if (!subject.options.quick)
        for (const auto& [width, height] : {std::pair{7, 5}, {1, 40}, {64, 1}})
            sizes.push_back(kind.sizeOf(width, height));
    sizes.push_back(kind.sizeOf(7, 5, 3));
    if (large)
        sizes.push_back(severalPages(subject.format, kind));
    std::erase_if(sizes, [&](const zelSize& size) { return !takes(subject, kind, size); });
    return sizes;
}

// Boxes that cover the image page by page, seen from the upper left, in a random order.
std::vector<Box> shuffledPages(const zelFile* file, std::mt19937& random) {
    const zelOrientation own = file->getOrientation();
    zelSize size;
    zelSize page;
    file->getSize(size, own);
    file->getPageSize(page, own);
    require(page.x > 0 && page.y > 0 && page.z > 0, "has pages without extent");
    std::vector<Box> pages;
    for (int z = 0; z < size.z; z += page.z)
        for (int y = 0; y < size.y; y += page.y)
            for (int x = 0; x < size.x; x += page.x) {
                zelTile2D<int> tile(x, y, std::min(page.x, size.x - x),
                                    std::min(page.y, size.y - y));
                zelMapTile(own, tile, zelUpperLeftOrigin, uprightSize(file));
                pages.emplace_back(tile, z, std::min(page.z, size.z - z));
            }
    std::shuffle(pages.begin(), pages.end(), random);
    return pages;
}

void readBoxes(zelFile* file, const Picture& whole, double tolerance,
               const std::vector<Box>& boxes) {
    for (const Box& box : boxes) {
        Picture part(file->getDataType(), zelSize(box.nx, box.ny, box.nz, whole.size().c));
        requireOkay(part.read(file, box), "reading " + boxText(box));
        const std::string difference = part.difference(whole.cut(box), tolerance);
        require(difference.empty(), boxText(box) + ": " + difference);
    }
}

std::vector<Box> randomBoxes(const zelSize& size, int count, std::mt19937& random) {
    std::vector<Box> boxes(static_cast<std::size_t>(count));
    for (Box& box : boxes)
        box = randomBox(size, random);
    return boxes;
}

Picture makeByPages(const Subject& subject, const Kind& kind, const zelSize& size,
                    const zelSize* page, std::mt19937& random) {
    if (!subject.format->randomAccessWriteIsSupported())
        return subject.make(kind, size, 3, page);
    Picture written = subject.picture(kind, size, 3);
    OpenFile file = subject.create(kind, size, page);
    for (const Box& box : shuffledPages(file.get(), random))
        requireOkay(written.cut(box).write(file.get(), box), "writing " + boxText(box));
    finish(std::move(file));
    return written;
}

void movePages(const Subject& subject, const Kind& kind, std::mt19937& random) {
    const zelSize size = kind.sizeOf(37, 41);
    const auto page = subject.smallPages(kind, size);
    const Picture written = makeByPages(subject, kind, size, page ? &*page : nullptr, random);
    OpenFile file = subject.open(Subject::nameOf(kind));
    if (subject.format->randomAccessReadIsSupported())
        readBoxes(file.get(), written, subject.tolerance(kind), shuffledPages(file.get(), random));
    else
        requireImage(file.get(), written, subject.tolerance(kind), "written in random order");
    finish(std::move(file));
}

// Small images may come back as one page, whatever pages they were made with.
void readSeveralPages(const Subject& subject, const Kind& kind, std::mt19937& random) {
    for (const zelSize& size : {severalPages(subject.format, kind), kind.sizeOf(1999, 1203)}) {
        if (!takes(subject, kind, size))
            continue;
        const Picture written = subject.make(kind, size, 3);
        OpenFile file = subject.open(Subject::nameOf(kind));
        const std::vector<Box> pages = shuffledPages(file.get(), random);
        if (pages.size() < 2)
            continue;
        readBoxes(file.get(), written, subject.tolerance(kind), pages);
        readBoxes(file.get(), written, subject.tolerance(kind), randomBoxes(size, 8, random));
        finish(std::move(file));
        return;
    }
}

// Only where pixels come back exactly: what is compressed again changes again.
void overwriteParts(const Subject& subject, const Kind& kind, Picture& whole, zelFile* file,
                    std::mt19937& random) {
    if (!subject.format->randomAccessWriteIsSupported() || !kind.exact)
        return;
    for (const Box& box : randomBoxes(whole.size(), 12, random)) {
        const Picture part =
            Picture::noise(kind.type, zelSize(box.nx, box.ny, box.nz, kind.channels),
                           static_cast<unsigned>(random()));
        requireOkay(part.write(file, box), "writing " + boxText(box));
        whole.paste(part, box);
    }
}

// What was never written is 0: no file tells what was in memory.
void leaveParts(const Subject& subject, const Kind& kind, std::mt19937& random) {
    if (!subject.format->randomAccessWriteIsSupported() || !kind.exact)
        return;
    const zelSize size = kind.sizeOf(29, 34);
    const auto page = subject.smallPages(kind, size);
    Picture whole(kind.type, size);
    OpenFile file = subject.create(kind, size, page ? &*page : nullptr);
    overwriteParts(subject, kind, whole, file.get(), random);
    finish(std::move(file));
    file = subject.open(Subject::nameOf(kind));
    requireImage(file.get(), whole, 0, "where parts were never written");
    finish(std::move(file));
}

void moveParts(const Subject& subject, const Kind& kind, std::mt19937& random) {
    const zelSize size = kind.sizeOf(29, 34);
    const auto page = subject.smallPages(kind, size);
    Picture whole = subject.picture(kind, size, 5);
    OpenFile file = subject.create(kind, size, page ? &*page : nullptr);
    requireOkay(whole.write(file.get(), wholeBox(size)), "writing");
    overwriteParts(subject, kind, whole, file.get(), random);
    finish(std::move(file));
    file = subject.open(Subject::nameOf(kind));
    if (subject.format->randomAccessReadIsSupported())
        readBoxes(file.get(), whole, subject.tolerance(kind), randomBoxes(size, 12, random));
    else
        requireImage(file.get(), whole, subject.tolerance(kind), "with parts written");
    finish(std::move(file));
}

void requireNoImageBeyond(zelFile* file) {
    for (const int index : {-1, file->getNumImgs()})
        require(file->setCurrentImg(index) == zelFILEINDEXOOB,
                "image " + std::to_string(index) + " is not out of bounds");
}

// False if the format has no second image.
bool writeSeveral(const Subject& subject, const Kind& kind, std::vector<Picture>& images,
                  std::span<const zelSize> sizes) {
    OpenFile file = subject.create(kind, sizes.front());
    for (unsigned i = 0; i < sizes.size(); i++) {
        zelFileConfig config = kind.config(sizes[i]);
        const zelStatus status = i == 0 ? zelOKAY : file->appendImg(nullptr, &config);
        const zelMainStatus answer = zelStatusMain(status);
        if (i == 1 && (answer == zelUNSUPPORTEDBYFORMAT || answer == zelUNSUPPORTEDBYFILE))
            return false;
        requireOkay(status, "appending image " + std::to_string(i));
        require(file->getCurrentImg() == static_cast<int>(i), "the new image is not current");
        images.push_back(subject.picture(kind, sizes[i], i));
        requireOkay(images.back().write(file.get(), wholeBox(sizes[i])), "writing");
    }
    finish(std::move(file));
    return true;
}

// False if the format has one image in a file. Images of one size are what some formats ask for.
bool carrySeveral(const Subject& subject, const Kind& kind) {
    const std::array<zelSize, 3> different = {kind.sizeOf(9, 4), kind.sizeOf(3, 11),
                                              kind.sizeOf(20, 20)};
    const std::array<zelSize, 3> equal = {different[2], different[2], different[2]};
    std::vector<Picture> images;
    if (!writeSeveral(subject, kind, images, different)) {
        images.clear();
        if (!writeSeveral(subject, kind, images, equal))
            return false;
    }
    OpenFile file = subject.open(Subject::nameOf(kind));
    require(file->getNumImgs() == 3,
            "has " + std::to_string(file->getNumImgs()) + " images, not 3");
    for (const std::size_t i : {2u, 0u, 1u}) {
        const zelSize before = uprightSize(file.get());
        requireOkay(file->setCurrentImg(static_cast<int>(i)),
                    "going to image " + std::to_string(i));
        require(file->getCurrentImg() == static_cast<int>(i), "another image is current");
        const zelSize& size = images[i].size();
        require((before.x == size.x && before.y == size.y) || file->haveAttributesChanged(),
                "the change of the size is not marked");
        requireImage(file.get(), images[i], subject.tolerance(kind),
                     "of image " + std::to_string(i));
    }
    requireNoImageBeyond(file.get());
    finish(std::move(file));
    file = subject.open(Subject::nameOf(kind) + ":2");
    requireImage(file.get(), images[2], subject.tolerance(kind), "of the name with :2");
    return true;
}

// Reads the images whole and by random parts, and the first one again at the end.
void readImages(zelFile* file, std::mt19937& random) {
    std::optional<Picture> first;
    const int images = std::min(file->getNumImgs(), 8);
    for (int i = 0; i < images; i++) {
        requireOkay(file->setCurrentImg(i), "going to image " + std::to_string(i));
        requireFilledAttributes(*file);
        if (elementsToRead(file) == 0)
            continue;
        Picture whole(file->getDataType(), uprightSize(file));
        requireOkay(whole.read(file, wholeBox(whole.size())), "reading");
        readBoxes(file, whole, 0, randomBoxes(whole.size(), 12, random));
        if (i == 0)
            first = std::move(whole);
    }
    requireOkay(file->setCurrentImg(0), "going back to image 0");
    if (first)
        requireImage(file, *first, 0, "of image 0 after the others");
}

void refuseWrites(const Subject& subject, zelFile* file) {
    const zelSize size = uprightSize(file);
    const zelStatus status = Picture(file->getDataType(), size).write(file, wholeBox(size));
    // A format that cannot write at all need not have the call.
    require(status == zelREADONLY || (!subject.canWrite() && status == zelUNSUPPORTEDBYFORMAT),
            "writing answers: " + statusText(status));
}

} // namespace

void checkRoundTrips(const Subject& subject, Tally& tally) {
    double worst = 0;
    const Kind* base = nullptr;
    const Kind* model = nullptr;
    for (const Kind& kind : subject.kinds) {
        // The large sizes once for each kind of element and pixel: they take their time.
        const bool first = !base || !sameButLayout(*base, kind);
        const bool large = first && (!subject.options.quick || !model || model->type != kind.type ||
                                     model->model != kind.model);
        base = first ? &kind : base;
        model = large ? &kind : model;
        for (const zelSize& size : sizesFor(subject, kind, large))
            tally.run(title(kind, size), [&] { roundTrip(subject, kind, size, worst); });
    }
    char text[80] = "exact";
    if (worst > 0)
        std::snprintf(text, sizeof text, "lossy: off by up to %.1f %% of the range", 100 * worst);
    tally.note(text);
}

void checkPagesInRandomOrder(const Subject& subject, Tally& tally) {
    zelFormat* const format = subject.format;
    if (!format->randomAccessReadIsSupported() && !format->randomAccessWriteIsSupported())
        return tally.note("no random access is claimed");
    std::mt19937 random(subject.options.seed);
    const std::vector<Kind> few = subject.fewKinds();
    for (const Kind& kind : subject.options.quick ? std::span<const Kind>(few) : subject.kinds)
        tally.run(kind.text(), [&] { movePages(subject, kind, random); });
    if (format->randomAccessReadIsSupported())
        for (const Kind& kind : subject.options.quick ? subject.kindsByType() : few)
            tally.run(kind.text() + ", large", [&] { readSeveralPages(subject, kind, random); });
}

void checkPartsOfPages(const Subject& subject, Tally& tally) {
    zelFormat* const format = subject.format;
    if (!format->randomAccessReadIsSupported() && !format->randomAccessWriteIsSupported())
        return tally.note("no random access is claimed");
    std::mt19937 random(subject.options.seed);
    for (const Kind& kind : subject.someKinds())
        tally.run(kind.text(), [&] {
            moveParts(subject, kind, random);
            leaveParts(subject, kind, random);
        });
}

void checkSeveralImages(const Subject& subject, Tally& tally) {
    bool several = false;
    for (const Kind& kind : subject.someKinds())
        tally.run(kind.text(), [&] {
            if (carrySeveral(subject, kind)) {
                several = true;
                return;
            }
            subject.make(kind, kind.sizeOf(9, 4), 1);
            const OpenFile file = subject.open(Subject::nameOf(kind));
            require(file->getNumImgs() == 1 && file->getCurrentImg() == 0, "is not one image");
            requireNoImageBeyond(file.get());
        });
    tally.note(several ? "images can be appended" : "one image in a file");
}

void checkReadOnlyFiles(const Subject& subject, Tally& tally) {
    for (const std::string& name : subject.options.files)
        tally.run(name, [&] {
            zelStatus status = zelOKAY;
            const OpenFile file = subject.tryOpen(quotedName(name), status);
            requireOkay(status, "opening");
            if (elementsToRead(file.get()) > 0)
                refuseWrites(subject, file.get());
        });
    for (const Kind& kind : subject.someKinds())
        tally.run(kind.text(), [&] {
            const Picture written = subject.make(kind, kind.sizeOf(6, 3), 1);
            const std::string content = readFile(Subject::nameOf(kind));
            OpenFile file = subject.open(Subject::nameOf(kind));
            refuseWrites(subject, file.get());
            requireImage(file.get(), written, subject.tolerance(kind), "after a refused write");
            zelFileConfig config = kind.config(written.size());
            require(file->appendImg(nullptr, &config) != zelOKAY, "an image can be appended");
            file.reset();
            require(readFile(Subject::nameOf(kind)) == content, "the file has changed");
        });
}

void checkGivenFiles(const Subject& subject, Tally& tally) {
    if (subject.options.files.empty())
        return tally.note("no files were given");
    std::mt19937 random(subject.options.seed);
    for (const std::string& name : subject.options.files)
        tally.run(name, [&] {
            OpenFile file = subject.open(quotedName(name));
            requireIdentity(*file);
            readImages(file.get(), random);
            requireNoImageBeyond(file.get());
            finish(std::move(file));
        });
}

} // namespace zel::check
