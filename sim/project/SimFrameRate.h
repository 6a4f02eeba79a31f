#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace montala::sim {

// A project's frame rate and the timecode texts the session file uses. The
// seconds of a frame count always come from frameToSeconds, so that a time
// read from a timecode and written back as one is the same double.
struct SimFrameRate {
    int fps = 25;
    bool pullDown = false; // the real rate is fps x 1000/1001
    bool dropFrame = false; // only with a multiple of 30

    bool isValid() const;
    double exactRate() const;
    double frameToSeconds(std::int64_t frames) const;
    // The frame whose time is exactly `seconds`, if there is one.
    std::optional<std::int64_t> exactFrame(double seconds) const;
    // The nearest frame.
    std::int64_t nearestFrame(double seconds) const;

    // "hh:mm:ss:ff", with ";" before the frames in drop frame.
    std::string label(std::int64_t frames) const;
    // Accepts ":" ";" or "." before the frames; false for text that is no
    // timecode at this rate (e.g. frames past the rate, a dropped label).
    bool parseLabel(std::string_view text, std::int64_t& frames) const;

    // "25", "29.97 drop frame", "23.976".
    std::string describe() const;

private:
    int droppedPerMinute() const;
};

} // namespace montala::sim
