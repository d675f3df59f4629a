"""Makes documents of the kinds that the library reads: mostly as they should be, with all that is odd among the words of
a kind."""

import random

LETTERS = "abcxyzABCXYZ0189 _/\\-.&<>\"';=\u00e9\u30e1\u30fc\u4e00\uff21\U0001f600"


class Words:
    """What documents of a kind consist of; values are made by the kind's own class."""

    root = ""
    elements = []  # any of them
    below = {}  # those that belong into an element
    attributes = {}  # of an element
    other_attributes = []

    def __init__(self, chance):
        self._random = chance

    def strays(self):
        """How many of the elements of a document may be any, by chance."""
        return 0.2

    def value(self, name):
        raise NotImplementedError

    def text(self):
        length = self._random.choice([1, 3, 8]) if self._random.random() < 0.99 else 300
        return "".join(self._random.choice(LETTERS) for _ in range(length))


class Maker:
    def __init__(self, words, seed):
        self._random = random.Random(seed)
        self._words = words(self._random)
        self._strays = 0.0

    def document(self, is_whole):
        self._strays = self._words.strays()
        text = self._random.choice(["", '<?xml version="1.0" encoding="UTF-8"?>', '<?xml version="1.0"?>\r\n'])
        text += self._element(self._words.root, 0, ' xmlns:x="x"')
        text += self._random.choice(["", "\r\n", "<!-- end -->"])
        document = text.encode()
        if is_whole or self._random.random() < 0.7:
            return document
        return document[: self._random.randrange(len(document))]

    def _element(self, name, depth, extra=""):
        chance = self._random.random
        elements = self._words.elements
        tag = self._cased(name)
        text = f"<{tag}{extra}{self._attributes(name)}"
        children = [self._random.choice(self._words.below.get(name, elements)) if chance() >= self._strays
                    else self._random.choice(elements)
                    for _ in range(self._random.randrange(4 if depth else 6) if depth < 7 else 0)]
        if not children and chance() < 0.7:
            return text + self._random.choice(["/>", " />"])
        text += ">"
        for child in children:
            text += self._filling() + self._element(child, depth + 1)
        return text + self._filling() + f"</{tag}>"

    def _attributes(self, element):
        chance = self._random.random
        known = self._words.attributes
        names = [name for name in known.get(element, ["DisplayName"]) if chance() < 0.6]
        if chance() < 0.2:
            names.append(self._random.choice([name for names in known.values() for name in names] +
                                             self._words.other_attributes))
        if names and chance() < 0.1:
            # Another attribute to XML, the same one to the library.
            names.append(self._random.choice(names).upper())
        self._random.shuffle(names)
        text = ""
        used = set()
        for name in names:
            tag = self._cased(name)
            if tag not in used:
                used.add(tag)
                value = "" if self._random.random() < 0.1 else self._words.value(name)
                quote = self._random.choice("\"\"'")
                value = value.replace("&", "&amp;").replace("<", "&lt;").replace(quote, f"&#{ord(quote)};")
                text += f" {tag}={quote}{value}{quote}"
        return text

    def _filling(self):
        return self._random.choice(["", "", "", "\r\n  ", "<!-- <Package/> -->", "text &amp; more",
                                    "<![CDATA[<DesktopApp/>]]>", "<?target words?>"])

    def _cased(self, name):
        if self._random.random() < 0.9 or ":" in name:
            return name
        return "".join(self._random.choice([c.upper(), c.lower()]) for c in name)
