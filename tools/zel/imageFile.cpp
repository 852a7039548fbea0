#include "imageFile.h"

#include "formatList.h"
#include "imageName.h"

#include <filesystem>
#include <utility>

namespace zel::tool {
namespace {

std::string statusText(zelStatus status) {
    char text[256];
    return zelStatusToString(status, text, sizeof text);
}

std::string openFailureText(const ImageName& name, zelStatus status) {
    if (status == zelBADIMGFMT && name.format) {
        return unknownFormatText(*name.format);
    }
    std::error_code error;
    if (status == zelBADMAGIC && std::filesystem::file_size(name.file, error) == 0 && !error) {
        return "the file is empty";
    }
    if (status == zelBADMAGIC) {
        return "no format recognises the file; the formats are " + joinedFormatNames();
    }
    if (status == zelOPENFAILED) {
        return std::filesystem::is_directory(name.file, error) ? "is a directory"
                                                               : "is no regular file";
    }
    if (status == zelFILEINDEXOOB) {
        return "there is no image " + std::to_string(name.index) + " in the file";
    }
    return statusText(status);
}

/// A file whose name, taken as a full name, says something else.
std::string misreadNameHint(const std::string& fullName) {
    std::error_code error;
    const ImageName plain{fullName, {}, -1, {}};
    return splitImageName(fullName).file != fullName && std::filesystem::exists(fullName, error)
               ? "; the file of this name is called \"" + joinImageName(plain) + "\""
               : "";
}

} // namespace

Failure failureOf(const std::string& name, zelStatus status) {
    const std::string reported = takeExplainedErrors();
    return {name, reported.empty() ? statusText(status) : reported};
}

void require(const std::string& name, zelStatus status) {
    if (status != zelOKAY) {
        throw failureOf(name, status);
    }
}

ImageFile openImage(const std::string& fullName, int mode) {
    requireFileName(fullName);
    zelStatus status = zelOKAY;
    ImageFile file(zelFile::open(fullName.c_str(), mode, &status));
    const std::string reported = takeExplainedErrors();
    if (!file) {
        const std::string reason =
            reported.empty() ? openFailureText(splitImageName(fullName), status) : reported;
        throw Failure{fullName, reason + misreadNameHint(fullName)};
    }
    return file;
}

void forEachImage(const std::string& fullName,
                  const std::function<void(zelFile&, const std::string&)>& visit) {
    const WorkingOn working(fullName);
    ImageName name = splitImageName(fullName);
    const ImageFile file = openImage(fullName);
    const int images = file->getNumImgs();
    const bool single = name.index >= 0;
    for (int i = single ? name.index : 0; i < (single ? name.index + 1 : images); ++i) {
        selectImage(*file, fullName, i);
        name.index = images > 1 ? i : -1;
        visit(*file, joinImageName(name));
    }
}

int forEachImage(const std::vector<std::string>& fullNames,
                 const std::function<void(zelFile&, const std::string&)>& visit) {
    int status = 0;
    for (const std::string& name : fullNames) {
        try {
            forEachImage(name, visit);
        } catch (const Failure& failure) {
            printFailure(failure);
            status = 1;
        }
    }
    return status;
}

void selectImage(zelFile& file, const std::string& name, int index) {
    if (index != file.getCurrentImg()) {
        require(name, file.setCurrentImg(index));
    }
}

} // namespace zel::tool
