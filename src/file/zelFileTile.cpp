#include <zel/zelFile.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <zel/zelConverter.h>
#include <zel/zelTileIter.h>

enum Op : int {
    GetTile = 0,
    SetTile = 1
};

namespace {

struct Free {
    void operator()(void* block) const { std::free(block); }
};
using PageBuffer = std::unique_ptr<void, Free>;

/// The file's side of a transfer. Sizes are in the file's own frame.
struct FileSide {
    explicit FileSide(const zelFile& file)
        : dtype(file.getDataType()), order(file.getOrder()), orientation(file.getOrientation()) {
        file.getSize(size, orientation);
        file.getPageSize(pageSize, orientation);
    }

    zelDataType dtype;
    zelOrder order;
    zelOrientation orientation;
    zelSize size;
    zelSize pageSize;
};

/// The client's side: how its memory is laid out, and which channels it holds.
struct ClientSide {
    ClientSide(const FileSide& file, void* memory, const zelConfig* config)
        : data(memory), dtype(file.dtype), order(file.order), orientation(file.orientation),
          nchans(file.size.c) {
        if (!config)
            return;
        dtype = config->dtype;
        order = config->order;
        if (config->orientation != 0)
            orientation = config->orientation;
        if (config->nchans != 0)
            nchans = config->nchans;
        choff = config->choff;
        channels = config->channels;
    }

    bool holds(int channel) const {
        if (channels)
            return std::find(channels, channels + nchans, channel) != channels + nchans;
        return channel >= choff && channel < std::int64_t{choff} + nchans;
    }

    void* data;
    zelDataType dtype;
    zelOrder order;
    zelOrientation orientation;
    int nchans;
    int choff = 0;
    const int* channels = nullptr;
};

/// The number of elements in a block, or 0 if there are none or too many for an int to count.
std::int64_t countElements(int nx, int ny, int nz, int nc) {
    std::int64_t count = 1;
    for (const int extent : {nx, ny, nz, nc}) {
        if (extent < 1)
            return 0;
        count *= extent;
        if (count > INT_MAX)
            return 0;
    }
    return count;
}

/// In 64 bits, where zelDataSize counts in 32.
std::size_t pageBytes(const FileSide& file) {
    const zelSize& page = file.pageSize;
    const auto count = static_cast<std::size_t>(countElements(page.x, page.y, page.z, page.c));
    return file.dtype == zelBit ? (count + 7) / 8 : count * zelDataSize(file.dtype, 1);
}

bool isEmpty(const zelTile3D<int>& tile) {
    return tile.nx < 1 || tile.ny < 1 || tile.nz < 1;
}

/// Whether an extent at an origin lies inside 0 to `limit`.
bool isInside(int origin, int extent, int limit) {
    return origin >= 0 && std::int64_t{origin} + extent <= limit;
}

bool isInsideImage(const zelTile3D<int>& tile, const FileSide& file, const ClientSide& client) {
    zelSize size = file.size;
    zelMapSize(file.orientation, size, client.orientation);
    return isInside(tile.x, tile.nx, size.x) && isInside(tile.y, tile.ny, size.y) &&
           isInside(tile.z, tile.nz, size.z);
}

bool namesFileChannels(const ClientSide& client, const FileSide& file) {
    if (client.nchans < 1)
        return false;
    if (!client.channels)
        return isInside(client.choff, client.nchans, file.size.c);
    return std::all_of(client.channels, client.channels + client.nchans,
                       [&](int channel) { return channel < file.size.c; });
}

/// With one channel the order says nothing and may be left open.
bool hasLayout(const ClientSide& client) {
    const bool ordered = client.order == zelInterleaved || client.order == zelSequential ||
                         client.order == zelSeparate;
    return zelDataSize(client.dtype, 1) > 0 && (ordered || client.nchans == 1) &&
           client.orientation >= 0 && client.orientation <= zelLeftLowerOrigin;
}

bool canServe(const zelTile3D<int>& tile, const ClientSide& client, const FileSide& file) {
    return client.data && hasLayout(client) && namesFileChannels(client, file) &&
           isInsideImage(tile, file, client) &&
           countElements(tile.nx, tile.ny, tile.nz, client.nchans) > 0;
}

zelStatus reportNoPage(std::size_t bytes) {
    const int systemError = errno;
    zelError(zelSevError, "zelFile::getTile(): couldn't allocate a page of %zu bytes: %s", bytes,
             std::strerror(systemError));
    return zelStatusEncode(zelMALLOCFAILED, 1, systemError);
}

/// Moves a tile, given in the file's frame, page by page.
class Transfer {
public:
    Transfer(zelFile& theFile, const FileSide& theFileSide, const ClientSide& theClient,
             const zelTile3D<int>& theTile, zelFlip theFlip, int exchange, void* buffer)
        : file(theFile), side(theFileSide), client(theClient), tile(theTile), flip(theFlip),
          transpose(exchange), page(buffer) {}

    zelStatus run(Op op, const zelConfig* config);

private:
    /// The part of a page that lies inside the image.
    struct Part {
        Part(const zelTileIter& at, const FileSide& side)
            : x(at.x), y(at.y), z(at.z), c(at.c), nx(std::min(side.size.x - x, side.pageSize.x)),
              ny(std::min(side.size.y - y, side.pageSize.y)),
              nz(std::min(side.size.z - z, side.pageSize.z)),
              nc(std::min(side.size.c - c, side.pageSize.c)) {}

        int x, y, z, c, nx, ny, nz, nc;
    };

    zelStatus read(const Part& part);
    zelStatus write(const Part& part);
    bool isSuppliedWhole(const Part& part) const;
    zelConverter clientArea(const Part& part) const;
    zelConverter pageArea(const Part& part) const;

    zelFile& file;
    const FileSide& side;
    const ClientSide& client;
    const zelTile3D<int>& tile;
    zelFlip flip;
    int transpose;
    void* page;
};

zelStatus Transfer::run(Op op, const zelConfig* config) {
    zelTileIter iter(tile, side.pageSize, side.size.c, config, 0);
    while (iter.more()) {
        const Part part(iter, side);
        const zelStatus status = op == SetTile ? write(part) : read(part);
        if (status != zelOKAY)
            return status;
    }
    return zelOKAY;
}

zelStatus Transfer::read(const Part& p) {
    const zelStatus status = file.getPage(page, p.x, p.y, p.z, p.c, p.nx, p.ny, p.nz, p.nc);
    if (status != zelOKAY)
        return status;
    zelConverter from = pageArea(p);
    clientArea(p) = from;
    return zelOKAY;
}

zelStatus Transfer::write(const Part& p) {
    if (!isSuppliedWhole(p)) {
        const zelStatus status = file.getPage(page, p.x, p.y, p.z, p.c, p.nx, p.ny, p.nz, p.nc);
        if (status != zelOKAY)
            return status;
    }
    zelConverter from = clientArea(p);
    pageArea(p) = from;
    return file.setPage(page, p.x, p.y, p.z, p.c, p.nx, p.ny, p.nz, p.nc);
}

bool Transfer::isSuppliedWhole(const Part& p) const {
    if (!tile.contains(zelTile3D<int>(p.x, p.y, p.z, p.nx, p.ny, p.nz)))
        return false;
    for (int channel = p.c; channel < p.c + p.nc; ++channel)
        if (!client.holds(channel))
            return false;
    return true;
}

// Both areas are placed relative to the page's origin, so that a page at the edge of the largest
// images does not end beyond the int range.

zelConverter Transfer::clientArea(const Part& p) const {
    zelConverter area(client.data, client.dtype, client.order, client.nchans, client.channels,
                      tile.nx, tile.ny, tile.nz, tile.x - p.x, tile.y - p.y, tile.z - p.z,
                      client.choff);
    area.setFlip(flip);
    area.setTransposeXY(transpose);
    return area;
}

zelConverter Transfer::pageArea(const Part& p) const {
    const zelSize& size = side.pageSize;
    return zelConverter(page, side.dtype, side.order, size.c, nullptr, size.x, size.y, size.z, 0, 0,
                        0, p.c);
}

} // namespace

zelStatus zelFileGetOrSetTile(zelFile* it, Op op, int x, int y, int z, int nx, int ny, int nz,
                              void* data, const zelConfig* config) {
    const FileSide file(*it);
    const ClientSide client(file, data, config);
    zelTile3D<int> tile(x, y, z, nx, ny, nz);
    const std::size_t bytes = pageBytes(file);
    if (bytes == 0 || (!isEmpty(tile) && !canServe(tile, client, file)))
        return zelStatusEncode(zelBADPARAMS);

    const PageBuffer page(std::malloc(bytes));
    if (!page)
        return reportNoPage(bytes);
    if (isEmpty(tile))
        return zelOKAY;
    zelFlip flip = zelNoFlip;
    int transpose = 0;
    zelMapTile(client.orientation, tile, flip, transpose, file.orientation, file.size);
    return Transfer(*it, file, client, tile, flip, transpose, page.get()).run(op, config);
}

zelStatus zelFile::getTile(int x, int y, int z, int nx, int ny, int nz, void* data,
                           const zelConfig* config) {
    return zelFileGetOrSetTile(this, GetTile, x, y, z, nx, ny, nz, data, config);
}

zelStatus zelFile::setTile(int x, int y, int z, int nx, int ny, int nz, const void* data,
                           const zelConfig* config) {
    // A transfer in this direction only reads the client's memory.
    return zelFileGetOrSetTile(this, SetTile, x, y, z, nx, ny, nz, const_cast<void*>(data), config);
}
