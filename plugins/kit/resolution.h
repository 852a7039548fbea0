#ifndef ZELKIT_RESOLUTION_H
#define ZELKIT_RESOLUTION_H

#include "kit/fields.h"

namespace zelkit {

/// A resolution as many formats state it: in whole pixels per metre. 0: not stated.
struct PerMeter {
    int x = 0;
    int y = 0;
};

/// Sets the fields of a resolution: per inch where that is what was meant, as 300 by 11811, else
/// per centimetre. Numbers below 1 state nothing.
void setResolution(Fields& fields, const PerMeter& resolution);

/// What the fields state, to the nearest; nothing without a unit.
PerMeter resolutionOf(const Fields& fields);

} // namespace zelkit

#endif
