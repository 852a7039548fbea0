#ifndef ZELFITS_TAGS_H
#define ZELFITS_TAGS_H

#include "image.h"

#include <zel/zelTag.h>

#include <fitsio.h>
#include <span>

namespace zelfits {

/// The tags are keywords of an image's header, one value each.
std::span<const zelTagDescription> tagTable();

/// Null for a tag that the format lacks.
const zelTagDescription* findTag(int tag);

/// Reads the tags of the current unit.
void readTags(fitsfile* file, zelkit::Fields& tags);

/// Writes one tag's keyword into the header of the current unit, or takes it away if `tags` lacks
/// it. Answers with CFITSIO's status.
int writeTag(fitsfile* file, const zelTagDescription& tag, const zelkit::Fields& tags);

/// The tags for the smallest and the largest value of an image.
constexpr int dataMinTag = 14;
constexpr int dataMaxTag = 15;
/// Follows from how the numbers are stored, as do the tags behind it; these are not for clients to
/// set.
constexpr int firstReadOnlyTag = 16;

} // namespace zelfits

#endif
