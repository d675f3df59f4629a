#pragma once

#include "support/host/Library.h"

#include <optional>
#include <string>
#include <vector>

namespace host {

// A command's field as a number.
[[nodiscard]] inline DWORD Number(const std::vector<std::string>& command, std::size_t index)
{
    return static_cast<DWORD>(std::stoul(command.at(index)));
}

// The commands beside those of Commands.h, for the proofs above all; none: it is another one. Main thread.
//
//   pace DIVISOR                the library's pauses and waits take this part of their time (Pace.h)
//   stretch FACTOR              the main thread's pauses take so many times as long (Pace.h): "ok"
//   hold, go                    the refresh thread's first wait ends with "go" (Pace.h): "ok"
//   pane, own-desktop           launches see a search pane of the host's own, and with the second a Start
//                               screen and a clipboard too (OwnPane.h): "ok"
//   query NAME                  the query of a launch in mode 0 with exclusions, or its failure
//   queries COUNT NAME FILE [FAMILY]
//                               so many of them into the file, one a line; with a family each tenth line
//                               has QanhIsInstalled's answer and the display name behind it, joined by
//                               tabs. "ok"
//   launches COUNT NAME         so many, in each mode and for the browser in turn: the first failure or
//                               0x00000000
//   stubborn COUNT NAME         a launch whose pane stays for so many presses of Enter: the HRESULT and the
//                               milliseconds of all its pauses, which take no time
//   init-at EVENT               waits for the named event, then QanhInitialize: the HRESULT and how many
//                               milliseconds it took
//   come-and-go COUNT SEED NAME FILE
//                               so many starts and stops with pauses of chance between them: for each a
//                               line in the file with QanhInitialize's HRESULT, a tab and the query after
//                               it. "ok"
//   loads COUNT INITIALISES     so many LoadLibrary and FreeLibrary in turn, up and down between them when
//                               INITIALISES is 1: the first failure or 0x00000000; loaded at the end
//   disk BYTES                  the space that files still have (Trouble.h): "ok"
//   quick-disk                  the library does not wait for the disk (Trouble.h): "ok"
//   dead-share MILLISECONDS     what lies on \\dead\ takes that long (Trouble.h): "ok"
//   finalize-in-pass            the refresh thread calls QanhFinalize in its next pass (Trouble.h): "ok"
//   crash                       an access violation on another thread; no answer
//   gdi, windows                GDI objects and windows of the process, as a number
[[nodiscard]] std::optional<std::string> CarryOutForProof(Library& library,
                                                          const std::vector<std::string>& command);

} // namespace host
