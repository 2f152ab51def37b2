#include "helpers/capture/OwnProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

namespace rb {

bool startAgain(const std::vector<std::string>& arguments, int input, int output) {
    std::vector<std::string> texts{"rookbay-capture"};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> words;
    words.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        words.push_back(text.data());
    }
    words.push_back(nullptr);
    posix_spawn_file_actions_t files{};
    posix_spawnattr_t attributes{};
    posix_spawn_file_actions_init(&files);
    const auto give = [&](int from, int as, int mode) {
        if (from >= 0) {
            posix_spawn_file_actions_adddup2(&files, from, as);
        } else {
            posix_spawn_file_actions_addopen(&files, as, "/dev/null", mode, 0);
        }
    };
    give(input, STDIN_FILENO, O_RDONLY);
    give(output, STDOUT_FILENO, O_WRONLY);
    give(-1, STDERR_FILENO, O_WRONLY);
    // What else whoever started us has open (a lock, a pipe that somebody reads to its end) must not live on with it.
    posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    pid_t child = -1;
    const bool started = posix_spawn(&child, "/proc/self/exe", &files, &attributes, words.data(), environ) == 0;
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    return started;
}

} // namespace rb
