#ifndef ZELKIT_TABLEFORMAT_H
#define ZELKIT_TABLEFORMAT_H

#include <zel/zelFormat.h>
#include <zel/zelTag.h>

#include <cerrno>
#include <climits>
#include <initializer_list>
#include <new>
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

/// The mask of some orientations or compressions: bit n + 1 stands for the enumerator of value n,
/// for zelUnknownCompression is -1.
template <typename Enumeration>
constexpr int maskOf(std::initializer_list<Enumeration> members) {
    int mask = 0;
    for (const Enumeration member : members)
        mask |= 1 << (static_cast<int>(member) + 1);
    return mask;
}

/// The eight orientations.
constexpr int allOrientations = 0x3fc;

/// A format that answers all queries from a table, at the version of the library that it was built
/// with. Pages are bands: full rows of all channels of one plane, about 256 KiB of them by default.
/// A format with other pages overrides the two page queries. `FormatOf` makes its files.
class TableFormat : public zelFormat {
public:
    /// Neither `capabilities` nor `tags` is copied: they live as long as the format.
    TableFormat(const char* formatName, const Capabilities& capabilities,
                std::span<const zelTagDescription> tags = {});

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
    zelTagDescription* _getTagDescriptions(int& count) override;

private:
    const Capabilities& table_;
    std::span<const zelTagDescription> tags_;
};

/// A format, `Format` or a class derived from it, whose files are of the class `File`. Building a
/// static object of it registers the format, as the plug-in is loaded.
template <typename File, typename Format = TableFormat>
class FormatOf final : public Format {
public:
    using Format::Format;

protected:
    zelFile* newfileobj() override {
        auto* const file = new (std::nothrow) File;
        if (!file)
            errno = ENOMEM;
        return file;
    }
};

} // namespace zelkit

#endif
