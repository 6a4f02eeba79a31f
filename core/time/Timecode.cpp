#include "core/time/Timecode.h"

#include "core/serialize/SerializationTree.h"
#include "util/Result.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>

namespace montala::core {

using util::Result;

namespace {

FramerateProvider* framerateProvider = nullptr;

// Frame count of a position in seconds at a rate, as the conversions define
// it: floor(rate * s + 0.5). Anything that is no count of the day (NaN,
// infinities, huge values) comes back as -1 so that the caller's range check
// refuses it before the conversion to int.
long long framesAt(const Framerate& rate, double secondsValue)
{
    const double f = std::floor(rate.exactRate * secondsValue + 0.5);
    if (!(f >= 0.0 && f <= 2147483647.0))
        return -1;
    return static_cast<long long>(f);
}

// Whether frame counts at the rate are whole numbers of its exact frames, so
// that seconds added and rounded back to frames give the frames added.
bool countsWholeFrames(const Framerate& rate)
{
    return rate.fps > 0 && rate.exactRate > 0.0 && (rate.dropMode == 0 || (rate.dropMode == 1 && rate.fps == 30));
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

} // namespace

// ---- Framerate ----

Framerate::Framerate(int fps, int dropMode)
{
    set(fps, dropMode);
}

Framerate::Framerate(int fps, bool pulled, int dropMode)
{
    set(fps, pulled, dropMode);
}

void Framerate::set(int newFps, int newDropMode)
{
    set(newFps, false, newDropMode);
}

void Framerate::set(int newFps, bool newPulled, int newDropMode)
{
    fps = newFps;
    pulled = newPulled;
    dropMode = newDropMode;
    exactRate = pulled ? fps * pullFactor : static_cast<double>(fps);
    computeMaxFrames();
}

void Framerate::computeMaxFrames()
{
    if (fps == 0 || dropMode == -1) {
        maxFrames = 0;
        return;
    }
    maxFrames = Timecode(23, 59, 59, fps - 1).toFrames(*this);
}

ScopedFramerateProvider::ScopedFramerateProvider(FramerateProvider* provider)
    : previous(Timecode::getFramerateProvider())
{
    Timecode::setFramerateProvider(provider);
}

ScopedFramerateProvider::~ScopedFramerateProvider()
{
    Timecode::setFramerateProvider(previous);
}

// ---- Timecode ----

Timecode::Timecode() : Serializable(currentVersion) {}

Timecode::Timecode(int h, int m, int s, int f)
    : Serializable(currentVersion), hours(h), minutes(m), seconds(s), frames(f), initialized(true)
{
}

Timecode::Timecode(const std::string& text) : Serializable(currentVersion)
{
    int fields[4];
    if (!parseText(text, fields))
        throw Result::InvalidArgument;
    set(fields[0], fields[1], fields[2], fields[3]);
}

Timecode::Timecode(int frameCount) : Serializable(currentVersion)
{
    fromFrames(frameCount, currentFramerate());
}

Timecode::Timecode(double secondsValue) : Serializable(currentVersion)
{
    fromSeconds(secondsValue);
}

Timecode::Timecode(const Timecode& other)
    : Serializable(other),
      hours(other.hours),
      minutes(other.minutes),
      seconds(other.seconds),
      frames(other.frames),
      initialized(other.initialized)
{
}

Timecode& Timecode::operator=(const Timecode& other)
{
    hours = other.hours;
    minutes = other.minutes;
    seconds = other.seconds;
    frames = other.frames;
    initialized = true;
    return *this;
}

Timecode Timecode::zero()
{
    return Timecode(0, 0, 0, 0);
}

Timecode Timecode::maximum()
{
    return Timecode(23, 59, 59, currentFramerate().fps - 1);
}

// Both count in frames where the rate allows: the same result as through
// seconds, without the round trip, which every matched and conformed event
// pays several times.
Timecode Timecode::difference(const Timecode& a, const Timecode& b)
{
    Timecode result;
    const Framerate rate = currentFramerate();
    if (!countsWholeFrames(rate)) {
        result.fromSeconds(a.toSeconds(rate) - b.toSeconds(rate), rate);
        return result;
    }
    const long long count = static_cast<long long>(a.toFrames(rate)) - b.toFrames(rate);
    if (count < 0 || count > rate.maxFrames)
        throw Result::OutOfRange;
    result.fromFrames(static_cast<int>(count), rate);
    return result;
}

Timecode Timecode::sum(const Timecode& a, const Timecode& b)
{
    Timecode result;
    const Framerate rate = currentFramerate();
    if (!countsWholeFrames(rate)) {
        result.fromSeconds(a.toSeconds(rate) + b.toSeconds(rate), rate);
        return result;
    }
    const long long count = static_cast<long long>(a.toFrames(rate)) + b.toFrames(rate);
    if (count < 0 || count > rate.maxFrames)
        throw Result::OutOfRange;
    result.fromFrames(static_cast<int>(count), rate);
    return result;
}

void Timecode::set(int h, int m, int s, int f)
{
    hours = h;
    minutes = m;
    seconds = s;
    frames = f;
    initialized = true;
}

bool Timecode::operator==(const Timecode& other) const
{
    return hours == other.hours && minutes == other.minutes && seconds == other.seconds
        && frames == other.frames;
}

bool Timecode::operator<(const Timecode& other) const
{
    if (hours != other.hours)
        return hours < other.hours;
    if (minutes != other.minutes)
        return minutes < other.minutes;
    if (seconds != other.seconds)
        return seconds < other.seconds;
    return frames < other.frames;
}

bool Timecode::isValid() const
{
    return isValid(currentFramerate());
}

int Timecode::countFrames(const Framerate& rate) const
{
    if (frames > rate.fps)
        throw Result::FramesAboveRate;
    if (!isValid(rate))
        throw Result::OutOfRange;
    if (rate.dropMode == 0)
        return ((hours * 60 + minutes) * 60 + seconds) * rate.fps + frames;
    // Drop frame is defined for nominal 30 only. A rate of unknown drop mode
    // that gets here is counted as drop frame.
    if (rate.fps != 30)
        throw Result::NotSupported;
    const int totalMinutes = hours * 60 + minutes;
    return frames + 30 * (60 * totalMinutes + seconds) - 2 * (totalMinutes - totalMinutes / 10);
}

int Timecode::toFrames() const
{
    return toFrames(currentFramerate());
}

double Timecode::toSeconds(const Framerate& rate) const
{
    if (frames > rate.fps)
        throw Result::FramesAboveRate;
    return toFrames(rate) / rate.exactRate;
}

double Timecode::toSeconds() const
{
    if (isZero())
        return 0.0;
    return toSeconds(currentFramerate());
}

void Timecode::fromFrames(int n, const Framerate& rate)
{
    // A rate without a nominal fps cannot count frames either.
    if (rate.dropMode == -1 || rate.fps <= 0)
        throw Result::InvalidArgument;
    if (n < 0 || n > rate.maxFrames)
        throw Result::OutOfRange;
    if (rate.dropMode == 0) {
        frames = n % rate.fps;
        const int totalSeconds = n / rate.fps;
        seconds = totalSeconds % 60;
        minutes = (totalSeconds / 60) % 60;
        hours = totalSeconds / 3600;
    } else {
        if (rate.dropMode != 1 || rate.fps != 30)
            throw Result::NotSupported;
        // 17982 frames in every ten minutes, 1798 in each minute after the
        // first of them; add back the two dropped numbers per minute.
        const int tens = n / 17982;
        const int rest = n % 17982;
        const int m = n + 2 * ((rest - 2) / 1798 + 9 * tens);
        frames = m % 30;
        seconds = (m / 30) % 60;
        minutes = (m / 1800) % 60;
        hours = (m / 108000) % 24;
    }
    initialized = true;
}

void Timecode::fromSeconds(double secondsValue, const Framerate& rate)
{
    // The range check is against the project's rate, whatever rate is asked for.
    const Framerate projectRate = currentFramerate();
    const long long projectFrames = framesAt(projectRate, secondsValue);
    if (projectFrames < 0 || projectFrames > projectRate.maxFrames)
        throw Result::OutOfRange;
    const long long count = framesAt(rate, secondsValue);
    if (count < 0)
        throw Result::OutOfRange;
    fromFrames(static_cast<int>(count), rate);
}

void Timecode::fromSeconds(double secondsValue)
{
    fromSeconds(secondsValue, currentFramerate());
}

void Timecode::addSeconds(double secondsValue)
{
    const double base = isZero() ? 0.0 : toSeconds(currentFramerate());
    fromSeconds(base + secondsValue);
}

bool Timecode::isValidSeconds(double secondsValue)
{
    const Framerate rate = currentFramerate();
    const long long count = framesAt(rate, secondsValue);
    return count >= 0 && count <= rate.maxFrames;
}

std::string Timecode::toString() const
{
    const int fields[4] = {hours, minutes, seconds, frames};
    if (std::all_of(std::begin(fields), std::end(fields), [](int field) { return field >= 0 && field <= 99; })) {
        // Two digits a field, written by hand: lists print thousands of
        // timecodes, and a formatted print is ten times slower.
        std::string text(11, ':');
        for (int i = 0; i < 4; ++i) {
            text[static_cast<size_t>(i) * 3] = static_cast<char>('0' + fields[i] / 10);
            text[static_cast<size_t>(i) * 3 + 1] = static_cast<char>('0' + fields[i] % 10);
        }
        return text;
    }
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%02d:%02d:%02d:%02d", hours, minutes, seconds, frames);
    return buffer;
}

Framerate Timecode::currentFramerate()
{
    if (framerateProvider == nullptr)
        throw Result::NotInitialized;
    return framerateProvider->getFramerate();
}

void Timecode::setFramerateProvider(FramerateProvider* provider)
{
    framerateProvider = provider;
}

FramerateProvider* Timecode::getFramerateProvider()
{
    return framerateProvider;
}

bool Timecode::parseText(std::string_view text, int fields[4])
{
    // Hand-written equivalent of the whole-text match of
    // [0-9]{1,2}:[0-9]{1,2}:[0-9]{1,2}[:;][0-9]{1,2}; it is on the hot path
    // of the parser, where a std::regex would dominate. Nearly every EDL
    // writes two digits a field, which is read first and at once.
    if (text.size() == 11 && text[2] == ':' && text[5] == ':' && (text[8] == ':' || text[8] == ';')) {
        bool digits = true;
        for (int field = 0; field < 4; ++field) {
            const char high = text[static_cast<size_t>(field) * 3];
            const char low = text[static_cast<size_t>(field) * 3 + 1];
            digits = digits && isDigit(high) && isDigit(low);
            fields[field] = (high - '0') * 10 + (low - '0');
        }
        if (digits)
            return true;
    }
    size_t pos = 0;
    for (int field = 0; field < 4; ++field) {
        if (field > 0) {
            if (pos >= text.size())
                return false;
            const char separator = text[pos];
            if (!(separator == ':' || (field == 3 && separator == ';')))
                return false;
            ++pos;
        }
        int value = 0;
        size_t digits = 0;
        while (pos < text.size() && isDigit(text[pos]) && digits < 2) {
            value = value * 10 + (text[pos] - '0');
            ++pos;
            ++digits;
        }
        if (digits == 0)
            return false;
        fields[field] = value;
    }
    return pos == text.size();
}

// Stored form, version 2: four single bytes and the initialized flag.
void Timecode::readCurrent(serialize::SerializationTree& tree)
{
    hours = tree.readByte();
    minutes = tree.readByte();
    seconds = tree.readByte();
    frames = tree.readByte();
    initialized = tree.readBool();
}

void Timecode::write(serialize::SerializationTree& tree) const
{
    // A field above 255 loses its high bits: valid timecodes never have one.
    const uint8_t stored[5] = {static_cast<uint8_t>(hours), static_cast<uint8_t>(minutes),
                               static_cast<uint8_t>(seconds), static_cast<uint8_t>(frames),
                               static_cast<uint8_t>(initialized ? 1 : 0)};
    tree.writeBytes(stored, sizeof stored);
}

void Timecode::readOld(serialize::SerializationTree& tree, uint32_t storedVersion)
{
    if (storedVersion > 1)
        throw Result::UnknownVersion;
    // Versions 0 and 1 hold the four numbers as int32; only 1 has the flag.
    hours = tree.readInt32();
    minutes = tree.readInt32();
    seconds = tree.readInt32();
    frames = tree.readInt32();
    initialized = storedVersion == 1 ? tree.readBool() : true;
}

} // namespace montala::core
