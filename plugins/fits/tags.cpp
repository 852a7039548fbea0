#include "tags.h"

#include <algorithm>
#include <iterator>

namespace zelfits {

namespace {

constexpr unsigned text = zelkit::oneOf(zelTagString);
constexpr unsigned number = zelkit::oneOf(zelTagDouble);

constexpr zelTagDescription descriptions[] = {
    {1, text, "What was observed", "OBJECT", "", nullptr},
    {2, text, "Telescope that was used", "TELESCOP", "", nullptr},
    {3, text, "Instrument that took the data", "INSTRUME", "", nullptr},
    {4, text, "Person who took the data", "OBSERVER", "", nullptr},
    {5, text, "Time of the observation", "DATE-OBS", "", nullptr},
    {6, text, "Time of making of the unit", "DATE", "", nullptr},
    {7, text, "Organisation that made the file", "ORIGIN", "", nullptr},
    {8, text, "Author of the data", "AUTHOR", "", nullptr},
    {9, text, "Name of the unit", "EXTNAME", "", nullptr},
    {10, text, "Filter in use", "FILTER", "", nullptr},
    {11, text, "Unit of the numbers", "BUNIT", "", nullptr},
    {12, number, "Exposure in seconds", "EXPTIME", "", nullptr},
    {13, number, "Equinox in years of the coordinates", "EQUINOX", "2000", nullptr},
    {dataMinTag, number, "Smallest value of the image", "DATAMIN", "", nullptr},
    {dataMaxTag, number, "Largest value of the image", "DATAMAX", "", nullptr},
    {firstReadOnlyTag, number, "Factor of the stored numbers", "BSCALE", "1", nullptr},
    {17, number, "What is added to the scaled numbers", "BZERO", "0", nullptr},
};

} // namespace

std::span<const zelTagDescription> tagTable() {
    return descriptions;
}

const zelTagDescription* findTag(int tag) {
    const auto found = std::ranges::find(descriptions, tag, &zelTagDescription::tag);
    return found == std::end(descriptions) ? nullptr : found;
}

void readTags(fitsfile* file, zelkit::Fields& tags) {
    for (const zelTagDescription& known : descriptions) {
        int status = 0;
        char words[FLEN_VALUE] = "";
        double real = 0;
        if (known.flags == text) {
            if (fits_read_key(file, TSTRING, known.name, words, nullptr, &status) == 0)
                tags.set(known.tag, std::string(words));
        } else if (fits_read_key(file, TDOUBLE, known.name, &real, nullptr, &status) == 0) {
            tags.set(known.tag, real);
        }
    }
}

int writeTag(fitsfile* file, const zelTagDescription& tag, const zelkit::Fields& tags) {
    constexpr int shortest = -15; // as few digits as hold the number
    int status = 0;
    if (const std::string* const words = tags.text(tag.tag))
        fits_update_key_str(file, tag.name, words->c_str(), nullptr, &status);
    else if (const double* const real = tags.number(tag.tag))
        fits_update_key_dbl(file, tag.name, *real, shortest, nullptr, &status);
    else if (fits_delete_key(file, tag.name, &status) == KEY_NO_EXIST)
        status = 0;
    return status;
}

} // namespace zelfits
