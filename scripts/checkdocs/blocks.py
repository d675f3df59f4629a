"""The code blocks of a page in Markdown."""

import dataclasses
import re


@dataclasses.dataclass
class Block:
    page: str
    line: int  # of its first line of text
    kind: str  # the word behind the fence, such as "c"; "" when there is none
    text: str
    before: str  # the last line of text between it and the block before it

    @property
    def place(self):
        return f"{self.page}:{self.line}"


def blocks_of(page, text):
    """All blocks in their order; raises ValueError for one that does not end."""
    blocks = []
    lines = text.split("\n")
    before = ""
    index = 0
    while index < len(lines):
        fence = re.match(r"( *)```(\w*)$", lines[index])
        if not fence:
            if lines[index].strip():
                before = lines[index].strip()
            index += 1
            continue
        indent, kind = fence.groups()
        end = index + 1
        while end < len(lines) and lines[end] != indent + "```":
            end += 1
        if end == len(lines):
            raise ValueError(f"{page}:{index + 1}: this block does not end")
        inside = [line.removeprefix(indent) for line in lines[index + 1:end]]
        blocks.append(Block(page, index + 2, kind, "\n".join(inside) + "\n", before))
        before = ""
        index = end + 1
    return blocks


def read_blocks(page):
    with open(page, encoding="utf-8") as file:
        return blocks_of(page, file.read())
