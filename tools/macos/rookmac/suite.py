"""The ninja file of the suite that runs desktops/macos on Linux against recording fakes."""

from .facts import TOOLS
from .project import DESKTOP, LANGUAGE, OBJECTIVE_C, PRODUCT, ROOT, WARNINGS, NinjaFile, helpers, helpers_shared, quote, version

TESTS = ROOT / "tests/macos"
RUNTIME = TESTS / "runtime"

# What these objects call is recorded: the code under test, not the tests nor the fakes.
RECORDED_CALLS = """objc_msgSend objc_msgSend_stret objc_msgSendSuper2 objc_msgSendSuper2_stret objc_alloc_init
    objc_opt_new dlsym""".split()
# The fakes write parts of classes only, and declare nothing.
FAKE_FLAGS = """-DRB_FAKE_IMPLEMENTATION -Wall -Wextra -Werror -Wno-incomplete-implementation -Wno-unused-parameter
    -Wno-deprecated-implementations -Wno-objc-designated-initializers -Wno-objc-missing-super-calls
    -Wno-objc-property-implementation -Wno-protocol -Wno-mismatched-parameter-types
    -Wno-mismatched-return-types -Wno-arc-performSelector-leaks -Wno-nonnull -Wno-objc-method-access""".split()


def code_under_test():
    files = [path for folder in PRODUCT for path in sorted((ROOT / folder).glob("*.cpp"))]
    files += sorted(DESKTOP.glob("*.mm")) + sorted(DESKTOP.glob("*.cpp")) + helpers_shared()
    files += [path for own in helpers().values() for path in own]
    return [path for path in files if path.stem != "main"]


# Two programs: the tests of the frame itself need nothing of the desktop, so they tell its faults apart.
PROGRAMS = {
    "frame": ([TESTS / "frame/Subject.mm"], [TESTS / "MacTest.mm", TESTS / "frame/FrameTest.mm"]),
    "suite": (code_under_test(), sorted(TESTS.glob("*.mm"))),
}


class SuiteFile(NinjaFile):
    def __init__(self, toolchain, out, sdk):
        super().__init__(toolchain, out, sdk)
        self.compiled = set()

    def flags(self):
        flags = [*LANGUAGE, "-O1", "-g", "-fno-omit-frame-pointer", "-Wno-deprecated-declarations"]
        flags += ["-fsanitize=address", f"-I{ROOT}", f'-DROOKBAY_VERSION="{version()}"']
        flags += ["-isystem", RUNTIME / "include", "-isystem", self.sdk / "usr/include"]
        return flags + ["-iframework", self.sdk / "System/Library/Frameworks"]

    def compile_all(self, rule, files, extra):
        outputs = []
        for path in files:
            short = path.relative_to(ROOT)
            output = self.out / f"{short}.o"
            outputs.append(output)
            if output in self.compiled:
                continue
            self.compiled.add(output)
            language = [*OBJECTIVE_C, "-fobjc-runtime=macosx-13.0"] if path.suffix == ".mm" else []
            flags = [*language, *self.flags(), *extra]
            prefix = []
            if "-DROOKBAY_SUITE" in extra:
                prefix = [self.prefix(path.suffix, flags)]
                flags += ["-include-pch", prefix[0]]
            self.build([output], rule, [path], implicit=prefix, compiler="clang++-19", flags=quote(flags),
                       arch="for the suite", short=short)  # fmt: skip
        return outputs

    def write(self, path):
        self.rules()
        rename = " ".join(f"--redefine-sym {name}={name}_recorded" for name in RECORDED_CALLS)
        self.rule("compile_recorded", f"{self.compile_command()} && llvm-objcopy-19 {rename} $out",
                  depfile="$out.d", deps="gcc", description="compile $short, recorded")  # fmt: skip
        self.rule("fakes", f"PYTHONPATH={TOOLS} python3 -m rookmac.fakedata $out", description="fakes from the facts")
        self.rule("assemble", "clang-19 -c $in -o $out", description="assemble $in")
        self.rule("suite", "clang++-19 -fsanitize=address -fuse-ld=lld-19 $in $libraries -o $out", description="link suite")

        data = self.out / "fakes.s"
        generators = [TOOLS / "rookmac" / name for name in ("fakedata.py", "facts.py")]
        self.build([data], "fakes", [TOOLS / "facts/facts.json.xz"], implicit=generators)
        self.build([self.out / "fakes.o"], "assemble", [data])
        runtime = sorted(RUNTIME.glob("*.cpp")) + sorted(RUNTIME.glob("*.mm"))
        fakes = [self.out / "fakes.o", *self.compile_all("compile", runtime, FAKE_FLAGS)]
        self.build([self.out / "entry.o"], "assemble", [RUNTIME / "Entry.s"])
        fakes.append(self.out / "entry.o")
        constants = "-Wl,--defsym=__CFConstantStringClassReference='OBJC_CLASS_$$_RBFakeConstantString'"
        libraries = f"-lgtest -lgtest_main -lBlocksRuntime -lpthread {constants}"
        for name, (recorded, tests) in PROGRAMS.items():
            objects = self.compile_all("compile_recorded", recorded, [*WARNINGS, "-DROOKBAY_SUITE"])
            objects += self.compile_all("compile", tests, [*WARNINGS, "-DROOKBAY_SUITE"])
            self.build([self.out / name], "suite", [*objects, *fakes], libraries=libraries)
        path.write_text("\n".join(self.lines) + "\n")
