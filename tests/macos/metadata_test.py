"""The property lists and entitlements that the extension and its app are built with.

usage: metadata_test.py SOURCE_DIR GENERATED_DIR, where GENERATED_DIR holds a folder for each way to sign.
"""

import pathlib
import plistlib
import re
import sys
import unittest
import xml.dom.minidom

SOURCE, GENERATED = (pathlib.Path(path) for path in sys.argv[1:3])
TEAM = "ABCDE12345"
SIGNED = ["development", "developer-id"]
WAYS = SIGNED + ["adhoc", "adhoc-fsmodule"]


def read(way, name):
    return plistlib.loads((GENERATED / way / name).read_bytes())


def constant(header, name):
    text = (SOURCE / header).read_text()
    return re.search(name + r'\s*=\s*"([^"]*)"', text).group(1)


def all_dicts(node):
    if node.nodeType == node.ELEMENT_NODE and node.tagName == "dict":
        yield node
    for child in node.childNodes:
        yield from all_dicts(child)


def comments(node):
    if node.nodeType == node.COMMENT_NODE:
        yield node
    for child in node.childNodes:
        yield from comments(child)


class EveryFile(unittest.TestCase):
    NAMES = ["Extension-Info.plist", "App-Info.plist", "Extension.entitlements", "App.entitlements"]

    def documents(self):
        for way in WAYS:
            for name in self.NAMES:
                with self.subTest(way=way, name=name):
                    yield way, name, xml.dom.minidom.parse(str(GENERATED / way / name))

    def test_is_well_formed_and_a_dictionary(self):
        for way, name, _ in self.documents():
            self.assertIsInstance(read(way, name), dict)

    def test_has_no_key_twice(self):
        for _, _, document in self.documents():
            for each in all_dicts(document):
                keys = [
                    child.firstChild.data
                    for child in each.childNodes
                    if child.nodeType == child.ELEMENT_NODE and child.tagName == "key"
                ]
                self.assertEqual(len(keys), len(set(keys)), keys)

    def test_has_a_value_after_each_key(self):
        for _, _, document in self.documents():
            for each in all_dicts(document):
                tags = [c.tagName for c in each.childNodes if c.nodeType == c.ELEMENT_NODE]
                self.assertEqual(len(tags) % 2, 0)
                self.assertTrue(all(tag == "key" for tag in tags[::2]))
                self.assertTrue(all(tag != "key" for tag in tags[1::2]))

    def test_has_nothing_left_to_fill_in(self):
        for way, name, _ in self.documents():
            self.assertNotRegex((GENERATED / way / name).read_text(), r"@\w*@")

    def test_entitlements_have_no_comments(self):
        for _, name, document in self.documents():
            if name.endswith(".entitlements"):
                self.assertEqual(list(comments(document)), [])


class ExtensionInfo(unittest.TestCase):
    def setUp(self):
        self.info = read("development", "Extension-Info.plist")
        self.attributes = self.info["EXAppExtensionAttributes"]

    def test_is_a_file_system_module_without_a_principal_class(self):
        self.assertEqual(self.attributes["EXExtensionPointIdentifier"], "com.apple.fskit.fsmodule")
        self.assertNotIn("EXExtensionPrincipalClass", self.attributes)
        self.assertNotIn("NSExtension", self.info)
        self.assertEqual(self.info["CFBundlePackageType"], "XPC!")

    def test_generic_urls_are_the_only_resource(self):
        flags = {
            key: value
            for key, value in self.attributes.items()
            if re.fullmatch(r"FSSupports(\w*Resources|\w*URLs)", key)
        }
        self.assertEqual(len(flags), 4)
        self.assertEqual([k for k, v in flags.items() if v], ["FSSupportsGenericURLResources"])
        self.assertIs(flags["FSSupportsGenericURLResources"], True)

    def test_its_short_name_is_the_types(self):
        name = constant("control/include/control/SocketPaths.h", "fileSystemType")
        self.assertEqual(self.attributes["FSShortName"], name)
        self.assertLessEqual(len(name), 15)

    def test_its_scheme_is_that_of_the_resource_that_is_mounted(self):
        url = constant("cli/system/include/systemmount/SystemMount.h", "resourceURL")
        self.assertEqual(self.attributes["FSSupportedSchemes"], [url.split(":")[0]])
        self.assertRegex(url, r"^[a-z]+://[a-z]+$")

    def test_takes_mount_options(self):
        self.assertEqual(self.attributes["FSActivateOptionSyntax"], {"shortOptions": "o:"})

    def test_names_bundle_platform_and_system(self):
        app = constant("control/include/control/SocketPaths.h", "appexBundleID")
        self.assertEqual(self.info["CFBundleIdentifier"], app)
        self.assertEqual(self.info["CFBundleExecutable"], "TarnelFSExtension")
        self.assertEqual(self.info["CFBundleName"], "TarnelFSExtension")
        self.assertEqual(self.info["CFBundleSupportedPlatforms"], ["MacOSX"])
        self.assertEqual(self.info["LSMinimumSystemVersion"], "26.0")
        for key in ["CFBundleShortVersionString", "CFBundleVersion"]:
            self.assertRegex(self.info[key], r"^\d+\.\d+\.\d+$")

    def test_is_the_same_however_it_is_signed(self):
        for way in WAYS:
            self.assertEqual(read(way, "Extension-Info.plist"), self.info)


class AppInfo(unittest.TestCase):
    def test_carries_the_extension(self):
        info = read("development", "App-Info.plist")
        extension = read("development", "Extension-Info.plist")
        self.assertEqual(info["CFBundleIdentifier"], "com.tarnel.desktop")
        self.assertTrue(extension["CFBundleIdentifier"].startswith(info["CFBundleIdentifier"] + "."))
        self.assertEqual(info["CFBundlePackageType"], "APPL")
        self.assertEqual(info["CFBundleExecutable"], "Tarnel")
        self.assertEqual(info["LSMinimumSystemVersion"], "26.0")
        self.assertEqual(info["CFBundleVersion"], extension["CFBundleVersion"])


class Entitlements(unittest.TestCase):
    GROUPS = "com.apple.security.application-groups"
    SANDBOX = "com.apple.security.app-sandbox"

    def test_the_signed_extension_has_all_it_needs(self):
        for way in SIGNED:
            self.assertEqual(
                read(way, "Extension.entitlements"),
                {
                    "com.apple.application-identifier": TEAM + ".com.tarnel.desktop.fskitext",
                    "com.apple.developer.team-identifier": TEAM,
                    self.GROUPS: [TEAM + ".tarnel"],
                    "com.apple.developer.fskit.fsmodule": True,
                    self.SANDBOX: True,
                    "com.apple.security.network.client": True,
                },
            )

    def test_ad_hoc_claims_nothing_that_a_team_grants(self):
        free = {self.SANDBOX: True, "com.apple.security.network.client": True}
        self.assertEqual(read("adhoc", "Extension.entitlements"), free)
        module = {"com.apple.developer.fskit.fsmodule": True}
        self.assertEqual(read("adhoc-fsmodule", "Extension.entitlements"), free | module)
        self.assertEqual(read("adhoc", "App.entitlements"), {})

    def test_the_app_is_outside_the_sandbox_and_in_the_group(self):
        for way in SIGNED:
            entitlements = read(way, "App.entitlements")
            self.assertNotIn(self.SANDBOX, entitlements)
            self.assertEqual(entitlements[self.GROUPS], [TEAM + ".tarnel"])

    def test_the_app_claims_its_identity_only_with_a_profile(self):
        identity = "com.apple.application-identifier"
        self.assertNotIn(identity, read("development", "App.entitlements"))
        with_profile = read("developer-id", "App.entitlements")
        self.assertEqual(with_profile[identity], TEAM + ".com.tarnel.desktop")

    def test_a_socket_in_the_groups_folder_fits_a_long_name(self):
        group = read("development", "Extension.entitlements")[self.GROUPS][0]
        path = "/Users/" + "u" * 30 + "/Library/Group Containers/" + group + "/tarnel-control.sock"
        self.assertLessEqual(len(path), 103)


class Entry(unittest.TestCase):
    def setUp(self):
        self.file = SOURCE / "packaging/macos/extension/TarnelFSExtension.swift"

    def test_is_the_main_of_a_file_of_another_name(self):
        text = self.file.read_text()
        self.assertEqual(text.count("@main"), 1)
        for module in ["ExtensionFoundation", "FSKit"]:
            self.assertIn("import " + module + "\n", text)
        self.assertIn("struct TarnelFSExtension: UnaryFileSystemExtension {", text)
        self.assertRegex(text, r"var fileSystem: TarnelFileSystem \{ TarnelFileSystem\(\) \}")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
