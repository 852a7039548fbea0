// What TIFF shares with every other format. What only TIFF has is in the other tiff*_test.cpp.

#include "plugins/corpusSuite.h"

namespace zel::test {

namespace {

INSTANTIATE_TEST_SUITE_P(Tiff, CorpusSuite, testing::Values(CorpusFolder{"tiff"}));

} // namespace

} // namespace zel::test
