"""QanHelper for Python 3.8 and later (64-bit, Windows). One file to copy; needs ctypes only.

    with qanhelper.Library(r"C:\\Program Files\\Launcher\\QanHelper.dll") as library:
        library.launch_by_search("Mail")

The DLL is taken from beside this file unless a path is given. What the functions do stands in QanHelper.h and in the
reference.
"""

import ctypes
import enum
import os
import threading
from ctypes import POINTER, c_int32, c_uint32, c_void_p, c_wchar_p


class SearchMode(enum.IntEnum):
    """What a launch by search pastes and presses."""

    LAUNCH = 0  # paste the query, press Enter until the search pane is gone
    SHOW = 1  # paste the plain name and leave the choice to the user
    LAUNCH_PLAIN = 2  # as LAUNCH, but paste the plain name when the catalogue knows the name


class TileMode(enum.IntEnum):
    """What the browser's tile setting must be during a launch."""

    DESKTOP = 0  # the value 0
    IMMERSIVE = 1  # the value 1
    UNCHANGED = 2  # as it is


# Results are unsigned in this module.
S_OK = 0x00000000
S_FALSE = 0x00000001
E_NO_PACKAGE = 0xA0000001  # no package of that family is installed for the user
E_SEVERAL_APPLICATIONS = 0xA0000002  # the package holds more than one application

_KNOWN = {
    0x00000000: ("S_OK", "it was done"),
    0x00000001: ("S_FALSE", "it was done in part: the library does not refresh its catalogue, or there is no name"),
    0x00270258: ("S_STORE_LAUNCHED_FOR_REMEDIATION", "the Store was opened instead, because the package needs repair"),
    0x00270259: ("S_APPLICATION_ACTIVATION_ERROR_HANDLED_BY_DIALOG",
                 "the application was not started, and the system told the user so"),
    0x80004003: ("E_POINTER", "a required pointer is null"),
    0x80004005: ("E_FAIL", "it could not be done; of a launch by search: it is not known what the screen shows"),
    0x80010106: ("RPC_E_CHANGED_MODE", "the thread is in a multithreaded apartment"),
    0x80040154: ("REGDB_E_CLASSNOTREG", "the system does not have the class that is needed"),
    0x80070002: ("ERROR_FILE_NOT_FOUND", "the file was not found"),
    0x80070005: ("E_ACCESSDENIED", "access was denied"),
    0x8007000E: ("E_OUTOFMEMORY", "the memory ran out"),
    0x80070020: ("ERROR_SHARING_VIOLATION", "another program uses the file"),
    0x80070057: ("E_INVALIDARG", "a required text is empty, or a mode is unknown"),
    0x8007007E: ("ERROR_MOD_NOT_FOUND", "the DLL was not found, or one that it needs"),
    0x8007007F: ("ERROR_PROC_NOT_FOUND", "the DLL lacks a function: it is another one"),
    0x800700C1: ("ERROR_BAD_EXE_FORMAT", "the DLL is not one for 64-bit programs"),
    0x800704C7: ("ERROR_CANCELLED", "it was stopped before"),
    0x80270250: ("E_MONITOR_RESOLUTION_TOO_LOW", "the screen is too small for Store applications"),
    0x80270251: ("E_ELEVATED_ACTIVATION_NOT_SUPPORTED", "an elevated program cannot start Store applications"),
    0x80270252: ("E_UAC_DISABLED", "Store applications cannot be started while User Account Control is off"),
    0x80270253: ("E_FULL_ADMIN_NOT_SUPPORTED", "the built-in Administrator cannot start Store applications"),
    0x80270254: ("E_APPLICATION_NOT_REGISTERED", "there is no such application for this user"),
    0x8027025A: ("E_APPLICATION_ACTIVATION_TIMED_OUT", "the application did not start in time"),
    0x8027025B: ("E_APPLICATION_ACTIVATION_EXEC_FAILURE", "the application's process could not be started"),
    0xA0000001: ("QANH_E_NO_PACKAGE", "no package of that family is installed for the user"),
    0xA0000002: ("QANH_E_SEVERAL_APPLICATIONS",
                 "the package holds more than one application, so it has no display name of its own"),
}

# Name, type of the result, types of the arguments. An HRESULT is signed to the library; _call makes it unsigned.
# c_void_p for strings that the library hands out: of a c_wchar_p ctypes gives a copy, and the pointer is lost.
PROTOTYPES = (
    ("QanhInitialize", c_int32, ()),
    ("QanhFinalize", None, ()),
    ("QanhReleaseString", None, (c_void_p,)),
    ("QanhIsInstalled", c_int32, (c_wchar_p, POINTER(c_int32))),
    ("QanhIsInstalledByAppUserModeID", c_int32, (c_wchar_p, POINTER(c_int32))),
    ("QanhGetAppDisplayNameByPFN", c_int32, (c_wchar_p, POINTER(c_void_p))),
    ("QanhLaunchBySearch", c_int32, (c_wchar_p, c_uint32, c_int32)),
    ("QanhLaunchIEBySearch", c_int32, (c_uint32, c_uint32, c_int32)),
    ("QanhLaunchByManager", c_int32, (c_wchar_p, c_wchar_p)),
)


def name_of(hresult):
    """The name of a result, such as "E_POINTER"; "" when it is not known."""
    return _KNOWN.get(hresult & 0xFFFFFFFF, ("", ""))[0]


def describe(hresult):
    """"E_POINTER (0x80004003): a required pointer is null"; of others the number."""
    number = f"0x{hresult & 0xFFFFFFFF:08X}"
    name, sentence = _KNOWN.get(hresult & 0xFFFFFFFF, ("", ""))
    return f"{name} ({number}): {sentence}" if name else number


class QanHelperError(Exception):
    """A function of the library failed. `hresult` is its result (unsigned), `name` the result's name or ""."""

    def __init__(self, function, hresult):
        self.function = function
        self.hresult = hresult & 0xFFFFFFFF
        self.name = name_of(hresult)
        super().__init__(f"{function}: {describe(hresult)}")


def load(path=None):
    """Loads the DLL (ctypes.WinDLL: the calling convention stdcall) and declares its functions."""
    beside = os.path.join(os.path.dirname(os.path.abspath(__file__)), "QanHelper.dll")
    dll = ctypes.WinDLL(os.path.abspath(path or beside))  # a full path: nothing else is searched
    for name, result, arguments in PROTOTYPES:
        function = getattr(dll, name)
        function.restype = result
        function.argtypes = arguments
    return dll


class Library:
    """The library, up from the call of the class to close(), or to the end of a `with` statement.

    It belongs to the thread that makes it, which enters a single-threaded apartment and should have no windows: a
    launch by search keeps it for two seconds at least. The launches and close() belong to that thread; the other
    functions may be called on any thread. Raises QanHelperError for failures, OSError when the DLL cannot be loaded.
    """

    def __init__(self, path=None):
        self._thread = threading.get_ident()
        self._is_up = False
        self._dll = load(path)
        self._result = self._call("QanhInitialize")
        self._is_up = True

    def __enter__(self):
        return self

    def __exit__(self, *unused):
        self.close()

    def close(self):
        """Takes the library down; may take up to 43 seconds. The second time it does nothing."""
        if self._is_up:
            self._check_thread()
            self._is_up = False
            self._dll.QanhFinalize()

    @property
    def is_refreshing(self):
        """False: another process of this executable was in its first refresh, and this one does not refresh."""
        return self._result != S_FALSE

    def is_installed(self, package_family):
        """Whether a Store package is installed for the user; False also when the package manager cannot be reached."""
        return self._ask("QanhIsInstalled", package_family)

    def is_installed_by_id(self, app_user_model_id):
        """The same for the package of an application user model ID."""
        return self._ask("QanhIsInstalledByAppUserModeID", app_user_model_id)

    def display_name(self, package_family):
        """The display name of a package's only application; None when the package is not installed or holds several,
        "" when its manifest gives none."""
        text = c_void_p(None)
        try:
            self._call("QanhGetAppDisplayNameByPFN", package_family, ctypes.byref(text))
            return ctypes.wstring_at(text.value) if text.value else ""
        except QanHelperError as error:
            if error.hresult in (E_NO_PACKAGE, E_SEVERAL_APPLICATIONS):
                return None
            raise
        finally:
            self._dll.QanhReleaseString(text)  # also after a failure

    def launch_by_search(self, name, mode=SearchMode.LAUNCH, exclude_others=True):
        """Presses the keys of a launch by search; that it returns does not say that anything was started. What is on
        the clipboard is lost."""
        self._check_thread()
        self._call("QanhLaunchBySearch", name, int(mode), int(bool(exclude_others)))

    def launch_browser(self, tile, mode=SearchMode.LAUNCH, exclude_others=True):
        """The same for the browser, with its tile setting forced during the launch."""
        self._check_thread()
        self._call("QanhLaunchIEBySearch", int(tile), int(mode), int(bool(exclude_others)))

    def activate(self, app_user_model_id, arguments=None):
        """Starts a Store application by its ID. Any result but S_OK is raised: the activation manager's other success
        codes are no launches."""
        result = self._call("QanhLaunchByManager", app_user_model_id, arguments)
        if result != S_OK:
            raise QanHelperError("QanhLaunchByManager", result)

    def _ask(self, function, name):
        is_installed = c_int32(0)
        self._call(function, name, ctypes.byref(is_installed))
        return is_installed.value != 0

    def _call(self, function, *arguments):
        """The result, unsigned; failures are raised."""
        result = getattr(self._dll, function)(*arguments) & 0xFFFFFFFF
        if result >= 0x80000000:
            raise QanHelperError(function, result)
        return result

    def _check_thread(self):
        if not self._is_up:
            raise RuntimeError("QanHelper: the library was closed")
        if threading.get_ident() != self._thread:
            raise RuntimeError("QanHelper: this belongs to the thread that made the Library")
