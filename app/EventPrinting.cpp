#include "app/EventPrinting.h"

#include "core/events/HealedEvent.h"
#include "core/fileio/TextEncoding.h"
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

std::string dumpJson(const nlohmann::json& json)
{
    return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

namespace {

// The speed follows from the four timecodes: of an event whose timecodes
// cannot be read or do not exist at the rate it says nothing (it would show
// as -86400.000).
bool hasSpeed(const EventBase& event)
{
    for (const EventState state : {EventState::UninitializedTimecode, EventState::BadSrcIn, EventState::BadSrcOut,
                                   EventState::BadDstIn, EventState::BadDstOut, EventState::InvalidTimecode,
                                   EventState::InvalidTimecodeRange})
        if (event.hasState(state))
            return false;
    return true;
}

// The length of the UTF-8 sequence that starts at text[i], or 0 if none
// valid does.
size_t sequenceLength(std::string_view text, size_t i)
{
    const auto lead = static_cast<unsigned char>(text[i]);
    const size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
    if (i + length > text.size() || !core::fileio::isValidUtf8(text.substr(i, length)))
        return 0;
    return length;
}

} // namespace

namespace {

// The text as a JSON string, appended to `escaped`.
void appendJsonString(std::string& escaped, std::string_view text)
{
    escaped += '"';
    for (size_t i = 0; i < text.size();) {
        const char c = text[i];
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80) {
            const size_t length = sequenceLength(text, i);
            if (length == 0) {
                escaped += "\\ufffd";
                ++i;
            } else {
                escaped.append(text.substr(i, length));
                i += length;
            }
            continue;
        }
        switch (c) {
        case '"': escaped += "\\\""; break;
        case '\\': escaped += "\\\\"; break;
        case '\n': escaped += "\\n"; break;
        case '\r': escaped += "\\r"; break;
        case '\t': escaped += "\\t"; break;
        default:
            if (byte < 0x20) {
                char code[8];
                std::snprintf(code, sizeof code, "\\u%04x", byte);
                escaped += code;
            } else {
                escaped += c;
            }
        }
        ++i;
    }
    escaped += '"';
}

// The event as one JSON object, appended to `out`: a list of thousands is
// built in memory and written at once, not a stream insertion per field.
void appendEventJson(std::string& out, const EventBase& event)
{
    const auto key = [&out](const char* name) {
        out += ",\"";
        out += name;
        out += "\":";
    };
    out += "{\"eventNumber\":";
    out += std::to_string(event.getEventNumber());
    key("rollName");
    appendJsonString(out, event.getRollName());
    key("clipName");
    appendJsonString(out, event.getClipName());
    key("edlFile");
    appendJsonString(out, event.getEdlFile());
    key("transitionType");
    out += std::to_string(event.getTransitionType());
    key("transitionDuration");
    out += std::to_string(event.getTransitionDuration());
    key("srcIn");
    appendJsonString(out, event.getSrcIn().toString());
    key("srcOut");
    appendJsonString(out, event.getSrcOut().toString());
    key("dstIn");
    appendJsonString(out, event.getDstIn().toString());
    key("dstOut");
    appendJsonString(out, event.getDstOut().toString());
    // The number as the JSON library prints a double, so that scripts see
    // the same values as before; most events run at normal speed.
    key("motionSpeed");
    if (!hasSpeed(event))
        out += "null";
    else if (event.getMotionSpeed() == 1.0)
        out += "1.0";
    else
        out += nlohmann::json(event.getMotionSpeed()).dump();
    key("vfx");
    out += event.isVfx() ? "true" : "false";
    key("states");
    out += '[';
    bool first = true;
    for (EventState state : event.getStates()) {
        if (!first)
            out += ',';
        first = false;
        out += std::to_string(static_cast<int>(state));
    }
    out += ']';
    if (const auto* healed = dynamic_cast<const core::HealedEvent*>(&event)) {
        key("healedEvents");
        out += '[';
        first = true;
        for (const core::EventPtr& part : healed->getHealedEvents().getEvents()) {
            if (!first)
                out += ',';
            first = false;
            appendEventJson(out, *part);
        }
        out += ']';
    }
    out += '}';
}

} // namespace

void writeJsonString(std::ostream& out, std::string_view text)
{
    std::string escaped;
    escaped.reserve(text.size() + 2);
    appendJsonString(escaped, text);
    out << escaped;
}

void writeEventJson(std::ostream& out, const EventBase& event)
{
    std::string text;
    appendEventJson(text, event);
    out << text;
}

void writeEventListJson(std::ostream& out, const EventList& list, std::string_view indent)
{
    if (list.getSize() == 0) {
        out << "[]";
        return;
    }
    std::string text = "[\n";
    for (size_t i = 0; i < list.getSize(); ++i) {
        text += indent;
        text += "  ";
        appendEventJson(text, *list.getEvent(i));
        text += i + 1 < list.getSize() ? ",\n" : "\n";
    }
    text += indent;
    text += ']';
    out << text;
}

namespace {

std::string transitionText(const EventBase& event)
{
    const char letter = EventBase::transitionLetter(event.getTransitionType());
    if (letter == 'C')
        return "C";
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%c %03d", letter, event.getTransitionDuration());
    return buffer;
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

// Text left-aligned in width columns. Not printf's "%s": that would end the
// text at a NUL byte, and every byte of a name is printed.
void appendPadded(std::string& row, const std::string& text, size_t width)
{
    row += text;
    if (text.size() < width)
        row.append(width - text.size(), ' ');
    row += ' ';
}

void printRow(std::ostream& out, const EventBase& event, const char* indent)
{
    char number[16];
    std::snprintf(number, sizeof number, "%-5d ", event.getEventNumber());
    std::string row = indent;
    row += number;
    appendPadded(row, event.getRollName(), 12);
    appendPadded(row, event.getClipName(), 24);
    appendPadded(row, transitionText(event), 6);
    row += event.getSrcIn().toString() + ' ' + event.getSrcOut().toString() + ' ' + event.getDstIn().toString() + ' ' +
           event.getDstOut().toString();
    char speed[32];
    if (hasSpeed(event))
        std::snprintf(speed, sizeof speed, " %7.3f  ", event.getMotionSpeed());
    else
        std::snprintf(speed, sizeof speed, " %7s  ", "");
    row += speed;
    row += stateLine(event);
    row += '\n';
    out << row;
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
