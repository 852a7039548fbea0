// What it costs to decode a picture page by page, as ratios to the codec library called directly on
// the same file, in processor time. Formats without a library are held against reading the file and
// copying what it decodes to.
//
//   decode_bench [--side=N] [OPTION...]    N pixels wide and high, a multiple of 512; for some
//                                          formats a half or a quarter of that

#include "decodeCases.h"
#include "measure.h"

#include <cstdlib>
#include <filesystem>
#include <string_view>

namespace {

void run(benchmark::State& state, const bench::DecodeCase& what, const std::string& folder,
         int side) {
    const bench::DecodeRun run(what, folder, side);
    if (!run.failure().empty())
        return state.SkipWithError(run.failure().c_str());
    bench::Place place(false);
    double pages = 1e9, tiles = 1e9, direct = 1e9;
    for (auto iteration : state) {
        (void)iteration;
        direct = std::min(direct, bench::seconds([&] { run.directly(place); }, 1));
        pages = std::min(pages, bench::seconds([&] { run.byPages(place); }, 1));
        tiles = std::min(tiles, bench::seconds([&] { run.byTiles(place); }, 1));
    }
    state.counters["best_us"] = pages * 1e6;
    state.counters["limit_us"] = direct * 1e6;
    state.counters["ratio"] = pages / direct;
    state.counters["tile_ratio"] = tiles / direct;
    state.counters["library"] = run.hasLibrary();
}

/// A folder that is gone with the object.
class Folder {
public:
    Folder() : path_((std::filesystem::temp_directory_path() / "zel-bench-XXXXXX").string()) {
        if (!mkdtemp(path_.data()))
            path_.clear();
    }
    ~Folder() {
        std::error_code ignored;
        if (!path_.empty())
            std::filesystem::remove_all(path_, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

} // namespace

int main(int argc, char** argv) {
    constexpr std::string_view sideOption = "--side=";
    constexpr int wholeTiles = 512; // also of a picture of half the side
    int side = 2048;
    if (argc > 1 && std::string_view(argv[1]).starts_with(sideOption)) {
        side = std::max(std::atoi(argv[1] + sideOption.size()) / wholeTiles, 1) * wholeTiles;
        argv[1] = argv[0];
        argc--;
        argv++;
    }
    const Folder folder;
    const std::vector<bench::DecodeCase> cases = bench::decodeCases();
    for (const bench::DecodeCase& what : cases)
        benchmark::RegisterBenchmark((std::string("decode/") + what.name).c_str(), run, what,
                                     folder.path(), side)
            ->MinTime(side < 1024 ? 0.01 : 1.5)
            ->Unit(benchmark::kMicrosecond);
    return bench::runAll(argc, argv);
}
