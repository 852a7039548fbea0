#include <zel/zelFormat.h>

#include <algorithm>

#include <zel/zelFileConfig.h>

namespace {

zelDataType nearestType(zelFormat& format, zelDataType wanted) {
    if (wanted < zelBit)
        return format.getPreferredType();
    int type = wanted;
    const auto supported = [&] { return format.typeIsSupported(static_cast<zelDataType>(type)); };
    while (!supported() && type < zelDouble)
        type *= 2;
    while (!supported() && type > zelBit)
        type /= 2;
    return static_cast<zelDataType>(type);
}

zelColorModel nearestModel(zelFormat& format, zelColorModel wanted, int nchans) {
    // Nothing outside the models is worth a walk of two thousand million steps.
    int model = std::clamp<int>(wanted, 0, zelLuminanceAlpha);
    const auto supported = [&] {
        return format.colorModelIsSupported(static_cast<zelColorModel>(model));
    };
    while (!supported() && model > zelNegative)
        --model;
    while (!supported() && model < zelABGR)
        ++model;
    const auto found = static_cast<zelColorModel>(model);
    if (nchans != 0 && nchans != zelColorModelChans(found))
        return format.getPreferredColorModel(nchans);
    return found;
}

void fillIn(int& extent, int value) {
    if (extent == 0)
        extent = value;
}

/// The channels that a colour model fixes, or `otherwise` if it fixes none.
int modelChans(zelColorModel model, int otherwise) {
    return model == zelMultiSpectral ? otherwise : zelColorModelChans(model);
}

/// One run of applyDefaults. `dims` and `pg` are the sizes as far as they are settled.
class Settling {
public:
    Settling(zelFormat& theFormat, zelFileConfig& config)
        : format(theFormat), fc(config), dims(config.getDimensions()),
          pg(config.getPageDimensions()) {}

    void fromSource(const zelFileConfig& source);
    void fromPreferences();
    bool isSupported() const;

private:
    void sizesFromSource(const zelFileConfig& source);
    bool pageSizeIsSupported() const;
    void preferPageSize();

    zelFormat& format;
    zelFileConfig& fc;
    zelSize dims;
    zelSize pg;
};

void Settling::fromSource(const zelFileConfig& source) {
    if (fc.isDataTypeDefaulted())
        fc.setDataType(nearestType(format, source.getDataType()));
    if (fc.isOrderDefaulted())
        fc.setOrder(format.orderIsSupported(source.getOrder()) ? source.getOrder()
                                                               : format.getPreferredOrder());
    if (fc.isOrientationDefaulted())
        fc.setOrientation(format.orientationIsSupported(source.getOrientation())
                              ? source.getOrientation()
                              : format.getPreferredOrientation());
    if (fc.isColorModelDefaulted())
        fc.setColorModel(nearestModel(format, source.getColorModel(), dims.c));
    if (fc.isCompressionDefaulted())
        fc.setCompression(format.compressionIsSupported(source.getCompression())
                              ? source.getCompression()
                              : format.getPreferredCompression());
    sizesFromSource(source);
}

void Settling::sizesFromSource(const zelFileConfig& source) {
    if (fc.areDimensionsDefaulted()) {
        const zelSize& from = source.getDimensions();
        fillIn(dims.x, from.x);
        fillIn(dims.y, from.y);
        fillIn(dims.z, from.z);
        fillIn(dims.c, modelChans(fc.getColorModel(), from.c));
        fc.setDimensions(dims);
    }
    if (fc.arePageDimensionsDefaulted()) {
        const zelSize& from = source.getPageDimensions();
        fillIn(pg.x, from.x);
        fillIn(pg.y, from.y);
        fillIn(pg.z, from.z);
        fillIn(pg.c, fc.getOrder() == zelSeparate ? 1 : modelChans(fc.getColorModel(), from.c));
        if (!pageSizeIsSupported())
            preferPageSize();
        fc.setPageDimensions(pg);
    }
}

void Settling::fromPreferences() {
    if (fc.isDataTypeDefaulted())
        fc.setDataType(format.getPreferredType());
    if (fc.isOrderDefaulted())
        fc.setOrder(format.getPreferredOrder());
    if (fc.isOrientationDefaulted())
        fc.setOrientation(format.getPreferredOrientation());
    if (fc.isColorModelDefaulted())
        fc.setColorModel(format.getPreferredColorModel(dims.c));
    if (fc.isCompressionDefaulted())
        fc.setCompression(format.getPreferredCompression());
    if (fc.areDimensionsDefaulted()) {
        fillIn(dims.z, 1);
        fillIn(dims.c, zelColorModelChans(fc.getColorModel()));
        fc.setDimensions(dims);
    }
    if (fc.arePageDimensionsDefaulted()) {
        preferPageSize();
        fc.setPageDimensions(pg);
    }
}

bool Settling::pageSizeIsSupported() const {
    return format.pageSizeIsSupported(dims.x, dims.y, dims.z, dims.c, pg.x, pg.y, pg.z, pg.c,
                                      fc.getOrientation());
}

void Settling::preferPageSize() {
    format.getPreferredPageSize(dims.x, dims.y, dims.z, dims.c, pg.x, pg.y, pg.z, pg.c,
                                fc.getOrientation());
}

bool Settling::isSupported() const {
    return format.sizeIsSupported(dims.x, dims.y, dims.z, dims.c, fc.getOrientation()) &&
           format.typeIsSupported(fc.getDataType()) && format.orderIsSupported(fc.getOrder()) &&
           pageSizeIsSupported() && format.orientationIsSupported(fc.getOrientation()) &&
           format.colorModelIsSupported(fc.getColorModel()) &&
           format.compressionIsSupported(fc.getCompression());
}

} // namespace

zelStatus zelFormat::applyDefaults(zelFile* source, zelFileConfig& fc) {
    if (!source)
        return applyDefaults(static_cast<zelFileConfig*>(nullptr), fc);
    zelFileConfig attributes(source);
    return applyDefaults(&attributes, fc);
}

zelStatus zelFormat::applyDefaults(zelFileConfig* source, zelFileConfig& fc) {
    Settling settling(*this, fc);
    if (source)
        settling.fromSource(*source);
    else
        settling.fromPreferences();
    return settling.isSupported() ? zelOKAY : zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
}
