#ifndef ZEL_TOOL_TABLE_H
#define ZEL_TOOL_TABLE_H

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace zel::tool {

/// Rows of text whose columns are aligned.
class Table {
public:
    /// `header` may be empty for none.
    explicit Table(std::vector<std::string> header = {});

    void addRow(std::vector<std::string> row);

    /// One line for each row, the header first if there are rows. Two blanks between columns.
    std::string text() const;

private:
    std::vector<std::vector<std::string>> rows;
    bool hasHeader;
};

/// JSON as it is printed. Bytes of file names that are no UTF-8 become a replacement character.
std::string jsonText(const nlohmann::ordered_json& json);

/// The same for an element of an array that is printed piece by piece, with no newline behind it.
std::string jsonElementText(const nlohmann::ordered_json& element);

} // namespace zel::tool

#endif
