"""The build for macOS, configured as if on a Mac with tools of the test's own: what it would run.

Nothing is compiled. usage: configure_test.py SOURCE_DIR CMAKE NINJA CLANG CLANGXX UTF8PROC_ARCHIVE
"""

import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

SOURCE = pathlib.Path(sys.argv[1])
CMAKE, NINJA, CLANG, CLANGXX, UTF8PROC = sys.argv[2:7]
SIGNING = {
    "TARNEL_TEAM_ID": "ABCDE12345",
    "TARNEL_SIGN_IDENTITY": "Apple Development: a b",
    "TARNEL_EXTENSION_PROFILE": "/profiles/extension",
}


def preset():
    presets = json.loads((SOURCE / "CMakePresets.json").read_text())["configurePresets"]
    return next(each for each in presets if each["name"] == "macos")


class Configured:
    """A build folder, and what its build would run."""

    def __init__(self, signing):
        self.folder = tempfile.TemporaryDirectory()
        at = pathlib.Path(self.folder.name)
        for tool, body in {
            "swiftc": 'echo "Apple Swift version 6.0 (swiftlang)"',
            "install_name_tool": "exit 0",
        }.items():
            (at / tool).write_text("#!/bin/sh\n" + body + "\n")
            (at / tool).chmod(0o755)
        self.build = at / "build"
        settings = {
            "CMAKE_SYSTEM_NAME": "Darwin",
            "CMAKE_SYSTEM_PROCESSOR": "arm64",
            "CMAKE_OSX_SYSROOT": "/",
            "CMAKE_MAKE_PROGRAM": NINJA,
            "CMAKE_INSTALL_NAME_TOOL": at / "install_name_tool",
            "CMAKE_CXX_COMPILER": CLANGXX,
            "CMAKE_OBJC_COMPILER": CLANG,
            "CMAKE_Swift_COMPILER": at / "swiftc",
            "TARNEL_UTF8PROC_ARCHIVE": UTF8PROC,
            **{f"CMAKE_{each}_COMPILER_WORKS": "1" for each in ["CXX", "OBJC", "Swift"]},
            **preset()["cacheVariables"],
            **signing,
        }
        arguments = [f"-D{name}={value}" for name, value in settings.items()]
        self.outcome = subprocess.run(
            [CMAKE, "-S", SOURCE, "-B", self.build, "-G", "Ninja", *arguments],
            capture_output=True,
            text=True,
        )

    def commands(self, target):
        return subprocess.run(
            [NINJA, "-C", self.build, "-t", "commands", target],
            capture_output=True,
            text=True,
            check=True,
        ).stdout.splitlines()


class Build(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.configured = Configured(SIGNING)
        cls.addClassCleanup(cls.configured.folder.cleanup)
        if cls.configured.outcome.returncode != 0:
            raise AssertionError(cls.configured.outcome.stderr)
        cls.bundle = cls.configured.commands("TarnelBundle")

    def one(self, *words):
        found = [line for line in self.bundle if all(word in line for word in words)]
        self.assertEqual(len(found), 1, words)
        return found[0]

    def test_the_preset_is_for_macs_and_for_system_26(self):
        self.assertEqual(preset()["condition"]["rhs"], "Darwin")
        self.assertEqual(preset()["cacheVariables"]["CMAKE_OSX_DEPLOYMENT_TARGET"], "26.0")

    def test_swift_builds_the_entry_and_nothing_else(self):
        swift = self.one("/swiftc ", "TarnelFSExtension.swift")
        self.assertEqual(swift.count(".swift "), 1)
        for words in [
            "-parse-as-library",
            "-application-extension",
            "-target arm64-apple-macosx26.0",
            "-import-objc-header " + str(SOURCE / "platform/fskit/objc/TarnelFileSystem.h"),
            "-Xlinker -e -Xlinker _EXExtensionMain",
            "-Xlinker -u -Xlinker _main",
            "-framework FSKit",
            "-framework ExtensionFoundation",
        ]:
            self.assertIn(words, swift)

    def test_the_extension_holds_adapter_core_and_library_itself(self):
        swift = self.one("/swiftc ", "TarnelFSExtension.swift")
        for archive in ["TarnelFSKit", "TarnelFSKitCore", "TarnelFS", "TarnelControl", "TarnelSeam"]:
            self.assertIn("/lib" + archive + ".a", swift)
        self.assertIn(UTF8PROC, swift)
        self.assertNotIn("-lutf8proc", swift)

    def test_objective_c_is_counted_by_the_compiler_and_built_for_the_system(self):
        compiled = [line for line in self.bundle if ".m -o " in line or line.endswith(".m")]
        self.assertGreaterEqual(len(compiled), 9)
        for line in compiled:
            self.assertIn("-fobjc-arc", line)
            self.assertIn("-mmacosx-version-min=26.0", line)

    def test_the_script_gets_all_that_it_asks_for(self):
        line = self.one("packaging/macos/bundle")
        self.assertTrue(line.endswith("Tarnel.app development"))
        script = (SOURCE / "packaging/macos/bundle").read_text()
        for owner in ["EXTENSION", "APP"]:
            for what in ["PROGRAM", "INFO", "ENTITLEMENTS", "PROFILE"]:
                self.assertIn(f"{owner}_{what}=", line)
                self.assertIn(f"{owner}_{what}", script)
        self.assertIn("EXTENSION_PROFILE=/profiles/extension", line)
        self.assertIn("Apple Development: a b", line)

    def test_the_command_mounts_as_macos_does(self):
        lines = "\n".join(self.configured.commands("tarnel"))
        for source in ["DarwinMountCommand.cpp", "DarwinMounts.cpp", "SystemMount.cpp"]:
            self.assertIn(source, lines)
        for other in ["cli/src/MountCommand.cpp", "Daemon.cpp", "platform/fuse"]:
            self.assertNotIn(other, lines)


class WithoutATeam(unittest.TestCase):
    def test_the_first_thing_that_is_missing_is_named(self):
        configured = Configured({})
        self.addCleanup(configured.folder.cleanup)
        self.assertNotEqual(configured.outcome.returncode, 0)
        self.assertIn("TARNEL_TEAM_ID", configured.outcome.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[7:])
