"""Manifests, and what the model makes of each.

A case is five blocks: the file; the texts that Windows knows, a line each with a tab behind the source; what the
operations that read the XML come to; the applications as the system's interfaces tell them, "name", "application",
"value", "next" or "list" and a tab and the name; and the names that are read by these.

"application" and "value" fail for this application; "next" fails behind it, "list" before it."""

from blocks import lines
from documents import Words
from manifest import Manifest, names_by_system

PREFIXES = ["ms-resource:"] * 6 + ["MS-RESOURCE:", " ms-resource:", "ms-resource", "Ms-Resource:"]
KEYS = ["Name", "/Strings/Title/", "///Files/a", "", "/", "///", "//b//", "Resources/App Name", "////", "{0}", "%s",
        "?", "\u30e1", "ms-resource:Name"]
TEXTS = ["Resolved", "Mail", "", "ms-resource:again", "MS-Resource:Again", "x" * 255, "Y" * 256, "Z" * 600,
         "\u30e1\u30fc"]
STEPS = ["name"] * 8 + ["application", "value", "next", "list"]


class ManifestWords(Words):
    root = "Package"
    elements = ["Package", "Applications", "Application", "VisualElements", "DefaultTile", "ApplicationsX",
                "Applicatio", "x:VisualElements", "x:Application", "Unknown", "DisplayName"]
    below = {"Package": ["Identity", "Applications", "Applications", "Properties"], "Applications": ["Application"],
             "Application": ["VisualElements"], "VisualElements": ["DefaultTile", "DefaultTile", "SplashScreen"],
             "DefaultTile": ["Unknown"], "SplashScreen": ["Unknown"], "Identity": ["Unknown"],
             "Properties": ["Unknown"], "Unknown": ["Unknown"]}
    attributes = {"VisualElements": ["DisplayName", "Logo"], "DefaultTile": ["ShortName", "ShowName"],
                  "x:VisualElements": ["DisplayName"], "Application": ["Id", "DisplayName"], "Package": ["DisplayName"]}
    other_attributes = ["ShortName", "x:DisplayName", "x:ShortName", "DisplayNames", "ShortNam", "xmlns:DisplayName"]

    def strays(self):
        return self._random.choice([0, 0.03, 0.1, 0.3])

    def value(self, name):
        if self._random.random() < 0.3:
            return self._random.choice(PREFIXES) + self._random.choice(KEYS)
        if self._random.random() < 0.02:
            return "A" * self._random.choice([254, 255, 256, 1000])
        return self.text()


class Texts:
    """What Windows knows, decided when it is asked for the first time."""

    def __init__(self, chance):
        self._random = chance
        self.known = {}

    def __call__(self, source):
        if source not in self.known:
            self.known[source] = self._random.choice(TEXTS) if self._random.random() < 0.7 else None
        return self.known[source]


def case(document, chance):
    texts = Texts(chance)
    results = Manifest(document, texts).results()
    known = "".join(f"{source}\t{text}\n" for source, text in texts.known.items() if text is not None)
    steps = [(chance.choice(STEPS), chance.choice(TEXTS)) for _ in range(chance.randrange(6))]
    told = "".join(f"{step}\t{text}\n" for step, text in steps)
    return [document, known.encode(), lines(results), told.encode(), lines(names_by_system(steps))]
