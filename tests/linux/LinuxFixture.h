#pragma once

#include "platform/Log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

#include <QCoreApplication>
#include <QElapsedTimer>

namespace rb {

class RecordingLog final : public Log {
public:
    void write(const std::string& line) override {
        const std::lock_guard lock(mutex_);
        lines_.push_back(line);
    }
    std::vector<std::string> lines() const {
        const std::lock_guard lock(mutex_);
        return lines_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

// A folder of the test's own, gone with it.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "rookbay-test-XXXXXX").string();
        path_ = mkdtemp(name.data());
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::permissions(path_, std::filesystem::perms::owner_all, ignored);
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

inline std::string readText(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

inline void writeText(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

inline void writeProgram(const std::string& path, const std::string& body) {
    writeText(path, "#!/bin/sh\n" + body + "\n");
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
}

// Qt's event loop without a display.
class EventLoopFixture : public testing::Test {
protected:
    bool until(const std::function<bool()>& condition, int milliseconds = 5000) {
        QElapsedTimer timer;
        timer.start();
        while (!condition()) {
            if (timer.elapsed() > milliseconds) {
                return false;
            }
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        }
        return true;
    }

private:
    int count_ = 1;
    char name_[5] = "test";
    char* words_[2] = {name_, nullptr};
    QCoreApplication application_{count_, words_};
};

} // namespace rb
