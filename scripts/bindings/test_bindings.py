"""Compares the wrapper and the bindings with include/QanHelper.h, and tries the Python binding with a DLL that is
played. Run by scripts/check-bindings."""

import ctypes
import importlib.util
import os
import re
import threading
import unittest
from types import SimpleNamespace
from unittest import mock

from header import Function, read_constants, read_functions, read_known_results, without_comments

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")


def read(path):
    with open(os.path.join(ROOT, path), encoding="utf-8") as file:
        return file.read()


HEADER = read("include/QanHelper.h")
CSHARP = read("bindings/csharp/QanHelper.cs")
FUNCTIONS = read_functions(HEADER)
CONSTANTS = read_constants(HEADER)

# The enumerations of the bindings are called so.
ENUMERATIONS = {"SearchMode": "QANH_SEARCH_", "TileMode": "QANH_TILE_"}


def constants_of(enumeration):
    """{"launchplain": 2} of the header, for comparing in any spelling of words."""
    prefix = ENUMERATIONS[enumeration]
    return {name[len(prefix):].replace("_", "").lower(): value
            for name, value in CONSTANTS.items() if name.startswith(prefix)}


class HeaderTest(unittest.TestCase):
    def test_everything_is_read(self):
        exports = re.findall(r"^\s+(Qanh\w+)", read("src/api/QanHelper.def"), flags=re.M)
        self.assertEqual(len(FUNCTIONS), 9)
        self.assertEqual(sorted(function.name for function in FUNCTIONS), sorted(exports))
        self.assertEqual(len(CONSTANTS), 8)
        self.assertEqual(CONSTANTS["QANH_E_NO_PACKAGE"], 0xA0000001)
        self.assertEqual(FUNCTIONS[6], Function("QanhLaunchBySearch", "HRESULT", (
            ("LPCWSTR", "appName"), ("DWORD", "searchMode"), ("BOOL", "useExcludeList"))))
        self.assertEqual(FUNCTIONS[5].arguments[1], ("LPWSTR*", "ppDisplayName"))

    def test_function_of_another_convention_is_noticed(self):
        with self.assertRaises(ValueError):
            read_functions("HRESULT QANH_CALL QanhA(void);\nHRESULT QanhB(void);")


def csharp_functions():
    """The imported functions with the types that they have in C, and the attributes before each."""
    number = r"(?:\[MarshalAs\(UnmanagedType\.Bool\)\]\s*)?"
    pattern = r"\[DllImport\((?P<attributes>[^\]]*)\)\]\s*(?:\[[^\]]*\]\s*)*public static extern (?P<result>\w+) " \
              r"(?P<name>\w+)\((?P<arguments>[^;]*)\);"
    for match in re.finditer(pattern, without_comments(CSHARP)):
        arguments = []
        for argument in filter(None, (part.strip() for part in match["arguments"].split(","))):
            kind, name = re.fullmatch(f"({number}(?:ref )?\\w+) (\\w+)", argument).groups()
            arguments.append((CSHARP_TYPES[re.sub(r"\s+", " ", kind)], name))
        yield Function(match["name"], CSHARP_RESULTS[match["result"]], tuple(arguments)), match["attributes"]


CSHARP_RESULTS = {"int": "HRESULT", "void": "void"}
CSHARP_TYPES = {
    "string": "LPCWSTR",
    "IntPtr": "LPWSTR",
    "ref IntPtr": "LPWSTR*",
    "[MarshalAs(UnmanagedType.Bool)] bool": "BOOL",
    "[MarshalAs(UnmanagedType.Bool)] ref bool": "BOOL*",
    "uint": "DWORD",
    "SearchMode": "DWORD",
    "TileMode": "DWORD",
}


class CSharpTest(unittest.TestCase):
    def test_functions_are_those_of_the_header(self):
        self.assertEqual([function for function, _ in csharp_functions()], FUNCTIONS)

    def test_arguments_that_are_modes_have_the_right_one(self):
        for mode in re.findall(r"(SearchMode|TileMode) (\w+)[,)]", CSHARP):
            if mode[1] in ("searchMode", "tileMode"):
                self.assertEqual(mode[0].lower(), mode[1].lower())

    def test_every_import_says_all(self):
        for function, attributes in csharp_functions():
            for wanted in ("Dll,", "ExactSpelling = true", "CharSet = CharSet.Unicode",
                           "CallingConvention = CallingConvention.Winapi"):
                self.assertIn(wanted, attributes, function.name)
        self.assertIn('const string Dll = "QanHelper.dll"', CSHARP)
        # Success codes are lost otherwise.
        self.assertNotIn("PreserveSig", CSHARP)

    def test_enumerations_are_those_of_the_header(self):
        for name in ENUMERATIONS:
            body = re.search(rf"public enum {name} : uint\s*{{(.*?)}}", without_comments(CSHARP), flags=re.S).group(1)
            values = {word.lower(): int(value) for word, value in re.findall(r"(\w+) = (\d+)", body)}
            self.assertEqual(values, constants_of(name))

    def test_private_results_are_those_of_the_header(self):
        values = dict(re.findall(r"const int (\w+) = unchecked\(\(int\)(0x[0-9A-F]+)\)", CSHARP))
        self.assertEqual({name: int(value, 16) for name, value in values.items()},
                         {"NoPackage": CONSTANTS["QANH_E_NO_PACKAGE"],
                          "SeveralApplications": CONSTANTS["QANH_E_SEVERAL_APPLICATIONS"]})


class PlayedFunction:
    def __init__(self, name, result):
        self.name = name
        self.result = result
        self.calls = []
        self.act = lambda *arguments: None

    def __call__(self, *arguments):
        self.calls.append(arguments)
        self.act(*arguments)
        return self.result


class PlayedDll:
    """In the place of ctypes.WinDLL; results are signed, as they come from the library."""

    def __init__(self, path):
        self.path = path
        for function in FUNCTIONS:
            setattr(self, function.name, PlayedFunction(function.name, 0 if function.result == "HRESULT" else None))


def signed(result):
    return ctypes.c_int32(result).value


PYTHON_RESULTS = {"HRESULT": ctypes.c_int32, "void": None}
PYTHON_TYPES = {
    "LPCWSTR": ctypes.c_wchar_p,
    "LPWSTR": ctypes.c_void_p,
    "LPWSTR*": ctypes.POINTER(ctypes.c_void_p),
    "BOOL": ctypes.c_int32,
    "BOOL*": ctypes.POINTER(ctypes.c_int32),
    "DWORD": ctypes.c_uint32,
}


class PythonTest(unittest.TestCase):
    def setUp(self):
        spec = importlib.util.spec_from_file_location("qanhelper", os.path.join(ROOT, "bindings/python/qanhelper.py"))
        self.module = importlib.util.module_from_spec(spec)
        spec.loader.exec_module(self.module)
        # Only Windows has it.
        patch = mock.patch.object(ctypes, "WinDLL", PlayedDll, create=True)
        patch.start()
        self.addCleanup(patch.stop)

    def open(self):
        library = self.module.Library("/there/QanHelper.dll")
        return SimpleNamespace(library=library, dll=library._dll)

    def test_functions_are_those_of_the_header(self):
        self.assertEqual([(name, result, tuple(arguments)) for name, result, arguments in self.module.PROTOTYPES],
                         [(function.name, PYTHON_RESULTS[function.result],
                           tuple(PYTHON_TYPES[kind] for kind, _ in function.arguments)) for function in FUNCTIONS])

    def test_functions_are_declared_when_the_dll_is_loaded(self):
        dll = self.module.load("/there/QanHelper.dll")
        self.assertEqual(dll.path, "/there/QanHelper.dll")
        for name, result, arguments in self.module.PROTOTYPES:
            self.assertEqual((getattr(dll, name).restype, getattr(dll, name).argtypes), (result, arguments))
        self.assertEqual(os.path.basename(self.module.load().path), "QanHelper.dll")

    def test_enumerations_are_those_of_the_header(self):
        for name in ENUMERATIONS:
            values = {member.name.replace("_", "").lower(): member.value for member in getattr(self.module, name)}
            self.assertEqual(values, constants_of(name))

    def test_private_results_are_those_of_the_header(self):
        self.assertEqual(self.module.E_NO_PACKAGE, CONSTANTS["QANH_E_NO_PACKAGE"])
        self.assertEqual(self.module.E_SEVERAL_APPLICATIONS, CONSTANTS["QANH_E_SEVERAL_APPLICATIONS"])

    def test_library_is_up_inside_the_statement(self):
        with self.module.Library() as library:
            dll = library._dll
            self.assertEqual((len(dll.QanhInitialize.calls), len(dll.QanhFinalize.calls)), (1, 0))
            self.assertTrue(library.is_refreshing)
        self.assertEqual(len(dll.QanhFinalize.calls), 1)
        library.close()
        self.assertEqual(len(dll.QanhFinalize.calls), 1)
        with self.assertRaises(RuntimeError):
            library.launch_by_search("Mail")

    def test_failed_start_is_raised_and_not_taken_back(self):
        dll = PlayedDll("")
        dll.QanhInitialize.result = signed(0x80010106)
        with mock.patch.object(ctypes, "WinDLL", lambda path: dll), \
                self.assertRaises(self.module.QanHelperError) as caught:
            self.module.Library()
        self.assertEqual((caught.exception.hresult, caught.exception.name), (0x80010106, "RPC_E_CHANGED_MODE"))
        self.assertEqual(str(caught.exception),
                         "QanhInitialize: RPC_E_CHANGED_MODE (0x80010106): the thread is in a multithreaded apartment")
        self.assertEqual(dll.QanhFinalize.calls, [])

    def test_start_without_refresh(self):
        dll = PlayedDll("")
        dll.QanhInitialize.result = 1
        with mock.patch.object(ctypes, "WinDLL", lambda path: dll):
            self.assertFalse(self.module.Library().is_refreshing)

    def test_questions(self):
        place = self.open()
        for function, ask in ((place.dll.QanhIsInstalled, place.library.is_installed),
                              (place.dll.QanhIsInstalledByAppUserModeID, place.library.is_installed_by_id)):
            self.assertIs(ask("name"), False)

            def answer(name, flag):
                self.assertEqual(name, "name")
                flag._obj.value = 1
            function.act = answer
            self.assertIs(ask("name"), True)
            function.result = signed(0x80070057)
            with self.assertRaises(self.module.QanHelperError):
                ask("name")

    def test_display_name_is_copied_and_released(self):
        place = self.open()
        text = ctypes.create_unicode_buffer("Calendar")

        def answer(family, name):
            self.assertEqual((family, name._obj.value), ("family", None))
            name._obj.value = ctypes.addressof(text)
        place.dll.QanhGetAppDisplayNameByPFN.act = answer
        released = place.dll.QanhReleaseString.calls
        self.assertEqual(place.library.display_name("family"), "Calendar")
        self.assertEqual([each[0].value for each in released], [ctypes.addressof(text)])
        # Also when the call fails.
        place.dll.QanhGetAppDisplayNameByPFN.result = signed(0x80004005)
        with self.assertRaises(self.module.QanHelperError):
            place.library.display_name("family")
        self.assertEqual(len(released), 2)

    def test_package_without_a_display_name_of_its_own(self):
        place = self.open()
        for result in (0xA0000001, 0xA0000002):
            place.dll.QanhGetAppDisplayNameByPFN.result = signed(result)
            self.assertIsNone(place.library.display_name("family"))
        place.dll.QanhGetAppDisplayNameByPFN.result = 1
        self.assertEqual(place.library.display_name("family"), "")

    def test_launches(self):
        place = self.open()
        place.library.launch_by_search("Mail", self.module.SearchMode.SHOW, exclude_others=False)
        place.library.launch_browser(self.module.TileMode.IMMERSIVE)
        place.library.activate("id")
        self.assertEqual(place.dll.QanhLaunchBySearch.calls, [("Mail", 1, 0)])
        self.assertEqual(place.dll.QanhLaunchIEBySearch.calls, [(1, 0, 1)])
        self.assertEqual(place.dll.QanhLaunchByManager.calls, [("id", None)])

    def test_success_codes_of_an_activation_are_no_launches(self):
        place = self.open()
        place.dll.QanhLaunchByManager.result = 0x00270258
        with self.assertRaises(self.module.QanHelperError) as caught:
            place.library.activate("id")
        self.assertEqual(caught.exception.name, "S_STORE_LAUNCHED_FOR_REMEDIATION")

    def test_launches_belong_to_one_thread(self):
        place = self.open()
        raised = []

        def launch():
            try:
                place.library.launch_by_search("Mail")
            except RuntimeError as error:
                raised.append(error)
        thread = threading.Thread(target=launch)
        thread.start()
        thread.join()
        self.assertEqual(len(raised), 1)
        self.assertEqual(place.dll.QanhLaunchBySearch.calls, [])

    def test_result_that_is_not_known(self):
        self.assertEqual(self.module.describe(0x81234567), "0x81234567")
        self.assertEqual(self.module.name_of(signed(0x80004003)), "E_POINTER")


class KnownResultsTest(unittest.TestCase):
    def test_all_languages_know_the_same(self):
        of_cpp = read_known_results(read("include/QanHelper/Results.hpp"), r"\{ToResult\(")
        self.assertGreaterEqual(len(of_cpp), 20)
        self.assertEqual(of_cpp[CONSTANTS["QANH_E_NO_PACKAGE"]][0], "QANH_E_NO_PACKAGE")
        self.assertEqual(of_cpp[CONSTANTS["QANH_E_SEVERAL_APPLICATIONS"]][0], "QANH_E_SEVERAL_APPLICATIONS")
        self.assertEqual(read_known_results(CSHARP, r"new Known\("), of_cpp)
        self.assertEqual(read_known_results(read("bindings/python/qanhelper.py"), r"\n    "), of_cpp)


if __name__ == "__main__":
    unittest.main()
