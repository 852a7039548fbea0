#ifndef ZELJPEG_SEGMENTS_H
#define ZELJPEG_SEGMENTS_H

#include "metadata.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zeljpeg {

constexpr int exifMarker = 0xe1;
constexpr int iccMarker = 0xe2;
constexpr int commentMarker = 0xfe;

/// What the segments before the samples say. Any number of them, with anything in them, takes a few
/// MiB at most.
class Segments {
public:
    /// Takes the next segment, by its marker.
    void take(int marker, std::span<const std::uint8_t> bytes);

    /// Gives away what the segments say. False if some was too long and is left out.
    bool moveTo(Metadata& metadata);

private:
    void takeProfilePart(std::span<const std::uint8_t> bytes);
    std::vector<std::uint8_t> joinProfile();

    zelkit::Fields fields_;
    std::string comment_;
    std::vector<std::vector<std::uint8_t>> profileParts_; ///< by number
    std::size_t profileBytes_ = 0;
    bool profileIsSound_ = true;
    bool complete_ = true;
};

} // namespace zeljpeg

#endif
