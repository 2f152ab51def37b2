#pragma once

#include "platform/Appearance.h"
#include "platform/Desktop.h"

#include <list>
#include <memory>
#include <string>

namespace rb {

// Short notices that drop in under the menu bar of the screen with the pointer, to confirm or refuse something.
// Green tells a success, orange a failure or refusal, blue a change of mode. Main thread only.
class Toasts {
public:
    explicit Toasts(const Desktop& desktop);
    ~Toasts();
    Toasts(const Toasts&) = delete;
    Toasts& operator=(const Toasts&) = delete;

    // Without a symbol (or with one the desktop doesn't know) only the text shows; without a screen nothing does.
    void RBShowToast(const std::string& text, const std::string& symbolName, SystemColor tint);

private:
    class Toast;

    const Desktop& desktop_;
    std::list<std::unique_ptr<Toast>> shown_;
};

} // namespace rb
