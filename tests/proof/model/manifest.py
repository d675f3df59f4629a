"""An independent model of what the library reads out of a manifest: made from what docs/manifest.md says, and from
nothing of the library's code.

Compared is what each of the operations comes to, and which sources of texts it asks Windows for: a line each, the
sources first."""

from nodes import lower, read_nodes, same_name

FULL_NAME = "full name"
NAME = "name"
PREFIX = "ms-resource:"
LONGEST_TEXT = 255  # that Windows gives, and that a package's display name has


class EndsEarly(Exception):
    """There is no next tag, and no end of the document."""


def first_units(text, count):
    return text.encode("utf-16-le")[: 2 * count].decode("utf-16-le", "surrogatepass")


class Walk:
    """One way through the start tags of a document, forwards."""

    def __init__(self, nodes, is_whole):
        self._nodes = iter([node for node in nodes if node.kind == "start"])
        self._is_whole = is_whole

    def next(self, name):
        """The next element of this name; none at the end."""
        for node in self._nodes:
            if same_name(node.name, name):
                return node
        if not self._is_whole:
            raise EndsEarly
        return None


def value_of(node, wanted):
    """The first attribute of that name; none when it is missing, or the element."""
    for name, value in node.attributes if node else []:
        if same_name(name, wanted):
            return value
    return None


def sources_of(reference):
    key = reference[len(PREFIX) :]
    if key.startswith("///"):
        return [f"@{{{FULL_NAME}?{PREFIX}//{NAME}/{key[3:]}}}"]
    key = key.strip("/")
    return [f"@{{{FULL_NAME}?{PREFIX}//{NAME}/resources/{key}}}", f"@{{{FULL_NAME}? {PREFIX}//{NAME}/{key}}}"]


class Manifest:
    """`text_of(source)` is what Windows knows, None for nothing."""

    def __init__(self, document, text_of):
        self._nodes, self._is_whole = read_nodes(document)
        self._text_of = text_of
        self._asked = []

    def results(self):
        return [*self._told(self._read()), *self._told(self._check()), *self._told(self._display_name())]

    def _told(self, results):
        told = list(results)
        asked, self._asked = self._asked, []
        return [f"asked {source}" for source in asked] + told

    def _resolved(self, name):
        """The text of a reference; None when it leads nowhere."""
        for source in sources_of(name):
            self._asked.append(source)
            text = self._text_of(source)
            if text is not None:
                return first_units(text, LONGEST_TEXT)
        return None

    def _name(self, value):
        name = lower(value or "")
        if name.startswith(PREFIX):
            text = self._resolved(name)
            return name if text is None else text
        return name

    def _names(self):
        """Each name in the order in which it is read, display names and short names in turn."""
        walk = Walk(self._nodes, self._is_whole)
        walk.next("Applications")
        while walk.next("Application"):
            yield self._name(value_of(walk.next("VisualElements"), "DisplayName"))
            yield self._name(value_of(walk.next("DefaultTile"), "ShortName"))

    def _read(self):
        applications = []
        end = "whole"
        try:
            names = self._names()
            for display in names:
                applications.append((display, next(names)))
        except EndsEarly:
            end = "early"
        for display, short in applications:
            yield f"display {display}"
            yield f"short {short}"
        yield f"read {end}"

    def _check(self):
        try:
            for name in self._names():
                if lower(name).startswith(PREFIX):
                    yield "checked: 0 on the way"
                    return
        except EndsEarly:
            yield "checked: 0 early"
            return
        yield "checked: 1 whole"

    def _display_name(self):
        walk = Walk(self._nodes, self._is_whole)
        try:
            walk.next("Applications")
        except EndsEarly:
            yield "display name: early"
            return
        try:
            walk.next("Application")
            element = walk.next("VisualElements")
        except EndsEarly:
            element = None
        if not element:
            yield "display name: failed"
            return
        try:
            is_one = walk.next("Application") is None
        except EndsEarly:
            is_one = True
        if not is_one:
            yield "display name: several"
            return
        value = value_of(element, "DisplayName")
        name = lower(value or "")
        if name.startswith(PREFIX):
            text = self._resolved(name)
            yield "display name: failed, " if text is None else f"display name: found, {text}"
        else:
            result = "none" if value is None else "found"
            yield f"display name: {result}, {first_units(name, LONGEST_TEXT)}"


def names_by_system(steps):
    """The names that the system's list gives, each step being one application: ("name", TEXT), or what fails at it."""
    for step, text in steps:
        if step == "list":
            return
        if step in ("name", "next"):
            yield f"display {text}"
        if step == "next":
            return
