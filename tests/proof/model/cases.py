"""Makes catalogue files, and what the model makes of each, for a program that reads them with the library.

  cases.py COUNT SEED [--simple]

  --simple   only files that every reader takes: not cut off, and less than 8,000 bytes (Wine's reader loses a letter of
             several bytes that lies across the end of the piece that it reads first, at 8,188 bytes)

A case is four blocks, each a number of bytes in a line of its own, and so many bytes: the file; "1" when it is read to
its end, else "0"; the calls of its saving; and those with every record marked as installed. Calls are lines, with a
backslash before "n", "r" and itself."""

import itertools
import random
import sys

from catalogue import Catalogue

ELEMENTS = ["Applications", "MetroApps", "Package", "MetroApp", "DesktopApps", "DesktopApp", "Unknown", "x:Package"]
BELOW = {"Applications": ["MetroApps", "DesktopApps"], "MetroApps": ["Package"], "Package": ["MetroApp"],
         "DesktopApps": ["DesktopApp"]}
ATTRIBUTES = {"Package": ["PackageFamilyName", "Version", "NeedReserve", "IsInstalled"],
              "MetroApp": ["DisplayName", "ShortName", "RubyDisplayName", "RubyShortName"],
              "DesktopApp": ["DisplayName", "LnkFileName", "LocalizeName", "RubyDisplayName", "NeedReserve",
                             "IsInstalled", "IsDualMode"]}
FLAGS = ["0", "1", "", "yes", " 1", "-1", "+0", "00", "2", "7abc", "0x1", "-", "false", "  0", "4294967295"]
VERSIONS = ["1.2.3.4", "6.2.9200.16384", "1.2", "", "1..3", "a.b", "1.2.3.4.5", " 1. 2.3.4", "99999.0.0.1",
            "-1.0.65536.70000", "1.2.3.4abc", "1,2", "0.0.0.0", "+3.4"]
PATHS = ["C:\\Start\\Mail.lnk", "%ProgramData%\\Mail.lnk", "%PROGRAMDATA%\\a.lnk", "%", "%%", "",
         "%NoSuchVariable1%\\b",
         "%ProgramData%" + "x" * 245, "%ProgramData%" + "y" * 246, "%ProgramData%" + "z" * 247, "C:\\" + "w" * 300]
LETTERS = "abcxyzABCXYZ0189 _/\\-.&<>\"';=\u00e9\u30e1\u30fc\u4e00\uff21\U0001f600"


class Maker:
    def __init__(self, seed):
        self._random = random.Random(seed)

    def document(self, is_whole):
        text = self._random.choice(["", '<?xml version="1.0" encoding="UTF-8"?>', '<?xml version="1.0"?>\r\n'])
        text += self._element("Applications", 0, ' xmlns:x="x"') + self._random.choice(["", "\r\n", "<!-- end -->"])
        document = text.encode()
        if is_whole or self._random.random() < 0.7:
            return document
        return document[: self._random.randrange(len(document))]

    def _element(self, name, depth, extra=""):
        chance = self._random.random
        tag = self._cased(name)
        text = f"<{tag}{extra}{self._attributes(name)}"
        children = [self._random.choice(BELOW.get(name, ELEMENTS)) if chance() < 0.8 else self._random.choice(ELEMENTS)
                    for _ in range(self._random.randrange(4 if depth else 6) if depth < 7 else 0)]
        if not children and chance() < 0.7:
            return text + self._random.choice(["/>", " />"])
        text += ">"
        for child in children:
            text += self._filling() + self._element(child, depth + 1)
        return text + self._filling() + f"</{tag}>"

    def _attributes(self, element):
        chance = self._random.random
        names = [name for name in ATTRIBUTES.get(element, ["DisplayName"]) if chance() < 0.6]
        if chance() < 0.2:
            known = [name for names in ATTRIBUTES.values() for name in names]
            names.append(self._random.choice(known + ["Other", "x:Version"]))
        if names and chance() < 0.1:
            # Another attribute to XML, the same one to the catalogue.
            names.append(self._random.choice(names).upper())
        self._random.shuffle(names)
        text = ""
        used = set()
        for name in names:
            tag = self._cased(name)
            if tag not in used:
                used.add(tag)
                value = self._value(name)
                quote = self._random.choice("\"\"'")
                value = value.replace("&", "&amp;").replace("<", "&lt;").replace(quote, f"&#{ord(quote)};")
                text += f" {tag}={quote}{value}{quote}"
        return text

    def _value(self, name):
        if self._random.random() < 0.1:
            return ""
        if name.lower() in ("needreserve", "isinstalled", "isdualmode"):
            return self._random.choice(FLAGS)
        if name.lower() == "version":
            return self._random.choice(VERSIONS)
        if name.lower() == "lnkfilename":
            return self._random.choice(PATHS)
        length = self._random.choice([1, 3, 8]) if self._random.random() < 0.99 else 300
        return "".join(self._random.choice(LETTERS) for _ in range(length))

    def _filling(self):
        return self._random.choice(["", "", "", "\r\n  ", "<!-- <Package/> -->", "text &amp; more",
                                    "<![CDATA[<DesktopApp/>]]>", "<?target words?>"])

    def _cased(self, name):
        if self._random.random() < 0.9 or ":" in name:
            return name
        return "".join(self._random.choice([c.upper(), c.lower()]) for c in name)


def escaped(calls):
    def line(call):
        return call.replace("\\", "\\\\").replace("\n", "\\n").replace("\r", "\\r") + "\n"
    return "".join(line(call) for call in calls).encode()


def case(document):
    catalogue = Catalogue(document)
    blocks = [document, b"1" if catalogue.is_whole else b"0",
              escaped(catalogue.calls(False)), escaped(catalogue.calls(True))]
    return b"".join(b"%d\n%s" % (len(block), block) for block in blocks)


def documents(seed, is_simple):
    maker = Maker(seed)
    while True:
        document = maker.document(is_simple)
        if not is_simple or len(document) < 8000:
            yield document


def main():
    count, seed = int(sys.argv[1]), int(sys.argv[2])
    for document in itertools.islice(documents(seed, "--simple" in sys.argv), count):
        sys.stdout.buffer.write(case(document))


if __name__ == "__main__":
    main()
