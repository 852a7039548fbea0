#include <zel/zelHashTable.h>

#include <algorithm>
#include <cstdint>
#include <memory>

namespace {

// All but the closing 0 are prime, and none is a multiple of the probe step, so that a probe path
// visits every slot.
constexpr int hashSizes[] = {131, 257, 521, 1021, 2039, 4093, 8191, 16381, 32771, 65537, 131041, 0};
constexpr int largestSize = 131041;
constexpr int probeStep = 127;

// Tells how far slots of a table lie apart on a probe path.
class ProbePaths {
public:
    explicit ProbePaths(int tableSize) : size(tableSize), inverse(inverseOfStep(tableSize)) {}

    int steps(int from, int to) const {
        const std::int64_t distance = to - from + size;
        return static_cast<int>(distance % size * inverse % size);
    }

private:
    // The number whose product with the probe step leaves 1 when it is divided by the size.
    static std::int64_t inverseOfStep(std::int64_t size) {
        std::int64_t product = 1;
        while (product % probeStep != 0) {
            product += size;
        }
        return product / probeStep;
    }

    std::int64_t size;
    std::int64_t inverse;
};

// A statistic that runs over starts again from the lowest int.
int addWrapping(int a, int b) {
    return static_cast<int>(static_cast<unsigned>(a) + static_cast<unsigned>(b));
}

} // namespace

zelHashTable::zelHashTable(int maxEntries)
    : lookCount(0), totalLook(0), maxLook(0), table(nullptr), size(pickSize(maxEntries)), count(0),
      fullFraction(zelDefaultHashFullFraction) {
    table = new zelHashElem*[static_cast<std::size_t>(size)]();
}

zelHashTable::~zelHashTable() {
    delete[] table;
}

void zelHashTable::clear() {
    count = 0;
    std::fill_n(table, size, nullptr);
}

int zelHashTable::insert(zelHashElem* elem) {
    growIfFull();
    // One slot stays empty: it ends every probe path.
    if (count + 1 == size) {
        return 0;
    }
    const int slot = locate(elem);
    if (table[slot] == nullptr) {
        table[slot] = elem;
        ++count;
    }
    return 1;
}

int zelHashTable::remove(zelHashElem* elem) {
    const int slot = locate(elem);
    if (table[slot] == nullptr) {
        return 0;
    }
    table[slot] = nullptr;
    --count;
    closeGap(slot);
    return 1;
}

// There are no deletion marks: what stands behind the gap is inserted anew, so that no probe path
// is cut short by it. The gap is the only empty slot that an element can meet on the way to its old
// one, so that its new slot is reckoned: walking there would make the removal of n elements of one
// hash take n^3 steps.
void zelHashTable::closeGap(int gap) {
    const int oldSize = size;
    const ProbePaths paths(size);
    int slot = static_cast<int>(advance(gap));
    int fromGap = 1;
    while (zelHashElem* follower = table[slot]) {
        table[slot] = nullptr;
        --count;
        growIfFull();
        if (size != oldSize) {
            // The growth has left no gap.
            insert(follower);
            return;
        }
        const int fromHome = paths.steps(normalize(follower->hashIndex), slot);
        const bool meetsGap = fromHome >= fromGap;
        upStats(1 + (meetsGap ? fromHome - fromGap : fromHome));
        table[meetsGap ? gap : slot] = follower;
        ++count;
        if (meetsGap) {
            gap = slot;
            fromGap = 0;
        }
        ++fromGap;
        slot = static_cast<int>(advance(slot));
    }
}

zelHashElem* zelHashTable::find(unsigned int index, const void* key) {
    int slot = normalize(index);
    int looks = 1;
    while (table[slot] != nullptr) {
        if (table[slot]->hashIndex == index && match(key, table[slot])) {
            break;
        }
        slot = static_cast<int>(advance(slot));
        ++looks;
    }
    upStats(looks);
    return table[slot];
}

zelHashElem* zelHashTable::next(int& index) const {
    index = std::max(index, 0);
    while (index < size) {
        if (zelHashElem* elem = table[index++]) {
            return elem;
        }
    }
    return nullptr;
}

int zelHashTable::getNumEntries() const {
    return count;
}

float zelHashTable::getFullFraction() const {
    return fullFraction;
}

void zelHashTable::setFullFraction(const float fraction) {
    fullFraction = fraction;
}

void zelHashTable::clearStats() {
    lookCount = totalLook = maxLook = 0;
}

unsigned int zelHashTable::advance(int idx) {
    const int next = idx + probeStep;
    return static_cast<unsigned>(next < size ? next : next - size);
}

int zelHashTable::normalize(unsigned int hash) {
    return static_cast<int>(hash % static_cast<unsigned>(size));
}

// The slot of the element, or the first empty one on its path.
int zelHashTable::locate(zelHashElem* elem) {
    int slot = normalize(elem->hashIndex);
    int looks = 1;
    while (table[slot] != nullptr && table[slot] != elem) {
        slot = static_cast<int>(advance(slot));
        ++looks;
    }
    upStats(looks);
    return slot;
}

int zelHashTable::pickSize(int maxEntries) {
    const std::int64_t minSize = 2 * static_cast<std::int64_t>(maxEntries);
    const int* candidate = hashSizes;
    while (candidate[1] != 0 && *candidate < minSize) {
        ++candidate;
    }
    return *candidate;
}

void zelHashTable::growIfFull() {
    if (static_cast<float>(count) >= static_cast<float>(size) * fullFraction) {
        grow();
    }
}

void zelHashTable::grow() {
    // The full fraction is the caller's and may be 0 or no number; any large wish gives the largest
    // size.
    const float wanted = static_cast<float>(count) / fullFraction;
    const bool reachable = wanted < static_cast<float>(largestSize);
    const int newSize =
        pickSize(reachable ? static_cast<int>(std::max(wanted, 0.0F)) : largestSize);
    if (newSize <= size) {
        return;
    }
    const std::unique_ptr<zelHashElem*[]> oldTable(table);
    const int oldSize = size;
    size = newSize;
    table = new zelHashElem*[static_cast<std::size_t>(size)];
    clear();
    for (int slot = 0; slot < oldSize; ++slot) {
        if (oldTable[static_cast<std::size_t>(slot)] != nullptr) {
            insert(oldTable[static_cast<std::size_t>(slot)]);
        }
    }
}

void zelHashTable::upStats(int looks) {
    lookCount = addWrapping(lookCount, 1);
    totalLook = addWrapping(totalLook, looks);
    maxLook = std::max(maxLook, looks);
}
