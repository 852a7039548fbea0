#include "kit/resolution.h"

#include "kit/exif.h"

#include <algorithm>
#include <climits>
#include <cmath>

namespace zelkit {

namespace {

constexpr double metersPerInch = 0.0254;

// Whether a whole number of pixels per inch, and not one per centimetre, comes to this.
bool isPerInch(int perMeter) {
    return perMeter % 100 != 0 &&
           std::lround(std::round(perMeter * metersPerInch) / metersPerInch) == perMeter;
}

} // namespace

void setResolution(Fields& fields, const PerMeter& resolution) {
    if (resolution.x < 1 || resolution.y < 1)
        return;
    const bool perInch = isPerInch(resolution.x) && isPerInch(resolution.y);
    const auto shown = [perInch](int perMeter) {
        return perInch ? std::round(perMeter * metersPerInch) : perMeter / 100.0;
    };
    fields.set(exifXResolution, shown(resolution.x));
    fields.set(exifYResolution, shown(resolution.y));
    fields.set(exifResolutionUnit, double(perInch ? resolutionPerInch : resolutionPerCentimeter));
}

PerMeter resolutionOf(const Fields& fields) {
    const auto unit = std::lround(fields.numberOr(exifResolutionUnit, resolutionPerInch));
    const double factor = unit == resolutionPerInch         ? 1 / metersPerInch
                          : unit == resolutionPerCentimeter ? 100
                                                            : 0;
    const auto perMeter = [factor](double number) {
        // Not a number counts as 0.
        return number > 0 ? static_cast<int>(std::min(number * factor + 0.5, double{INT_MAX})) : 0;
    };
    const double x = fields.numberOr(exifXResolution, 0);
    return {perMeter(x), perMeter(fields.numberOr(exifYResolution, x))};
}

} // namespace zelkit
