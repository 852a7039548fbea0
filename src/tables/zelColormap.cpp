#include <zel/zelColormap.h>

zelColormap::zelColormap(void* table, int nchans, zelDataType tabType, int min, int max)
    : zelLut(table, nchans, tabType, min, max, 0) {}

zelColormap::zelColormap(int nchans, zelDataType tabType, int min, int max)
    : zelLut(nchans, tabType, min, max, 0) {}

zelColormap::zelColormap() = default;

zelColormap::zelColormap(const zelColormap& from) = default;

zelColormap::~zelColormap() = default;

void zelColormap::operator=(const zelColormap& from) {
    zelLut::operator=(from);
}
