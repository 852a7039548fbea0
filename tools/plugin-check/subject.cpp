#include "subject.h"

#include <zel/zelColormap.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace zel::check {

namespace {

// A colour of its own for each index, and no grey among them: a file of greys may be read as one.
// Formats that have no room for a map refuse it.
void setPalette(zelFile* file) {
    const int last = file->getDataType() == zelBit                ? 1
                     : file->getDataType() & (zelUChar | zelChar) ? 255
                                                                  : 65535;
    zelColormap map(3, last > 255 ? zelUShort : zelUChar, 0, last);
    for (int index = 0; index <= last; index++) {
        map.setVal(index, index, 0);
        map.setVal(last - index, index, 1);
        map.setVal(last, index, 2);
    }
    file->setColormap(&map);
}

template <typename Same>
std::vector<Kind> firstOfEach(std::span<const Kind> kinds, const Same& same) {
    std::vector<Kind> firsts;
    for (const Kind& kind : kinds) {
        bool known = false;
        for (const Kind& first : firsts)
            known = known || same(first, kind);
        if (!known)
            firsts.push_back(kind);
    }
    return firsts;
}

} // namespace

std::vector<Kind> Subject::baseKinds() const {
    return firstOfEach(kinds, sameButLayout);
}

std::vector<Kind> Subject::fewKinds() const {
    return firstOfEach(
        kinds, [](const Kind& a, const Kind& b) { return a.type == b.type && a.model == b.model; });
}

std::vector<Kind> Subject::kindsByType() const {
    return firstOfEach(kinds, [](const Kind& a, const Kind& b) { return a.type == b.type; });
}

Picture Subject::picture(const Kind& kind, const zelSize& size, unsigned seed) const {
    return kind.exact ? Picture::noise(kind.type, size, seed) : Picture::ramp(kind.type, size);
}

double Subject::tolerance(const Kind& kind) const {
    return kind.exact ? 0 : Picture::rampTolerance(kind.type);
}

OpenFile Subject::tryCreate(const Kind& kind, const zelSize& size, const zelSize* page,
                            zelStatus& status, int fd) const {
    const zelFileConfig config = kind.config(size, page);
    const std::string name =
        nameOf(kind) + (options.arguments.empty() ? "" : "%" + options.arguments);
    OpenFile file(zelFile::create(fd, name.c_str(), nullptr, &config, format, &status));
    if (file && kind.model == zelRGBPalette)
        setPalette(file.get());
    return file;
}

OpenFile Subject::create(const Kind& kind, const zelSize& size, const zelSize* page) const {
    zelStatus status = zelOKAY;
    OpenFile file = tryCreate(kind, size, page, status);
    require(file != nullptr, "is not created: " + statusText(status));
    return file;
}

OpenFile Subject::open(const std::string& name, int mode) const {
    zelStatus status = zelOKAY;
    OpenFile file(zelFile::open(name.c_str(), mode, &status));
    require(file != nullptr, "does not open again: " + statusText(status));
    require(file->getFormat() == format,
            std::string("is taken for a file of ") + file->getFormat()->getName());
    return file;
}

OpenFile Subject::tryOpen(const std::string& name, zelStatus& status) const {
    return OpenFile(zelFile::open(-1, name.c_str(), 0, format, &status));
}

Picture Subject::make(const Kind& kind, const zelSize& size, unsigned seed,
                      const zelSize* page) const {
    Picture written = picture(kind, size, seed);
    OpenFile file = create(kind, size, page);
    requireOkay(written.write(file.get(), wholeBox(size)), "writing");
    finish(std::move(file));
    return written;
}

std::optional<zelSize> Subject::smallPages(const Kind& kind, const zelSize& size) const {
    const int c = kind.order == zelSeparate ? 1 : kind.channels;
    for (const zelSize& page : {zelSize(size.x, 5, 1, c), zelSize(5, size.y, 1, c),
                                zelSize(16, 16, 1, c), zelSize(size.x, 5, 1, kind.channels)})
        if (format->pageSizeIsSupported(size.x, size.y, size.z, size.c, page.x, page.y, page.z,
                                        page.c, kind.orientation))
            return page;
    return std::nullopt;
}

void finish(OpenFile file) {
    requireOkay(file.release()->close(0), "closing");
}

std::string statusText(zelStatus status) {
    char text[200];
    return zelStatusToString(status, text, sizeof text);
}

void requireOkay(zelStatus status, const std::string& what) {
    if (status != zelOKAY)
        throw Failed{what + ": " + statusText(status)};
}

zelSize uprightSize(const zelFile* file) {
    zelSize size;
    file->getSize(size, zelUpperLeftOrigin);
    return size;
}

std::size_t elementsToRead(const zelFile* file) {
    constexpr double most = 4 << 20;
    zelSize page;
    file->getPageSize(page, zelUpperLeftOrigin);
    const zelSize size = uprightSize(file);
    for (const int extent : {size.x, size.y, size.z, size.c, page.x, page.y, page.z, page.c})
        require(extent > 0, "opens with an image or pages without extent");
    const double elements = 1.0 * size.x * size.y * size.z * size.c;
    const double pageElements = 1.0 * page.x * page.y * page.z * page.c;
    return elements <= most && pageElements <= most ? static_cast<std::size_t>(elements) : 0;
}

void requireImage(zelFile* file, const Picture& expected, double tolerance, const std::string& when,
                  double* worst) {
    Picture read(file->getDataType(), uprightSize(file));
    requireOkay(read.read(file, wholeBox(read.size())), "reading " + when);
    const std::string difference = read.difference(expected, tolerance, worst);
    require(difference.empty(), "other pixels " + when + ": " + difference);
}

void requireFilledAttributes(const zelFile& file) {
    const auto isOneOf = [](const auto& list, auto value) {
        return std::ranges::find(list, value) != list.end();
    };
    require(isOneOf(allTypes(), file.getDataType()), "has no element type");
    require(isOneOf(allOrders(), file.getOrder()), "has no order");
    require(isOneOf(allOrientations(), file.getOrientation()), "has no orientation");
    require(isOneOf(allModels(), file.getColorModel()), "has no colour model");
    require(isOneOf(allCompressions(), file.getCompression()), "has no compression");
    const int fixed = zelColorModelChans(file.getColorModel());
    require(fixed == 0 || fixed == file.getCsize(), "has other channels than its colour model");
}

void requireIdentity(const zelFile& file) {
    require(file.getClassName(0) != nullptr, "the file's class has no name");
    require(file.getClassId() != &zelFile::classList, "the file has no class identity of its own");
    require(file.derivesFrom(file.getClassId()) == 1, "the file's class is not its own class");
    require(file.derivesFrom(&zelFile::classList) > 1,
            "the file's class does not derive from zelFile");
}

std::string quotedName(const std::string& name) {
    std::string quoted;
    for (const char c : name)
        quoted.append(c == '#' || c == ':' || c == '%' ? 2 : 1, c);
    return quoted;
}

std::string readFile(const std::string& name) {
    std::ifstream in(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void writeFile(const std::string& name, const std::string& content) {
    std::ofstream out(name, std::ios::binary | std::ios::trunc);
    out << content;
    require(static_cast<bool>(out.flush()), name + " cannot be written");
}

} // namespace zel::check
