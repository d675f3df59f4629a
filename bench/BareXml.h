#pragma once

#include "Catalogs.h"

#include <string>

// The platform's XML reader and writer, and a parser in memory, used without anything of the library. Each
// throws std::runtime_error when it fails.
namespace bench {

// Reads all nodes of a file, with all attributes and values, and returns how many characters these have.
std::size_t WalkXml(const std::wstring& file);

// Reads the file into memory, parses it there and goes through all nodes, with all attributes and values.
std::size_t ParseInMemory(const std::wstring& file);

// Writes the catalogue's file, to the byte as the library writes it.
void WriteXml(const Catalog& catalog, const std::wstring& file);

} // namespace bench
