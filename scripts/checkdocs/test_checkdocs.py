"""What checks the pages finds what is wrong, and follows a page as it stands."""

import os
import tempfile
import unittest

import checks
import console
import pages
import walkthrough
from blocks import Block, blocks_of

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


def block(text, kind="", page="docs/page.md"):
    return Block(page, 1, kind, text, "")


class Blocks(unittest.TestCase):
    def test_kind_line_and_what_stands_before(self):
        found = blocks_of("p.md", "# A\n\nSay:\n\n```sh\na\nb\n```\n\n```\nc\n```\n")
        self.assertEqual([(b.kind, b.line, b.text, b.before) for b in found],
                         [("sh", 6, "a\nb\n", "Say:"), ("", 11, "c\n", "")])

    def test_indented(self):
        self.assertEqual(blocks_of("p.md", "- A\n\n  ```c\n  int a;\n\n    b\n  ```\n")[0].text, "int a;\n\n  b\n")

    def test_one_that_does_not_end(self):
        with self.assertRaises(ValueError):
            blocks_of("p.md", "```c\nint a;\n")


class Links(unittest.TestCase):
    def test_names_of_headings(self):
        self.assertEqual(pages.anchors_of("# A b\n## `C` and [d](e.md)?\n# A b\n```\n# no\n```\n"),
                         ["a-b", "c-and-d", "a-b-1"])

    def test_links_outside_of_blocks_to_files_and_headings(self):
        self.assertEqual(pages.links_of("[a](b.md#c) ![p](p.png)\n```\n[x](y)\n```\n[w](https://example.org) [e](#f)"),
                         ["b.md#c", "p.png", "#f"])

    def test_broken_ones(self):
        with tempfile.TemporaryDirectory() as folder:
            page = os.path.join(folder, "a.md")
            with open(page, "w", encoding="utf-8") as file:
                file.write("# A\n[1](a.md#a) [2](#a) [3](#b) [4](c.md)\n")
            broken = pages.broken_links(page, folder, checks.read)
            self.assertEqual([problem.split(": ", 1)[1] for problem in broken],
                             ["#b: there is no such heading", "c.md leads nowhere"])


class Names(unittest.TestCase):
    def test_operations_and_scripts_that_are_not_there(self):
        text = "`CQanhA::B IN` and `CQanhA::C` and `scripts/none`"
        self.assertEqual(pages.unknown_names("p", text, 'L"CQanhA::B"'),
                         ["p: the library has no CQanhA::C", "p: there is no scripts/none"])


class Checks(unittest.TestCase):
    def setUp(self):
        self.before = os.getcwd()
        os.chdir(ROOT)

    def tearDown(self):
        os.chdir(self.before)

    def assert_good(self, check, *texts):
        for text in texts:
            self.assertEqual(check(block(text)), "", text)

    def assert_bad(self, check, *texts):
        for text in texts:
            self.assertNotEqual(check(block(text)), "", text)

    def test_c(self):
        self.assert_good(checks.check_c, "HRESULT QanhInitialize(void);\n", "HMODULE m = LoadLibraryW(path);\n",
                         "#include <QanHelper.h>\nint main(void) { return QanhInitialize(); }\n")
        self.assert_bad(checks.check_c, "int QanhInitialize(int);\n", "return nothing;\n",
                        "#include <windows.h>\nint main(void) { return QanhInitialize(); }\n")

    def test_cpp(self):
        self.assert_good(checks.check_cpp, "auto result = [] { return QanhInitialize(); }();\n")
        self.assert_bad(checks.check_cpp, "auto result = QanhInitialise();\n")

    def test_other_languages(self):
        unit = "unit A;\ninterface\n%simplementation\nend.\n"
        self.assert_good(checks.check_pascal, unit % "function F: HRESULT; stdcall; external 'A.dll';\n")
        self.assert_bad(checks.check_pascal, unit % "function F: Hr; stdcall; external 'A.dll';\n", "end.\n")
        sharp = [block("class A { public int B; }\n"), block("class C { int D = new A().B; }\n")]
        self.assertEqual(checks.check_csharp(sharp), "")
        self.assertNotEqual(checks.check_csharp(sharp[1:]), "")

    def test_rust(self):
        start = '#[link(name = "A", kind = "raw-dylib")]\nunsafe extern "system" {\n    pub fn F(a: u32) -> i32;\n}\n'
        try:
            self.assert_good(checks.check_rust, start + "pub fn g() -> i32 {\n    unsafe { F(1) }\n}\n")
        except checks.NoCompiler as missing:
            self.skipTest(f"no {missing}")
        self.assert_bad(checks.check_rust, start + "pub fn g() -> i32 {\n    F(1)\n}\n",
                        start + 'pub fn g() -> i32 {\n    unsafe { F("1") }\n}\n',
                        start + "pub fn g() {\n    let unused = 1;\n}\n")

    def test_parsed_kinds(self):
        self.assert_good(checks.check_python, "a = 1\n")
        self.assert_bad(checks.check_python, "a = \n")
        self.assert_good(checks.check_json, '{"a": 1}\n')
        self.assert_bad(checks.check_json, "{a: 1}\n")
        self.assert_good(checks.check_cmake, "find_package(A REQUIRED)\n")
        self.assert_bad(checks.check_cmake, "find_package(A REQUIRED\n")
        start = "Windows Registry Editor Version 5.00\n\n"
        self.assert_good(checks.check_reg, start + '[HKEY_LOCAL_MACHINE\\A]\n"B"=dword:00000001\n')
        self.assert_bad(checks.check_reg, '[HKEY_LOCAL_MACHINE\\A]\n')

    def test_xml(self):
        self.assert_good(checks.check_xml, "<a/>\n", "<Applications/>\n")
        self.assert_bad(checks.check_xml, "<a>\n", "<Applications><App/></Applications>\n")
        self.assertNotEqual(checks.check_xml(block("<Applications><DesktopApps/></Applications>", "", "docs/preset.md")),
                            "")

    def test_commands(self):
        self.assert_good(checks.check_sh, "scripts/test release -R 'A|B' --repeat 2   # why\n", ".ci/run\n",
                         "wine bin/qanh.exe list --host A\n", "cmake --preset release\n")
        self.assert_bad(checks.check_sh, "scripts/tests\n", "scripts/test --again\n", "cat docs/none.md\n",
                        "wine bin/qanh.exe lists\n", "qanh list --hosts A\n", "cmake --preset none\n", "if true\n")
        self.assert_good(checks.check_bat, "reg import admin\\log-on.reg /reg:64\nqanh check \"A B.xml\"\n")
        self.assert_bad(checks.check_bat, "reg import admin\\log.reg\n", "dir\nqanh checks A\n")
        self.assert_bad(checks.check_console, "> qanh lists\n")


class Walkthrough(unittest.TestCase):
    PAGE = "Save this as `a.c`:\n\n```c\nint a;\n```\n\n```sh\ncat a.c\n```\n\n```text\nint a;\n```\n"

    def test_files_are_written_and_blocks_run(self):
        script, expected = walkthrough.script_of(blocks_of("p.md", self.PAGE))
        self.assertIn("cat > a.c << 'END OF FILE'\nint a;\nEND OF FILE\n", script)
        self.assertIn("@@ step p.md:8'\ncat a.c\n", script)
        self.assertEqual(expected, [["int a;"]])

    def test_what_was_not_printed_is_named(self):
        steps = walkthrough.outputs_of("@@ step 1\nx \r\n@@ step 2\ny\n@@ step 3\nz\n")
        self.assertEqual(steps[0], ("1", ["x"]))
        self.assertEqual(walkthrough.missing_lines(steps, [[], ["x", "y"], []]), [])
        self.assertEqual(walkthrough.missing_lines(steps, [[], ["y"], ["x"]]), ["3: not printed: x"])


class Examples(unittest.TestCase):
    def test_command_lines_and_what_stands_below_them(self):
        found = blocks_of("p.md", "```console\n> qanh list\na\n\nb\n> qanh show A\n```\n```\n> qanh no\n```\n")
        self.assertEqual(console.examples_of(found), [("list", "a\n\nb"), ("show A", "")])


if __name__ == "__main__":
    unittest.main()
