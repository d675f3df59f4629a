#pragma once

#include <string>
#include <vector>

namespace host {

// Carries out one command and returns its answer, without a line end. Commands are lists of fields; "(null)"
// in the place of a text stands for a null pointer, and in a text
//
//   (long)                      stands for 70,000 letters, more than the platform's own strings hold
//   (high), (low)               for the halves of a surrogate pair, which UTF-8 cannot hold by themselves
//
// The commands:
//
//   load                        LoadLibrary of QanHelper.dll and look-up of its exports: "ok"
//   load-strictly               likewise, with LOAD_LIBRARY_SEARCH_SYSTEM32 for what it needs: "ok"
//   unload                      FreeLibrary: 1 or 0
//   in-memory                   1 when the library is still mapped, else 0
//   init, finalize              the HRESULT; "ok"
//   search MODE EXCLUDE NAME    QanhLaunchBySearch
//   browser TILE MODE EXCLUDE   QanhLaunchIEBySearch
//   activate ID ARGUMENTS       QanhLaunchByManager
//   installed NAME [null]       QanhIsInstalled: HRESULT and the flag, which is 7 before the call; with
//                               "null" the flag's pointer is null
//   installed-by-id ID [null]   QanhIsInstalledByAppUserModeID, likewise
//   display-name FAMILY [null]  QanhGetAppDisplayNameByPFN: HRESULT and the text, null before the call
//   release TEXT                QanhReleaseString of a copy of the text, or of a null pointer: "ok"
//   handles, threads, heap      what the process holds, as a number
//   cycles COUNT                so many QanhInitialize and QanhFinalize in turn; the first failure or
//                               0x00000000
//   searches COUNT NAME         so many launches in mode 0 with exclusions; the last HRESULT
//   look-up COUNT               so many times the package manager's class is asked for, and let go, without
//                               the library: "ok"
//   line-up, open               the log's gate (LogGate.h): "ok"
//   slow-disk MILLISECONDS      the pause before each piece of a catalogue that is saved (Trouble.h): "ok"
//   watch-files                 from here on openings of files are noted (FileWatch.h): "ok"
//   opened TEXT                 how many there were of paths that end so
//   exit CODE                   "ok"; the program ends by leaving main()
//   thread COMMAND...           the rest is carried out on a thread of its own
//   sta COMMAND..., mta COMMAND...
//                               likewise, in a single-threaded or the multithreaded apartment
//   at-once COUNT COMMAND... [and COMMAND...]
//                               each of the commands so many times on three threads, one for each kind of
//                               apartment, all of them at the same time; for each command the one answer that
//                               all gave, or "differs" and two of them; joined by " and "
//   re-enter COMMAND... [and COMMAND...] into COMMAND...
//                               the rest is carried out while a window of this thread owns the clipboard;
//                               when the clipboard is taken from it, its procedure carries out the commands
//                               before "into", separated by "and"; all answers, the last command's at the
//                               end, joined by " and "
//
// and those in ProofCommands.h. An HRESULT is written as 0x%08X. An exception that left the library is
// answered with "exception", a command that could not be carried out with "error" and the reason. In front of
// the answer of a thread whose apartment is not what it was stands "apartment changed".
class Commands
{
public:
    [[nodiscard]] std::string CarryOut(const std::vector<std::string>& command);

    [[nodiscard]] bool IsOver() const { return m_isOver; }
    [[nodiscard]] int ExitCode() const { return m_exitCode; }

private:
    std::string CarryOutHere(const std::vector<std::string>& command);
    std::string CarryOutAtOnce(const std::vector<std::string>& command);
    std::string CarryOutFromWithin(const std::vector<std::string>& command);
    std::string Call(const std::vector<std::string>& command);
    std::string Manage(const std::vector<std::string>& command);

    bool m_isOver = false;
    int m_exitCode = 0;
};

} // namespace host
