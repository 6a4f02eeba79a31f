#include "core/generation/GenerationFailure.h"

namespace montala::core {

namespace {

std::string describeEvent(const GenerationFailure::EventInfo& info)
{
    std::string text = "event " + std::to_string(info.eventNumber) + " (roll \"" + info.rollName + "\"";
    if (!info.clipName.empty())
        text += ", clip \"" + info.clipName + "\"";
    text += ", file " + (info.edlFile.empty() ? std::string("unknown") : "\"" + info.edlFile + "\"");
    if (!info.lineText.empty())
        text += ", line \"" + info.lineText + "\"";
    return text + ")";
}

} // namespace

std::string GenerationFailure::describe() const
{
    switch (stage) {
    case Stage::None:
        return {};
    case Stage::SplitOldTransition:
    case Stage::SplitNewTransition:
        return std::string("the transition of ") + (stage == Stage::SplitOldTransition ? "Old" : "New") + " EDL "
            + describeEvent(event) + " cannot be split: " + reason;
    case Stage::Match:
        return "New EDL " + describeEvent(event) + " matched with Old EDL " + describeEvent(oldEvent)
            + " cannot be placed: " + reason;
    }
    return {};
}

} // namespace montala::core
