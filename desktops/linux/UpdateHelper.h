#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <string>

class QProcess;

namespace rb {

// The program beside ours that has to do with the network: rookbay-update. This one stays without the network's
// libraries, and what comes from outside is read by a process that holds nothing of the user's.

// Its path, or empty where it isn't installed.
QString updateHelperPath();

// One run of it. Destruction ends it without a word. Main thread only.
class UpdateHelper {
public:
    using Output = std::function<void(const QByteArray& bytes)>;
    // The exit code, or a negative number when it couldn't be started or crashed.
    using Ended = std::function<void(int code)>;

    UpdateHelper(const QStringList& arguments, const Output& output, const Ended& ended);
    ~UpdateHelper();
    UpdateHelper(const UpdateHelper&) = delete;
    UpdateHelper& operator=(const UpdateHelper&) = delete;

    // A line on its standard input.
    void tell(const char* line);

private:
    QProcess* process_;
};

} // namespace rb
