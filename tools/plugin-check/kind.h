#ifndef ZEL_PLUGINCHECK_KIND_H
#define ZEL_PLUGINCHECK_KIND_H

#include <zel/zelColor.h>
#include <zel/zelDataSize.h>
#include <zel/zelFileConfig.h>
#include <zel/zelOrientation.h>

#include <string>
#include <vector>

class zelFormat;

namespace zel::check {

/// A kind of image, and how the plug-in took to it. It lies in shared memory.
struct Kind {
    zelDataType type;
    zelColorModel model;
    int channels;
    zelCompression compression;
    zelOrder order;
    zelOrientation orientation;
    zelCompression stated; ///< what the file says that it has
    char suffix[16];       ///< of the file's name
    bool exact;            ///< any pixels come back as they were

    zelSize sizeOf(int width, int height, int depth = 1) const {
        return {width, height, depth, channels};
    }
    /// A null page leaves the choice to the format.
    zelFileConfig config(const zelSize& size, const zelSize* page = nullptr) const;
    std::string text() const;
};

/// Every combination of attributes of which the format supports each by itself, those that differ
/// in order and orientation alone one after the other and the preferred of these first.
std::vector<Kind> candidates(zelFormat* format);

/// Whether two kinds differ in order and orientation at most.
bool sameButLayout(const Kind& a, const Kind& b);

const std::vector<zelDataType>& allTypes();
const std::vector<zelColorModel>& allModels();
const std::vector<zelCompression>& allCompressions();
const std::vector<zelOrder>& allOrders();
const std::vector<zelOrientation>& allOrientations();

} // namespace zel::check

#endif
