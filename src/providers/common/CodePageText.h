// Texts of files older than Unicode, each in the code page that the file names.
#pragma once

#include <cstddef>
#include <span>

namespace NSTQ::Providers {

/// Whether this library has a table of that page: 874, 932, 936, 949, 950, 1250 to 1258, 10000 and 65001.
bool HasPageTable(unsigned codePage);

/// Puts a text in `codePage` to `to`, which has room for as many units as there are bytes, and gives how many it
/// took. Throws CSourceError for what is not ASCII in a page that HasPageTable does not know.
std::size_t DecodePageText(std::span<const unsigned char> bytes, unsigned codePage, char16_t* to);

} // namespace NSTQ::Providers
