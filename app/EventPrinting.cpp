#include "app/EventPrinting.h"

#include "core/events/HealedEvent.h"
#include "core/fileio/TextEncoding.h"
#include "util/StringUtil.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <iterator>
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

// Whether a byte of a name must be escaped or checked as UTF-8 in JSON.
bool needsCare(unsigned char byte)
{
    return byte < 0x20 || byte == '"' || byte == '\\' || byte >= 0x80;
}

// The text as a JSON string, appended to `escaped`. Most names need no
// escape and go in at once.
void appendJsonString(std::string& escaped, std::string_view text)
{
    escaped += '"';
    size_t plain = 0;
    while (plain < text.size() && !needsCare(static_cast<unsigned char>(text[plain])))
        ++plain;
    escaped.append(text.substr(0, plain));
    for (size_t i = plain; i < text.size();) {
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

void appendNumber(std::string& out, int value)
{
    char digits[16];
    const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    out.append(digits, static_cast<size_t>(end - digits));
}

// A timecode as a JSON string: hh:mm:ss:ff, which never needs an escape.
void appendTimecode(std::string& out, const core::Timecode& tc)
{
    const int fields[4] = {tc.getHours(), tc.getMinutes(), tc.getSeconds(), tc.getFrames()};
    if (std::any_of(std::begin(fields), std::end(fields), [](int field) { return field < 0 || field > 99; })) {
        appendJsonString(out, tc.toString());
        return;
    }
    char text[] = "\"00:00:00:00\"";
    for (size_t i = 0; i < 4; ++i) {
        text[1 + i * 3] = static_cast<char>('0' + fields[i] / 10);
        text[2 + i * 3] = static_cast<char>('0' + fields[i] % 10);
    }
    out.append(text, 13);
}

// The event as one JSON object, appended to `out`.
void appendEventJson(std::string& out, const EventBase& event)
{
    const auto key = [&out](std::string_view name) {
        out += ",\"";
        out += name;
        out += "\":";
    };
    out += "{\"eventNumber\":";
    appendNumber(out, event.getEventNumber());
    key("rollName");
    appendJsonString(out, event.getRollName());
    key("clipName");
    appendJsonString(out, event.getClipName());
    key("edlFile");
    appendJsonString(out, event.getEdlFile());
    key("transitionType");
    appendNumber(out, event.getTransitionType());
    key("transitionDuration");
    appendNumber(out, event.getTransitionDuration());
    key("srcIn");
    appendTimecode(out, event.getSrcIn());
    key("srcOut");
    appendTimecode(out, event.getSrcOut());
    key("dstIn");
    appendTimecode(out, event.getDstIn());
    key("dstOut");
    appendTimecode(out, event.getDstOut());
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
    for (int value = 0; value <= static_cast<int>(EventState::InvalidTimecodeRange); ++value) {
        if (!event.hasState(static_cast<EventState>(value)))
            continue;
        if (!first)
            out += ',';
        first = false;
        appendNumber(out, value);
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
    // Written in pieces of about 64 KB: few stream calls, and no copy of
    // the whole document in memory.
    constexpr size_t piece = 65536;
    std::string text;
    text.reserve(piece + 4096);
    text = "[\n";
    for (size_t i = 0; i < list.getSize(); ++i) {
        text += indent;
        text += "  ";
        appendEventJson(text, *list.getEvent(i));
        text += i + 1 < list.getSize() ? ",\n" : "\n";
        if (text.size() >= piece) {
            out.write(text.data(), static_cast<std::streamsize>(text.size()));
            text.clear();
        }
    }
    text += indent;
    text += ']';
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
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

void appendRow(std::string& row, const EventBase& event, const char* indent)
{
    row += indent;
    const size_t numberStart = row.size();
    appendNumber(row, event.getEventNumber());
    if (row.size() - numberStart < 5)
        row.append(5 - (row.size() - numberStart), ' ');
    row += ' ';
    appendPadded(row, event.getRollName(), 12);
    appendPadded(row, event.getClipName(), 24);
    appendPadded(row, transitionText(event), 6);
    row += event.getSrcIn().toString();
    row += ' ';
    row += event.getSrcOut().toString();
    row += ' ';
    row += event.getDstIn().toString();
    row += ' ';
    row += event.getDstOut().toString();
    if (hasSpeed(event) && event.getMotionSpeed() == 1.0) {
        // As " %7.3f  " prints it, without a formatted print for most rows.
        row += "   1.000  ";
    } else {
        char speed[32];
        if (hasSpeed(event))
            std::snprintf(speed, sizeof speed, " %7.3f  ", event.getMotionSpeed());
        else
            std::snprintf(speed, sizeof speed, " %7s  ", "");
        row += speed;
    }
    row += stateLine(event);
    row += '\n';
}

} // namespace

void printEventTable(std::ostream& out, const EventList& list)
{
    char header[256];
    std::snprintf(header, sizeof header, "%-5s %-12s %-24s %-6s %-11s %-11s %-11s %-11s %7s  %s\n", "EVENT",
                  "ROLL", "CLIP NAME", "TRANS", "SRC IN", "SRC OUT", "DST IN", "DST OUT", "SPEED", "STATE");
    out << header;
    // Written in pieces of about 64 KB, as the JSON is.
    constexpr size_t piece = 65536;
    std::string text;
    text.reserve(piece + 4096);
    for (const core::EventPtr& event : list.getEvents()) {
        appendRow(text, *event, "");
        if (const auto* healed = dynamic_cast<const core::HealedEvent*>(event.get())) {
            for (const core::EventPtr& part : healed->getHealedEvents().getEvents())
                appendRow(text, *part, "  ");
        }
        if (text.size() >= piece) {
            out.write(text.data(), static_cast<std::streamsize>(text.size()));
            text.clear();
        }
    }
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    out << "Total: " << list.getSize() << "\n";
    out << "Invalid: " << list.countFlawedEvents() << "\n";
}

} // namespace montala::app
