#ifndef ZEL_TESTS_PLUGINS_PLUGIN_SUITE_H
#define ZEL_TESTS_PLUGINS_PLUGIN_SUITE_H

// What every plug-in has to do. A plug-in's test program compiles pluginSuite.cpp beside its own
// tests and instantiates the suite:
//
//     INSTANTIATE_TEST_SUITE_P(Pnm, PluginSuite, testing::Values(PluginTraits{...}));

#include "plugins/pixels.h"

#include <zel/zelColor.h>
#include <zel/zelDataSize.h>
#include <zel/zelOrientation.h>

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace zel::test {

/// A kind of image that a format carries.
struct Combo {
    std::string suffix; ///< of the file's name, with its point
    zelDataType type = zelUChar;
    zelColorModel colorModel = zelLuminance;
    int channels = 1;
    zelOrder order = zelInterleaved;
    zelOrientation orientation = zelUpperLeftOrigin;
    zelCompression compression = zelNoCompression;
    std::string arguments; ///< of the file's name when it is made, with its '%'
    /// The orientation that the file states when it is opened again; 0: the one it was made with.
    zelOrientation statedOrientation = zelOrientation(0);
    /// The compression likewise.
    zelCompression statedCompression = zelCompression(0);
    /// Changes numbers to such as the format holds; null if it holds all of the type.
    void (*adapt)(Pixels&) = nullptr;
    /// Whether a file that lacks its last bytes is noticed. A text does not show where it ends.
    bool noticesTruncation = true;
    bool severalImages = false; ///< appendImg works
    /// How far elements of a smooth image may be off; 0: any image comes back as it was.
    double tolerance = 0;
};

struct PluginTraits {
    std::string format; ///< its name in the database
    std::vector<Combo> combos;
    bool randomAccessWrite = true; ///< pages in any order, and parts of pages
};

inline void PrintTo(const PluginTraits& traits, std::ostream* out) {
    *out << traits.format;
}

/// The combos of some types, orders and orientations with one kind of pixel.
std::vector<Combo> makeCombos(const Combo& kind, const std::vector<zelDataType>& types,
                              const std::vector<zelOrder>& orders = {zelInterleaved},
                              const std::vector<zelOrientation>& orientations = {
                                  zelUpperLeftOrigin});

class PluginSuite : public testing::TestWithParam<PluginTraits> {};

} // namespace zel::test

#endif
