#ifndef ZELKIT_ARGUMENTS_H
#define ZELKIT_ARGUMENTS_H

#include <zel/zelFile.h>

#include <span>
#include <variant>

namespace zelkit {

/// One format argument that a plug-in knows, and the variable that it fills. A `bool` is a flag,
/// given as `%name`, `%name=1` or `%name=0`; an `int` takes a decimal number between `lowest` and
/// `highest`, or with `names`, which end by a null, one of these.
struct Argument {
    const char* name;
    std::variant<bool*, int*> target;
    int lowest = 0;
    int highest = 1;
    const zelNameDesc* names = nullptr;
};

/// Stores the value of one argument of the name `fileName` in its variable. `known` is the table's
/// row, or null if the name is in no row. What cannot be used draws a warning that names file and
/// argument, and changes nothing.
void storeArgument(const char* fileName, const zelParameterDesc& given, const Argument* known);

} // namespace zelkit

#endif
