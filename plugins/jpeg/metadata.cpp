#include "metadata.h"

#include "kit/exif.h"

#include <algorithm>
#include <cmath>

namespace zeljpeg {

namespace {

constexpr zelTagDescription ownTags[] = {
    {commentTag, zelkit::oneOf(zelTagString), "Any text", "Comment", "", nullptr}};

bool isWhole(double value) {
    return value >= 1 && value <= 65535 && value == std::floor(value);
}

int toDensity(double value) {
    return static_cast<int>(std::lround(std::clamp(value, 1.0, 65535.0)));
}

} // namespace

std::span<const zelTagDescription> tagTable() {
    static const std::vector<zelTagDescription> all =
        zelkit::joinTags({ownTags, zelkit::exifTagDescriptions()});
    return all;
}

void takeDensity(const Density& density, zelkit::Fields& fields) {
    const bool known = density.x > 0 && density.y > 0 && density.unit >= 0 && density.unit <= 2 &&
                       (density.unit != 0 || density.x != 1 || density.y != 1);
    if (!known || fields.number(zelkit::exifXResolution))
        return;
    fields.set(zelkit::exifXResolution, double{1} * density.x);
    fields.set(zelkit::exifYResolution, double{1} * density.y);
    fields.set(zelkit::exifResolutionUnit, double{1} * (density.unit + zelkit::resolutionNone));
}

Density densityOf(const zelkit::Fields& fields) {
    const double* const x = fields.number(zelkit::exifXResolution);
    if (!x || !(*x > 0))
        return {};
    const double unit = fields.numberOr(zelkit::exifResolutionUnit, zelkit::resolutionPerInch);
    return {std::clamp(static_cast<int>(unit), 1, 3) - zelkit::resolutionNone, toDensity(*x),
            toDensity(fields.numberOr(zelkit::exifYResolution, *x))};
}

bool losesResolution(const zelkit::Fields& fields) {
    const double* const x = fields.number(zelkit::exifXResolution);
    return x && !(isWhole(*x) && isWhole(fields.numberOr(zelkit::exifYResolution, *x)));
}

} // namespace zeljpeg
