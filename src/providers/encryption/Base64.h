// Bytes that are written as text in Base64.
#pragma once

#include <string_view>
#include <vector>

namespace NSTQ::Providers {

/// The bytes; none for text that is empty or not Base64, which ends with '=' where its last four characters are fewer
/// and has no blanks.
std::vector<unsigned char> DecodeBase64(std::string_view text);

} // namespace NSTQ::Providers
