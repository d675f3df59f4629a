"""What an administrator gets fits the library and itself: registry files, policy template, schema, sample presets."""

import glob
import os
import re
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

from registry import parse_reg

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
ADMIN = os.path.join(ROOT, "admin")
SCHEMA = os.path.join(ADMIN, "AppNameList.xsd")
POLICIES = os.path.join(ADMIN, "policies", "QanHelper.admx")
TEXTS = os.path.join(ADMIN, "policies", "en-US", "QanHelper.adml")
NAMESPACE = "{http://schemas.microsoft.com/GroupPolicy/2006/07/PolicyDefinitions}"


def read(path, encoding="utf-8"):
    with open(path, encoding=encoding, newline="") as file:
        return file.read()


def complaints(schema, path):
    """What the validator says of a file; nothing when it accepts it."""
    result = subprocess.run(["xmllint", "--noout", "--schema", schema, path], stderr=subprocess.PIPE, text=True,
                            check=False)
    return "" if result.returncode == 0 else result.stderr or "refused"


def settings_in_source():
    """Name and default of each setting, as the library has them."""
    source = read(os.path.join(ROOT, "src", "common", "Reg.cpp"))
    defaults = dict(re.findall(r"constexpr DWORD (kDefault\w+) = (\d+);", source))
    return {name: int(defaults[default]) for name, default in re.findall(r'ReadSetting\(L"(\w+)", (\w+)\)', source)}


def key_in_source():
    source = read(os.path.join(ROOT, "src", "common", "Reg.cpp"))
    return re.search(r'kSettingsKey\[\] = L"([^"]+)"', source)[1].replace("\\\\", "\\")


class RegistryFiles(unittest.TestCase):
    def values(self, name):
        keys = parse_reg(read(os.path.join(ADMIN, name), "ascii"))
        self.assertEqual(list(keys), ["HKEY_LOCAL_MACHINE\\" + key_in_source()])
        return keys["HKEY_LOCAL_MACHINE\\" + key_in_source()]

    def test_the_source_has_four_settings(self):
        self.assertEqual(len(settings_in_source()), 4)

    def test_log_on(self):
        self.assertEqual(self.values("log-on.reg"), {"DebugLog": "dword:00000001"})

    def test_log_off(self):
        self.assertEqual(self.values("log-off.reg"), {"DebugLog": "dword:00000000"})

    def test_defaults_take_every_setting_away(self):
        self.assertEqual(self.values("defaults.reg"), dict.fromkeys(settings_in_source(), "-"))

    def test_what_is_no_registry_file_is_refused(self):
        start = "Windows Registry Editor Version 5.00\r\n\r\n"
        for text in ("[HKEY_LOCAL_MACHINE\\A]\r\n", start.replace("\r", ""), start + '"A"=-\r\n',
                     start + '[HKEY_LOCAL_MACHINE\\A]\r\n"A"=dword:1\r\n'):
            with self.assertRaises(ValueError):
                parse_reg(text)


class PolicyTemplate(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.policies = ElementTree.parse(POLICIES).getroot()
        cls.texts = ElementTree.parse(TEXTS).getroot()

    def all(self, root, name):
        return root.iter(NAMESPACE + name)

    def test_both_files_are_as_the_schema_wants_them(self):
        for path in (POLICIES, TEXTS):
            self.assertEqual(complaints(os.path.join(HERE, "policies.xsd"), path), "")

    def test_the_schema_refuses_another_order_and_other_names(self):
        good = read(POLICIES)
        parent, supported = '<parentCategory ref="QanHelper" />', '<supportedOn ref="SUPPORTED_QanHelper" />'
        for bad in (good.replace(parent, "").replace(supported, supported + parent), good.replace("minValue", "minimum"),
                    good.replace(' class="Machine"', "", 1), good.replace('key="Software', 'key="\\Software')):
            self.assertNotEqual(bad, good)
            with tempfile.NamedTemporaryFile("w", suffix=".admx", encoding="utf-8") as file:
                file.write(bad)
                file.flush()
                self.assertIn("Schemas validity error", complaints(os.path.join(HERE, "policies.xsd"), file.name))

    def test_every_text_that_is_named_is_there_and_the_other_way_round(self):
        for kind in ("string", "presentation"):
            named = re.findall(rf"\$\({kind}\.(\w+)\)", read(POLICIES))
            there = [element.get("id") for element in self.all(self.texts, kind)]
            self.assertEqual(len(there), len(set(there)))
            self.assertEqual(set(named), set(there))

    def test_every_text_says_something(self):
        for text in self.all(self.texts, "string"):
            self.assertTrue(text.text and text.text.strip(), text.get("id"))

    def test_names_that_are_referred_to_are_there(self):
        for reference, kind in (("parentCategory", "category"), ("supportedOn", "definition")):
            there = {element.get("name") for element in self.all(self.policies, kind)}
            named = {element.get("ref") for element in self.all(self.policies, reference)} - {None}
            self.assertTrue(named)
            self.assertLessEqual(named, there)

    def test_each_field_has_its_text_box_in_the_presentation_of_its_policy(self):
        boxes = {presentation.get("id"): [box.get("refId") for box in presentation]
                 for presentation in self.all(self.texts, "presentation")}
        for policy in self.all(self.policies, "policy"):
            fields = [field.get("id") for field in policy.iterfind(f"{NAMESPACE}elements/*")]
            self.assertEqual(boxes.get((policy.get("presentation") or "")[len("$(presentation."):-1], []), fields)

    def test_keys_and_values_are_those_of_the_library(self):
        names = []
        for policy in self.all(self.policies, "policy"):
            self.assertEqual(policy.get("key"), key_in_source())
            self.assertEqual(policy.get("class"), "Machine")
            names += [element.get("valueName") for element in policy.iter() if element.get("valueName")]
        self.assertEqual(sorted(names), sorted(settings_in_source()))

    def test_the_text_boxes_begin_with_the_defaults_of_the_library(self):
        fields = {field.get("id"): field for field in self.policies.iterfind(f".//{NAMESPACE}elements/*")}
        for box in self.all(self.texts, "decimalTextBox"):
            field = fields[box.get("refId")]
            default = settings_in_source()[field.get("valueName")]
            self.assertEqual(int(box.get("defaultValue")), default)
            self.assertTrue(int(field.get("minValue")) <= default <= int(field.get("maxValue")))

    def test_the_fields_take_what_the_page_calls_sensible(self):
        page = read(os.path.join(ROOT, "docs", "settings.md")).replace(",", "")
        for field in self.policies.iterfind(f".//{NAMESPACE}elements/*"):
            sensible = re.search(rf"^\| `{field.get('valueName')}` \| \d+ \| (\d+) to (\d+) \|", page, re.MULTILINE)
            self.assertEqual(sensible.groups(), (field.get("minValue"), field.get("maxValue")))

    def test_both_files_have_one_revision(self):
        required = next(self.all(self.policies, "resources")).get("minRequiredRevision")
        self.assertEqual(required, self.texts.get("revision"))


class Presets(unittest.TestCase):
    def complaints_about(self, records, root="Applications"):
        with tempfile.NamedTemporaryFile("w", suffix=".xml", encoding="utf-8") as file:
            file.write(f"<{root}>{records}</{root}>")
            file.flush()
            return complaints(SCHEMA, file.name)

    def assert_accepted(self, records):
        self.assertEqual(self.complaints_about(records), "")

    def assert_refused(self, records):
        self.assertIn("Schemas validity error", self.complaints_about(records), records)

    def desktop(self, attributes):
        return f"<DesktopApps><DesktopApp {attributes} /></DesktopApps>"

    def package(self, attributes, apps=""):
        return f"<MetroApps><Package {attributes}>{apps}</Package></MetroApps>"

    def test_the_samples_are_accepted(self):
        samples = glob.glob(os.path.join(ADMIN, "presets", "*.xml"))
        self.assertEqual(len(samples), 3)
        for sample in samples:
            self.assertEqual(complaints(SCHEMA, sample), "")

    def test_what_the_library_may_write_is_accepted(self):
        app = r'DisplayName="&quot;A&quot;" LnkFileName="C:\A.lnk"'
        self.assert_accepted("")
        self.assert_accepted("<MetroApps /><DesktopApps />")
        self.assert_accepted("<DesktopApps /><MetroApps />")
        self.assert_accepted(self.desktop(app + ' LocalizeName="a" RubyDisplayName="a" NeedReserve="1" IsInstalled="0" '
                                          'IsDualMode="1"'))
        self.assert_accepted(self.desktop(r'DisplayName="A" LnkFileName="\\server\share\A.url"'))
        self.assert_accepted(self.desktop(r'DisplayName="A" LnkFileName="%ProgramData%\A.lnk"'))
        self.assert_accepted(self.package('PackageFamilyName="A" Version="0.0.0.0"'))
        self.assert_accepted(self.package('PackageFamilyName="A" Version="65535.1.20.65535" NeedReserve="1"',
                                          '<MetroApp DisplayName="a" ShortName="a" RubyDisplayName="a" '
                                          'RubyShortName="a" /><MetroApp />'))

    def test_names_of_elements_and_attributes(self):
        self.assert_refused("<Apps />")
        self.assert_refused("<DesktopApp DisplayName='A' LnkFileName='C:\\A.lnk' />")
        self.assert_refused(self.desktop(r'DisplayName="A" LnkFileName="C:\A.lnk" Reading="a"'))
        self.assert_refused(self.desktop(r'displayname="A" LnkFileName="C:\A.lnk"'))
        self.assertIn("Schemas validity error", self.complaints_about("", "applications"))

    def test_what_a_record_needs(self):
        self.assert_refused(self.desktop('DisplayName="A"'))
        self.assert_refused(self.desktop(r'LnkFileName="C:\A.lnk"'))
        self.assert_refused(self.desktop('DisplayName="A" LnkFileName=""'))
        self.assert_refused(self.package('Version="1.0.0.0"'))
        self.assert_refused(self.package('PackageFamilyName=""'))

    def test_flags_are_numbers(self):
        for flag in ("NeedReserve", "IsInstalled", "IsDualMode"):
            for value in ("false", "true", "2", "", " 1"):
                self.assert_refused(self.desktop(rf'DisplayName="A" LnkFileName="C:\A.lnk" {flag}="{value}"'))
        self.assert_refused(self.package('PackageFamilyName="A" IsDualMode="1"'))

    def test_versions_have_four_numbers(self):
        for version in ("1.2.3", "1.2.3.4.5", "1.2.3.65536", "1.2.3.", "a", "-1.2.3.4"):
            self.assert_refused(self.package(f'PackageFamilyName="A" Version="{version}"'))

    def test_paths_are_full(self):
        for path in ("A.lnk", r"\A.lnk", r"Programs\A.lnk", "C:A.lnk", "%ProgramData%", "C:\\" + "a" * 257):
            self.assert_refused(self.desktop(f'DisplayName="A" LnkFileName="{path}"'))
        self.assert_accepted(self.desktop('DisplayName="A" LnkFileName="C:\\' + "a" * 256 + '"'))

    def test_records_stand_once(self):
        app = r'<DesktopApp DisplayName="A" LnkFileName="C:\A.lnk" />'
        self.assert_refused(f"<DesktopApps>{app}{app}</DesktopApps>")
        package = '<Package PackageFamilyName="A" />'
        self.assert_refused(f"<MetroApps>{package}{package}</MetroApps>")

    def test_a_root_that_is_open_is_refused(self):
        with tempfile.NamedTemporaryFile("w", suffix=".xml") as file:
            file.write("<Applications><DesktopApps />")
            file.flush()
            self.assertNotEqual(complaints(SCHEMA, file.name), "")


if __name__ == "__main__":
    sys.exit(unittest.main())
