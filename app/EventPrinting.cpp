#include "app/EventPrinting.h"

#include "core/HealedEvent.h"
#include "util/StringUtil.h"

#include <cstdio>
#include <string>

namespace montala::app {

using core::EventBase;
using core::EventList;
using core::EventState;

nlohmann::json framerateToJson(const core::Framerate& rate)
{
    return {{"fps", rate.fps}, {"pulled", rate.pulled}, {"dropMode", rate.dropMode}};
}

nlohmann::json eventToJson(const EventBase& event)
{
    nlohmann::json states = nlohmann::json::array();
    for (EventState state : event.getStates())
        states.push_back(static_cast<int>(state));
    nlohmann::json json = {
        {"eventNumber", event.getEventNumber()},
        {"rollName", event.getRollName()},
        {"clipName", event.getClipName()},
        {"edlFile", event.getEdlFile()},
        {"transitionType", event.getTransitionType()},
        {"transitionDuration", event.getTransitionDuration()},
        {"srcIn", event.getSrcIn().toString()},
        {"srcOut", event.getSrcOut().toString()},
        {"dstIn", event.getDstIn().toString()},
        {"dstOut", event.getDstOut().toString()},
        {"motionSpeed", event.getMotionSpeed()},
        {"vfx", event.isVfx()},
        {"states", states},
    };
    if (const auto* healed = dynamic_cast<const core::HealedEvent*>(&event))
        json["healedEvents"] = eventListToJson(healed->getHealedEvents());
    return json;
}

nlohmann::json eventListToJson(const EventList& list)
{
    nlohmann::json events = nlohmann::json::array();
    for (const core::EventPtr& event : list.getEvents())
        events.push_back(eventToJson(*event));
    return events;
}

namespace {

std::string transitionText(const EventBase& event)
{
    char buffer[32];
    switch (event.getTransitionType()) {
    case EventBase::Dissolve:
        std::snprintf(buffer, sizeof buffer, "D %03d", event.getTransitionDuration());
        return buffer;
    case EventBase::Wipe:
        std::snprintf(buffer, sizeof buffer, "W %03d", event.getTransitionDuration());
        return buffer;
    default:
        return "C";
    }
}

// The state messages on one line, separated by "; ".
std::string stateLine(const EventBase& event)
{
    std::string line;
    for (const std::string& message : util::StringUtil::split(event.getStateText(), '\n', true)) {
        if (message.empty())
            continue;
        if (!line.empty())
            line += "; ";
        line += message;
    }
    return line;
}

void printRow(std::ostream& out, const EventBase& event, const char* indent)
{
    char buffer[512];
    std::snprintf(buffer, sizeof buffer, "%s%-5d %-12s %-24s %-6s %s %s %s %s %7.3f  ", indent,
                  event.getEventNumber(), event.getRollName().c_str(), event.getClipName().c_str(),
                  transitionText(event).c_str(), event.getSrcIn().toString().c_str(),
                  event.getSrcOut().toString().c_str(), event.getDstIn().toString().c_str(),
                  event.getDstOut().toString().c_str(), event.getMotionSpeed());
    out << buffer << stateLine(event) << "\n";
}

} // namespace

void printEventTable(std::ostream& out, const EventList& list)
{
    char header[256];
    std::snprintf(header, sizeof header, "%-5s %-12s %-24s %-6s %-11s %-11s %-11s %-11s %7s  %s\n", "EVENT",
                  "ROLL", "CLIP NAME", "TRANS", "SRC IN", "SRC OUT", "DST IN", "DST OUT", "SPEED", "STATE");
    out << header;
    for (const core::EventPtr& event : list.getEvents()) {
        printRow(out, *event, "");
        if (const auto* healed = dynamic_cast<const core::HealedEvent*>(event.get())) {
            for (const core::EventPtr& part : healed->getHealedEvents().getEvents())
                printRow(out, *part, "  ");
        }
    }
    out << "Total: " << list.getSize() << "\n";
    out << "Invalid: " << list.countFlawedEvents() << "\n";
}

} // namespace montala::app
