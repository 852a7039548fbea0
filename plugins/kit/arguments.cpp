#include "kit/arguments.h"

#include <zel/zelError.h>

#include <charconv>
#include <cstring>
#include <optional>
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

void warnOfValue(const char* fileName, const zelParameterDesc& given, const Argument& known) {
    zelError(zelSevWarning, "%s: format argument \"%.40s\": %s%.40s, expected %d to %d; ignored",
             fileName, known.name, given.value ? "bad value " : "no value",
             given.value ? given.value : "", known.lowest, known.highest);
}

} // namespace

void storeArgument(const char* fileName, const zelParameterDesc& given, const Argument* known) {
    if (!known) {
        zelError(zelSevWarning, "%s: unknown format argument \"%.40s\"; ignored", fileName,
                 given.name);
        return;
    }
    bool* const* const flag = std::get_if<bool*>(&known->target);
    const std::optional<int> number = given.value
                                          ? parseNumber(given.value, known->lowest, known->highest)
                                          : (flag ? std::optional<int>(1) : std::nullopt);
    if (!number)
        warnOfValue(fileName, given, *known);
    else if (flag)
        **flag = *number != 0;
    else
        *std::get<int*>(known->target) = *number;
}

} // namespace zelkit
