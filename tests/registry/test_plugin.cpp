// A plug-in that registers the formats of ZEL_TEST_FORMATS, names joined by commas, as it loads. A
// name that ends in "+" is registered with the library's version.

#include <zel/zelFormat.h>
#include <zel/zelTag.h>
#include <zel/zelVersion.h>

#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

zelTagDescription tags[1] = {};

class TestFormat final : public zelReadOnlyFormat {
public:
    using zelReadOnlyFormat::zelReadOnlyFormat;

protected:
    zelTagDescription* _getTagDescriptions(int& count) override {
        count = 1;
        return tags;
    }
};

struct Registration {
    Registration() {
        const char* wanted = std::getenv("ZEL_TEST_FORMATS");
        std::istringstream names(wanted == nullptr ? "" : wanted);
        for (std::string name; std::getline(names, name, ',');) {
            if (name.back() == '+') {
                name.pop_back();
                formats.push_back(std::make_unique<TestFormat>(name.c_str(), ZEL_VERSION_MAJOR,
                                                               ZEL_VERSION_MINOR));
            } else {
                formats.push_back(std::make_unique<TestFormat>(name.c_str()));
            }
        }
    }

    std::vector<std::unique_ptr<TestFormat>> formats;
} registration;

} // namespace
