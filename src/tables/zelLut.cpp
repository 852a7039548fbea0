#include <zel/zelLut.h>

#include "platform/truncate.h"
#include "values/element.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

constexpr double largestInt = 2147483647.0;

std::int64_t elementNumber(int chan, int length, std::int64_t entry) {
    return static_cast<std::int64_t>(chan) * length + entry;
}

// Cleared storage for `count` elements, null if it cannot be had. A table without a type becomes
// one of doubles when it is first written, and is sized for that.
void* allocateTable(zelDataType type, std::int64_t count) {
    const std::int64_t bytes = zel::elementBytes(type ? type : zelDouble, count);
    if (bytes < 0)
        return nullptr;
    return std::calloc(std::max<std::size_t>(1, static_cast<std::size_t>(bytes)), 1);
}

// A caller may have taken the storage away.
double valueOf(const void* data, zelDataType type, std::int64_t element) {
    return data ? zel::loadElement(data, type, element) : 0.0;
}

// What storing, which cuts, makes the nearest whole number of, half way cases away from zero.
double forStoring(zelDataType type, double val) {
    if (type == zelBit)
        return val != 0.0 ? 1.0 : 0.0;
    if (!zelDataIsIntegral(type))
        return val;
    return val > 0.0 ? val + 0.5 : val - 0.5;
}

// `base` moved by `count` elements. It may come to lie outside the table, so that pointer
// arithmetic will not do.
void* displaced(void* base, std::int64_t count, unsigned width) {
    return reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(base) +
                                   static_cast<std::uintptr_t>(count) * width);
}

} // namespace

zelLut::zelLut(void* table, int tabChannels, zelDataType tabType, double min, double max,
               int length) {
    init(table, tabChannels, tabType, min, max, length);
}

zelLut::zelLut(int tabChannels, zelDataType tabType, double min, double max, int length)
    : zelLut(nullptr, tabChannels, tabType, min, max, length) {}

zelLut::zelLut() : data(nullptr), allocFlg(nullptr), tabLength(0) {
    setNumChans(0);
    setType(static_cast<zelDataType>(0));
    setDomain(0.0, 0.0);
}

zelLut::zelLut(const zelLut& from) : zelLut() {
    *this = from;
}

zelLut::~zelLut() {
    std::free(allocFlg);
}

void zelLut::init(void* table, int tabChannels, zelDataType tabType, double min, double max,
                  int length) {
    setNumChans(tabChannels);
    setType(tabType);
    if (length <= 0) {
        min = clampToInt(min);
        max = clampToInt(max);
        double len = std::floor(max) - std::floor(min) + 1.0;
        // Asked this way round so that NaN makes no entries either.
        if (!(len >= 0.0 && len <= largestInt))
            len = min = max = 0.0;
        length = static_cast<int>(len);
    }
    tabLength = length;
    allocFlg = nullptr;
    data = table;
    if (!data && tabLength != 0) {
        data = allocFlg = allocateTable(type, elementNumber(numChannels, tabLength, 0));
        if (!data)
            tabLength = 0;
    }
    setDomain(min, max);
}

void zelLut::setType(zelDataType tabType) {
    type = tabType;
    tabWidth = zelDataSize(tabType, 1);
}

void zelLut::setNumChans(int chans) {
    numChannels = chans;
}

double zelLut::clampToInt(double val) const {
    if (val <= -largestInt)
        val = -largestInt;
    return val >= largestInt ? largestInt : val;
}

int zelLut::getNumChans() const {
    return numChannels;
}

zelDataType zelLut::getDataType() const {
    return type;
}

int zelLut::getLength() const {
    return tabLength;
}

void* zelLut::getData() const {
    return data;
}

void zelLut::getDomain(double& min, double& max) const {
    min = domainMin;
    max = domainMax;
}

double zelLut::getDomainMin() const {
    return domainMin;
}

double zelLut::getDomainMax() const {
    return domainMax;
}

double zelLut::getDomainStep() const {
    return 1.0 / scale;
}

zelStatus zelLut::setDomain(double min, double max) {
    domainMin = min;
    domainMax = max;
    scale = min == max || tabLength == 1 ? 1.0 : (tabLength - 1.0) / (max - min);
    bias = 0.5 - domainMin * scale;
    return zelOKAY;
}

double zelLut::getVal(double domainIdx, int chan) const {
    if (chan < 0 || chan >= numChannels || tabLength <= 0)
        return 0.0;
    const std::int64_t entry = zel::platform::truncateToInt64(domainIdx * scale + bias);
    const auto held = std::clamp<std::int64_t>(entry, 0, tabLength - 1);
    return valueOf(data, type, elementNumber(chan, tabLength, held));
}

zelStatus zelLut::setVal(double val, double domainIdx, int chan) {
    const std::int64_t entry = zel::platform::truncateToInt64(domainIdx * scale + bias);
    if (entry < 0 || entry >= tabLength || chan < 0 || chan >= numChannels || !data)
        return zelStatusEncode(zelBADPARAMS);
    if (type == 0)
        setType(zelDouble);
    zel::storeElement(data, type, elementNumber(chan, tabLength, entry), forStoring(type, val));
    return zelOKAY;
}

void zelLut::getRange(double& min, double& max) const {
    min = zelDataMax(type);
    max = zelDataMin(type);
    const std::int64_t count = elementNumber(numChannels, tabLength, 0);
    for (std::int64_t element = 0; element < count; ++element) {
        const double val = valueOf(data, type, element);
        if (!(val > min))
            min = val;
        if (!(val < max))
            max = val;
    }
}

void* zelLut::getChan(int chan) const {
    if (chan < 0 || chan >= numChannels || !data)
        return nullptr;
    const std::int64_t first = elementNumber(chan, tabLength, 0);
    return displaced(data, type == zelBit ? first / 8 : first, tabWidth);
}

void* zelLut::getOrigin(int chan) const {
    if (chan < 0 || chan >= numChannels || !data)
        return nullptr;
    const std::int64_t zero = zel::platform::truncateToInt64(std::floor(bias));
    return displaced(getChan(chan), zero, tabWidth);
}

void zelLut::setData(void* dataPnt) {
    // The table's own storage handed back to it stays its own.
    if (dataPnt && dataPnt == allocFlg)
        return;
    std::free(allocFlg);
    allocFlg = nullptr;
    data = dataPnt;
}

void zelLut::operator=(const zelLut& from) {
    if (&from == this)
        return;
    // Freed last, since `from` may use it.
    void* former = allocFlg;
    if (from.tabLength == 0) {
        data = allocFlg = nullptr;
        setNumChans(from.numChannels);
        setType(from.type);
        tabLength = 0;
        setDomain(from.domainMin, from.domainMax);
    } else {
        init(nullptr, from.numChannels, from.type, from.domainMin, from.domainMax, from.tabLength);
        if (tabLength != 0 && from.data)
            std::memcpy(data, from.data,
                        static_cast<std::size_t>(zel::elementBytes(
                            from.type, elementNumber(from.numChannels, from.tabLength, 0))));
    }
    std::free(former);
}

int zelLut::isDiff(const zelLut& from) const {
    if (&from == this)
        return 0;
    if (numChannels != from.numChannels || tabLength != from.tabLength)
        return 1;
    const std::int64_t count = elementNumber(numChannels, tabLength, 0);
    for (std::int64_t element = 0; element < count; ++element) {
        if (valueOf(data, type, element) != valueOf(from.data, from.type, element))
            return 1;
    }
    return 0;
}
