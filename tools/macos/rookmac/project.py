"""The ninja file that cross-builds Rook Bay.app: objects and executable per CPU, universal binary, bundle, signature."""

from pathlib import Path

from . import bundle, toolchain
from .facts import TOOLS
from .toolchain import ARCHITECTURES, MINIMUM, SDK_VERSION

ROOT = TOOLS.parent.parent
PRODUCT = "app clothesline screenshots clipboard menubar displays motion platform".split()
DESKTOP = ROOT / "desktops/macos"
PACKAGING = ROOT / "packaging/macos"

# The I2C lines of displays are reached on Apple silicon alone; on Intel the program never asks for this helper.
ONLY_FOR = {"DisplayHelper": ["arm64"]}

FRAMEWORKS = """AppKit Foundation CoreFoundation CoreGraphics CoreText ColorSync QuartzCore Carbon CoreServices IOKit ImageIO Quartz
    QuickLookThumbnailing UniformTypeIdentifiers ServiceManagement""".split()

# Designated initialisers leave out what keeps its default; clang would have them all written.
WARNINGS = """-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -Wundeclared-selector -Wunguarded-availability
    -Wno-missing-field-initializers""".split()
LANGUAGE = "-std=c++20 -fblocks -ferror-limit=5".split()
OBJECTIVE_C = ["-fobjc-arc", "-fobjc-weak"]
# What most sources include, parsed once. Intel's objects are compiled with it; those for Apple silicon without, so that
# a missing #include is noticed. No time stamps: the same headers give the same bytes, which ccache knows again.
PREFIX = TOOLS / "prefix.h"
PREFIX_FLAGS = ["-Xclang", "-fno-pch-timestamp"]
PREFIXED = "x86_64"
CODE_GENERATION = "-O2 -g -fvisibility=hidden -fvisibility-inlines-hidden".split()


def version():
    """The project's version, kept in one place: the top-level CMakeLists.txt."""
    for word in (ROOT / "CMakeLists.txt").read_text().split("project(RookBay VERSION ", 1)[1].split():
        return word
    raise SystemExit("CMakeLists.txt names no version")


def sources():
    """Everything that goes into the program: the product and the macOS desktop."""
    product = [path for folder in PRODUCT for path in sorted((ROOT / folder).glob("*.cpp"))]
    return product + sorted(DESKTOP.glob("*.mm")) + sorted(DESKTOP.glob("*.cpp"))


def helpers():
    """Name -> own sources of the separate programs in Contents/Resources: one folder helpers/macos/<Name> each."""
    found = {}
    for main in sorted((ROOT / "helpers/macos").glob("*/main.mm")):
        folder = main.parent
        found[folder.name] = sorted(folder.glob("*.cpp")) + sorted(folder.glob("*.mm"))
    return found


def helpers_shared():
    """What goes into every helper; the linker leaves out what one doesn't need."""
    return sorted((ROOT / "helpers/shared").glob("*.cpp"))


def libraries():
    """A folder with the header libraries of Debian that the program includes, and nothing else of /usr/include."""
    folder = toolchain.CACHE / "libraries"
    folder.mkdir(parents=True, exist_ok=True)
    link = folder / "nlohmann"
    if not link.exists():
        link.unlink(missing_ok=True)
        link.symlink_to("/usr/include/nlohmann")
    return folder


def source_flags(path):
    flags = [*LANGUAGE, *WARNINGS, f"-I{ROOT}", f"-isystem{libraries()}", f'-DROOKBAY_VERSION="{version()}"']
    return flags + OBJECTIVE_C if path.suffix == ".mm" else flags


def compile_flags(toolchain, architecture, sdk, path):
    return [*toolchain.target_flags(architecture, sdk), *source_flags(path), *CODE_GENERATION]


def escape(path):
    """A path in a build statement."""
    return str(path).replace("$", "$$").replace(" ", "$ ").replace(":", "$:")


def quote(words):
    return " ".join(f"'{word}'" if " " in str(word) or '"' in str(word) else str(word) for word in words)


class NinjaFile:
    def __init__(self, toolchain, out, sdk):
        self.toolchain = toolchain
        self.out = out
        self.sdk = sdk
        self.prefixes = set()
        self.lines = ["ninja_required_version = 1.10", f"builddir = {out}"]

    def rule(self, name, command, **settings):
        self.lines += [f"rule {name}", f"  command = {command}"]
        self.lines += [f"  {key} = {value}" for key, value in settings.items()]

    def build(self, outputs, rule, inputs, implicit=(), **variables):
        text = f"build {' '.join(map(escape, outputs))}: {rule} {' '.join(map(escape, inputs))}"
        if implicit:
            text += " | " + " ".join(map(escape, implicit))
        self.lines.append(text)
        self.lines += [f"  {key} = {value}" for key, value in variables.items()]

    @staticmethod
    def compile_command():
        # Without ccache: it takes the precompiled headers of another checkout for ours.
        return f"$compiler $flags -MD -MF $out.d -c $in -o $out"

    def rules(self):
        python = f"PYTHONPATH={TOOLS} python3"
        self.rule("compile", self.compile_command(), depfile="$out.d", deps="gcc", description="compile $arch $short")
        self.rule("link", "ld64.lld-19 $flags -o $out $in $libraries", description="link $arch $short")
        self.rule("universal", "llvm-lipo-19 -create $in -output $out", description="universal $short")
        self.rule("icon", f"python3 {PACKAGING}/make_icns.py $in $out", description="icon")
        self.rule("bundle", f"rm -rf $app && {python} -m rookmac.bundle $app $arguments && touch $out",
                  description="bundle and sign")  # fmt: skip

    def objects(self, architecture, group, files):
        built = []
        for path in files:
            short = path.relative_to(ROOT) if path.is_relative_to(ROOT) else path.name
            output = self.out / "objects" / architecture / group / f"{short}.o"
            flags = compile_flags(self.toolchain, architecture, self.sdk, path)
            prefix = []
            if architecture == PREFIXED and path.suffix in (".mm", ".cpp"):
                prefix = [self.prefix(path.suffix, flags)]
                flags = [*flags, "-include-pch", prefix[0]]
            compiler = "clang-19" if path.suffix == ".c" else "clang++-19"
            if path.suffix == ".c":
                flags = [*self.toolchain.target_flags(architecture, self.sdk), *CODE_GENERATION, "-std=c17", "-Wall"]
                flags.remove("-nostdinc++")
            self.build([output], "compile", [path], implicit=prefix, compiler=compiler, flags=quote(flags),
                       arch=architecture, short=short)  # fmt: skip
            built.append(output)
        return built

    def prefix(self, suffix, flags):
        """The precompiled header for sources of that suffix, which are compiled with exactly these flags."""
        output = self.out / f"prefix{suffix}.pch"
        if output not in self.prefixes:
            self.prefixes.add(output)
            language = "objective-c++-header" if suffix == ".mm" else "c++-header"
            self.build([output], "compile", [PREFIX], compiler="clang++-19", arch="precompiled", short=PREFIX.name,
                       flags=quote([*flags, *PREFIX_FLAGS, "-x", language]))  # fmt: skip
        return output

    def executable(self, name, files):
        slices = []
        for architecture in ONLY_FOR.get(name, ARCHITECTURES):
            output = self.out / "linked" / architecture / name
            runtime = self.sdk / "usr/lib/libobjc.tbd"
            libraries = [self.toolchain.libsystem, *self.toolchain.libcxx(architecture), runtime]
            flags = ["-arch", architecture, "-platform_version", "macos", MINIMUM, SDK_VERSION]
            flags += ["-F", self.sdk / "System/Library/Frameworks", "-dead_strip"]
            # -x -S strips; the pad leaves room for the signature's load command, which is written last.
            flags += ["-x", "-S", "-headerpad", "0x400", "-exported_symbol", "__mh_execute_header"]
            flags += ["-adhoc_codesign"]
            for framework in FRAMEWORKS:
                flags += ["-framework", framework]
            objects = self.objects(architecture, name, [*files, TOOLS / "supplement/availability.c"])
            stubs = sorted((self.sdk / "System").rglob("*.tbd"))
            self.build([output], "link", objects, implicit=[*libraries, *stubs], flags=quote(flags),
                       libraries=quote(libraries), arch=architecture, short=name)  # fmt: skip
            slices.append(output)
        universal = self.out / "universal" / name
        self.build([universal], "universal", slices, short=name)
        return universal

    def write(self, path):
        self.rules()
        program = self.executable("RookBay", sources())
        programs = [self.executable(name, files + helpers_shared()) for name, files in helpers().items()]
        icon = self.out / "RookBay.icns"
        self.build([icon], "icon", [ROOT / "resources/icons/rookbay.svg"], implicit=[PACKAGING / "make_icns.py"])
        app = self.out / "Rook Bay.app"
        template, entitlements = PACKAGING / "Info.plist.in", PACKAGING / "entitlements.plist"
        arguments = [template, entitlements, version(), icon, program, *programs]
        tools = [TOOLS / "rookmac/bundle.py", TOOLS / "rookmac/sign.py"]
        tools += [path for folder in bundle.FOLDERS for path in sorted(folder.rglob("*")) if path.is_file()]
        self.build([self.out / "bundle.stamp"], "bundle", arguments[:2] + arguments[3:], implicit=tools,
                   app=quote([app]), arguments=quote(arguments))  # fmt: skip
        path.write_text("\n".join(self.lines) + "\n")
