#pragma once

#include <string>

namespace montala::util {

// Appends one code point as UTF-8 (one to four bytes). The caller passes a
// code point up to U+10FFFF that is no surrogate.
void appendUtf8(std::string& out, char32_t codePoint);

} // namespace montala::util
