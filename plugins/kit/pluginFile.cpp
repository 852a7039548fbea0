#include "kit/pluginFile.h"

#include <zel/zelFormat.h>
#include <zel/zelTypeNames.h>

#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace zelkit {

PluginFile::~PluginFile() = default;

const char* PluginFile::nameForMessages() const {
    constexpr std::size_t longest = 100;
    if (!filename)
        return "(unnamed file)";
    const std::size_t length = std::strlen(filename);
    return length > longest ? filename + (length - longest) : filename;
}

void PluginFile::readArguments(std::span<const Argument> known) {
    std::vector<zelNameDesc> names;
    for (const Argument& argument : known)
        names.push_back({argument.name, static_cast<int>(names.size())});
    names.push_back({nullptr, -1});

    zelParameterDesc given[16];
    const int count = parseArguments(given, static_cast<int>(std::size(given)));
    for (int i = 0; i < count; i++) {
        // The empty name would pass as an abbreviation of the first row.
        const int row = *given[i].name ? lookupName(given[i].name, names.data()) : -1;
        storeArgument(nameForMessages(), given[i],
                      row < 0 ? nullptr : &known[static_cast<std::size_t>(row)]);
    }
}

zelStatus PluginFile::makeFile() {
    if (fd >= 0)
        return setFileLength(fd, 0);
    if (!filename)
        return zelStatusEncode(zelBADPARAMS);
    fd = ::open(filename, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0)
        return systemFailure(zelOPENFAILED);
    made_.reset(fd);
    return zelOKAY;
}

zelStatus PluginFile::refuseAttributes() const {
    zelError(zelSevWarning,
             "%s: %s has no form for %d x %d x %d pixels of %d channels of type %s as %s",
             nameForMessages(), format ? format->getName() : "the format", size.x, size.y, size.z,
             size.c, zelDataTypeName(dtype), zelColorModelName(cm));
    return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
}

zelStatus PluginFile::setCurrentImg(int i) {
    const zelStatus range = zelFile::setCurrentImg(i);
    if (range != zelUNSUPPORTEDBYLIBRARY)
        return range;
    const zelStatus status = showImage(i);
    if (status == zelOKAY)
        markAttributesChanged();
    return status;
}

zelStatus PluginFile::showImage(int) {
    return zelStatusEncode(zelUNSUPPORTEDBYLIBRARY);
}

zelStatus PluginFile::closeDescriptor() {
    made_.release();
    const int closing = fd;
    fd = -1;
    if (closing >= 0 && ::close(closing) != 0)
        return systemFailure(zelCLOSEFAILED);
    return zelOKAY;
}

} // namespace zelkit
