#pragma once

#include "platform/Desktop.h"

#include <cstddef>
#include <list>
#include <memory>
#include <string>

namespace rb {

struct Screen;

// Large labels that say which screen is which. Each comes, stays two seconds and goes by itself. Main thread only.
class IdentifyPanels {
public:
    explicit IdentifyPanels(const Desktop& desktop);
    ~IdentifyPanels();
    IdentifyPanels(const IdentifyPanels&) = delete;
    IdentifyPanels& operator=(const IdentifyPanels&) = delete;

    // `number` as the window counts its displays, from 1.
    void show(const Screen& screen, std::size_t number);
    std::size_t count() const { return labels_.size(); }

private:
    class Label;

    const Desktop& desktop_;
    std::list<std::shared_ptr<Label>> labels_;
};

} // namespace rb
