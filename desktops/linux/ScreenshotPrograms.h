#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace rb {

// The save folder of one screenshot program. Its settings are handled as a whole state in text form (a file's bytes, a
// single value); nothing is the absence of it. Main thread only.
class ScreenshotProgram {
public:
    using State = std::optional<std::string>;
    struct Reading {
        bool readable = false; // else the program is left alone
        State state = std::nullopt;
    };

    virtual ~ScreenshotProgram() = default;
    // The same for ever: it stands in the journal.
    virtual std::string name() const = 0;
    virtual bool isInstalled() const = 0;
    virtual Reading read() const = 0;
    // All of it or nothing; false when it can't be stored.
    virtual bool write(const State& state) = 0;
    // Removes what a run that was killed in its write left behind.
    virtual void tidy() {}
    // The state with captures going to the folder.
    virtual State redirected(const State& state, const std::string& folder) const = 0;
    // `current` with those values of `after` undone that it still has; what somebody changed since stays.
    virtual State undone(const State& current, const State& before, const State& after) const = 0;
};

// A program whose settings are lines in a file below the XDG config folder.
class IniScreenshotProgram final : public ScreenshotProgram {
public:
    struct Value {
        std::string key;
        // What it is while captures go to the folder.
        std::string (*redirected)(const std::string& folder);
        // What a written value means; programs write anew what they read, and not always with the same characters.
        std::string (*meaning)(const std::string& written) = [](const std::string& written) { return written; };
    };
    // `command` is looked up on PATH; `file` counts from the XDG config folder.
    IniScreenshotProgram(std::string command, const std::string& file, std::string group, std::vector<Value> values);

    std::string name() const override { return command_; }
    bool isInstalled() const override;
    Reading read() const override;
    bool write(const State& state) override;
    void tidy() override;
    State redirected(const State& state, const std::string& folder) const override;
    State undone(const State& current, const State& before, const State& after) const override;

private:
    std::string command_;
    std::string path_;
    std::string group_;
    std::vector<Value> values_;
};

// A program whose folder is one text among the session's settings (GSettings).
class GSettingsScreenshotProgram final : public ScreenshotProgram {
public:
    GSettingsScreenshotProgram(std::string command, std::string schema, std::string key);

    std::string name() const override { return command_; }
    bool isInstalled() const override;
    Reading read() const override;
    bool write(const State& state) override;
    State redirected(const State& state, const std::string& folder) const override;
    State undone(const State& current, const State& before, const State& after) const override;

private:
    std::string command_;
    std::string schema_;
    std::string key_;
};

// flameshot, gnome-screenshot, xfce4-screenshooter and Spectacle, installed or not.
std::vector<std::unique_ptr<ScreenshotProgram>> knownScreenshotPrograms();

} // namespace rb
