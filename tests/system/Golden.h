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
//
// A log whose last line has no end has <no end> there (support/LogCapture.h), and so must its golden.
[[nodiscard]] testing::AssertionResult IsGolden(const std::vector<std::string>& log, std::string_view golden);

// The same with a golden in pieces of one or more whole lines each, so that what many logs have in common
// stands once, under a name.
[[nodiscard]] testing::AssertionResult IsGolden(const std::vector<std::string>& log,
                                                std::initializer_list<std::string_view> pieces);

// The lines of a golden text, blanks and <end> taken away.
[[nodiscard]] std::vector<std::string> GoldenLines(std::string_view golden);

// Takes a block of lines out where it stands again behind itself: a poll whose number of rounds depends on
// how fast the desktop is.
void CollapseRepeats(std::vector<std::string>& log, std::string_view block);

} // namespace test
