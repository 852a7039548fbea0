#include "imageName.h"

#include "messages.h"

#include <zel/zelFile.h>

#include <cstdlib>
#include <memory>

namespace zel::tool {
namespace {

struct Freed {
    void operator()(char* block) const { std::free(block); }
};

std::string escape(const std::string& piece) {
    std::string text;
    for (const char c : piece) {
        text += c;
        if (c == '#' || c == ':' || c == '%') {
            text += c;
        }
    }
    return text;
}

} // namespace

ImageName splitImageName(const std::string& fullName) {
    ImageName name;
    char* format = nullptr;
    char* arguments = nullptr;
    const std::unique_ptr<char, Freed> block(
        zelFile::parseFileName(fullName.c_str(), &format, &name.index, &arguments));
    if (block) {
        name.file = block.get();
        name.format = format ? std::optional<std::string>(format) : std::nullopt;
        name.arguments = arguments ? std::optional<std::string>(arguments) : std::nullopt;
    }
    return name;
}

std::string joinImageName(const ImageName& name) {
    std::string text = escape(name.file);
    if (name.format) {
        text += '#' + escape(*name.format);
    }
    if (name.index >= 0) {
        text += ':' + std::to_string(name.index);
    }
    if (name.arguments) {
        // The arguments run to the end of the name, and nothing in them is an escape.
        text += '%' + *name.arguments;
    }
    return text;
}

void requireFileName(const std::string& fullName) {
    if (fullName.empty()) {
        throw Failure{"\"\"", "this is no name of a file"};
    }
    if (fullName == "-") {
        throw Failure{fullName, "images are not read from or written to a pipe; name a file"};
    }
}

} // namespace zel::tool
