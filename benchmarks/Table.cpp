#include "benchmarks/Table.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace rb {

namespace {

std::string number(double value, int decimals) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.*f", decimals, value);
    return text.data();
}

} // namespace

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

std::string summary(const std::vector<double>& values, int decimals) {
    if (values.empty()) {
        return "not measured";
    }
    const auto [least, greatest] = std::minmax_element(values.begin(), values.end());
    return number(median(values), decimals) + " (" + number(*least, decimals) + " to " + number(*greatest, decimals) +
           ")";
}

Table::Table(std::vector<std::string> head) {
    std::vector<std::string> line(head.size(), "---");
    rows_ = {std::move(head), std::move(line)};
}

void Table::addRow(std::vector<std::string> cells) {
    cells.resize(rows_.front().size());
    rows_.push_back(std::move(cells));
}

std::string Table::text() const {
    std::vector<std::size_t> widths(rows_.front().size());
    for (const auto& row : rows_) {
        for (std::size_t column = 0; column < row.size(); ++column) {
            widths[column] = std::max(widths[column], row[column].size());
        }
    }
    std::string text;
    for (const auto& row : rows_) {
        text += '|';
        for (std::size_t column = 0; column < row.size(); ++column) {
            text += ' ' + row[column] + std::string(widths[column] - row[column].size(), ' ') + " |";
        }
        text += '\n';
    }
    return text;
}

} // namespace rb
