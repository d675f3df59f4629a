"""The pages of the project, their headings and their links."""

import glob
import os
import re

# Stands in the root of the zip.
PACKAGE_PAGE = "cmake/package/README.md"


def pages():
    found = ["README.md", "CONTRIBUTING.md", "CHANGELOG.md", PACKAGE_PAGE, "standin/README.md"]
    for pattern in ("docs/*.md", "bindings/**/*.md"):
        found += sorted(glob.glob(pattern, recursive=True))
    return found


def without_blocks(text):
    return re.sub(r"^( *)```.*?^\1```$", "", text, flags=re.MULTILINE | re.DOTALL)


def anchors_of(text):
    """The names that links can give to the headings of a page."""
    anchors = []
    for heading in re.findall(r"^#+ (.*)$", without_blocks(text), flags=re.MULTILINE):
        heading = re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", heading)
        name = re.sub(r"[^\w\- ]", "", heading.strip().lower()).replace(" ", "-")
        count = sum(re.fullmatch(re.escape(name) + r"(-\d+)?", anchor) is not None for anchor in anchors)
        anchors.append(f"{name}-{count}" if count else name)
    return anchors


def links_of(text):
    """Targets of the links to other files and to headings."""
    targets = re.findall(r"\]\(([^)\s]+)\)", without_blocks(text))
    return [target for target in targets if not re.match(r"[a-z]+:", target)]


def broken_links(page, folder, read):
    """What is wrong with the links of a page that stands in this folder; read gives the text of a file."""
    broken = []
    for target in links_of(read(page)):
        path, _, anchor = target.partition("#")
        file = os.path.normpath(os.path.join(folder, path)) if path else page
        if not os.path.exists(file):
            broken.append(f"{page}: {target} leads nowhere")
        elif anchor and anchor not in anchors_of(read(file)):
            broken.append(f"{page}: {target}: there is no such heading")
    return broken


def unknown_names(page, text, source):
    """Operations of the library and scripts that a page speaks of, and that are not there."""
    operations = sorted(set(re.findall(r"\bCQanh\w+::\w+", text)))
    unknown = [f"{page}: the library has no {name}" for name in operations if name not in source]
    scripts = sorted(set(re.findall(r"`(scripts/[\w.-]+)", text)))
    return unknown + [f"{page}: there is no {name}" for name in scripts if not os.path.exists(name)]
