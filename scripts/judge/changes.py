"""Finds the places of a C++ source where it can be changed in a small way that a test should notice."""

import re
from dataclasses import dataclass


@dataclass(frozen=True)
class Change:
    path: str  # from the project's folder
    line: int  # number of the first line
    before: str  # whole lines
    after: str  # what stands in their place

    def key(self):
        """What the list of known survivors names it by: stays the same when lines are put in above."""
        return f"{self.path}: {_one_line(self.before)}", f"=> {_one_line(self.after) or '(dropped)'}"

    def __str__(self):
        first, second = self.key()
        return f"{first.replace(': ', f':{self.line}: ', 1)}\n    {second}"

    def apply(self, text):
        """The text of the file with the change."""
        lines = text.split("\n")
        first = self.line - 1
        count = self.before.count("\n") + 1
        assert lines[first : first + count] == self.before.split("\n")
        lines[first : first + count] = [self.after] if self.after else []
        return "\n".join(lines)


def _one_line(text):
    return " ".join(text.split())


# Wherever it stands in code: what is replaced, and by what. The patterns know the project's format.
_REPLACEMENTS = [
    (re.compile(pattern), replacement)
    for pattern, replacement in [
        (r" == ", " != "), (r" != ", " == "), (r" && ", " || "), (r" \|\| ", " && "),
        (r" < ", " <= "), (r" <= ", " < "), (r" > ", " >= "), (r" >= ", " > "),
        (r" \+ ", " - "), (r" - ", " + "), (r" \+= ", " -= "), (r"\+\+(?=\w)", "--"), (r"--(?=\w)", "++"),
        (r"\bFAILED\(", "SUCCEEDED("), (r"\bSUCCEEDED\(", "FAILED("),
        (r"\btrue\b", "false"), (r"\bfalse\b", "true"), (r"\bTRUE\b", "FALSE"), (r"\bFALSE\b", "TRUE"),
        (r"\bS_OK\b", "S_FALSE"), (r"\bS_FALSE\b", "S_OK"),
        (r"\bE_(?!ABORT)[A-Z]+\b", "E_ABORT"),
        (r"(?<![\w)])!(?=[\w(:])", ""),  # a negation
        (r"\b(if|while) \((?!FAILED|SUCCEEDED|!)([^;]*)\) \{$", r"\1 (!(\2)) {"),  # a condition
        (r"\bif \((.*); ([^;]*)\) \{$", r"if (\1; !(\2)) {"),
        (r" \? ([^?:]+) : ([^?:;,)]+)", r" ? \2 : \1"),
        (r" \| \w+", ""),  # a flag
        (r"\bbreak;", "continue;"), (r"\bcontinue;", ""), (r"\breturn;", ""),
    ]
]
_NUMBER = re.compile(r"(?<![\w.'])(0x[0-9A-Fa-f]+|\d+)(?![\w.]*\.)")
_TEXT = re.compile(r'(?<!extern )(L?)"((?:[^"\\]|\\.)*)"')
_NO_CODE = ("#", "template", "namespace", "static_assert", "using", "extern")
_DROPPED = re.compile(r"\s+(?!(return|break|continue|using|throw|case|static|constexpr|friend|public|private|else)\b)"
                      r"[\w:*&+(-].*;", re.DOTALL)
_DECLARATION = re.compile(r"\s+(const |auto\b)?.*[\w>*&] [*&]*\w+(\[[^]]*\])? = ", re.DOTALL)


def _without_texts(line):
    """The line, as long as before, without its comment and the contents of its literals."""
    line = re.sub(r'"(?:[^"\\]|\\.)*"', lambda match: '"' + "\0" * (len(match.group()) - 2) + '"', line)
    line = re.sub(r"'(?:[^'\\]|\\.)+'", lambda match: "'" + "\0" * (len(match.group()) - 2) + "'", line)
    return re.sub(r"//.*", lambda match: " " * len(match.group()), line)


def _changed_lines(line):
    """The line, changed in each way."""
    code = _without_texts(line)
    for pattern, replacement in _REPLACEMENTS:
        for match in pattern.finditer(code):
            # The groups are to have the texts that `code` lacks.
            whole = pattern.match(line, match.start()) if "\0" in match.group() else match
            if whole:
                yield line[: match.start()] + whole.expand(replacement) + line[whole.end() :]
    for match in _NUMBER.finditer(code):
        yield line[: match.start()] + str(int(match.group(), 0) + 1) + line[match.end() :]
    for match in _TEXT.finditer(line):
        if code[match.start(2) - 1] == '"':
            yield line[: match.start(2)] + "~" + line[match.start(2) :]


def find_changes(path, text):
    """All changes of a source file."""
    lines = text.split("\n")
    begins = True  # a statement may begin here
    first = 0  # where the present one began
    for index, line in enumerate(lines):
        code = _without_texts(line).rstrip()
        if not code.strip():
            continue
        if begins:
            first = index
        begins = code.endswith((";", "{", "}", ":")) or code.startswith("#")
        if code.lstrip().startswith(_NO_CODE):
            continue
        for after in dict.fromkeys(_changed_lines(line)):
            yield Change(path, index + 1, line, after)
        if code.endswith(";") and not code.endswith(("= delete;", "= default;")):
            statement = "\n".join(lines[first : index + 1])
            if (_DROPPED.fullmatch(statement) and not _DECLARATION.match(statement) and
                    _is_whole("\n".join(_without_texts(part) for part in lines[first : index + 1]))):
                yield Change(path, first + 1, statement, "")


def _is_whole(code):
    return all(code.count(opened) == code.count(closed) for opened, closed in ("()", "{}"))
