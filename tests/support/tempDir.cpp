#include "support/tempDir.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace zel::test {

TempDir::TempDir() {
    std::string name = (std::filesystem::temp_directory_path() / "zel-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        std::perror("mkdtemp");
        std::abort();
    }
    dir = name;
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(dir, ignored);
}

std::string TempDir::write(const std::string& name, std::string_view content) const {
    const std::filesystem::path file = dir / name;
    std::ofstream out(file, std::ios::binary);
    out << content;
    out.close();
    if (!out) {
        std::perror(file.c_str());
        std::abort();
    }
    return file.string();
}

} // namespace zel::test
