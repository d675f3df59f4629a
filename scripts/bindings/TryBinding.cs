// Runs the C# binding against the functions that played_library.c plays: what arrives there, and what becomes of what
// comes back. Says what is not as it should be; the exit status is then 1.

using System;
using System.Runtime.InteropServices;
using System.Threading;
using QanHelper;

internal static class TryBinding
{
    [DllImport("QanHelper.dll")]
    private static extern void PlayedTell(int result, [MarshalAs(UnmanagedType.Bool)] bool answer, IntPtr name);

    [DllImport("QanHelper.dll")]
    private static extern IntPtr PlayedRecord();

    private static int faults;

    private static void Expect<T>(T expected, T found, string what)
    {
        if (!Equals(expected, found))
        {
            Console.Error.WriteLine("{0}: expected {1}, found {2}", what, expected, found);
            ++faults;
        }
    }

    private static void ExpectCalls(string expected)
    {
        Expect(expected, Marshal.PtrToStringUni(PlayedRecord()), "calls");
    }

    private static void Tell(int result, bool answer = false, IntPtr name = default(IntPtr))
    {
        PlayedTell(result, answer, name);
    }

    // The exception, or null.
    private static T Thrown<T>(Action action) where T : Exception
    {
        try
        {
            action();
        }
        catch (T exception)
        {
            return exception;
        }
        Expect(typeof(T).Name, "nothing", "thrown");
        return null;
    }

    private static void ExpectFailure(Action action, string name, uint result, string message)
    {
        var failure = Thrown<QanHelperException>(action);
        if (failure != null)
        {
            Expect(name, failure.Name, "name");
            Expect(unchecked((int)result), failure.HResult, "HResult");
            Expect(message, failure.Message, "message");
        }
    }

    private static void TryLife()
    {
        Tell(0);
        var library = new Library();
        Expect(true, library.IsRefreshing, "IsRefreshing");
        ExpectCalls("QanhInitialize();");
        library.Dispose();
        library.Dispose();
        ExpectCalls("QanhInitialize();QanhFinalize();");
        Thrown<ObjectDisposedException>(() => library.LaunchBySearch("Mail"));

        Tell(1);
        using (var another = new Library())
        {
            Expect(false, another.IsRefreshing, "IsRefreshing");
        }
        ExpectCalls("QanhInitialize();QanhFinalize();");

        Tell(unchecked((int)0x80010106));
        ExpectFailure(() => new Library(), "RPC_E_CHANGED_MODE", 0x80010106,
            "QanhInitialize: RPC_E_CHANGED_MODE (0x80010106): the thread is in a multithreaded apartment");
        ExpectCalls("QanhInitialize();");
    }

    private static void TryQuestions(Library library)
    {
        Tell(0, true);
        Expect(true, library.IsInstalled("メール🙂_1"), "IsInstalled");
        ExpectCalls("QanhIsInstalled(\"メール🙂_1\",0);");
        Tell(0);
        Expect(false, library.IsInstalledById("a_1!App"), "IsInstalledById");
        ExpectCalls("QanhIsInstalledByAppUserModeID(\"a_1!App\",0);");
        Tell(unchecked((int)0x80004003), true);
        ExpectFailure(() => library.IsInstalled(null), "E_POINTER", 0x80004003,
            "QanhIsInstalled: E_POINTER (0x80004003): a required pointer is null");
        ExpectCalls("QanhIsInstalled(null,0);");
    }

    private static void TryDisplayName(Library library)
    {
        IntPtr name = Marshal.StringToHGlobalUni("メール");
        string calls = "QanhGetAppDisplayNameByPFN(\"a_1\",null);";
        Tell(0, false, name);
        Expect("メール", library.DisplayName("a_1"), "DisplayName");
        ExpectCalls(calls + "QanhReleaseString(name);");
        // What is handed out with a failure goes back as well.
        Tell(unchecked((int)0x80004005), false, name);
        ExpectFailure(() => library.DisplayName("a_1"), "E_FAIL", 0x80004005,
            "QanhGetAppDisplayNameByPFN: E_FAIL (0x80004005): " +
            "it could not be done; of a launch by search: it is not known what the screen shows");
        ExpectCalls(calls + "QanhReleaseString(name);");
        foreach (int none in new[] { Results.NoPackage, Results.SeveralApplications })
        {
            Tell(none, false, name);
            Expect(null, library.DisplayName("a_1"), "DisplayName");
            ExpectCalls(calls + "QanhReleaseString(name);");
        }
        Tell(1);
        Expect("", library.DisplayName("a_1"), "DisplayName");
        ExpectCalls(calls);
        Marshal.FreeHGlobal(name);
    }

    private static void TryLaunches(Library library)
    {
        Tell(0);
        library.LaunchBySearch("Mail");
        library.LaunchBySearch("メール", SearchMode.Show, false);
        library.LaunchBrowser(TileMode.Immersive);
        library.LaunchBrowser(TileMode.Unchanged, SearchMode.LaunchPlain, false);
        library.Activate("a_1!App");
        library.Activate("a_1!App", "-x");
        ExpectCalls("QanhLaunchBySearch(\"Mail\",0,1);QanhLaunchBySearch(\"メール\",1,0);QanhLaunchIEBySearch(1,0,1);" +
            "QanhLaunchIEBySearch(2,2,0);QanhLaunchByManager(\"a_1!App\",null);" +
            "QanhLaunchByManager(\"a_1!App\",\"-x\");");
        // A success code that is no launch.
        Tell(0x00270258);
        ExpectFailure(() => library.Activate("a"), "S_STORE_LAUNCHED_FOR_REMEDIATION", 0x00270258,
            "QanhLaunchByManager: S_STORE_LAUNCHED_FOR_REMEDIATION (0x00270258): " +
            "the Store was opened instead, because the package needs repair");
        Tell(unchecked((int)0x81234567));
        ExpectFailure(() => library.LaunchBySearch("a"), "", 0x81234567, "QanhLaunchBySearch: 0x81234567");
    }

    private static void TryAnotherThread(Library library)
    {
        Tell(0);
        var thread = new Thread(() =>
        {
            Thrown<InvalidOperationException>(() => library.LaunchBySearch("Mail"));
            Thrown<InvalidOperationException>(library.Dispose);
            library.IsInstalled("a");
        });
        thread.Start();
        thread.Join();
        ExpectCalls("QanhIsInstalled(\"a\",0);");
    }

    private static int Main()
    {
        TryLife();
        Tell(0);
        using (var library = new Library())
        {
            TryQuestions(library);
            TryDisplayName(library);
            TryLaunches(library);
            TryAnotherThread(library);
        }
        return faults == 0 ? 0 : 1;
    }
}
