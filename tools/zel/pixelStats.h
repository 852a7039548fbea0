#ifndef ZEL_TOOL_PIXELSTATS_H
#define ZEL_TOOL_PIXELSTATS_H

#include <zel/zelFile.h>

#include <cstdint>
#include <string>
#include <vector>

namespace zel::tool {

/// The numbers of one channel. Those that are not finite are counted and otherwise left out.
class ChannelStats {
public:
    /// Takes in a run of numbers that lie `step` apart.
    void add(const double* values, size_t count, size_t step);

    bool isEmpty() const { return count == 0; } ///< no finite number was taken in
    double min() const { return lowest; }
    double max() const { return highest; }
    double mean() const { return average; }
    double deviation() const; ///< of the numbers themselves, not an estimate for a larger set
    std::uint64_t nans() const { return nanCount; }
    std::uint64_t infinities() const { return infinityCount; }

private:
    std::uint64_t count = 0;
    std::uint64_t nanCount = 0;
    std::uint64_t infinityCount = 0;
    double lowest = 0;
    double highest = 0;
    double average = 0;
    double squares = 0; ///< the sum of the squared distances from the average
    std::vector<double> finite;
};

struct ImageStats {
    std::vector<ChannelStats> channels;
    /// A hash of size and numbers, the same for equal pixels however they are stored.
    std::uint64_t hash = 0;
};

/// Reads the whole image, in blocks. Throws a Failure under `name`.
ImageStats measure(zelFile& file, const std::string& name);

} // namespace zel::tool

#endif
