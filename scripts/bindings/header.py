"""Reads what include/QanHelper.h declares."""

import re
from collections import namedtuple

# Types as the header writes them; arguments as (type, name).
Function = namedtuple("Function", "name result arguments")


def without_comments(text):
    return re.sub(r"/\*.*?\*/|//[^\n]*", " ", text, flags=re.S)


def read_arguments(text):
    """Of "LPCWSTR name, BOOL* flag"."""
    if text.strip() in ("", "void"):
        return ()
    pairs = (re.fullmatch(r"\s*(.*?[\s*])\s*(\w+)\s*", part, flags=re.S) for part in text.split(","))
    return tuple((re.sub(r"\s+", "", pair.group(1)), pair.group(2)) for pair in pairs)


def read_functions(header):
    """All functions, in their order. Each must have the calling convention QANH_CALL."""
    text = without_comments(header)
    functions = [Function(name, result, read_arguments(arguments))
                 for result, name, arguments in re.findall(r"(\w+) QANH_CALL (Qanh\w+)\((.*?)\);", text, flags=re.S)]
    if len(functions) != len(re.findall(r"\bQanh\w+\s*\(", text)):
        raise ValueError("a function is not declared as the others are")
    return functions


def read_constants(header):
    """The values of QANH_SEARCH_..., QANH_TILE_... and QANH_E_... by their names."""
    return {name: int(value, 0) for name, value in
            re.findall(r"#define (QANH_(?:SEARCH|TILE|E)_\w+)\s+\(?(?:\(HRESULT\))?(0x[0-9A-F]+|\d+)",
                       without_comments(header))}


def read_known_results(text, entry):
    """{value: (name, sentence)} of a table of a language; the entry is what stands before its value."""
    rows = re.findall(entry + r'0x([0-9A-F]{8})\W*?"(\w+)",\s*((?:"[^"\n]*"\s*)+)[})]', text)
    return {int(value, 16): (name, "".join(re.findall(r'"([^"]*)"', sentence))) for value, name, sentence in rows}
