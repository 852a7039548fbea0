#ifndef ZELFITS_ELEMENTS_H
#define ZELFITS_ELEMENTS_H

#include "image.h"

#include <cstdint>
#include <span>

namespace zelfits {

/// The numbers of a page, as they follow from the stored ones.
class Elements {
public:
    Elements() = default;
    /// `raw` leaves scale and zero unapplied.
    Elements(const Storage& storage, bool raw);

    zelDataType type() const { return type_; }
    /// True if page and file hold the same numbers in the same width, so that pages can be written.
    bool reversible() const { return !computed_; }
    int storedBytes() const { return storage_.bytes(); }

    /// Turns `count` stored elements into elements of a page. Where the two are of one width, the
    /// two places may be the same.
    void decode(const std::uint8_t* stored, std::int64_t count, void* page) const;
    /// The reverse, for reversible elements.
    void encode(const void* page, std::int64_t count, std::uint8_t* stored) const;

private:
    Storage storage_;
    zelDataType type_ = zelUChar;
    bool computed_ = false;
    bool signFlipped_ = false; ///< the stored integers are moved by half their range
};

/// How a new image of this element type is stored. Nothing for types that the format lacks.
std::optional<Storage> storageFor(zelDataType type);

} // namespace zelfits

#endif
