"""How cases are told: a block is a number of bytes in a line of its own, and so many bytes."""


def block(data):
    return b"%d\n%s" % (len(data), data)


def escaped(text):
    """In one line, with a backslash before "n", "r", "t" and itself."""
    return text.replace("\\", "\\\\").replace("\n", "\\n").replace("\r", "\\r").replace("\t", "\\t")


def lines(texts):
    """A line each."""
    return "".join(escaped(text) + "\n" for text in texts).encode()
