// Whether anything stays behind when files are closed.

#include "checks.h"

#include <algorithm>
#include <cstdio>
#include <dirent.h>
#include <functional>
#include <malloc.h>

namespace zel::check {

namespace {

// What a client does with files, each as a round that leaves nothing behind.
struct Round {
    std::string title;
    std::function<void()> action;
};

void openAndRead(const Subject& subject, const std::string& name) {
    zelStatus status = zelOKAY;
    const OpenFile file = subject.tryOpen(name, status);
    if (!file || elementsToRead(file.get()) == 0)
        return;
    Picture image(file->getDataType(), uprightSize(file.get()));
    image.read(file.get(), wholeBox(image.size()));
}

void createNowhere(const Subject& subject, const Kind& kind) {
    const zelFileConfig config = kind.config(kind.sizeOf(7, 5));
    const std::string name = "missing/" + Subject::nameOf(kind);
    zelStatus status = zelOKAY;
    const OpenFile file(zelFile::create(name.c_str(), nullptr, &config, subject.format, &status));
    // A plug-in that makes the file later must fail at the latest when it is closed.
}

std::vector<Round> roundsOf(const Subject& subject) {
    std::vector<Round> rounds;
    const auto addReading = [&](const std::string& title, const std::string& name) {
        rounds.push_back({title + ", read", [&subject, name] { openAndRead(subject, name); }});
    };
    const auto addCut = [&](const std::string& title, const std::string& from, std::size_t share) {
        const std::string content = readFile(from);
        const std::string name = "cut" + std::to_string(rounds.size());
        writeFile(name, content.substr(0, content.size() * share / 4));
        addReading(title + ", cut to " + std::to_string(share) + "/4", name);
    };
    for (const std::string& name : subject.options.files) {
        addReading(name, quotedName(name));
        addCut(name, name, 2);
    }
    std::vector<Kind> kinds = subject.fewKinds();
    if (subject.options.quick && kinds.size() > 6)
        kinds.resize(6);
    for (const Kind& kind : kinds) {
        const auto make = [&subject, kind] { subject.make(kind, kind.sizeOf(40, 30), 1); };
        make();
        const std::string kept = "kept" + std::to_string(rounds.size()) + kind.suffix;
        std::rename(Subject::nameOf(kind).c_str(), kept.c_str());
        rounds.push_back({kind.text() + ", written", make});
        addReading(kind.text(), kept);
        for (const std::size_t share : {1, 2, 3})
            addCut(kind.text(), kept, share);
        rounds.push_back({kind.text() + ", created in a folder that is missing",
                          [&subject, kind] { createNowhere(subject, kind); }});
    }
    return rounds;
}

int openDescriptors() {
    DIR* const directory = opendir("/proc/self/fd");
    if (!directory)
        throw Failed{"the descriptors cannot be counted"};
    int count = 0;
    while (readdir(directory))
        count++;
    closedir(directory);
    return count;
}

std::size_t bytesInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

void repeat(const Round& round, int count) {
    for (int i = 0; i < count; i++)
        round.action();
}

constexpr int repetitions = 12;
// The allocator counts blocks that it keeps for the next request as in use, and their number sways
// by a few small ones.
[[maybe_unused]] constexpr std::size_t leastLoss = 128 * repetitions;

// The bytes that so many rounds leave behind.
std::size_t growth(const Round& round) {
    const std::size_t before = bytesInUse();
    repeat(round, repetitions);
    const std::size_t after = bytesInUse();
    return after > before ? after - before : 0;
}

// The least growth of several: a loss goes on, while the caches of a library come to an end, and so
// do the blocks that the allocator keeps, though that may take a hundred files.
[[maybe_unused]] std::size_t lasting(const Round& round) {
    constexpr int most = 20;
    std::size_t least = growth(round);
    for (int i = 1; i < most && least >= leastLoss; i++)
        least = std::min(least, growth(round));
    return least;
}

} // namespace

void checkDescriptors(const Subject& subject, Tally& tally) {
    std::vector<Round> rounds;
    tally.run("making the files", [&] { rounds = roundsOf(subject); });
    for (const Round& round : rounds)
        tally.run(round.title, [&] {
            round.action(); // what a library opens once stays open
            const int before = openDescriptors();
            repeat(round, 5);
            const int more = openDescriptors() - before;
            require(more == 0, std::to_string(more) + " descriptors more after 5 files");
        });
}

void checkMemory(const Subject& subject, Tally& tally) {
#if defined(ZEL_SANITIZED)
    (void)subject;
    tally.note("this build's allocator keeps no count");
#else
    std::vector<Round> rounds;
    tally.run("making the files", [&] { rounds = roundsOf(subject); });
    for (const Round& round : rounds)
        tally.run(round.title, [&] {
            repeat(round, 4); // what a library allocates once stays allocated
            const std::size_t lost = lasting(round);
            require(lost < leastLoss,
                    std::to_string(lost / repetitions) + " bytes stay behind for each file");
        });
#endif
}

} // namespace zel::check
