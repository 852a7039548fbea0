#include "convertCases.h"

#include <cstring>

namespace bench {

namespace {

struct TypeName {
    zelDataType type;
    const char* name;
};

constexpr TypeName types[] = {{zelBit, "bit"},       {zelUChar, "uchar"}, {zelChar, "char"},
                              {zelUShort, "ushort"}, {zelShort, "short"}, {zelUInt, "uint"},
                              {zelInt, "int"},       {zelFloat, "float"}, {zelDouble, "double"}};

template <class Real>
void fillReals(std::vector<std::byte>& data) {
    for (std::size_t i = 0; (i + 1) * sizeof(Real) <= data.size(); ++i) {
        const Real value = static_cast<Real>(i % 1000) / 4;
        std::memcpy(&data[i * sizeof(Real)], &value, sizeof value);
    }
}

/// The changes of layout for one pair of types and a number of channels.
void addLayouts(std::vector<Case>& cases, const std::string& suffix, const Layout& from,
                const Layout& to) {
    static const int reversed[] = {6, 5, 4, 3, 2, 1, 0};
    static const int one[] = {1};
    const auto add = [&](const char* name, zelOrder fromOrder, zelOrder toOrder, auto change) {
        Case c{"layout/" + (name + suffix), from, to};
        c.from.order = fromOrder;
        c.to.order = toOrder;
        change(c);
        cases.push_back(c);
    };
    const auto nothing = [](Case&) {};
    add("toSeparate", zelInterleaved, zelSeparate, nothing);
    add("fromSeparate", zelSeparate, zelInterleaved, nothing);
    add("toSequential", zelInterleaved, zelSequential, nothing);
    add("fromSequential", zelSequential, zelInterleaved, nothing);
    add("reverseChannels", zelInterleaved, zelInterleaved,
        [](Case& c) { c.to.list = reversed + (7 - c.to.channels); });
    add("oneChannel", zelInterleaved, zelSeparate, [](Case& c) {
        c.to.channels = 1;
        c.to.list = one;
    });
    static const char* const flips[] = {"keep", "flipX", "flipY", "flipXY"};
    for (int flip = 0; flip < 4; ++flip) {
        for (int transpose = 0; transpose < 2; ++transpose) {
            const std::string name = std::string(flips[flip]) + (transpose != 0 ? "Transpose" : "");
            add(name.c_str(), zelInterleaved, zelInterleaved, [&](Case& c) {
                c.to.flip = flip;
                c.to.transpose = transpose;
            });
        }
    }
}

} // namespace

/// Ordinary values: small numbers with fractions as reals, anything as integers.
std::vector<std::byte> sourceData(zelDataType type, std::size_t size) {
    std::vector<std::byte> data(size);
    if (type == zelFloat)
        fillReals<float>(data);
    else if (type == zelDouble)
        fillReals<double>(data);
    else
        for (std::size_t i = 0; i < size; ++i)
            data[i] = static_cast<std::byte>(i * 167 >> 3);
    return data;
}

std::vector<Case> roads() {
    std::vector<Case> cases;
    for (const TypeName& from : types) {
        for (const TypeName& to : types) {
            const std::string name = std::string("road/") + from.name + "/" + to.name;
            cases.push_back({name, {from.type}, {to.type}});
        }
    }
    return cases;
}

std::vector<Case> layouts() {
    std::vector<Case> cases;
    const struct {
        const char* name;
        zelDataType from, to;
    } pairs[] = {{"1byte", zelUChar, zelUChar},
                 {"2bytes", zelUShort, zelUShort},
                 {"4bytes", zelFloat, zelFloat},
                 {"8bytes", zelDouble, zelDouble},
                 {"ucharFloat", zelUChar, zelFloat}};
    for (const auto& pair : pairs) {
        for (const int channels : {3, 4, 7}) {
            const std::string suffix =
                std::string("/") + pair.name + "/" + std::to_string(channels);
            Layout from;
            Layout to;
            from.type = pair.from;
            to.type = pair.to;
            from.channels = to.channels = channels;
            addLayouts(cases, suffix, from, to);
        }
    }
    return cases;
}

} // namespace bench
