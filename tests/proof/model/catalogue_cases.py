"""Catalogue files, and what the model makes of each.

A case is four blocks: the file; "1" when it is read to its end, else "0"; the calls of its saving; and those with every
record marked as installed."""

from blocks import lines
from catalogue import Catalogue
from documents import Words

FLAGS = ["0", "1", "", "yes", " 1", "-1", "+0", "00", "2", "7abc", "0x1", "-", "false", "  0", "4294967295"]
VERSIONS = ["1.2.3.4", "6.2.9200.16384", "1.2", "", "1..3", "a.b", "1.2.3.4.5", " 1. 2.3.4", "99999.0.0.1",
            "-1.0.65536.70000", "1.2.3.4abc", "1,2", "0.0.0.0", "+3.4"]
PATHS = ["C:\\Start\\Mail.lnk", "%ProgramData%\\Mail.lnk", "%PROGRAMDATA%\\a.lnk", "%", "%%", "",
         "%NoSuchVariable1%\\b",
         "%ProgramData%" + "x" * 245, "%ProgramData%" + "y" * 246, "%ProgramData%" + "z" * 247, "C:\\" + "w" * 300]


class CatalogueWords(Words):
    root = "Applications"
    elements = ["Applications", "MetroApps", "Package", "MetroApp", "DesktopApps", "DesktopApp", "Unknown", "x:Package"]
    below = {"Applications": ["MetroApps", "DesktopApps"], "MetroApps": ["Package"], "Package": ["MetroApp"],
             "DesktopApps": ["DesktopApp"]}
    attributes = {"Package": ["PackageFamilyName", "Version", "NeedReserve", "IsInstalled"],
                  "MetroApp": ["DisplayName", "ShortName", "RubyDisplayName", "RubyShortName"],
                  "DesktopApp": ["DisplayName", "LnkFileName", "LocalizeName", "RubyDisplayName", "NeedReserve",
                                 "IsInstalled", "IsDualMode"]}
    other_attributes = ["Other", "x:Version"]

    def value(self, name):
        if name.lower() in ("needreserve", "isinstalled", "isdualmode"):
            return self._random.choice(FLAGS)
        if name.lower() == "version":
            return self._random.choice(VERSIONS)
        if name.lower() == "lnkfilename":
            return self._random.choice(PATHS)
        return self.text()


def case(document, _):
    catalogue = Catalogue(document)
    return [document, b"1" if catalogue.is_whole else b"0", lines(catalogue.calls(False)), lines(catalogue.calls(True))]
