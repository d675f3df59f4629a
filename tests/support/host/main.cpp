// The host process of the system tests: reads commands from its input, one a line, fields separated by tabs,
// UTF-8, and answers each with one line. Ends with the input too.
#include "support/HeapCheck.h"
#include "support/Text.h"
#include "support/host/Commands.h"

#include <windows.h>

#include <cstdio>

namespace {

bool ReadLine(std::string& line)
{
    line.clear();
    char character = 0;
    DWORD read = 0;
    while (ReadFile(GetStdHandle(STD_INPUT_HANDLE), &character, 1, &read, nullptr) && read == 1) {
        if (character == '\n') {
            return true;
        }
        line += character;
    }
    return false;
}

void WriteLine(const std::string& text)
{
    const std::string line = text + "\n";
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), line.data(), static_cast<DWORD>(line.size()), &written,
              nullptr);
}

} // namespace

int main()
{
    host::Commands commands;
    std::string line;
    while (!commands.IsOver() && ReadLine(line)) {
        const std::string answer = commands.CarryOut(test::Split(line, "\t"));
        if (test::AreHeapsChecked() && !test::AreHeapsSound()) {
            std::fprintf(stderr, "a heap is damaged after the host's command %s\n", line.c_str());
        }
        WriteLine(answer);
    }
    return commands.ExitCode();
}
