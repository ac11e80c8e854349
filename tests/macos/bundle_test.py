"""How the app is put together and signed, with programs of the test's own for the system's.

usage: bundle_test.py SOURCE_DIR
"""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

BUNDLE = pathlib.Path(sys.argv[1]) / "packaging/macos/bundle"
SYSTEM = "\t/usr/lib/libSystem.B.dylib (compatibility version 1.0.0, current version 1.0.0)\n"
FRAMEWORK = (
    "\t/System/Library/Frameworks/FSKit.framework/Versions/A/FSKit (compatibility version 1.0.0,"
    " current version 1.0.0)\n"
)


class Bundle(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.at = pathlib.Path(self.folder.name)
        self.app = self.at / "Tarnel.app"
        self.environment = {**os.environ, "IDENTITY": "Someone"}
        for name in ["program", "info", "entitlements", "profile"]:
            for owner in ["extension", "app"]:
                path = self.at / (owner + "-" + name)
                path.write_text(owner + " " + name)
                self.environment[(owner + "_" + name).upper()] = str(path)
        self.tool("CODESIGN", 'printf "%s\\n" "$*" >> "' + str(self.at / "signed") + '"')
        self.links("extension-program", SYSTEM + FRAMEWORK)
        self.links("app-program", SYSTEM)
        self.tool("OTOOL", 'echo "$2:"; cat "$2.links"')

    def tool(self, variable, body):
        path = self.at / variable.lower()
        path.write_text("#!/bin/sh\n" + body + "\n")
        path.chmod(0o755)
        self.environment[variable] = str(path)

    def links(self, program, lines):
        (self.at / (program + ".links")).write_text(lines)

    def make(self, way="development"):
        return subprocess.run(
            [BUNDLE, self.app, way], env=self.environment, capture_output=True, text=True
        )

    def signed(self):
        path = self.at / "signed"
        return path.read_text().splitlines() if path.exists() else []

    def assert_fails(self, outcome, words):
        self.assertNotEqual(outcome.returncode, 0)
        self.assertIn(words, outcome.stderr)
        self.assertEqual(self.signed(), [])
        self.assertFalse(self.app.exists())

    def test_lays_the_bundles_out(self):
        outcome = self.make()
        self.assertEqual(outcome.returncode, 0, outcome.stderr)
        files = {
            str(path.relative_to(self.app)): path.read_text()
            for path in self.app.rglob("*")
            if path.is_file()
        }
        inner = "Contents/Extensions/TarnelFSExtension.appex/Contents/"
        self.assertEqual(
            files,
            {
                "Contents/Info.plist": "app info",
                "Contents/PkgInfo": "APPL????",
                "Contents/MacOS/Tarnel": "app program",
                "Contents/embedded.provisionprofile": "app profile",
                inner + "Info.plist": "extension info",
                inner + "MacOS/TarnelFSExtension": "extension program",
                inner + "embedded.provisionprofile": "extension profile",
            },
        )

    def test_signs_what_is_inside_first_each_with_its_own_entitlements(self):
        self.make()
        first, second, last = self.signed()
        common = "--force --sign Someone --options runtime --timestamp=none"
        self.assertTrue(first.startswith(common))
        self.assertIn("--entitlements " + str(self.at / "extension-entitlements"), first)
        self.assertTrue(first.endswith(".appex"))
        self.assertIn("--entitlements " + str(self.at / "app-entitlements"), second)
        self.assertTrue(second.endswith("Tarnel.app"))
        self.assertEqual(last, "--verify --deep --strict " + str(self.app))

    def test_a_release_carries_the_time_of_signing(self):
        self.make("developer-id")
        self.assertIn("--options runtime --timestamp --generate", self.signed()[0])

    def test_ad_hoc_needs_neither_identity_nor_profile(self):
        for name in ["IDENTITY", "EXTENSION_PROFILE", "APP_PROFILE"]:
            self.environment[name] = ""
        self.assertEqual(self.make("adhoc").returncode, 0)
        self.assertTrue(self.signed()[0].startswith("--force --sign - "))
        self.assertEqual(list(self.app.rglob("embedded.provisionprofile")), [])

    def test_replaces_what_an_earlier_build_left(self):
        self.make()
        (self.app / "Contents/old").write_text("old")
        self.make()
        self.assertFalse((self.app / "Contents/old").exists())

    def test_a_library_outside_the_system_is_refused_by_name(self):
        for outside in ["/opt/homebrew/lib/libutf8proc.3.dylib", "@rpath/libc++.1.dylib"]:
            self.links("extension-program", SYSTEM + "\t" + outside + " (compatibility version 4)\n")
            self.assert_fails(self.make(), "links outside the system: " + outside)

    def test_the_app_itself_is_looked_at_too(self):
        self.links("app-program", SYSTEM + "\t/usr/local/lib/x.dylib (compatibility version 1)\n")
        self.assert_fails(self.make(), "/usr/local/lib/x.dylib")

    def test_a_program_without_libraries_is_none(self):
        self.links("extension-program", "")
        self.assert_fails(self.make(), "no libraries found")

    def test_a_listing_that_fails_is_refused(self):
        self.tool("OTOOL", "exit 1")
        self.assert_fails(self.make(), "cannot be listed")

    def test_signing_for_a_team_needs_identity_and_profile(self):
        self.environment["EXTENSION_PROFILE"] = ""
        self.assert_fails(self.make("developer-id"), "provisioning profile")
        self.environment["IDENTITY"] = ""
        self.assert_fails(self.make(), "security find-identity")

    def test_another_way_is_refused(self):
        self.assert_fails(self.make("release"), "not a way to sign")

    def test_a_signature_that_fails_is_a_failure(self):
        self.tool("CODESIGN", "exit 1")
        self.assertNotEqual(self.make().returncode, 0)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[2:])
