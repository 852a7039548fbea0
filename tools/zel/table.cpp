#include "table.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace zel::tool {
namespace {

/// The columns that a text takes on the terminal, by its UTF-8 characters.
size_t displayWidth(const std::string& text) {
    return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    }));
}

} // namespace

Table::Table(std::vector<std::string> header) : hasHeader(!header.empty()) {
    if (hasHeader) {
        rows.push_back(std::move(header));
    }
}

void Table::addRow(std::vector<std::string> row) {
    rows.push_back(std::move(row));
}

std::string Table::text() const {
    if (rows.size() == size_t{hasHeader}) {
        return {};
    }
    std::vector<size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], displayWidth(row[i]));
        }
    }
    std::string result;
    for (const auto& row : rows) {
        std::string line;
        for (size_t i = 0; i < row.size(); ++i) {
            line += row[i];
            line.append(widths[i] - displayWidth(row[i]) + 2, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        result += line + '\n';
    }
    return result;
}

std::string jsonText(const nlohmann::ordered_json& json) {
    return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n';
}

std::string jsonElementText(const nlohmann::ordered_json& element) {
    // As an array of its own without the lines of its brackets.
    const std::string array = jsonText(nlohmann::ordered_json::array({element}));
    const size_t first = array.find('\n') + 1;
    return array.substr(first, array.rfind('\n', array.size() - 2) - first);
}

} // namespace zel::tool
