#pragma once

#include "proof/XmlFromBytes.h"

#include <string>

// What a target of the fuzzer consists of; Fuzzing.cpp runs it.
namespace fuzz {

// Of the figures.
extern const char kName[];
// Does one run.
void Run(proof::Bytes bytes);

// Ends the program when it does not hold.
void Check(bool holds, const char* what);

} // namespace fuzz
