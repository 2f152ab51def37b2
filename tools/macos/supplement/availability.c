/* What @available calls when the compiler's own support library isn't linked: libSystem lacks only this. */
#include <stdint.h>
#include <stdlib.h>
#include <sys/sysctl.h>

/* Major, minor and patch of the running macOS; zeros when it can't be read, so that newer API stays unused. */
static void runningVersion(uint32_t version[3]) {
    char text[32];
    size_t size = sizeof text - 1;
    if (sysctlbyname("kern.osproductversion", text, &size, NULL, 0) != 0)
        return;
    text[size] = 0;
    char* rest = text;
    for (int i = 0; i < 3 && *rest; ++i) {
        version[i] = (uint32_t)strtoul(rest, &rest, 10);
        if (*rest == '.')
            ++rest;
    }
}

int32_t __isPlatformVersionAtLeast(uint32_t platform, uint32_t major, uint32_t minor, uint32_t patch);

int32_t __isPlatformVersionAtLeast(uint32_t platform, uint32_t major, uint32_t minor, uint32_t patch) {
    (void)platform;
    uint32_t version[3] = {0, 0, 0};
    runningVersion(version);
    if (version[0] != major)
        return version[0] > major;
    if (version[1] != minor)
        return version[1] > minor;
    return version[2] >= patch;
}
