#pragma once

#include "core/time/Framerate.h"
#include "core/serialize/Serializable.h"

#include <string>
#include <string_view>

namespace montala::core {

// SMPTE-style timecode as four integers, exactly as they stood in the EDL.
// It knows no rate: every conversion takes a Framerate or asks the
// process-wide provider. Nothing keeps the fields in range; isValid judges.
// There is no negative timecode and no wrap at midnight.
class Timecode : public serialize::Serializable {
public:
    static constexpr uint32_t currentVersion = 2;

    Timecode();
    Timecode(int hours, int minutes, int seconds, int frames);
    // Throws Result::InvalidArgument unless the whole text is h:m:s:f (one or
    // two digits each, ';' allowed as the last separator).
    explicit Timecode(const std::string& text);
    // At the provider's rate.
    explicit Timecode(int frameCount);
    explicit Timecode(double seconds);
    Timecode(const Timecode& other);
    // Copies the four values and always marks the result initialized, unlike
    // the copy constructor; code relies on an assigned timecode counting as set.
    Timecode& operator=(const Timecode& other);
    ~Timecode() override = default;

    static Timecode zero();
    // 23:59:59 and the last frame at the provider's nominal rate.
    static Timecode maximum();
    // a - b and a + b through seconds at the provider's rate; both throw
    // Result::OutOfRange outside the day.
    static Timecode difference(const Timecode& a, const Timecode& b);
    static Timecode sum(const Timecode& a, const Timecode& b);

    void set(int hours, int minutes, int seconds, int frames);
    int getHours() const { return hours; }
    int getMinutes() const { return minutes; }
    int getSeconds() const { return seconds; }
    int getFrames() const { return frames; }
    bool isInitialized() const { return initialized; }

    bool operator==(const Timecode& other) const;
    bool operator!=(const Timecode& other) const { return !(*this == other); }
    bool operator<(const Timecode& other) const;
    bool operator>(const Timecode& other) const { return other < *this; }
    bool operator>=(const Timecode& other) const { return !(*this < other); }
    bool operator<=(const Timecode& other) const { return !(other < *this); }

    // Inline, with toFrames' common case: every event asks them of its
    // four timecodes, over and over.
    bool isValid(const Framerate& rate) const
    {
        // Unsigned comparisons, so that a negative field fails as well.
        if (static_cast<unsigned>(hours) > 23 || static_cast<unsigned>(minutes) > 59
            || static_cast<unsigned>(seconds) > 59)
            return false;
        if (frames < 0 || frames >= rate.fps)
            return false;
        if (rate.dropMode != 1)
            return true;
        // Drop frame: frames 0 and 1 of the first second of every minute that
        // is not a tenth minute do not exist.
        return minutes % 10 == 0 || seconds != 0 || frames >= 2;
    }
    bool isValid() const;
    int toFrames(const Framerate& rate) const
    {
        if (rate.dropMode == 0 && isValid(rate))
            return ((hours * 60 + minutes) * 60 + seconds) * rate.fps + frames;
        return countFrames(rate);
    }
    int toFrames() const;
    double toSeconds(const Framerate& rate) const;
    double toSeconds() const;
    void fromFrames(int frameCount, const Framerate& rate);
    void fromSeconds(double secondsValue, const Framerate& rate);
    void fromSeconds(double secondsValue);
    void addSeconds(double secondsValue);
    static bool isValidSeconds(double secondsValue);
    // hh:mm:ss:ff, ':' throughout, never cut.
    std::string toString() const;

    static Framerate currentFramerate();
    static void setFramerateProvider(FramerateProvider* provider);
    static FramerateProvider* getFramerateProvider();

    // Full match of [0-9]{1,2}:[0-9]{1,2}:[0-9]{1,2}[:;][0-9]{1,2}, filling
    // the four numbers. Shared with the EDL parser.
    static bool parseText(std::string_view text, int fields[4]);

    void readCurrent(serialize::SerializationTree& tree) override;
    void write(serialize::SerializationTree& tree) const override;
    void readOld(serialize::SerializationTree& tree, uint32_t storedVersion) override;

private:
    // toFrames with every rule and failure.
    int countFrames(const Framerate& rate) const;
    bool isZero() const { return hours == 0 && minutes == 0 && seconds == 0 && frames == 0; }

    int hours = 0;
    int minutes = 0;
    int seconds = 0;
    int frames = 0;
    bool initialized = false;
};

} // namespace montala::core
