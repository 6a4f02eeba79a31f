#pragma once

namespace montala::core {

// How close two values must be to count as the same.

// Two positions (or lengths) in seconds: one sample at 384 kHz, the finest
// rate a host project can have, so that positions that came from samples
// and from timecode agree.
inline constexpr double positionTolerance = 2.6041666666666666e-6;

// Two motion speeds.
inline constexpr double speedTolerance = 0.01;

// Two automation values.
inline constexpr double automationValueTolerance = 0.01;

} // namespace montala::core
