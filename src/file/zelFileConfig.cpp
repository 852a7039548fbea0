#include <zel/zelFileConfig.h>

#include <zel/zelFile.h>

namespace {

zelSize sizeOrOpen(const zelSize* size) {
    return size ? *size : zelSize(0, 0, 0, 0);
}

bool isOpen(const zelSize& size) {
    return size.x == 0 || size.y == 0 || size.z == 0 || size.c == 0;
}

} // namespace

zelFileConfig::zelFileConfig(const zelSize* imagedims, zelDataType datatype,
                             zelOrder dimensionorder, zelColorModel colormodel,
                             zelOrientation orientation, zelCompression compression,
                             const zelSize* pagedims)
    : imageDims(sizeOrOpen(imagedims)), dtype(datatype), order(dimensionorder), cm(colormodel),
      orient(orientation), compress(compression), pageDims(sizeOrOpen(pagedims)) {}

zelFileConfig::zelFileConfig(zelFile* file) : zelFileConfig() {
    if (!file)
        return;
    file->getDimensions(imageDims);
    dtype = file->getDataType();
    order = file->getOrder();
    cm = file->getColorModel();
    orient = file->getOrientation();
    compress = file->getCompression();
    file->getPageDimensions(pageDims);
}

void zelFileConfig::reset() {
    *this = zelFileConfig();
}

void zelFileConfig::setDimensions(const zelSize& dimensions) {
    imageDims = dimensions;
}

const zelSize& zelFileConfig::getDimensions() const {
    return imageDims;
}

void zelFileConfig::getDimensions(zelSize& dimensions) const {
    dimensions = imageDims;
}

int zelFileConfig::areDimensionsDefaulted() const {
    return isOpen(imageDims);
}

void zelFileConfig::setPageDimensions(const zelSize& dimensions) {
    pageDims = dimensions;
}

const zelSize& zelFileConfig::getPageDimensions() const {
    return pageDims;
}

void zelFileConfig::getPageDimensions(zelSize& dimensions) const {
    dimensions = pageDims;
}

int zelFileConfig::arePageDimensionsDefaulted() const {
    return isOpen(pageDims);
}

void zelFileConfig::getSize(zelSize& size) const {
    size = imageDims;
    zelMapSize(zelLowerLeftOrigin, size, orient);
}

void zelFileConfig::getPageSize(zelSize& size) const {
    size = pageDims;
    zelMapSize(zelLowerLeftOrigin, size, orient);
}

void zelFileConfig::setDataType(zelDataType datatype) {
    dtype = datatype;
}

zelDataType zelFileConfig::getDataType() const {
    return dtype;
}

int zelFileConfig::isDataTypeDefaulted() const {
    return dtype == 0;
}

void zelFileConfig::setOrder(zelOrder dimensionorder) {
    order = dimensionorder;
}

zelOrder zelFileConfig::getOrder() const {
    return order;
}

int zelFileConfig::isOrderDefaulted() const {
    return order == 0;
}

void zelFileConfig::setColorModel(zelColorModel colormodel) {
    cm = colormodel;
}

zelColorModel zelFileConfig::getColorModel() const {
    return cm;
}

int zelFileConfig::isColorModelDefaulted() const {
    return cm == 0;
}

void zelFileConfig::setOrientation(zelOrientation orientation) {
    orient = orientation;
}

zelOrientation zelFileConfig::getOrientation() const {
    return orient;
}

int zelFileConfig::isOrientationDefaulted() const {
    return orient == 0;
}

void zelFileConfig::setCompression(zelCompression compression) {
    compress = compression;
}

zelCompression zelFileConfig::getCompression() const {
    return compress;
}

int zelFileConfig::isCompressionDefaulted() const {
    return compress == 0;
}
