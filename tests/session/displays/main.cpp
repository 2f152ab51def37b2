#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

// Helpers are looked for beside the program. Each run of these tests is a program in a folder of its own, so that it
// can put helpers of all kinds there without being in another run's way.
namespace {

namespace fs = std::filesystem;

int runInOwnFolder(std::vector<char*> words) {
    const fs::path self = fs::read_symlink("/proc/self/exe");
    const fs::path folder = self.parent_path() / ("run-" + std::to_string(::getpid()));
    const fs::path program = folder / self.filename();
    std::error_code error;
    fs::create_directories(folder / "helpers");
    fs::create_hard_link(self, program, error);
    if (error) {
        fs::copy_file(self, program);
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::setenv("ROOKBAY_HELPERS_TEST", (folder / "helpers").c_str(), 1); // NOLINT(concurrency-mt-unsafe)
        words.push_back(nullptr);
        ::execv(program.c_str(), words.data());
        ::_exit(127);
    }
    int status = 1;
    ::waitpid(child, &status, 0);
    fs::remove_all(folder, error);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

} // namespace

int main(int count, char** words) {
    const std::vector<char*> arguments(words, words + count);
    const bool lists = std::any_of(arguments.begin(), arguments.end(), [](const char* word) {
        return std::string_view(word).starts_with("--gtest_list_tests");
    });
    if (!lists && !std::getenv("ROOKBAY_HELPERS_TEST")) { // NOLINT(concurrency-mt-unsafe): single-threaded
        return runInOwnFolder(arguments);
    }
    testing::InitGoogleTest(&count, words);
    return RUN_ALL_TESTS();
}
