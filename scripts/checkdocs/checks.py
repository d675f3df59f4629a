"""What is asked of a code block of each kind. Each check returns what is wrong; "" when nothing is."""

import ast
import glob
import json
import os
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree

sys.path.append(os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "checkadmin"))
from registry import parse_reg  # noqa: E402

# Shows a faulty catalogue on purpose.
FAULTY_CATALOGUES = ("docs/qanh.md",)
OUR_FOLDERS = ("admin", "cmake", "docs", "examples", "scripts", "src", "standin", "tests", "tools", ".ci")


class NoCompiler(Exception):
    """The block cannot be checked on this machine."""


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def run(*command):
    """What a command says when it fails."""
    if not shutil.which(command[0]):
        raise NoCompiler(command[0])
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8",
                            errors="replace", check=False)
    return "" if result.returncode == 0 else result.stdout or f"{command[0]} fails"


def compile_with(command, suffix, text):
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "block" + suffix)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        return run(*command, path)


def check_compiled(block, compiler, suffix, headers):
    """A block that includes something is a whole file; others are declarations, or else statements."""
    command = (*compiler, "-fsyntax-only", "-Wall", "-Wextra", "-Wno-unused", "-Werror", "-Iinclude")
    if "#include" in block.text:
        return compile_with(command, suffix, block.text)
    start = "".join(f"#include {header}\n" for header in headers)
    result = compile_with(command, suffix, start + block.text)
    if result:
        body = f"void Block(const wchar_t* path)\n{{\n{block.text}}}\n"
        result = "" if not compile_with(command, suffix, start + body) else result
    return result


def check_c(block):
    return check_compiled(block, ("x86_64-w64-mingw32-gcc-posix", "-std=c11"), ".c", ("<windows.h>", '"QanHelper.h"'))


def check_cpp(block):
    wrapper = ('"QanHelper.hpp"',) if os.path.exists("include/QanHelper.hpp") else ()
    return check_compiled(block, ("x86_64-w64-mingw32-g++-posix", "-std=c++17"), ".cpp", ('"QanHelper.h"', *wrapper))


def check_csharp(blocks):
    """All blocks of a page are one program, with the declarations that come with the library where it uses them; each
    begins with "using" lines, so each is a file."""
    ours = glob.glob("bindings/csharp/*.cs") if any("using QanHelper;" in block.text for block in blocks) else []
    with tempfile.TemporaryDirectory() as folder:
        for index, block in enumerate(blocks):
            with open(os.path.join(folder, f"block{index}.cs"), "w", encoding="utf-8") as file:
                file.write(block.text)
        return run("mcs", "-target:library", "-nologo", f"-out:{folder}/blocks.dll", *glob.glob(f"{folder}/*.cs"),
                   *ours)


def check_pascal(block):
    """The file of a unit has its name."""
    unit = re.match(r"unit (\w+);", block.text)
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, (unit[1] if unit else "block") + ".pas")
        with open(path, "w", encoding="utf-8") as file:
            file.write(block.text)
        return run("fpc", "-Mdelphiunicode", "-Cn", "-v0e", f"-FU{folder}", path)


OLDEST_RUST = (1, 82)  # has "unsafe extern"


def rust_version():
    """That of the compiler at hand."""
    if not shutil.which("rustc"):
        raise NoCompiler("rustc")
    text = subprocess.run(["rustc", "--version"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, encoding="utf-8",
                          check=False).stdout
    found = re.match(r"rustc (\d+)\.(\d+)", text)
    return (int(found[1]), int(found[2])) if found else (0, 0)


def check_rust(block):
    """Everything but code is made of it. For Windows when the compiler has its libraries, or else for this machine, on
    which an import is of another kind."""
    if rust_version() < OLDEST_RUST:
        raise NoCompiler("rustc {}.{}".format(*OLDEST_RUST))
    target = "x86_64-pc-windows-gnu"
    library = subprocess.run(["rustc", "--print", "target-libdir", "--target", target], stdout=subprocess.PIPE,
                             stderr=subprocess.DEVNULL, encoding="utf-8", check=False).stdout.strip()
    options, text = ["--target", target], block.text
    if not os.path.isdir(library):
        options, text = [], text.replace('kind = "raw-dylib"', 'kind = "dylib"')
    with tempfile.TemporaryDirectory() as folder:
        return compile_with(("rustc", "--edition=2021", "--crate-type=lib", "--emit=metadata", "-Dwarnings", *options,
                             "--out-dir", folder), ".rs", text)


def check_python(block):
    try:
        ast.parse(block.text)
    except SyntaxError as error:
        return str(error)
    return ""


def check_xml(block):
    try:
        root = ElementTree.fromstring(block.text.encode())
    except ElementTree.ParseError as error:
        return str(error)
    if block.page == "docs/preset.md" and block.text not in [read(path) for path in glob.glob("admin/presets/*.xml")]:
        return "this is none of the files in admin/presets/"
    if root.tag == "Applications" and block.page not in FAULTY_CATALOGUES:
        return compile_with(("xmllint", "--noout", "--schema", "admin/AppNameList.xsd"), ".xml", block.text)
    return ""


def check_json(block):
    try:
        json.loads(block.text)
    except ValueError as error:
        return str(error)
    return ""


def check_reg(block):
    try:
        parse_reg(block.text.replace("\n", "\r\n"))
    except ValueError as error:
        return str(error)
    return ""


def check_cmake(block):
    """That it can be read: the commands that want a project do nothing."""
    nothing = "".join(f"function({name})\nendfunction()\n" for name in (
        "add_executable", "find_package", "project", "target_compile_features", "target_link_libraries",
        "target_link_options"))
    return compile_with(("cmake", "-P"), ".cmake", nothing + block.text)


def sources_of(script):
    """The text of a script and of what it runs."""
    text = read(script)
    for folder in set(re.findall(r"scripts/(\w+)\b", text)):
        text += "".join(read(path) for path in glob.glob(f"scripts/{folder}/*.py"))
    return text


def check_command(words):
    """A command that the page tells the reader to type, run in the project's folder."""
    for word in words:
        path = word.replace("\\", "/")
        if path.split("/")[0] in OUR_FOLDERS and "/" in path and "*" not in path and not os.path.exists(path):
            return f"there is no {path}"
    program = words[0].replace("\\", "/") if words else ""
    if program.startswith("scripts/") or program == ".ci/run":
        if not os.access(program, os.X_OK):
            return f"{program} is no script"
        known = sources_of(program)
        for word in words[1:]:
            option = re.match(r"--?[A-Za-z][\w-]*", word)
            if option and option[0] not in known:
                return f"{program} knows no {option[0]}"
    if re.search(r"(^|/)qanh(\.exe)?$", program):
        return check_tool(words[1:])
    if program == "cmake" and "--preset" in words:
        preset = words[words.index("--preset") + 1]
        if preset not in [known["name"] for known in json.loads(read("CMakePresets.json"))["configurePresets"]]:
            return f"there is no preset {preset}"
    return ""


def check_tool(arguments):
    """A command line of the companion tool."""
    described = "".join(read(path) for path in glob.glob("tools/qanh/*.cpp"))
    commands = re.findall(r'AddCommand\(\s*tool,\s*(?:values,\s*)?"(\w+)"', described)
    command = next((word for word in arguments if word in commands), None)
    if not command:
        return f"qanh has no such command: {' '.join(arguments)}"
    for word in arguments:
        if word.startswith("--") and f'"{word}"' not in described:
            return f"qanh knows no {word}"
    return ""


def commands_of(text):
    """The commands of a shell script, each as its words; what stands in front of them in a line is left out."""
    commands = []
    for line in text.replace("\\\n", " ").split("\n"):
        try:
            words = shlex.split(line, comments=True)
        except ValueError:
            continue  # "bash -n" speaks of it, or a text goes on in the next line
        while words and (re.match(r"\w+=", words[0]) or words[0] in ("wine", "exec", "sudo")):
            words = words[1:]
        if words:
            commands.append(words)
    return commands


def check_sh(block):
    result = compile_with(("bash", "-n"), ".sh", block.text)
    return result or next(filter(None, map(check_command, commands_of(block.text))), "")


def check_bat(block):
    for line in block.text.strip().split("\n"):
        result = check_command([word.strip('"') for word in re.findall(r'"[^"]*"|\S+', line)])
        if result:
            return result
    return ""


def check_console(block):
    for line in re.findall(r"^> (qanh .*)$", block.text, flags=re.MULTILINE):
        result = check_tool(shlex.split(line)[1:])
        if result:
            return result
    return ""


CHECKS = {
    "bat": check_bat, "c": check_c, "cmake": check_cmake, "console": check_console, "cpp": check_cpp,
    "json": check_json, "pascal": check_pascal, "python": check_python, "reg": check_reg, "rust": check_rust,
    "sh": check_sh, "xml": check_xml,
}
# Output, pictures and excerpts: "text" is looked for by those who follow the page.
UNCHECKED = ("", "log", "text")
