"""A document's tags, by a parser that has nothing to do with the library's."""

import re
import xml.parsers.expat
from dataclasses import dataclass, field

_TAG = re.compile(rb"""<(?:[^"'>]|"[^"]*"|'[^']*')*>""")
_SMALL = {ord(capital): ord(capital) + 32 for capital in "ABCDEFGHIJKLMNOPQRSTUVWXYZ"}


def lower(text):
    """With the capital letters of ASCII as small ones."""
    return text.translate(_SMALL)


def same_name(name, expected):
    """Whole names, ignoring the case of ASCII letters."""
    return lower(name) == lower(expected)


def units(text):
    """Its length in characters of 16 bits."""
    return len(text.encode("utf-16-le")) // 2


@dataclass
class Node:
    """A tag. An end tag counts as one deeper than its element."""

    kind: str  # "start" or "end"
    name: str
    depth: int
    attributes: list = field(default_factory=list)


def read_nodes(document):
    """The tags up to the end of the document or up to what is no XML, and whether the end was reached. An element that
    is empty has no end tag."""
    nodes = []
    empty = []
    parser = xml.parsers.expat.ParserCreate()
    parser.ordered_attributes = True

    def local(name):
        return name.rsplit(":", 1)[-1]

    def start(name, attributes):
        pairs = [(local(attributes[i]), attributes[i + 1]) for i in range(0, len(attributes), 2)]
        nodes.append(Node("start", local(name), len(empty), pairs))
        empty.append(_is_empty_tag(document, parser.CurrentByteIndex))

    def end(name):
        if not empty.pop():
            nodes.append(Node("end", local(name), len(empty) + 1))

    parser.StartElementHandler = start
    parser.EndElementHandler = end
    try:
        parser.Parse(document, True)
    except xml.parsers.expat.ExpatError:
        return nodes, False
    return nodes, True


def _is_empty_tag(document, place):
    return document[_TAG.match(document, place).end() - 2] == ord("/")
