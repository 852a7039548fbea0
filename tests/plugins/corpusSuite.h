#ifndef ZEL_TESTS_PLUGINS_CORPUS_SUITE_H
#define ZEL_TESTS_PLUGINS_CORPUS_SUITE_H

// The files of one folder of ZEL_CORPUS, by its manifest. A plug-in's test program compiles
// corpusSuite.cpp beside its own tests and instantiates the suite:
//
//     INSTANTIATE_TEST_SUITE_P(Png, CorpusSuite, testing::Values(CorpusFolder{"png"}));

#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace zel::test {

/// A line of the manifest, by its column names.
using ManifestRow = std::map<std::string, std::string>;

struct CorpusFolder {
    std::string name;
    /// Files that are expected to decode and do not, with the reason, which FORMAT.md gives too.
    std::map<std::string, std::string> refused = {};
    /// Files that are not held against what the manifest says of their samples, with the reason.
    std::map<std::string, std::string> notCompared = {};
    /// The manifest tells of the samples as they are seen from the upper left; else, as stored.
    bool upright = false;
};

inline void PrintTo(const CorpusFolder& folder, std::ostream* out) {
    *out << folder.name;
}

/// The lines of a folder; none without ZEL_CORPUS.
std::vector<ManifestRow> manifestRows(const std::string& folder);

class CorpusSuite : public testing::TestWithParam<CorpusFolder> {};

} // namespace zel::test

#endif
