#ifndef ZEL_BENCH_DECODECASES_H
#define ZEL_BENCH_DECODECASES_H

#include "direct/direct.h"

#include <zel/zelFile.h>

#include <string>
#include <vector>

namespace bench {

/// A picture in a file of one format.
struct DecodeCase {
    const char* name;
    const char* format;
    const char* suffix;
    const char* arguments; ///< of the format, when the file is made
    zelDataType type;
    zelColorModel model;
    zelCompression compression;
    int page;  ///< the side of a square page; 0: pages as the format likes them
    int share; ///< of the bench's side, since some codecs are slow: a half, a quarter
};

/// All cases whose format is in the database.
std::vector<DecodeCase> decodeCases();

/// The two ways to decode the file of a case.
class DecodeRun {
public:
    /// Makes the file in `folder`, of a picture with shades, edges and noise as in a photo, about
    /// `side` pixels wide and high.
    DecodeRun(const DecodeCase& what, const std::string& folder, int side);

    /// What failed; empty if nothing did.
    const std::string& failure() const { return failure_; }

    /// Decodes the file from its name to its last page by getPage, or by getTile of each page.
    bool byPages(Place& place) const { return throughZel(place, false); }
    bool byTiles(Place& place) const { return throughZel(place, true); }
    /// Decodes the file by its library.
    bool directly(Place& place) const { return decoder_(coded_, place); }
    /// Whether the other way decodes: there is a library, and not only reading to compare with.
    bool hasLibrary() const { return hasLibrary_; }

private:
    bool make(const DecodeCase& what, int side);
    bool throughZel(Place& place, bool tiles) const;
    void compare();

    Coded coded_;
    std::string fullName_;
    DirectDecoder decoder_;
    bool hasLibrary_;
    std::string failure_;
};

} // namespace bench

#endif
