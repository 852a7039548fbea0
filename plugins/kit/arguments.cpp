#include "kit/arguments.h"

#include <zel/zelError.h>

#include <charconv>
#include <cstring>
#include <optional>
#include <string>
#include <system_error>

namespace zelkit {

namespace {

std::optional<int> parseNumber(const char* text, int lowest, int highest) {
    const char* const end = text + std::strlen(text);
    int number = 0;
    const auto result = std::from_chars(text, end, number);
    if (result.ec != std::errc() || result.ptr != end || number < lowest || number > highest)
        return std::nullopt;
    return number;
}

std::optional<int> parseName(const char* text, const zelNameDesc* names) {
    for (; names->name; names++)
        if (std::strcmp(names->name, text) == 0)
            return names->id;
    return std::nullopt;
}

std::string namesOf(const zelNameDesc* names) {
    std::string list;
    for (; names->name; names++)
        list += (list.empty() ? "" : ", ") + std::string(names->name);
    return list;
}

void warnOfValue(const char* fileName, const zelParameterDesc& given, const Argument& known) {
    const std::string expected =
        known.names ? namesOf(known.names)
                    : std::to_string(known.lowest) + " to " + std::to_string(known.highest);
    zelError(zelSevWarning, "%s: format argument \"%.40s\": %s%.40s, expected %.80s; ignored",
             fileName, known.name, given.value ? "bad value " : "no value",
             given.value ? given.value : "", expected.c_str());
}

} // namespace

void storeArgument(const char* fileName, const zelParameterDesc& given, const Argument* known) {
    if (!known) {
        zelError(zelSevWarning, "%s: unknown format argument \"%.40s\"; ignored", fileName,
                 given.name);
        return;
    }
    bool* const* const flag = std::get_if<bool*>(&known->target);
    std::optional<int> number;
    if (given.value)
        number = known->names ? parseName(given.value, known->names)
                              : parseNumber(given.value, known->lowest, known->highest);
    else if (flag)
        number = 1;
    if (!number)
        warnOfValue(fileName, given, *known);
    else if (flag)
        **flag = *number != 0;
    else
        *std::get<int*>(known->target) = *number;
}

} // namespace zelkit
