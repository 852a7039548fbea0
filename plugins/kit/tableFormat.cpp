#include "kit/tableFormat.h"

#include "kit/sizes.h"

#include <zel/zelOrientation.h>
#include <zel/zelVersion.h>

#include <algorithm>
#include <utility>

namespace zelkit {

namespace {

bool maskHas(int mask, int value) {
    return value >= -1 && value < 30 && (mask >> (value + 1) & 1) != 0;
}

bool within(int value, int most) {
    return value >= 1 && value <= most;
}

// The queries give sizes as the image is seen; rows run along the other axis in a transposed file.
void toFileFrame(int& x, int& y, zelOrientation orientation) {
    if (orientation >= 0 && orientation <= zelLeftLowerOrigin && zelOrientationIsTrans[orientation])
        std::swap(x, y);
}

} // namespace

TableFormat::TableFormat(const char* formatName, const Capabilities& capabilities,
                         std::span<const zelTagDescription> tags)
    : zelFormat(formatName, ZEL_VERSION_MAJOR, ZEL_VERSION_MINOR), table_(capabilities),
      tags_(tags) {}

// The interface gives what nobody changes without const.
zelTagDescription* TableFormat::_getTagDescriptions(int& count) {
    count = static_cast<int>(tags_.size());
    return const_cast<zelTagDescription*>(tags_.data());
}

int TableFormat::typeIsSupported(zelDataType type) {
    return (table_.types & type) != 0;
}

int TableFormat::orderIsSupported(zelOrder order) {
    return (table_.orders & order) != 0;
}

int TableFormat::orientationIsSupported(zelOrientation orientation) {
    return maskHas(table_.orientations, orientation);
}

int TableFormat::colorModelIsSupported(zelColorModel cm) {
    return std::ranges::any_of(table_.colorModels,
                               [cm](const auto& known) { return known.model == cm; });
}

int TableFormat::compressionIsSupported(zelCompression compression) {
    return maskHas(table_.compressions, compression);
}

int TableFormat::sizeIsSupported(int x, int y, int z, int c, zelOrientation orientation) {
    toFileFrame(x, y, orientation);
    return within(x, table_.maxWidth) && within(y, table_.maxHeight) &&
           within(z, table_.maxDepth) && within(c, table_.maxChannels);
}

int TableFormat::pagingIsSupported() {
    return 1;
}

int TableFormat::pageSizeIsSupported(int x, int y, int /*z*/, int c, int pageX, int pageY,
                                     int pageZ, int pageC, zelOrientation orientation) {
    toFileFrame(x, y, orientation);
    toFileFrame(pageX, pageY, orientation);
    const auto elements = checkedProduct({pageX, pageY, pageC});
    return pageX == x && within(pageY, y) && pageZ == 1 && pageC == c && elements &&
           *elements <= INT_MAX;
}

int TableFormat::randomAccessReadIsSupported() {
    return table_.randomAccessRead;
}

int TableFormat::randomAccessWriteIsSupported() {
    return table_.randomAccessWrite;
}

zelDataType TableFormat::getPreferredType() {
    return table_.preferredType;
}

zelOrder TableFormat::getPreferredOrder() {
    return table_.preferredOrder;
}

zelOrientation TableFormat::getPreferredOrientation() {
    return table_.preferredOrientation;
}

zelColorModel TableFormat::getPreferredColorModel(int nchans) {
    if (nchans == 0 && !table_.colorModels.empty())
        return table_.colorModels.front().model;
    const auto holding = [nchans](int channels) {
        return [=](const auto& known) { return known.channels == channels && nchans > 0; };
    };
    for (const int channels : {nchans, 0}) {
        const auto found = std::ranges::find_if(table_.colorModels, holding(channels));
        if (found != table_.colorModels.end())
            return found->model;
    }
    return zelColorModel(0);
}

zelCompression TableFormat::getPreferredCompression() {
    return table_.preferredCompression;
}

void TableFormat::getPreferredPageSize(int x, int y, int /*z*/, int c, int& pageX, int& pageY,
                                       int& pageZ, int& pageC, zelOrientation orientation) {
    toFileFrame(x, y, orientation);
    // The query tells no element type: two bytes are in the middle of the usual ones.
    const auto rowBytes = checkedProduct({x, c, 2});
    pageX = x;
    pageY = bandRows(rowBytes.value_or(LLONG_MAX), y);
    pageZ = 1;
    pageC = c;
    toFileFrame(pageX, pageY, orientation);
}

} // namespace zelkit
