// QanHelper for C++17 and later: a wrapper around QanHelper.h that needs nothing but the platform and the
// standard library. The file and the folder "QanHelper" beside it are headers only.
//
//   Library    the library for as long as an object lives; queries; launches on the caller's thread
//   Launcher   a thread of its own with a queue, which tells what came of each launch
//   Error      what is thrown; Category and Describe give results names and sentences
//
// How to use it: docs/wrapper.md. Texts are UTF-16 std::wstring; messages of errors are UTF-8.
#ifndef QANHELPER_HPP
#define QANHELPER_HPP

#include "QanHelper/Launcher.hpp"
#include "QanHelper/Library.hpp"
#include "QanHelper/Outcome.hpp"
#include "QanHelper/Results.hpp"

#endif
