// QanHelper for C# (.NET Framework 4.5 and later, .NET 5 and later; x64 processes on Windows). One file to copy; C# 5.
//
//     using (var library = new QanHelper.Library())
//     {
//         library.LaunchBySearch("Mail");
//     }
//
// The DLL is taken from beside the assembly, or from the system's folder. What the functions do stands in QanHelper.h
// and in the reference.

using System;
using System.Runtime.InteropServices;
using System.Threading;

namespace QanHelper
{
    /// <summary>What a launch by search pastes and presses.</summary>
    public enum SearchMode : uint
    {
        /// <summary>Paste the query, press Enter until the search pane is gone.</summary>
        Launch = 0,
        /// <summary>Paste the plain name and leave the choice to the user.</summary>
        Show = 1,
        /// <summary>As Launch, but paste the plain name when the catalogue knows the name.</summary>
        LaunchPlain = 2
    }

    /// <summary>What the browser's tile setting must be during a launch.</summary>
    public enum TileMode : uint
    {
        /// <summary>The value 0.</summary>
        Desktop = 0,
        /// <summary>The value 1.</summary>
        Immersive = 1,
        /// <summary>As it is.</summary>
        Unchanged = 2
    }

    /// <summary>Results with their names and what they mean. They are signed, as an HRESULT is: compare with these
    /// constants, not with hexadecimal literals.</summary>
    public static class Results
    {
        public const int Ok = 0;
        public const int False = 1;
        /// <summary>No package of that family is installed for the user.</summary>
        public const int NoPackage = unchecked((int)0xA0000001);
        /// <summary>The package holds more than one application, so it has no display name of its own.</summary>
        public const int SeveralApplications = unchecked((int)0xA0000002);

        private struct Known
        {
            public readonly uint Value;
            public readonly string Name;
            public readonly string Sentence;

            public Known(uint value, string name, string sentence)
            {
                Value = value;
                Name = name;
                Sentence = sentence;
            }
        }

        private static readonly Known[] known =
        {
            new Known(0x00000000, "S_OK",
                "it was done"),
            new Known(0x00000001, "S_FALSE",
                "it was done in part: the library does not refresh its catalogue, or there is no name"),
            new Known(0x00270258, "S_STORE_LAUNCHED_FOR_REMEDIATION",
                "the Store was opened instead, because the package needs repair"),
            new Known(0x00270259, "S_APPLICATION_ACTIVATION_ERROR_HANDLED_BY_DIALOG",
                "the application was not started, and the system told the user so"),
            new Known(0x80004003, "E_POINTER",
                "a required pointer is null"),
            new Known(0x80004005, "E_FAIL",
                "it could not be done; of a launch by search: it is not known what the screen shows"),
            new Known(0x80010106, "RPC_E_CHANGED_MODE",
                "the thread is in a multithreaded apartment"),
            new Known(0x80040154, "REGDB_E_CLASSNOTREG",
                "the system does not have the class that is needed"),
            new Known(0x80070002, "ERROR_FILE_NOT_FOUND",
                "the file was not found"),
            new Known(0x80070005, "E_ACCESSDENIED",
                "access was denied"),
            new Known(0x8007000E, "E_OUTOFMEMORY",
                "the memory ran out"),
            new Known(0x80070020, "ERROR_SHARING_VIOLATION",
                "another program uses the file"),
            new Known(0x80070057, "E_INVALIDARG",
                "a required text is empty, or a mode is unknown"),
            new Known(0x8007007E, "ERROR_MOD_NOT_FOUND",
                "the DLL was not found, or one that it needs"),
            new Known(0x8007007F, "ERROR_PROC_NOT_FOUND",
                "the DLL lacks a function: it is another one"),
            new Known(0x800700C1, "ERROR_BAD_EXE_FORMAT",
                "the DLL is not one for 64-bit programs"),
            new Known(0x800704C7, "ERROR_CANCELLED",
                "it was stopped before"),
            new Known(0x80270250, "E_MONITOR_RESOLUTION_TOO_LOW",
                "the screen is too small for Store applications"),
            new Known(0x80270251, "E_ELEVATED_ACTIVATION_NOT_SUPPORTED",
                "an elevated program cannot start Store applications"),
            new Known(0x80270252, "E_UAC_DISABLED",
                "Store applications cannot be started while User Account Control is off"),
            new Known(0x80270253, "E_FULL_ADMIN_NOT_SUPPORTED",
                "the built-in Administrator cannot start Store applications"),
            new Known(0x80270254, "E_APPLICATION_NOT_REGISTERED",
                "there is no such application for this user"),
            new Known(0x8027025A, "E_APPLICATION_ACTIVATION_TIMED_OUT",
                "the application did not start in time"),
            new Known(0x8027025B, "E_APPLICATION_ACTIVATION_EXEC_FAILURE",
                "the application's process could not be started"),
            new Known(0xA0000001, "QANH_E_NO_PACKAGE",
                "no package of that family is installed for the user"),
            new Known(0xA0000002, "QANH_E_SEVERAL_APPLICATIONS",
                "the package holds more than one application, so it has no display name of its own"),
        };

        /// <summary>The name, such as "E_POINTER"; an empty string when it is not known.</summary>
        public static string NameOf(int result)
        {
            return Array.Find(known, each => each.Value == unchecked((uint)result)).Name ?? "";
        }

        /// <summary>"E_POINTER (0x80004003): a required pointer is null"; of others the number.</summary>
        public static string Describe(int result)
        {
            Known found = Array.Find(known, each => each.Value == unchecked((uint)result));
            string number = "0x" + result.ToString("X8");
            return found.Name == null ? number : found.Name + " (" + number + "): " + found.Sentence;
        }
    }

    /// <summary>A function of the library failed. HResult is its result, the message describes it.</summary>
    public sealed class QanHelperException : COMException
    {
        public QanHelperException(string function, int result)
            : base(function + ": " + Results.Describe(result), result)
        {
            Name = Results.NameOf(result);
        }

        /// <summary>The result's name, such as "E_POINTER"; an empty string when it is not known.</summary>
        public string Name { get; private set; }

        /// <summary>Throws when the result is a failure; success codes pass.</summary>
        public static void ThrowIfFailed(string function, int result)
        {
            if (result < 0)
            {
                throw new QanHelperException(function, result);
            }
        }
    }

    /// <summary>The nine functions as they are. A result is the HRESULT; texts end at their first null character.
    /// </summary>
    public static class NativeMethods
    {
        private const string Dll = "QanHelper.dll";

        [DllImport(Dll, ExactSpelling = true, CharSet = CharSet.Unicode, CallingConvention = CallingConvention.Winapi)]
        [DefaultDllImportSearchPaths(DllImportSearchPath.AssemblyDirectory | DllImportSearchPath.System32)]
        public static extern int QanhInitialize();

        [DllImport(Dll, ExactSpelling = true, CharSet = CharSet.Unicode, CallingConvention = CallingConvention.Winapi)]
        [DefaultDllImportSearchPaths(DllImportSearchPath.AssemblyDirectory | DllImportSearchPath.System32)]
        public static extern void QanhFinalize();

        [DllImport(Dll, ExactSpelling = true, CharSet = CharSet.Unicode, CallingConvention = CallingConvention.Winapi)]
        [DefaultDllImportSearchPaths(DllImportSearchPath.AssemblyDirectory | DllImportSearchPath.System32)]
        public static extern void QanhReleaseString(IntPtr str);

        [DllImport(Dll, ExactSpelling = true, CharSet = CharSet.Unicode, CallingConvention = CallingConvention.Winapi)]
        [DefaultDllImportSearchPaths(DllImportSearchPath.AssemblyDirectory | DllImportSearchPath.System32)]
        public static extern int QanhIsInstalled(
            string packageName, [MarshalAs(UnmanagedType.Bool)] ref bool pIsInstalled);

        /// <summary>Spelt "UserMode", without an "l", as the library's function is.</summary>
        [DllImport(Dll, ExactSpelling = true, CharSet = CharSet.Unicode, CallingConvention = CallingConvention.Winapi)]
        [DefaultDllImportSearchPaths(DllImportSearchPath.AssemblyDirectory | DllImportSearchPath.System32)]
        public static extern int QanhIsInstalledByAppUserModeID(
            string appUserModelId, [MarshalAs(UnmanagedType.Bool)] ref bool pIsInstalled);

        /// <summary>The pointer must be null before the call and is to be released, also after a failure.</summary>
        [DllImport(Dll, ExactSpelling = true, CharSet = CharSet.Unicode, CallingConvention = CallingConvention.Winapi)]
        [DefaultDllImportSearchPaths(DllImportSearchPath.AssemblyDirectory | DllImportSearchPath.System32)]
        public static extern int QanhGetAppDisplayNameByPFN(string packageFamilyName, ref IntPtr ppDisplayName);

        [DllImport(Dll, ExactSpelling = true, CharSet = CharSet.Unicode, CallingConvention = CallingConvention.Winapi)]
        [DefaultDllImportSearchPaths(DllImportSearchPath.AssemblyDirectory | DllImportSearchPath.System32)]
        public static extern int QanhLaunchBySearch(
            string appName, SearchMode searchMode, [MarshalAs(UnmanagedType.Bool)] bool useExcludeList);

        [DllImport(Dll, ExactSpelling = true, CharSet = CharSet.Unicode, CallingConvention = CallingConvention.Winapi)]
        [DefaultDllImportSearchPaths(DllImportSearchPath.AssemblyDirectory | DllImportSearchPath.System32)]
        public static extern int QanhLaunchIEBySearch(
            TileMode tileMode, SearchMode searchMode, [MarshalAs(UnmanagedType.Bool)] bool useExcludeList);

        [DllImport(Dll, ExactSpelling = true, CharSet = CharSet.Unicode, CallingConvention = CallingConvention.Winapi)]
        [DefaultDllImportSearchPaths(DllImportSearchPath.AssemblyDirectory | DllImportSearchPath.System32)]
        public static extern int QanhLaunchByManager(string appUserModelId, string arguments);
    }

    /// <summary>A string of the library's, given back to it when the handle is closed, on whichever thread.</summary>
    public sealed class LibraryString : SafeHandle
    {
        /// <summary>Takes the string over; null is none.</summary>
        public LibraryString(IntPtr text)
            : base(IntPtr.Zero, true)
        {
            SetHandle(text);
        }

        public override bool IsInvalid
        {
            get { return handle == IntPtr.Zero; }
        }

        /// <summary>A copy; an empty string of none.</summary>
        public override string ToString()
        {
            return IsInvalid ? "" : Marshal.PtrToStringUni(handle);
        }

        protected override bool ReleaseHandle()
        {
            NativeMethods.QanhReleaseString(handle);
            return true;
        }
    }

    /// <summary>
    /// The library, up until it is disposed of. It belongs to the thread that makes it, which must be a single-threaded
    /// apartment ([STAThread], SetApartmentState) and should have no windows: a launch by search keeps it for two
    /// seconds at least. The launches and Dispose belong to that thread; the other functions may be called on any
    /// thread. There is no finaliser: the library cannot be taken down on another thread.
    /// </summary>
    public sealed class Library : IDisposable
    {
        private readonly int threadId = Thread.CurrentThread.ManagedThreadId;
        private readonly int result;
        private bool isDisposed;

        /// <exception cref="QanHelperException">The library cannot be brought up: RPC_E_CHANGED_MODE in a multithreaded
        /// apartment; other failures may pass, try again after a second or two.</exception>
        public Library()
        {
            result = NativeMethods.QanhInitialize();
            QanHelperException.ThrowIfFailed("QanhInitialize", result);
        }

        /// <summary>False: another process of this executable was in its first refresh, and this one works with the
        /// catalogue as it was loaded.</summary>
        public bool IsRefreshing
        {
            get { return result != Results.False; }
        }

        /// <summary>Takes the library down; may take up to 43 seconds.</summary>
        public void Dispose()
        {
            if (!isDisposed)
            {
                CheckThread();
                isDisposed = true;
                NativeMethods.QanhFinalize();
            }
        }

        /// <summary>Whether a Store package is installed for the user; false also when the package manager cannot be
        /// reached. Any thread.</summary>
        public bool IsInstalled(string packageFamilyName)
        {
            bool isInstalled = false;
            QanHelperException.ThrowIfFailed("QanhIsInstalled",
                NativeMethods.QanhIsInstalled(packageFamilyName, ref isInstalled));
            return isInstalled;
        }

        /// <summary>The same for the package of an application user model ID.</summary>
        public bool IsInstalledById(string appUserModelId)
        {
            bool isInstalled = false;
            QanHelperException.ThrowIfFailed("QanhIsInstalledByAppUserModeID",
                NativeMethods.QanhIsInstalledByAppUserModeID(appUserModelId, ref isInstalled));
            return isInstalled;
        }

        /// <summary>The display name of a package's only application; null when the package is not installed or holds
        /// several, an empty string when its manifest gives none. Any thread.</summary>
        public string DisplayName(string packageFamilyName)
        {
            IntPtr text = IntPtr.Zero;
            int hr = NativeMethods.QanhGetAppDisplayNameByPFN(packageFamilyName, ref text);
            using (var name = new LibraryString(text))
            {
                if (hr == Results.NoPackage || hr == Results.SeveralApplications)
                {
                    return null;
                }
                QanHelperException.ThrowIfFailed("QanhGetAppDisplayNameByPFN", hr);
                return name.ToString();
            }
        }

        /// <summary>Presses the keys of a launch by search. That it returns does not say that anything was started.
        /// What is on the clipboard is lost. The library's thread.</summary>
        public void LaunchBySearch(string name, SearchMode mode = SearchMode.Launch, bool excludeOthers = true)
        {
            CheckThread();
            QanHelperException.ThrowIfFailed("QanhLaunchBySearch",
                NativeMethods.QanhLaunchBySearch(name, mode, excludeOthers));
        }

        /// <summary>The same for the browser, with its tile setting forced during the launch.</summary>
        public void LaunchBrowser(TileMode tile, SearchMode mode = SearchMode.Launch, bool excludeOthers = true)
        {
            CheckThread();
            QanHelperException.ThrowIfFailed("QanhLaunchIEBySearch",
                NativeMethods.QanhLaunchIEBySearch(tile, mode, excludeOthers));
        }

        /// <summary>Starts a Store application by its ID. Any thread.</summary>
        /// <exception cref="QanHelperException">Any result but S_OK: the activation manager's other success codes are
        /// no launches.</exception>
        public void Activate(string appUserModelId, string arguments = null)
        {
            int hr = NativeMethods.QanhLaunchByManager(appUserModelId, arguments);
            if (hr != Results.Ok)
            {
                throw new QanHelperException("QanhLaunchByManager", hr);
            }
        }

        private void CheckThread()
        {
            if (isDisposed)
            {
                throw new ObjectDisposedException("QanHelper.Library");
            }
            if (Thread.CurrentThread.ManagedThreadId != threadId)
            {
                throw new InvalidOperationException("QanHelper: this belongs to the thread that made the Library");
            }
        }
    }
}
