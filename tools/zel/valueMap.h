#ifndef ZEL_TOOL_VALUEMAP_H
#define ZEL_TOOL_VALUEMAP_H

#include <zel/zelDataSize.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace zel::tool {

/// What happens to numbers when the element type changes.
enum class ValueMode {
    scale, ///< the full range of one type becomes that of the other
    clamp, ///< the number stays, rounded and brought into the type's range
    keep,  ///< what the library's own conversion makes of it
};

struct ValueRange {
    double low;
    double high;
};

/// The range that stands for black to white in a type: all of an integer type, 0 to 1 for floats.
ValueRange fullRange(zelDataType type);

/// Turns numbers of one element type into those of another.
class ValueMap {
public:
    /// `input` names the numbers that become the ends of the output's range; without it they are
    /// the ends of the input's.
    ValueMap(zelDataType from, zelDataType to, ValueMode mode, std::optional<ValueRange> input);

    /// Whether `apply` may change anything.
    bool changesValues() const { return active; }

    /// Afterwards each number is one that the output type holds. NaN becomes the number nearest to
    /// 0 if the output has no NaN.
    void apply(std::span<double> values);

    /// A number as `apply` would give it, not rounded and not limited.
    double mapped(double value) const;

    /// The input numbers that stand for black and white.
    ValueRange inputRange() const { return input; }

    /// Whether `apply` had to bring numbers into the type's range.
    bool hasClamped() const { return outside > 0; }

    /// Takes over the counts of a map between the same numbers; false if the other is none.
    bool join(const ValueMap& other);

    /// What was done, for the user; empty if nothing was.
    std::string summary() const;

private:
    template <bool toIntegral>
    void applyAs(std::span<double> values);

    zelDataType fromType;
    zelDataType toType;
    ValueMode mode;
    ValueRange input;
    ValueRange output;
    bool active;
    std::uint64_t outside = 0;
};

} // namespace zel::tool

#endif
