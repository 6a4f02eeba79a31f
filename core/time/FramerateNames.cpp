#include "core/time/FramerateNames.h"

namespace montala::core {

namespace {

struct NamedRate {
    const char* name;
    int fps;
    bool pulled;
    int dropMode;
};

constexpr NamedRate namedRates[] = {
    {"23.976", 24, true, 0}, {"24", 24, false, 0},     {"25", 25, false, 0},
    {"29.97", 30, true, 0},  {"29.97df", 30, true, 1}, {"30", 30, false, 0},
    {"30df", 30, false, 1},  {"48", 48, false, 0},     {"50", 50, false, 0},
    {"59.94", 60, true, 0},  {"60", 60, false, 0},
};

} // namespace

std::optional<Framerate> parseRateName(const std::string& name)
{
    for (const NamedRate& rate : namedRates) {
        if (name == rate.name)
            return Framerate(rate.fps, rate.pulled, rate.dropMode);
    }
    return std::nullopt;
}

const std::vector<std::string>& rateNames()
{
    static const std::vector<std::string> names = [] {
        std::vector<std::string> all;
        for (const NamedRate& rate : namedRates)
            all.emplace_back(rate.name);
        return all;
    }();
    return names;
}

std::string rateName(const Framerate& rate)
{
    for (const NamedRate& named : namedRates) {
        if (named.fps == rate.fps && named.pulled == rate.pulled && named.dropMode == rate.dropMode)
            return named.name;
    }
    return describeSuggestedRate(rate);
}

std::string describeSuggestedRate(const Framerate& suggested)
{
    if (suggested.fps == 0)
        return "no frame rate (no timecode to judge by)";
    std::string text = std::to_string(suggested.fps) + " fps";
    if (suggested.dropMode == 1)
        text += " drop frame";
    else if (suggested.dropMode == 0)
        text += " non-drop";
    else
        text += ", drop mode not given";
    return text;
}

std::optional<Framerate> projectRateFor(const Framerate& suggested)
{
    if (suggested.fps == 0)
        return std::nullopt;
    if (suggested.dropMode == 1)
        return Framerate(30, true, 1);
    return Framerate(suggested.fps, false, 0);
}

bool rateMismatch(const Framerate& suggested, const Framerate& project)
{
    if (suggested.fps == 0)
        return false;
    if (suggested.fps != project.fps)
        return true;
    return suggested.dropMode != -1 && suggested.dropMode != project.dropMode;
}

} // namespace montala::core
