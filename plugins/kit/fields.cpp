#include "kit/fields.h"

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>

namespace zelkit {

namespace {

const zelTagDescription* find(std::span<const zelTagDescription> known, int tag) {
    const auto found = std::ranges::find(known, tag, &zelTagDescription::tag);
    return found == known.end() ? nullptr : &*found;
}

int typeOf(const zelTagDescription& known) {
    return static_cast<int>(known.flags & 0xF0U);
}

template <typename Target>
void give(double number, va_list arguments) {
    if (Target* const target = va_arg(arguments, Target*))
        *target = static_cast<Target>(number);
}

// The largest number of a type, the smallest being its negative but for one.
double mostOf(int type) {
    switch (type) {
    case zelTagShort:
    case zelTagShortEnum:
        return SHRT_MAX;
    case zelTagFloat:
    case zelTagFloat2:
        return FLT_MAX;
    case zelTagDouble:
    case zelTagDouble2:
        return DBL_MAX;
    default:
        return INT_MAX;
    }
}

bool isReal(int type) {
    return type == zelTagFloat || type == zelTagFloat2 || type == zelTagDouble ||
           type == zelTagDouble2;
}

bool isNamed(const zelTagDescription& known, int value) {
    if (typeOf(known) != zelTagShortEnum && typeOf(known) != zelTagIntEnum)
        return true;
    for (auto* name = static_cast<const zelEnumSpec*>(known.spec); name && name->name; name++)
        if (name->value == value)
            return true;
    return false;
}

zelStatus setText(Fields& fields, int tag, const char* text) {
    if (text)
        fields.set(tag, std::string(text));
    else
        fields.erase(tag);
    return zelOKAY;
}

} // namespace

const std::string* Fields::text(int tag) const {
    const auto found = values_.find(tag);
    return found == values_.end() ? nullptr : std::get_if<std::string>(&found->second);
}

const double* Fields::number(int tag) const {
    const auto found = values_.find(tag);
    return found == values_.end() ? nullptr : std::get_if<double>(&found->second);
}

double Fields::numberOr(int tag, double otherwise) const {
    const double* const found = number(tag);
    return found ? *found : otherwise;
}

zelStatus getField(const Fields& fields, std::span<const zelTagDescription> known, int tag,
                   va_list arguments) {
    const zelTagDescription* const description = find(known, tag);
    if (!description)
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    const int type = typeOf(*description);
    if (type == zelTagString) {
        const std::string* const text = fields.text(tag);
        char** const target = va_arg(arguments, char**);
        if (!text || !target)
            return zelStatusEncode(zelBADFIELDGET);
        *target = const_cast<char*>(text->c_str());
        return zelOKAY;
    }
    const double* const number = fields.number(tag);
    if (!number || !(std::fabs(*number) <= mostOf(type)))
        return zelStatusEncode(zelBADFIELDGET);
    if (type == zelTagFloat || type == zelTagFloat2)
        give<float>(*number, arguments);
    else if (isReal(type))
        give<double>(*number, arguments);
    else if (mostOf(type) == SHRT_MAX)
        give<short>(*number, arguments);
    else
        give<int>(*number, arguments);
    return zelOKAY;
}

zelStatus setField(Fields& fields, std::span<const zelTagDescription> known, int tag,
                   va_list arguments) {
    const zelTagDescription* const description = find(known, tag);
    if (!description)
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    const int type = typeOf(*description);
    if (type == zelTagString)
        return setText(fields, tag, va_arg(arguments, char*));
    const bool real = isReal(type);
    const double number = real ? va_arg(arguments, double) : va_arg(arguments, int);
    if (!(std::fabs(number) <= mostOf(type)) ||
        (!real && !isNamed(*description, static_cast<int>(number))))
        return zelStatusEncode(zelBADFIELDSET);
    fields.set(tag, number);
    return zelOKAY;
}

std::vector<zelTagDescription>
joinTags(std::initializer_list<std::span<const zelTagDescription>> tables) {
    std::vector<zelTagDescription> all;
    for (const auto& table : tables)
        all.insert(all.end(), table.begin(), table.end());
    return all;
}

} // namespace zelkit
