#pragma once

#include <cstdint>

// Plain types and result codes shared by every interface of the host.
namespace Kelmar {

using int8 = std::int8_t;
using uint8 = std::uint8_t;
using int16 = std::int16_t;
using uint16 = std::uint16_t;
using int32 = std::int32_t;
using uint32 = std::uint32_t;
using int64 = std::int64_t;
using uint64 = std::uint64_t;

// 8-bit text is UTF-8; names and titles travel as 16-bit text.
using char8 = char;
using char16 = char16_t;

// What every operation answers. 0 doubles as "yes" for a question, 1 as "no".
using tresult = int32;

inline constexpr tresult kResultOk = 0;
inline constexpr tresult kResultTrue = kResultOk;
inline constexpr tresult kResultFalse = 1;
inline constexpr tresult kNotImplemented = static_cast<tresult>(0x80004001u);
inline constexpr tresult kNoInterface = static_cast<tresult>(0x80004002u);
inline constexpr tresult kResultFailed = static_cast<tresult>(0x80004005u);
inline constexpr tresult kInvalidArgument = static_cast<tresult>(0x80070057u);

// The handle of a loaded module, as given to the host's registries.
using ModuleHandle = void*;

} // namespace Kelmar
