#include "colorReduction.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zel::tool {
namespace {

constexpr size_t kEntries = 256;
constexpr int kRefinements = 6;

using Groups = std::span<ColorGroup>;
using Point = std::array<double, 3>;

/// Groups that are to share a palette entry.
struct Box {
    Groups groups;
    Point mean;
    size_t axis;  ///< along which they differ most
    double error; ///< the sum of their squared distances from the mean
};

Box boxOf(Groups groups) {
    Box box{groups, {}, 0, 0};
    double pixels = 0;
    for (const ColorGroup& group : groups) {
        pixels += group.pixels;
        for (size_t c = 0; c < 3; ++c) {
            box.mean[c] += group.pixels * group.mean[c];
        }
    }
    Point errors{};
    for (size_t c = 0; c < 3; ++c) {
        box.mean[c] /= pixels;
        for (const ColorGroup& group : groups) {
            const double distance = group.mean[c] - box.mean[c];
            errors[c] += group.pixels * distance * distance;
        }
        box.error += errors[c];
    }
    box.axis = static_cast<size_t>(std::max_element(errors.begin(), errors.end()) - errors.begin());
    return box;
}

/// Cuts a box of two groups or more across its axis where that leaves the smallest error.
std::array<Box, 2> cut(const Box& box) {
    const size_t axis = box.axis;
    std::sort(
        box.groups.begin(), box.groups.end(),
        [axis](const ColorGroup& a, const ColorGroup& b) { return a.mean[axis] < b.mean[axis]; });
    double pixels = 0;
    double sum = 0;
    for (const ColorGroup& group : box.groups) {
        pixels += group.pixels;
        sum += group.pixels * group.mean[axis];
    }
    double below = 0;
    double sumBelow = 0;
    double best = -1;
    size_t at = 1;
    for (size_t i = 0; i + 1 < box.groups.size(); ++i) {
        const ColorGroup& group = box.groups[i];
        below += group.pixels;
        sumBelow += group.pixels * group.mean[axis];
        const double rest = sum - sumBelow;
        const double gain = sumBelow * sumBelow / below + rest * rest / (pixels - below);
        if (gain > best) {
            best = gain;
            at = i + 1;
        }
    }
    return {boxOf(box.groups.first(at)), boxOf(box.groups.subspan(at))};
}

std::vector<Point> cutToPoints(Groups groups, size_t count) {
    std::vector<Box> boxes{boxOf(groups)};
    while (boxes.size() < count) {
        const auto worst =
            std::max_element(boxes.begin(), boxes.end(),
                             [](const Box& a, const Box& b) { return a.error < b.error; });
        if (worst->groups.size() < 2) {
            break;
        }
        auto halves = cut(*worst);
        *worst = halves[0];
        boxes.push_back(halves[1]);
    }
    std::vector<Point> points;
    points.reserve(boxes.size());
    for (const Box& box : boxes) {
        points.push_back(box.mean);
    }
    return points;
}

double squaredDistance(const Point& a, const Point& b) {
    const double red = a[0] - b[0];
    const double green = a[1] - b[1];
    const double blue = a[2] - b[2];
    return red * red + green * green + blue * blue;
}

size_t nearest(const std::vector<Point>& points, const Point& color) {
    size_t found = 0;
    double least = std::numeric_limits<double>::infinity();
    for (size_t i = 0; i < points.size(); ++i) {
        const double distance = squaredDistance(points[i], color);
        if (distance < least) {
            least = distance;
            found = i;
        }
    }
    return found;
}

/// Moves each point into the middle of the groups that are nearest to it (Lloyd's iteration).
void refine(std::vector<Point>& points, std::span<const ColorGroup> groups) {
    std::vector<ColorGroup> shares(points.size());
    for (const ColorGroup& group : groups) {
        ColorGroup& share = shares[nearest(points, group.mean)];
        share.pixels += group.pixels;
        for (size_t c = 0; c < 3; ++c) {
            share.mean[c] += group.pixels * group.mean[c];
        }
    }
    for (size_t i = 0; i < points.size(); ++i) {
        for (size_t c = 0; c < 3 && shares[i].pixels > 0; ++c) {
            points[i][c] = shares[i].mean[c] / shares[i].pixels;
        }
    }
}

} // namespace

zelColormap ReducedPalette::colormap() const {
    const int channels = hasTransparent ? 4 : 3;
    zelColormap map(channels, zelUChar, 0, transparentIndex() - (hasTransparent ? 0 : 1));
    for (int c = 0; c < channels; ++c) {
        for (int i = 0; i < transparentIndex(); ++i) {
            map.setVal(c == 3 ? 255 : colors[static_cast<size_t>(i)][static_cast<size_t>(c)], i, c);
        }
        if (hasTransparent) {
            map.setVal(0, transparentIndex(), c);
        }
    }
    return map;
}

ReducedPalette reduceColors(const ColorHistogram& histogram) {
    std::vector<ColorGroup> groups = histogram.groups();
    const size_t room = kEntries - (histogram.hasTransparency() ? 1 : 0);
    ReducedPalette palette{{}, histogram.hasTransparency(), true};
    palette.exact = histogram.isExact() && groups.size() <= room;
    std::vector<Point> points;
    if (palette.exact) {
        for (const ColorGroup& group : groups) {
            points.push_back(group.mean);
        }
    } else {
        points = cutToPoints(groups, room);
        for (int i = 0; i < kRefinements; ++i) {
            refine(points, groups);
        }
    }
    if (points.empty()) {
        points.push_back({}); // a palette has a colour, though all be transparent
    }
    for (const Point& point : points) {
        const auto byte = [&](size_t c) {
            return static_cast<std::uint8_t>(std::lround(point[c]));
        };
        palette.colors.push_back({byte(0), byte(1), byte(2)});
    }
    return palette;
}

} // namespace zel::tool
