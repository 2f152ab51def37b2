// A locker that locks nothing: appends the moment at which it began to run (monotonic seconds) to the named file.

#include <cstdio>
#include <ctime>

int main(int argc, char** argv) {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    std::FILE* file = argc == 2 ? std::fopen(argv[1], "a") : nullptr;
    if (file == nullptr) {
        return 1;
    }
    std::fprintf(file, "%.6f\n", static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9);
    return std::fclose(file) == 0 ? 0 : 1;
}
