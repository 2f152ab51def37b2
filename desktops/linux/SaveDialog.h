#pragma once

#include "platform/SavePanels.h"

#include <QFileDialog>

#include <string>

class QLabel;

namespace rb {

// The toolkit's file dialog with our words, our refusals, shown inside it, and one extension. Escape and the close
// button cancel.
class SaveDialog final : public QFileDialog {
public:
    // The toolkit's own columns, tool tips and questions in the language of everything else, where its translations
    // are installed. To be called before the first dialog is made.
    static void useTranslations();

    SaveDialog(const SavePanelSpec& spec, SavePanels::Validate validate, SavePanels::Answer answer);

    // In the middle of the screen with the pointer, the name without its extension selected.
    void present();
    // Takes it away without an answer and destroys it, at the end of its own event where it stands in one.
    void dismiss();

    // What it says about the last refused name.
    std::string refusal() const;

    void accept() override;
    void reject() override;

private:
    void finish(const std::optional<std::string>& path);
    void say(const std::string& refusal);

    std::string extension_;
    SavePanels::Validate validate_;
    SavePanels::Answer answer_;
    QLabel* refusal_;
    bool answering_ = false;
};

} // namespace rb
