#ifndef ZEL_TESTS_SUPPORT_TEMP_DIR_H
#define ZEL_TESTS_SUPPORT_TEMP_DIR_H

#include <filesystem>
#include <string>
#include <string_view>

namespace zel::test {

/// A fresh directory that is removed, with all that is in it, when the object goes.
class TempDir {
public:
    TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    ~TempDir();

    const std::filesystem::path& path() const { return dir; }
    /// Writes a file of this name and returns its path.
    std::string write(const std::string& name, std::string_view content) const;

private:
    std::filesystem::path dir;
};

} // namespace zel::test

#endif
