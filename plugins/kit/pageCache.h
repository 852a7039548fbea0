#ifndef ZELKIT_PAGECACHE_H
#define ZELKIT_PAGECACHE_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

namespace zelkit {

/// Pages that were decoded lately. A client that reads rows across tiles comes back to each of
/// them, and decoding is what costs.
class PageCache {
public:
    /// Null if the page is not there.
    const std::vector<std::uint8_t>* find(int x, int y) const {
        for (const Page& page : pages_)
            if (page.x == x && page.y == y)
                return &page.bytes;
        return nullptr;
    }

    void clear() {
        pages_.clear();
        total_ = 0;
    }

    /// Keeps a copy for as long as newer pages leave room for it.
    void keep(int x, int y, const void* data, std::size_t bytes) {
        if (bytes > most)
            return;
        for (; total_ + bytes > most; pages_.pop_front())
            total_ -= pages_.front().bytes.size();
        const auto* const first = static_cast<const std::uint8_t*>(data);
        pages_.push_back({x, y, {first, first + bytes}});
        total_ += bytes;
    }

private:
    static constexpr std::size_t most = 16 << 20;
    struct Page {
        int x, y;
        std::vector<std::uint8_t> bytes;
    };
    std::deque<Page> pages_;
    std::size_t total_ = 0;
};

} // namespace zelkit

#endif
