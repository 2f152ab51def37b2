#pragma once

#include <string>
#include <vector>

namespace rb {

double median(std::vector<double> values);
// "12.3 (11.9 to 14.0)": median, least and greatest.
std::string summary(const std::vector<double>& values, int decimals);

// A table in the notation of docs/performance.md, with its columns aligned.
class Table {
public:
    explicit Table(std::vector<std::string> head);
    void addRow(std::vector<std::string> cells);
    std::string text() const;

private:
    std::vector<std::vector<std::string>> rows_;
};

} // namespace rb
