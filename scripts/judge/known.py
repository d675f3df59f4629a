"""Reads the lists of known exceptions in tests/: an entry is a line "FILE: text" and indented lines that belong to it."""


def read_known(path, needed):
    """The entries of a list, each a tuple of its lines without their indent. `needed`: the lines that an entry has at
    least. A line that begins with "#" is a comment."""
    entries = []
    with open(path, encoding="utf-8") as file:
        for number, line in enumerate(file, 1):
            if not line.strip() or line.startswith("#"):
                continue
            if not line.startswith(" "):
                entries.append([number])
            elif not entries:
                raise ValueError(f"{path}:{number}: belongs to nothing")
            entries[-1].append(line.strip())
    for entry in entries:
        if len(entry) - 1 < needed:
            raise ValueError(f"{path}:{entry[0]}: the reason is missing")
    return [tuple(entry[1:]) for entry in entries]
