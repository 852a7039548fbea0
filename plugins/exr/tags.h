#ifndef ZELEXR_TAGS_H
#define ZELEXR_TAGS_H

#include "kit/fields.h"

#include <zel/zelTag.h>

#include <OpenEXR/ImfHeader.h>
#include <span>

namespace zelexr {

std::span<const zelTagDescription> tagTable();

/// True for tags that follow from the image and are not for clients to set.
bool isReadOnly(int tag);

/// The tags of a part.
void readTags(const Imf::Header& header, zelkit::Fields& fields);

/// Puts the tags into a new header.
void writeTags(const zelkit::Fields& fields, Imf::Header& header);

/// Gives the windows of a new image as the tags place them: the data window at 0, 0 and the display
/// window upon it unless they say otherwise. False if a coordinate is out of range.
bool placeWindows(const zelkit::Fields& fields, int width, int height, Imath::Box2i& data,
                  Imath::Box2i& display);

} // namespace zelexr

#endif
