#pragma once

#include <string>
#include <vector>

namespace rb {

// What the product did to the desktop's services, in order, one short line each ("registerHotKey 105 0"). For tests
// of an order; state is asked of the services.
class Journal {
public:
    void note(std::string line) { lines_.push_back(std::move(line)); }
    const std::vector<std::string>& lines() const { return lines_; }
    void clear() { lines_.clear(); }

private:
    std::vector<std::string> lines_;
};

} // namespace rb
