#include "sim/project/SimFrameRate.h"

#include <cmath>
#include <cstdio>

namespace montala::sim {

bool SimFrameRate::isValid() const
{
    if (fps <= 0 || fps > 1000)
        return false;
    return !dropFrame || fps % 30 == 0;
}

double SimFrameRate::exactRate() const
{
    return pullDown ? fps * 1000.0 / 1001.0 : static_cast<double>(fps);
}

double SimFrameRate::frameToSeconds(std::int64_t frames) const
{
    if (pullDown)
        return static_cast<double>(frames) * 1001.0 / (fps * 1000.0);
    return static_cast<double>(frames) / fps;
}

std::int64_t SimFrameRate::nearestFrame(double seconds) const
{
    return static_cast<std::int64_t>(std::llround(seconds * exactRate()));
}

std::optional<std::int64_t> SimFrameRate::exactFrame(double seconds) const
{
    if (!std::isfinite(seconds))
        return std::nullopt;
    const std::int64_t frame = nearestFrame(seconds);
    if (frameToSeconds(frame) == seconds)
        return frame;
    return std::nullopt;
}

int SimFrameRate::droppedPerMinute() const
{
    return dropFrame ? fps / 15 : 0;
}

std::string SimFrameRate::label(std::int64_t frames) const
{
    if (frames < 0)
        frames = 0;
    const int drop = droppedPerMinute();
    if (drop > 0) {
        // Back from the count of frames shown to the label's naive count.
        const std::int64_t perMinute = 60LL * fps - drop;
        const std::int64_t perTenMinutes = 600LL * fps - 9LL * drop;
        const std::int64_t tens = frames / perTenMinutes;
        const std::int64_t rest = frames % perTenMinutes;
        frames += 9LL * drop * tens;
        if (rest > drop)
            frames += drop * ((rest - drop) / perMinute);
    }
    const std::int64_t f = frames % fps;
    const std::int64_t totalSeconds = frames / fps;
    char text[40];
    std::snprintf(text, sizeof text, "%02lld:%02lld:%02lld%c%02lld", static_cast<long long>(totalSeconds / 3600),
                  static_cast<long long>(totalSeconds / 60 % 60), static_cast<long long>(totalSeconds % 60),
                  drop > 0 ? ';' : ':', static_cast<long long>(f));
    return text;
}

bool SimFrameRate::parseLabel(std::string_view text, std::int64_t& frames) const
{
    int fields[4] = {0, 0, 0, 0};
    int field = 0;
    int digits = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c >= '0' && c <= '9') {
            if (++digits > 3)
                return false;
            fields[field] = fields[field] * 10 + (c - '0');
        } else if ((c == ':' || (field == 2 && (c == ';' || c == '.'))) && digits > 0 && field < 3) {
            ++field;
            digits = 0;
        } else {
            return false;
        }
    }
    if (field != 3 || digits == 0)
        return false;
    const int hours = fields[0], minutes = fields[1], seconds = fields[2], frame = fields[3];
    if (minutes > 59 || seconds > 59 || frame >= fps)
        return false;
    const int drop = droppedPerMinute();
    if (drop > 0 && seconds == 0 && frame < drop && minutes % 10 != 0)
        return false; // this label does not exist in drop frame
    const std::int64_t totalMinutes = 60LL * hours + minutes;
    frames = (totalMinutes * 60 + seconds) * fps + frame - drop * (totalMinutes - totalMinutes / 10);
    return true;
}

std::string SimFrameRate::describe() const
{
    std::string text;
    if (pullDown) {
        char rate[32];
        std::snprintf(rate, sizeof rate, "%.3f", exactRate());
        text = rate;
        while (text.back() == '0')
            text.pop_back();
    } else {
        text = std::to_string(fps);
    }
    text += " fps";
    if (dropFrame)
        text += " drop frame";
    return text;
}

} // namespace montala::sim
