#pragma once

#include <initializer_list>
#include <string_view>

namespace standin {

// Appends a line to the journal, its fields joined by tabs, in UTF-8 with a line feed at the end; the line is
// in the file when the function returns. The file is opened for each line, so that a test may read, empty or
// delete it at any time. Line ends and tabs inside a field become blanks. Does nothing without a journal
// path; a journal that cannot be written never disturbs the desktop. Any thread.
void WriteJournal(std::initializer_list<std::wstring_view> fields) noexcept;

} // namespace standin
