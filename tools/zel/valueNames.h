#ifndef ZEL_TOOL_VALUENAMES_H
#define ZEL_TOOL_VALUENAMES_H

#include <zel/zelColor.h>
#include <zel/zelDataSize.h>
#include <zel/zelOrientation.h>

#include <span>
#include <string>
#include <vector>

namespace zel::tool {

// The words of the command line for the library's enumerations. Case does not count, and a word may
// be shortened as long as it is clear: "low-l" is lower-left. A word that is unknown, or short for
// several values, ends in a UsageError that names `option` and the choice there is.

zelDataType parseDataType(const std::string& option, const std::string& word);
zelOrder parseOrder(const std::string& option, const std::string& word);
zelOrientation parseOrientation(const std::string& option, const std::string& word);
zelColorModel parseColorModel(const std::string& option, const std::string& word);
zelCompression parseCompression(const std::string& option, const std::string& word);

/// The short name of a type: "uchar", "ushort", ...
std::string dataTypeWord(zelDataType type);

/// The values of each enumeration, in the library's order.
std::span<const zelDataType> allDataTypes();
std::span<const zelOrder> allOrders();
std::span<const zelOrientation> allOrientations();
std::span<const zelColorModel> allColorModels();
std::span<const zelCompression> allCompressions();

/// Whole numbers or decimals, separated by commas, as many as there are. Anything else ends in a
/// UsageError.
std::vector<int> parseIntegers(const std::string& option, const std::string& text);
std::vector<double> parseNumbers(const std::string& option, const std::string& text);

/// The shortest text that reads as this number again.
std::string numberText(double value);
/// A text of at most eight digits, for tables.
std::string shortNumberText(double value);

/// The texts with ", " between them.
std::string joinWords(const std::vector<std::string>& words);

} // namespace zel::tool

#endif
