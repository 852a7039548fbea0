#ifndef ZELKIT_FIELDS_H
#define ZELKIT_FIELDS_H

#include <zel/zelError.h>
#include <zel/zelTag.h>

#include <cstdarg>
#include <map>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace zelkit {

/// The metadata of an image by tag number: texts and numbers.
class Fields {
public:
    using Value = std::variant<double, std::string>;

    /// Null if there is no such field of that kind.
    const std::string* text(int tag) const;
    const double* number(int tag) const;
    /// The number of a field, or `otherwise`.
    double numberOr(int tag, double otherwise) const;

    void set(int tag, Value value) { values_[tag] = std::move(value); }
    void erase(int tag) { values_.erase(tag); }
    void clear() { values_.clear(); }
    const std::map<int, Value>& all() const { return values_; }

private:
    std::map<int, Value> values_;
};

/// Fetches a field for getItem, as its description says; the count of every description is 1. Texts
/// stay the fields' and are good until the field is set. zelUNSUPPORTEDBYFORMAT: no description has
/// the tag; zelBADFIELDGET: the image has no such field.
zelStatus getField(const Fields& fields, std::span<const zelTagDescription> known, int tag,
                   va_list arguments);

/// Sets a field for setItem. A null text takes the field away. zelBADFIELDSET: a number that the
/// type or the names of the tag do not hold.
zelStatus setField(Fields& fields, std::span<const zelTagDescription> known, int tag,
                   va_list arguments);

/// One table of several.
std::vector<zelTagDescription>
joinTags(std::initializer_list<std::span<const zelTagDescription>> tables);

/// The `flags` of a description of one element.
constexpr unsigned oneOf(zelTagType type) {
    return static_cast<unsigned>(type) | 1U;
}

} // namespace zelkit

#endif
