#include "tileCases.h"

#include <zel/zelConverter.h>

#include <cstdlib>
#include <cstring>

namespace bench {

namespace {

constexpr int channels = 3;

std::size_t bytesOf(zelDataType type, int nx, int ny) {
    return zelDataSize(type, nx * ny * channels);
}

} // namespace

zelTile3D<int> TileCase::tile() const {
    // Off the grid, a tile shares its first and last page with what is beside it.
    const int from = aligned ? 0 : 1;
    switch (extent) {
    case Extent::Pixel:
        return {page + from, page + from, 0, 1, 1, 1};
    case Extent::Page:
        return {page / 2 * from, page / 2 * from, 0, page, page, 1};
    case Extent::Image:
        break;
    }
    return {from, from, 0, image - 2 * from, image - 2 * from, 1};
}

std::vector<TileCase> tiles(int image, const std::vector<int>& pages) {
    static const struct {
        const char* name;
        Extent extent;
    } extents[] = {{"pixel", Extent::Pixel}, {"page", Extent::Page}, {"image", Extent::Image}};
    std::vector<TileCase> cases;
    for (const bool set : {false, true}) {
        for (const int page : pages) {
            for (const auto& extent : extents) {
                for (const bool aligned : {true, false}) {
                    for (const zelDataType client : {zelUChar, zelFloat}) {
                        const std::string name = std::string("tile/") + (set ? "set" : "get") +
                                                 "/page" + std::to_string(page) + "/" +
                                                 extent.name + (aligned ? "Aligned" : "Unaligned") +
                                                 (client == zelFloat ? "Float" : "");
                        cases.push_back({name, set, page, image, extent.extent, aligned, client});
                    }
                }
            }
        }
    }
    return cases;
}

PagedImage::PagedImage(const TileCase& what)
    : pixels(bytesOf(zelUChar, what.image, what.image)),
      pageBytes(bytesOf(zelUChar, what.page, what.page)), copies(what.extent != Extent::Pixel) {
    size = zelSize(what.image, what.image, 1, channels);
    pageSize = zelSize(what.page, what.page, 1, channels);
    dtype = zelUChar;
    order = zelInterleaved;
    orientation = zelUpperLeftOrigin;
    cm = zelRGB;
    compression = zelNoCompression;
}

std::byte* PagedImage::at(int x, int y) {
    const auto index =
        static_cast<std::size_t>(y / pageSize.y * (size.x / pageSize.x) + x / pageSize.x);
    return pixels.data() + index * pageBytes;
}

zelStatus PagedImage::getPage(void* data, int x, int y, int, int, int, int, int, int) {
    if (copies)
        std::memcpy(data, at(x, y), pageBytes);
    return zelOKAY;
}

zelStatus PagedImage::setPage(const void* data, int x, int y, int, int, int, int, int, int) {
    if (copies)
        std::memcpy(at(x, y), data, pageBytes);
    return zelOKAY;
}

TileRun::TileRun(const TileCase& theCase)
    : what(theCase), file(theCase), tile(theCase.tile()),
      client(bytesOf(theCase.client, tile.nx, tile.ny)) {
    config.dtype = what.client;
    config.order = zelInterleaved;
}

bool TileRun::call() {
    const zelStatus status =
        what.set ? file.setTile(tile.x, tile.y, 0, tile.nx, tile.ny, 1, client.data(), &config)
                 : file.getTile(tile.x, tile.y, 0, tile.nx, tile.ny, 1, client.data(), &config);
    return status == zelOKAY;
}

void TileRun::workAlone() {
    // A buffer at the same address as that of the call, as long as nothing else allocates. What
    // this costs does not count as the call's own then; for a pixel it does.
    if (page == nullptr || what.extent != Extent::Pixel)
        page.reset(std::malloc(bytesOf(zelUChar, what.page, what.page)));
    for (int y = tile.y / what.page * what.page; y < tile.y + tile.ny; y += what.page) {
        for (int x = tile.x / what.page * what.page; x < tile.x + tile.nx; x += what.page)
            passPage(x, y);
    }
    if (what.extent != Extent::Pixel)
        page.reset();
}

void TileRun::passPage(int x, int y) {
    const int side = what.page;
    zelConverter pageArea(page.get(), zelUChar, zelInterleaved, channels, nullptr, side, side, 1, x,
                          y, 0, 0);
    zelConverter clientArea(client.data(), what.client, zelInterleaved, channels, nullptr, tile.nx,
                            tile.ny, 1, tile.x, tile.y, 0, 0);
    const bool whole = tile.contains(zelTile3D<int>(x, y, 0, side, side, 1));
    if (!what.set || !whole)
        file.getPage(page.get(), x, y, 0, 0, side, side, 1, channels);
    if (!what.set) {
        clientArea = pageArea;
        return;
    }
    pageArea = clientArea;
    file.setPage(page.get(), x, y, 0, 0, side, side, 1, channels);
}

} // namespace bench
