#pragma once

#include <string>
#include <string_view>

namespace montala::core::fileio {

// Model text is UTF-8, but EDLs from older editing systems are often
// Windows-1252 (or its subset Latin-1). The reader decides per line: a line
// that is valid UTF-8 stays as it is, any other is read as Windows-1252.
// Valid means the strict form: no overlong sequence, no surrogate
// (U+D800..U+DFFF), nothing above U+10FFFF, no lone or missing continuation
// byte.
bool isValidUtf8(std::string_view text);

// Every byte as its Windows-1252 character. The five bytes that code page
// leaves undefined (81, 8D, 8F, 90, 9D) become the control characters of
// the same number, so that no byte is lost and the result is always UTF-8.
std::string windows1252ToUtf8(std::string_view text);

} // namespace montala::core::fileio
