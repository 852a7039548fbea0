#include "valueMap.h"

#include "valueNames.h"

#include <algorithm>
#include <cmath>

namespace zel::tool {
namespace {

ValueRange typeRange(zelDataType type) {
    return {zelDataMin(type), zelDataMax(type)};
}

std::string rangeText(ValueRange range) {
    return numberText(range.low) + ".." + numberText(range.high);
}

} // namespace

ValueRange fullRange(zelDataType type) {
    return zelDataIsIntegral(type) ? typeRange(type) : ValueRange{0, 1};
}

ValueMap::ValueMap(zelDataType from, zelDataType to, ValueMode valueMode,
                   std::optional<ValueRange> range)
    : fromType(from), toType(to), mode(valueMode), input(range.value_or(fullRange(from))),
      output(fullRange(to)), active(range || (from != to && mode != ValueMode::keep &&
                                              (zelDataIsIntegral(from) || zelDataIsIntegral(to)))) {
}

double ValueMap::mapped(double value) const {
    if (!active || mode != ValueMode::scale) {
        return value;
    }
    const double inputSpan = input.high - input.low;
    return output.low + (value - input.low) * (output.high - output.low) / inputSpan;
}

template <bool toIntegral>
void ValueMap::applyAs(std::span<double> values) {
    const bool scaled = mode == ValueMode::scale;
    const double inputLow = scaled ? input.low : 0;
    const double outputLow = scaled ? output.low : 0;
    const double inputSpan = scaled ? input.high - input.low : 1;
    const double outputSpan = scaled ? output.high - output.low : 1;
    const ValueRange limits = typeRange(toType);
    std::uint64_t beyond = 0;
    for (double& value : values) {
        const double wanted = outputLow + (value - inputLow) * outputSpan / inputSpan;
        if constexpr (toIntegral) {
            const double rounded = std::round(wanted);
            const double limited = rounded >= limits.low  ? std::min(rounded, limits.high)
                                   : rounded < limits.low ? limits.low
                                                          : std::max(0.0, limits.low);
            beyond += limited != rounded;
            value = limited;
        } else {
            value = wanted;
        }
    }
    outside += beyond;
}

void ValueMap::apply(std::span<double> values) {
    if (!active) {
        return;
    }
    if (zelDataIsIntegral(toType)) {
        applyAs<true>(values);
    } else {
        applyAs<false>(values);
    }
}

bool ValueMap::join(const ValueMap& other) {
    const bool same = fromType == other.fromType && toType == other.toType &&
                      active == other.active && input.low == other.input.low &&
                      input.high == other.input.high;
    outside += same ? other.outside : 0;
    return same;
}

std::string ValueMap::summary() const {
    std::string text;
    if (active && mode == ValueMode::scale) {
        text = "values scaled from " + dataTypeWord(fromType) + " " + rangeText(input) + " to " +
               dataTypeWord(toType) + " " + rangeText(output);
    }
    if (outside > 0) {
        text += text.empty() ? "" : "; ";
        text += std::to_string(outside) + (outside == 1 ? " value" : " values") + " clamped to " +
                rangeText(typeRange(toType));
    }
    return text;
}

} // namespace zel::tool
