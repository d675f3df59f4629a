#pragma once

#include "DriveOptions.h"

#include <optional>
#include <string>
#include <vector>

// What the tool was asked for. Texts that were not given are empty.
struct CommandLine
{
    std::wstring command; // "list"
    std::wstring catalogue;
    std::wstring host;
    std::wstring log;
    bool isJson = false;
    std::wstring kind;
    std::wstring match;
    std::wstring name;
    std::wstring file;
    std::wstring otherFile;
    bool isHere = false; // what the catalogue names is on this machine
    std::wstring from;
    std::wstring reserve;
    std::wstring output;
    bool isTree = false;
    bool isTimes = false;
    bool isErrors = false;
    std::optional<unsigned> slow;     // so many of the slowest operations
    std::optional<unsigned> codePage; // of the log's text
    DriveOptions drive;
    std::wstring help; // the text that was asked for, by "help", "--help" or "--version"
};

// Takes the arguments of the process, without its name, apart. Throws WrongUse.
[[nodiscard]] CommandLine ParseCommandLine(const std::vector<std::wstring>& arguments);
