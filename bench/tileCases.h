#ifndef ZEL_BENCH_TILE_CASES_H
#define ZEL_BENCH_TILE_CASES_H

// What the table of tiles holds: an image in memory, and calls on it.

#include <zel/zelConfig.h>
#include <zel/zelFile.h>
#include <zel/zelTile.h>

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace bench {

/// Which part of the image a call is about.
enum class Extent {
    Pixel,
    Page,
    Image
};

struct TileCase {
    std::string name;
    bool set = false; ///< setTile, otherwise getTile
    int page = 64;    ///< side of the square pages
    int image = 2048; ///< side of the square image, a multiple of that
    Extent extent = Extent::Image;
    bool aligned = true; ///< the tile begins and ends with pages
    zelDataType client = zelUChar;

    /// The tile in the image.
    zelTile3D<int> tile() const;
};

/// All cases for images of `image` squared and pages of the given sizes.
std::vector<TileCase> tiles(int image, const std::vector<int>& pages);

/// An image of three interleaved 8-bit channels, held page by page.
class PagedImage : public zelFile {
public:
    explicit PagedImage(const TileCase& what);
    ~PagedImage() override = default;

    zelStatus getPage(void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                      int nc) override;
    zelStatus setPage(const void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                      int nc) override;

protected:
    zelStatus openFile() override { return zelOKAY; }
    zelStatus closeFile() override { return zelOKAY; }

private:
    std::byte* at(int x, int y);

    std::vector<std::byte> pixels;
    std::size_t pageBytes;
    bool copies; ///< a page is handed over; otherwise its cost is left out
};

/// A case made ready: the call, and the same work without the library's tiles.
class TileRun {
public:
    explicit TileRun(const TileCase& what);

    /// The call; false if it fails.
    bool call();
    /// Page copies and conversions alone.
    void workAlone();

private:
    void passPage(int x, int y);

    TileCase what;
    PagedImage file;
    zelTile3D<int> tile;
    zelConfig config;
    std::vector<std::byte> client;
    struct Free {
        void operator()(void* block) const { std::free(block); }
    };
    std::unique_ptr<void, Free> page;
};

} // namespace bench

#endif
