#ifndef ZELKIT_TABLEFORMAT_H
#define ZELKIT_TABLEFORMAT_H

#include <zel/zelFormat.h>

#include <climits>
#include <initializer_list>
#include <span>

namespace zelkit {

/// A colour model that a format can store, with the channels of a pixel; 0 channels: any number.
struct ColorModelChannels {
    zelColorModel model;
    int channels;
};

/// What a format can store, as data. Types and orders are masks of their enumerators; orientations
/// and compressions, which are no bits, are masks made by `maskOf`.
struct Capabilities {
    int types = 0;
    int orders = 0;
    int orientations = 0;
    int compressions = 0;
    /// The first one is preferred among those of the same channel count, and for a count of 0.
    std::span<const ColorModelChannels> colorModels;

    int maxWidth = INT_MAX;
    int maxHeight = INT_MAX;
    int maxDepth = 1;
    int maxChannels = INT_MAX;

    zelDataType preferredType = zelUChar;
    zelOrder preferredOrder = zelInterleaved;
    zelOrientation preferredOrientation = zelUpperLeftOrigin;
    zelCompression preferredCompression = zelNoCompression;

    bool randomAccessRead = true;
    bool randomAccessWrite = true;
};

/// The mask of some orientations or compressions: bit n stands for the enumerator of value n.
template <typename Enumeration>
constexpr int maskOf(std::initializer_list<Enumeration> members) {
    int mask = 0;
    for (const Enumeration member : members)
        mask |= 1 << static_cast<int>(member);
    return mask;
}

/// The eight orientations.
constexpr int allOrientations = 0x1fe;

/// A format that answers all queries from a table, at the version of the library that it was built
/// with. Pages are bands: full rows of all channels of one plane, about 256 KiB of them by default.
/// A format with other pages overrides the two page queries. A plug-in adds `newfileobj`.
class TableFormat : public zelFormat {
public:
    int typeIsSupported(zelDataType type) override;
    int orderIsSupported(zelOrder order) override;
    int orientationIsSupported(zelOrientation orientation) override;
    int colorModelIsSupported(zelColorModel cm) override;
    int compressionIsSupported(zelCompression compression) override;
    int sizeIsSupported(int x, int y, int z, int c, zelOrientation orientation) override;
    int pagingIsSupported() override;
    int pageSizeIsSupported(int x, int y, int z, int c, int pageX, int pageY, int pageZ, int pageC,
                            zelOrientation orientation) override;
    int randomAccessReadIsSupported() override;
    int randomAccessWriteIsSupported() override;
    zelDataType getPreferredType() override;
    zelOrder getPreferredOrder() override;
    zelOrientation getPreferredOrientation() override;
    zelColorModel getPreferredColorModel(int nchans) override;
    zelCompression getPreferredCompression() override;
    void getPreferredPageSize(int x, int y, int z, int c, int& pageX, int& pageY, int& pageZ,
                              int& pageC, zelOrientation orientation) override;

protected:
    /// `capabilities` is not copied and lives as long as the format.
    TableFormat(const char* formatName, const Capabilities& capabilities);

private:
    const Capabilities& table_;
};

} // namespace zelkit

#endif
