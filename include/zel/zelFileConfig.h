#ifndef ZEL_FILE_CONFIG_H
#define ZEL_FILE_CONFIG_H

#include <zel/zelColor.h>
#include <zel/zelCoord.h>
#include <zel/zelDataSize.h>
#include <zel/zelExport.h>
#include <zel/zelOrientation.h>

class zelFile;

/// A client's wish for a new file, and after zelFormat::applyDefaults what the file will be.
///
/// An attribute of 0 is open; a size is open if any of its four fields is 0. Both sizes are those
/// of the image with x horizontal, whatever the orientation says: a file whose orientation
/// exchanges x and y holds its own size the other way round. A plain value.
class ZEL_API zelFileConfig {
public:
    /// A null size is four zeros; sizes are copied.
    zelFileConfig(const zelSize* imagedims = nullptr,
                  zelDataType datatype = static_cast<zelDataType>(0),
                  zelOrder dimensionorder = static_cast<zelOrder>(0),
                  zelColorModel colormodel = static_cast<zelColorModel>(0),
                  zelOrientation orientation = static_cast<zelOrientation>(0),
                  zelCompression compression = static_cast<zelCompression>(0),
                  const zelSize* pagedims = nullptr);

    /// The attributes of an open file; everything is open if `file` is null.
    zelFileConfig(zelFile* file);

    zelFileConfig(const zelFileConfig& other) = default;
    zelFileConfig& operator=(const zelFileConfig& other) = default;

    /// Leaves everything open.
    void reset();

    void setDimensions(const zelSize& dimensions);
    void setDataType(zelDataType datatype);
    void setOrder(zelOrder dimensionorder);
    void setColorModel(zelColorModel colormodel);
    void setOrientation(zelOrientation orientation);
    void setCompression(zelCompression compression);
    void setPageDimensions(const zelSize& dimensions);

    const zelSize& getDimensions() const;
    void getDimensions(zelSize& dimensions) const;
    const zelSize& getPageDimensions() const;
    void getPageDimensions(zelSize& dimensions) const;

    /// The image's size counted in its orientation: x and y change places if that exchanges them.
    void getSize(zelSize& size) const;
    /// The page's size, likewise.
    void getPageSize(zelSize& size) const;

    zelDataType getDataType() const;
    zelOrder getOrder() const;
    zelColorModel getColorModel() const;
    zelOrientation getOrientation() const;
    zelCompression getCompression() const;

    /// 1 if the attribute is open, else 0.
    int isDataTypeDefaulted() const;
    int isOrderDefaulted() const;
    int isColorModelDefaulted() const;
    int isOrientationDefaulted() const;
    int isCompressionDefaulted() const;
    int areDimensionsDefaulted() const;
    int arePageDimensionsDefaulted() const;

private:
    zelSize imageDims;
    zelDataType dtype;
    zelOrder order;
    zelColorModel cm;
    zelOrientation orient;
    zelCompression compress;
    zelSize pageDims;
    [[maybe_unused]] int specified = 0;
};

#endif
