// Whether files that are cut or damaged end in a status.

#include "checks.h"

#include <algorithm>
#include <fcntl.h>
#include <fstream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zel::check {

namespace {

[[maybe_unused]] constexpr rlim_t mostBytes = rlim_t{512} << 20;
constexpr int mostImages = 4;
constexpr std::size_t longestSource = 4 << 20;

struct Source {
    std::string title;
    std::string content;
    std::string suffix;
};

std::string suffixOf(const std::string& name) {
    const std::size_t point = name.find_last_of("./");
    return point == std::string::npos || name[point] == '/' ? "" : name.substr(point);
}

// The given files and small ones of some kinds.
std::vector<Source> sourcesOf(const Subject& subject) {
    std::vector<Source> sources;
    for (const std::string& name : subject.options.files)
        sources.push_back({name, readFile(name), suffixOf(name)});
    std::erase_if(sources, [](const Source& source) {
        return source.content.empty() || source.content.size() > longestSource;
    });
    const std::vector<Kind> kinds = subject.someKinds();
    const std::size_t step = subject.options.quick ? 1 + kinds.size() / 16 : 1;
    for (std::size_t i = 0; i < kinds.size(); i += step) {
        const Kind& kind = kinds[i];
        try {
            subject.make(kind, kind.sizeOf(13, 9), 9);
            sources.push_back({kind.text(), readFile(Subject::nameOf(kind)), kind.suffix});
        } catch (const Failed&) {
            continue; // which the round trips tell
        }
    }
    return sources;
}

void limitMemory() {
#if !defined(ZEL_SANITIZED)
    std::ifstream statm("/proc/self/statm");
    rlim_t pages = 0;
    statm >> pages;
    const rlim_t bytes = pages * static_cast<rlim_t>(getpagesize()) + mostBytes;
    const rlimit limit = {bytes, bytes};
    setrlimit(RLIMIT_AS, &limit);
#endif
}

struct Reading {
    bool good = false; ///< everything answered zelOKAY
    std::vector<Picture> images;
};

// Opens and reads. An image of any size is well, but only small ones are read.
Reading readAll(const Subject& subject, const std::string& name) {
    Reading reading;
    zelStatus status = zelOKAY;
    OpenFile file = subject.tryOpen(name, status);
    require(file || status != zelOKAY, "no file, but no failure either");
    if (!file)
        return reading;
    reading.good = true;
    const int images = std::min(file->getNumImgs(), mostImages);
    require(images > 0, "opens with no image");
    for (int i = 0; i < images && reading.good; i++) {
        reading.good = file->setCurrentImg(i) == zelOKAY;
        if (!reading.good || elementsToRead(file.get()) == 0)
            continue;
        Picture image(file->getDataType(), uprightSize(file.get()));
        reading.good = image.read(file.get(), wholeBox(image.size())) == zelOKAY;
        reading.images.push_back(std::move(image));
    }
    return reading;
}

// A file that ends early may have lost images, or what lies behind the pixels, and nothing else.
void requireNoticed(const Reading& cut, const Reading& whole) {
    if (!cut.good)
        return;
    for (std::size_t i = 0; i < std::min(cut.images.size(), whole.images.size()); i++)
        require(cut.images[i] == whole.images[i],
                "other pixels are read without a failure (--open-ended permits it)");
}

// Every length of a short file, and 64 of a long one.
std::vector<std::size_t> cutsOf(std::size_t length, bool quick) {
    const std::size_t longestShort = quick ? 64 : 1024;
    std::vector<std::size_t> cuts;
    const std::size_t count = length <= longestShort ? length : 64;
    for (std::size_t i = 0; i < count; i++)
        cuts.push_back(i * length / count);
    // The places next to the end are those at which a file seems whole.
    for (std::size_t missing = 1; missing <= 8 && missing < length; missing++)
        cuts.push_back(length - missing);
    return cuts;
}

// Changes some bytes, or takes out, puts in or overwrites a run of them. Half of the places are
// among the first bytes, where the headers are.
std::string damaged(std::string content, std::mt19937& random) {
    const auto below = [&](std::size_t count) {
        return random() % std::max<std::size_t>(count, 1);
    };
    const auto place = [&] {
        return below(random() % 2 ? content.size() : std::min<std::size_t>(content.size(), 256));
    };
    const std::size_t at = place();
    const std::size_t run = std::min(content.size() - at, 1 + below(16));
    switch (random() % 6) {
    case 0:
        return content.erase(at, run);
    case 1:
        return content.insert(at, run, static_cast<char>(random()));
    case 2:
        return content.replace(at, run, run, random() % 2 ? '\xff' : '\0');
    default:
        for (std::size_t i = 0; i < 1 + below(4); i++) {
            char& byte = content[place()];
            byte = static_cast<char>(random() % 2 ? byte ^ 1 << below(8) : random());
        }
        return content;
    }
}

void requireDescriptorKept(const Subject& subject, const std::string& name, bool mustFail) {
    const int fd = open(name.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat before = {};
    struct stat after = {};
    require(fd >= 0 && fstat(fd, &before) == 0, "the file cannot be opened");
    zelStatus status = zelOKAY;
    const OpenFile file(zelFile::open(fd, name.c_str(), 0, subject.format, &status));
    if (file) {
        require(!mustFail, "an empty file passes as an image");
        return;
    }
    require(status != zelOKAY, "no file, but no failure either");
    require(fstat(fd, &after) == 0 && before.st_ino == after.st_ino, "the descriptor is closed");
    close(fd);
}

} // namespace

void checkFailedOpens(const Subject& subject, Tally& tally) {
    std::vector<Source> sources = sourcesOf(subject);
    if (sources.size() > 16)
        sources.resize(16);
    limitMemory();
    std::mt19937 random(subject.options.seed);
    std::string noise(300, '\0');
    std::ranges::generate(noise, [&] { return static_cast<char>(random()); });
    sources.insert(sources.begin(), {{"an empty file", "", ""}, {"noise", noise, ""}});
    for (const Source& source : sources)
        for (const std::size_t part : {source.content.size() / 8, source.content.size() / 4})
            tally.run(
                source.title + ", cut to " + std::to_string(part) + " bytes",
                [&] {
                    writeFile("cut" + source.suffix, source.content.substr(0, part));
                    requireDescriptorKept(subject, "cut" + source.suffix, source.content.empty());
                },
                subject.options.seconds);
}

void checkTruncation(const Subject& subject, Tally& tally) {
    const std::vector<Source> sources = sourcesOf(subject);
    limitMemory();
    for (const Source& source : sources) {
        const std::string name = "cut" + source.suffix;
        Reading whole;
        tally.run(source.title, [&] {
            writeFile(name, source.content);
            whole = readAll(subject, name);
            require(whole.good, "the whole file cannot be read");
        });
        for (const std::size_t length : cutsOf(source.content.size(), subject.options.quick))
            tally.run(
                source.title + ", cut to " + std::to_string(length) + " of " +
                    std::to_string(source.content.size()) + " bytes",
                [&] {
                    writeFile(name, source.content.substr(0, length));
                    const Reading cut = readAll(subject, name);
                    if (!subject.options.openEnded)
                        requireNoticed(cut, whole);
                },
                subject.options.seconds);
    }
}

void checkDamage(const Subject& subject, Tally& tally) {
    const std::vector<Source> sources = sourcesOf(subject);
    if (sources.empty())
        return tally.note("no file to damage");
    limitMemory();
    const unsigned count = subject.options.quick ? 600 : 4000;
    for (unsigned i = 0; i < count; i++) {
        const Source& source = sources[i % sources.size()];
        std::mt19937 random(subject.options.seed + i);
        tally.run(
            source.title + ", seed " + std::to_string(subject.options.seed + i),
            [&] {
                const std::string name = "damaged" + source.suffix;
                writeFile(name, damaged(source.content, random));
                readAll(subject, name);
            },
            subject.options.seconds);
    }
    tally.note(std::to_string(sources.size()) + " files, seeds from " +
               std::to_string(subject.options.seed));
}

} // namespace zel::check
