#include "imageFile.h"

#include "formatList.h"
#include "imageName.h"

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
    if (status == zelBADMAGIC) {
        return "no format recognises the file; the formats are " + joinedFormatNames();
    }
    if (status == zelOPENFAILED) {
        return "is no regular file";
    }
    if (status == zelFILEINDEXOOB) {
        return "there is no image " + std::to_string(name.index) + " in the file";
    }
    return statusText(status);
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
    zelStatus status = zelOKAY;
    ImageFile file(zelFile::open(fullName.c_str(), mode, &status));
    const std::string reported = takeExplainedErrors();
    if (!file) {
        throw Failure{fullName, reported.empty() ? openFailureText(splitImageName(fullName), status)
                                                 : reported};
    }
    return file;
}

void selectImage(zelFile& file, const std::string& name, int index) {
    if (index != file.getCurrentImg()) {
        require(name, file.setCurrentImg(index));
    }
}

} // namespace zel::tool
