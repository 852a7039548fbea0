#ifndef ZEL_PLUGINCHECK_SUBJECT_H
#define ZEL_PLUGINCHECK_SUBJECT_H

#include "kind.h"
#include "outcome.h"
#include "picture.h"

#include <zel/zelFile.h>
#include <zel/zelFormat.h>

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace zel::check {

struct Options {
    std::string format;             ///< its name in the database
    std::vector<std::string> files; ///< of the format, absolute names
    std::string arguments;          ///< for the files that are made, without '%'
    std::string suffix;             ///< of the files that are made; empty: those of the entry
    std::vector<std::string> only;  ///< the checks to run; empty: all
    unsigned seconds = 10;          ///< for a file that is cut or damaged
    bool lossy = false;             ///< pixels may come back changed a little
    bool openEnded = false;         ///< a file does not show where it ends
    bool quick = false;
    bool json = false;
    unsigned seed = 1;
};

struct FileCloser {
    void operator()(zelFile* file) const { file->close(0); }
};
/// An open file; a failure to close it goes unnoticed unless `finish` closes it.
using OpenFile = std::unique_ptr<zelFile, FileCloser>;

/// The plug-in under test, in a child process that stands in a directory of its own.
struct Subject {
    const Options& options;
    zelFormat* format; ///< null if it does not load
    /// What `create` accepted, once that is known. It stays the caller's.
    std::span<Kind> kinds;

    /// Files of one form are made, which need not hold all that the format holds.
    bool hasWishes() const { return !options.arguments.empty() || !options.suffix.empty(); }
    bool canWrite() const { return format->accessModeIsSupported(2) != 0; }

    /// One kind for each type, colour model and compression.
    std::vector<Kind> baseKinds() const;
    /// One kind for each type and colour model.
    std::vector<Kind> fewKinds() const;
    /// One kind for each type.
    std::vector<Kind> kindsByType() const;
    /// Few kinds if the program is to be quick, otherwise the base kinds.
    std::vector<Kind> someKinds() const { return options.quick ? fewKinds() : baseKinds(); }

    /// What is written to images of a kind, and how far off it may come back.
    Picture picture(const Kind& kind, const zelSize& size, unsigned seed) const;
    double tolerance(const Kind& kind) const;

    /// The files of these names lie in the directory.
    static std::string nameOf(const Kind& kind) { return std::string("image") + kind.suffix; }

    /// Throws Failed where there is no file.
    OpenFile create(const Kind& kind, const zelSize& size, const zelSize* page = nullptr) const;
    /// Opens by name and lets the library find the format.
    OpenFile open(const std::string& name, int mode = 0) const;
    /// Null where there is no file. A palette gets a map of colours.
    OpenFile tryCreate(const Kind& kind, const zelSize& size, const zelSize* page,
                       zelStatus& status, int fd = -1) const;
    /// The same as `open` with the format given; null where there is no file.
    OpenFile tryOpen(const std::string& name, zelStatus& status) const;

    /// Makes a file of one image and gives back its pixels.
    Picture make(const Kind& kind, const zelSize& size, unsigned seed,
                 const zelSize* page = nullptr) const;
    /// Pages smaller than the image, if the format takes any.
    std::optional<zelSize> smallPages(const Kind& kind, const zelSize& size) const;
};

/// Closes the file; throws Failed if that fails.
void finish(OpenFile file);
/// Throws Failed with the status's words behind `what`, unless it is zelOKAY.
void requireOkay(zelStatus status, const std::string& what);
std::string statusText(zelStatus status);
zelSize uprightSize(const zelFile* file);
/// The elements of the image; 0 if it or a page is larger than the program reads. Throws Failed if
/// either has no extent.
std::size_t elementsToRead(const zelFile* file);
/// Throws Failed if the file's image is not this one.
void requireImage(zelFile* file, const Picture& expected, double tolerance, const std::string& when,
                  double* worst = nullptr);

/// Throws Failed if an attribute of the image has no value.
void requireFilledAttributes(const zelFile& file);
/// Throws Failed if the file's class does not know what it is.
void requireIdentity(const zelFile& file);

/// The name of a file as zelFile::open takes it.
std::string quotedName(const std::string& name);
std::string readFile(const std::string& name);
void writeFile(const std::string& name, const std::string& content);

} // namespace zel::check

#endif
