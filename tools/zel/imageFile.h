#ifndef ZEL_TOOL_IMAGEFILE_H
#define ZEL_TOOL_IMAGEFILE_H

#include "messages.h"

#include <zel/zelFile.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace zel::tool {

struct ImageCloser {
    void operator()(zelFile* file) const { file->close(0); }
};
/// An open image file, which closes itself.
using ImageFile = std::unique_ptr<zelFile, ImageCloser>;

/// What went wrong, in words: what the library reported while it happened, else the status.
Failure failureOf(const std::string& name, zelStatus status);

/// Throws the Failure of a status that is not zelOKAY.
void require(const std::string& name, zelStatus status);

/// Opens an image to read (0) or to read and write (2). Throws a Failure, with a hint where one
/// helps.
ImageFile openImage(const std::string& fullName, int mode = 0);

/// Opens the image that `fullName` names, or every image of the file if it names none of them, and
/// calls `visit` with the file and the name that opens the same image again.
void forEachImage(const std::string& fullName,
                  const std::function<void(zelFile&, const std::string&)>& visit);

/// The same for several names. A failure is printed and the next name taken; the result is the exit
/// status, 1 if any failed.
int forEachImage(const std::vector<std::string>& fullNames,
                 const std::function<void(zelFile&, const std::string&)>& visit);

/// Shows image `index` of a file that `name` names.
void selectImage(zelFile& file, const std::string& name, int index);

} // namespace zel::tool

#endif
