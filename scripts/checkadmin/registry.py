"""Registry files, as "reg import" reads them: the part of the format that ours use."""

import re


def parse_reg(text):
    """The keys of a registry file with their values; raises ValueError for what is none."""
    lines = text.split("\r\n")
    if lines[0] != "Windows Registry Editor Version 5.00" or lines[1] or "\n" in "".join(lines):
        raise ValueError("no registry file, or not with the line ends of Windows")
    keys = {}
    values = None
    for line in lines[2:]:
        if not line or line.startswith(";"):
            continue
        key = re.fullmatch(r"\[(HKEY_[A-Z_]+\\[^\]]+)\]", line)
        value = re.fullmatch(r'"(\w+)"=(-|dword:[0-9a-f]{8})', line)
        if key:
            values = keys.setdefault(key[1], {})
        elif value and values is not None:
            values[value[1]] = value[2]
        else:
            raise ValueError(f"not understood: {line}")
    return keys
