#pragma once

namespace Kelmar {

// Where a module on Linux carries its resources ("skin.xml",
// "translation.xml", ...), in place of the resource table of a Windows DLL:
// an allocated ELF section of this name, which the host reads from the
// module's file. The section is a run of records, each
//
//   the resource's name, 8-bit text ending in a zero byte
//   the size of the data, 4 bytes little-endian
//   the data, as many bytes
//
// with no padding between them.
inline constexpr const char* kResourceSection = ".kelmar.resources";

} // namespace Kelmar
