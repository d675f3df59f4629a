#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace test {

// Compares a log, line by line and in order, with what it must be. The golden text begins with a line end;
// blanks in front of its lines do not count. In a line,
//
//   <address>  stands for the eight digits of an address: the same ones wherever it stands in the golden
//   <end>      stands for nothing: behind a blank at the end of a line, which could not be seen otherwise
//   IN ...     stands for two lines, of a call that logs nothing between its entry and its exit:
//              "Get(a) IN ... OUT(0)" for "Get(a) IN" and "Get OUT(0)"
//
// A log whose last line has no end has <no end> there (support/LogCapture.h), and so must its golden.
[[nodiscard]] testing::AssertionResult IsGolden(const std::vector<std::string>& log, std::string_view golden);

// The same with a golden in pieces of one or more whole lines each, so that what many logs have in common
// stands once, under a name.
[[nodiscard]] testing::AssertionResult IsGolden(const std::vector<std::string>& log,
                                                std::initializer_list<std::string_view> pieces);

// A golden text with <1>, <2>, ... filled in, for pieces that differ in names and numbers, or in the lines
// within them.
[[nodiscard]] std::string Filled(std::string golden, std::initializer_list<std::string_view> values);

// Pieces of whole lines as one golden.
[[nodiscard]] std::string Joined(std::initializer_list<std::string_view> pieces);

// Takes a block of lines out where it stands again behind itself: a poll whose number of rounds depends on
// how fast the desktop is.
void CollapseRepeats(std::vector<std::string>& log, std::string_view block);

} // namespace test
