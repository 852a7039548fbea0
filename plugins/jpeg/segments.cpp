#include "segments.h"

#include "kit/exif.h"
#include "kit/sizes.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace zeljpeg {

namespace {

constexpr std::size_t longestComment = 256 * 1024;

} // namespace

void Segments::take(int marker, std::span<const std::uint8_t> bytes) {
    if (marker == exifMarker) {
        zelkit::readExif(bytes, fields_);
    } else if (marker == iccMarker) {
        takeProfilePart(bytes);
    } else if (comment_.size() + bytes.size() > longestComment) {
        complete_ = false;
    } else {
        if (!comment_.empty())
            comment_ += '\n';
        comment_.append(bytes.begin(), bytes.end());
    }
}

// A profile is cut into parts, each with its number, from 1 on, and their count.
void Segments::takeProfilePart(std::span<const std::uint8_t> bytes) {
    constexpr std::string_view name("ICC_PROFILE\0", 12);
    constexpr std::size_t headBytes = name.size() + 2;
    if (bytes.size() < headBytes || !std::equal(name.begin(), name.end(), bytes.begin()))
        return;
    const std::size_t number = bytes[name.size()];
    const std::size_t count = bytes[name.size() + 1];
    bytes = bytes.subspan(headBytes);
    if (profileParts_.empty())
        profileParts_.resize(count);
    profileIsSound_ = profileIsSound_ && count == profileParts_.size() && number >= 1 &&
                      number <= count && profileParts_[number - 1].empty();
    profileBytes_ += bytes.size();
    if (profileIsSound_ && profileBytes_ <= zelkit::largestProfile)
        profileParts_[number - 1].assign(bytes.begin(), bytes.end());
    else
        profileParts_.assign(profileParts_.size(), {});
}

// Empty if parts are missing.
std::vector<std::uint8_t> Segments::joinProfile() {
    std::vector<std::uint8_t> profile;
    const bool whole = profileIsSound_ &&
                       std::ranges::none_of(profileParts_, [](const auto& p) { return p.empty(); });
    if (whole && profileBytes_ <= zelkit::largestProfile) {
        profile.reserve(profileBytes_);
        for (std::vector<std::uint8_t>& part : profileParts_) {
            profile.insert(profile.end(), part.begin(), part.end());
            part = {};
        }
    }
    profileParts_.clear();
    return profile;
}

bool Segments::moveTo(Metadata& metadata) {
    metadata.fields = std::move(fields_);
    if (!comment_.empty())
        metadata.fields.set(commentTag, comment_.c_str());
    metadata.iccProfile = joinProfile();
    return complete_ && profileBytes_ <= zelkit::largestProfile;
}

} // namespace zeljpeg
