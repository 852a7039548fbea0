#ifndef ZELKIT_PACKEDPIXELS_H
#define ZELKIT_PACKEDPIXELS_H

#include <array>
#include <cstdint>

namespace zelkit {

/// Red, green, blue and perhaps alpha in one little-endian number of 2 to 4 bytes, each where its
/// mask has bits; seen as one byte each. A channel of n bits is spread over 0 to 255, rounded to
/// nearest; one without a mask is 0.
class PackedPixels {
public:
    using Masks = std::array<std::uint32_t, 4>;

    static constexpr Masks rgb555 = {0x7c00, 0x3e0, 0x1f, 0};
    static constexpr Masks argb1555 = {0x7c00, 0x3e0, 0x1f, 0x8000};
    static constexpr Masks rgb888 = {0xff0000, 0xff00, 0xff, 0};
    static constexpr Masks argb8888 = {0xff0000, 0xff00, 0xff, 0xff000000};

    /// Whether a mask is one run of bits, or none, within a pixel of that many bytes.
    static bool isMask(std::uint32_t mask, int pixelBytes);

    PackedPixels() : PackedPixels(3, rgb888) {}
    /// Every mask is one by isMask. Without one for alpha, pixels have 3 channels.
    PackedPixels(int pixelBytes, const Masks& masks);

    int channels() const { return channels_; }

    void decode(const std::uint8_t* stored, std::uint8_t* elements, std::int64_t pixels) const;
    /// For masks of whole bytes alone: rgb888 and argb8888.
    void encode(const std::uint8_t* elements, std::uint8_t* stored, std::int64_t pixels) const;

private:
    struct Channel {
        std::uint32_t mask = 0;
        int shift = 0;
        std::uint32_t highest = 0;
        std::array<std::uint8_t, 256> bytes{}; ///< by value, for channels of up to 8 bits
    };
    static Channel makeChannel(std::uint32_t mask);
    void pickBytes(const std::uint8_t* stored, std::uint8_t* elements, int pixels) const;

    int pixelBytes_ = 3;
    int channels_ = 3;
    bool wholeBytes_ = false;
    std::array<Channel, 4> parts_;
};

} // namespace zelkit

#endif
