"""An independent model of what the library reads out of a catalogue file and writes into one: made from what
docs/catalogue-file.md says of the format, and from nothing of the library's code.

The model's records are compared with the library's through what the library asks of its XML writer ("start Package",
"IsInstalled=0", "end"), once with the records as they were read and once with all of them marked as installed: what is
not installed and not reserved is left out of the first and stands in the second."""

import re

from nodes import read_nodes, same_name, units

LONGEST_PATH = 259  # without the terminator
VARIABLES = {"programdata": "C:\\ProgramData"}


def value_of(node, wanted, absent):
    """The last attribute of that name."""
    found = absent
    for name, value in node.attributes:
        if same_name(name, wanted):
            found = value
    return found


def flag_of(node, name, absent, unreadable):
    value = value_of(node, name, None)
    if value is None:
        return absent
    number = re.match(r"[ \t\r\n\v\f]*([+-]?[0-9]+)", value)
    return int(number[1]) != 0 if number else unreadable


def version_of(node):
    """The four numbers as they stand in the file; what is missing is 0."""
    parts = []
    rest = value_of(node, "Version", "")
    while len(parts) < 4:
        number = re.match(r"[ \t\r\n\v\f]*([+-]?[0-9]+)", rest)
        if not number:
            break
        parts.append(int(number[1]) % 65536)
        rest = rest[number.end() :]
        if not rest.startswith("."):
            break
        rest = rest[1:]
    return parts + [0] * (4 - len(parts))


def expand(path):
    expanded = re.sub(r"%([^%]*)%", lambda match: VARIABLES.get(match[1].lower(), match[0]), path)
    return expanded if units(expanded) <= LONGEST_PATH else path


class Record:
    """A package, or a desktop application."""

    def __init__(self, node):
        self.reserved = flag_of(node, "NeedReserve", False, True)
        self.installed = flag_of(node, "IsInstalled", True, True)

    def flags(self, installed):
        yield from ["NeedReserve=1"] if self.reserved else []
        yield from [] if installed else ["IsInstalled=0"]


def texts(pairs):
    return [f"{name}={value}" for name, value in pairs if value]


class Package(Record):
    def __init__(self, node):
        super().__init__(node)
        self.family = value_of(node, "PackageFamilyName", "")
        self.version = version_of(node)
        self.apps = []

    def add(self, node):
        self.apps.append([(name, value_of(node, name, ""))
                          for name in ("DisplayName", "ShortName", "RubyDisplayName", "RubyShortName")])

    def calls(self, installed):
        # The third and the fourth number trade places on each way.
        first, second, third, fourth = self.version
        yield "start Package"
        yield f"PackageFamilyName={self.family}"
        yield f"Version={first}.{second}.{fourth}.{third}"
        yield from self.flags(installed)
        for app in self.apps:
            yield from ["start MetroApp", *texts(app), "end"]
        yield "end"


class DesktopApp(Record):
    def __init__(self, node):
        super().__init__(node)
        self.dual = flag_of(node, "IsDualMode", False, False)
        self.texts = [(name, value_of(node, name, ""))
                      for name in ("DisplayName", "LnkFileName", "LocalizeName", "RubyDisplayName")]
        self.texts[1] = ("LnkFileName", expand(self.texts[1][1]))

    def calls(self, installed):
        yield "start DesktopApp"
        yield from texts(self.texts)
        yield from self.flags(installed)
        yield from ["IsDualMode=1"] if self.dual else []
        yield "end"


class Catalogue:
    def __init__(self, document):
        self.packages = []
        self.desktop_apps = []
        self._nodes, self.is_whole = read_nodes(document)
        place = 0
        while place < len(self._nodes):
            node = self._nodes[place]
            place += 1
            if node.kind == "start" and same_name(node.name, "Package"):
                package = Package(node)
                place = self._read_below(place, node.depth, "MetroApp", package.add)
                self.packages.append(package)
            elif node.kind == "start" and same_name(node.name, "DesktopApps"):
                place = self._read_below(place, node.depth, "DesktopApp",
                                         lambda below: self.desktop_apps.append(DesktopApp(below)))

    def _read_below(self, place, depth, name, add):
        """Where the collection has ended."""
        while place < len(self._nodes):
            node = self._nodes[place]
            if node.kind == "end" and node.depth - 1 <= depth:
                return place
            if node.kind == "start":
                if node.depth <= depth:
                    return place
                if same_name(node.name, name):
                    add(node)
            place += 1
        return place

    def calls(self, all_installed):
        """What saving asks of the writer."""
        calls = ["start Applications"]
        for name, records in (("MetroApps", self.packages), ("DesktopApps", self.desktop_apps)):
            calls.append(f"start {name}")
            for record in records:
                installed = record.installed or all_installed
                if installed or record.reserved:
                    calls += record.calls(installed)
            calls.append("end")
        return calls
