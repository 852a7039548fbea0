#ifndef ZEL_TESTS_PLUGINS_FILE_SCENE_H
#define ZEL_TESTS_PLUGINS_FILE_SCENE_H

#include "plugins/pixels.h"
#include "support/tempDir.h"

#include <zel/zelFileConfig.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zel::test {

/// Elements in the order of memory.
std::vector<double> numbers(const Pixels& pixels);

/// A directory of files, the programs that work on them, and the library.
class FileScene : public testing::Test {
protected:
    std::string path(const std::string& name) const { return dir_.path() / name; }
    std::string write(const std::string& name, const std::string& content) const {
        return dir_.write(name, content);
    }
    std::string content(const std::string& name) const;

    /// Runs a shell command in the directory; the test fails if it does.
    void run(const std::string& command) const;
    /// What a command prints.
    std::string output(const std::string& command) const;

    zelFile* open(const std::string& name, int mode = 0) const;
    /// The pixels of a name, as they are read.
    Pixels read(const std::string& name) const;
    /// Red, green and blue, and alpha where there is one, from 0 to 255: palettes and bits
    /// resolved.
    std::vector<double> colors(const std::string& name) const;
    zelFile* create(const std::string& name, const zelFileConfig& config) const;
    /// Makes a file of these pixels; a null page leaves the page size open.
    void createFrom(const std::string& name, const Pixels& pixels, zelColorModel cm, zelOrder order,
                    zelCompression compression, const zelSize* page = nullptr) const;
    /// The status of opening a file and reading all of it.
    zelStatus statusOfReading(const std::string& name) const;

    /// Lets the process have so much memory beyond what it has, unless a sanitizer takes its own.
    static void limitMemory(std::size_t bytes);

private:
    TempDir dir_;
};

} // namespace zel::test

#endif
