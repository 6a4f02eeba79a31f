#include "core/fileio/CmxParser.h"

#include "core/EventList.h"
#include "util/StringUtil.h"

#include <fstream>
#include <memory>
#include <stdexcept>

namespace montala::core::fileio {

using util::Result;
using util::StringUtil;

namespace {

constexpr const char* rollCharacters =
    ".-_abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";

bool consistsOf(const std::string& text, const char* allowed)
{
    return text.find_first_not_of(allowed) == std::string::npos;
}

bool startsWith(const std::string& text, const char* prefix)
{
    return text.rfind(prefix, 0) == 0;
}

bool contains(const std::string& text, const char* part)
{
    return text.find(part) != std::string::npos;
}

// A piece that the line does not have. Raised and caught inside the
// event-line parse: the line is then dropped.
struct MissingPiece {};

const std::string& pieceAt(const std::vector<std::string>& pieces, size_t index)
{
    if (index >= pieces.size())
        throw MissingPiece{};
    return pieces[index];
}

// Digits only, as an int; false if empty, not digits or too large for one.
bool readNumber(const std::string& text, int& value)
{
    if (text.empty() || !consistsOf(text, "0123456789"))
        return false;
    long long number = 0;
    for (char c : text) {
        number = number * 10 + (c - '0');
        if (number > 2147483647LL)
            return false;
    }
    value = static_cast<int>(number);
    return true;
}

} // namespace

Result::Type CmxParser::parse(const std::u16string& path, EventList& list, Framerate& framerate,
                              bool acceptAudio)
{
    try {
        std::ifstream stream(StringUtil::toUtf8(path), std::ios::binary);
        if (!stream.is_open())
            return Result::FileNotOpened;
        const std::string edlFile = StringUtil::toUtf8(StringUtil::getFileName(path));
        return parseStream(stream, edlFile, list, framerate, acceptAudio);
    } catch (Result::Type code) {
        return code;
    }
}

Result::Type CmxParser::parseStream(std::istream& stream, const std::string& edlFile, EventList& list,
                                    Framerate& framerate, bool acceptAudio)
{
    try {
        readLines(stream, edlFile, list, acceptAudio);
        framerate = suggestedFramerate();
        return Result::Ok;
    } catch (Result::Type code) {
        return code;
    }
}

void CmxParser::readLines(std::istream& stream, const std::string& edlFile, EventList& list,
                          bool acceptAudio)
{
    dropState = -1;
    frameHistogram.fill(0);

    // The dummy stands before the first event so that a comment of a
    // transition pair always has a "previous" to compare with.
    EventPtr previous = std::make_shared<EventBase>();
    EventPtr current;
    bool lastLineGood = false;

    // CR, LF and CR LF files all work: the line end found here splits the
    // lines, and trimming takes off the other character of a CR LF pair.
    const char delimiter = StringUtil::usesCarriageReturns(stream) ? '\r' : '\n';
    std::string raw;
    while (std::getline(stream, raw, delimiter)) {
        const std::string line = StringUtil::trim(raw);
        if (line.empty())
            continue;
        if (startsWith(line, "FCM")) {
            // "NON-DROP FRAME" holds "DROP FRAME" too, so it is looked for first.
            if (contains(line, "NON-DROP FRAME"))
                dropState = 0;
            else if (contains(line, "DROP FRAME"))
                dropState = 1;
        } else if (line[0] >= '0' && line[0] <= '9') {
            if (lastLineGood) {
                previous = current;
                list.addEvent(current);
            }
            current = std::make_shared<EventBase>();
            current->setEdlFile(edlFile);
            lastLineGood = parseEventLine(line, *current, acceptAudio);
        } else if (line[0] == '*' && lastLineGood) {
            // The two lines of a transition share one number: the outgoing
            // clip's comment goes to the first of them, the incoming one's to
            // the second, and any other comment of the pair is dropped.
            if (previous->getEventNumber() == current->getEventNumber()) {
                if (contains(line, "FROM CLIP"))
                    addComment(line, *previous);
                else if (contains(line, "TO CLIP"))
                    addComment(line, *current);
            } else {
                addComment(line, *current);
            }
        }
        // Anything else (title, M2 motion lines, audio notes, comments of a
        // dropped event) is not read.
    }
    if (lastLineGood)
        list.addEvent(current);
}

void CmxParser::addComment(const std::string& line, EventBase& event)
{
    const size_t name = line.find("NAME:");
    if (name != std::string::npos) {
        const std::string clipName = StringUtil::trim(line.substr(name + 5));
        if (clipName.empty())
            return;
        event.setClipName(clipName);
    }
    event.setEdlText(event.getEdlText() + "\n" + line);
}

bool CmxParser::parseEventLine(const std::string& line, EventBase& event, bool acceptAudio)
{
    try {
        const std::vector<std::string> pieces = StringUtil::split(line, ' ', true);

        int number = 0;
        if (readNumber(pieceAt(pieces, 0), number))
            event.setEventNumber(number);
        else
            event.addState(EventState::BadEventNumber);

        const std::string& roll = pieceAt(pieces, 1);
        if (consistsOf(roll, rollCharacters))
            event.setRollName(roll);
        else
            event.addState(EventState::BadRollName);

        const std::string& channels = pieceAt(pieces, 2);
        if (channels.find_first_of(acceptAudio ? "ABV" : "BV") == std::string::npos)
            event.addState(EventState::NotVideoEvent);

        const std::string& transition = pieceAt(pieces, 3);
        size_t firstTimecode = 4;
        switch (transition.empty() ? '\0' : transition[0]) {
        case 'C':
            event.setTransitionType(EventBase::Cut);
            break;
        case 'D':
        case 'W': {
            event.setTransitionType(transition[0] == 'D' ? EventBase::Dissolve : EventBase::Wipe);
            int duration = 0;
            if (readNumber(pieceAt(pieces, 4), duration))
                event.setTransitionDuration(duration);
            else
                event.addState(EventState::BadTransitionDuration);
            firstTimecode = 5;
            break;
        }
        default:
            event.addState(EventState::UnsupportedTransition);
            break;
        }

        for (int which = 0; which < 4; ++which)
            parseTimecode(pieceAt(pieces, firstTimecode + which), event, which);

        event.setEdlText(line);
        return true;
    } catch (MissingPiece) {
        return false;
    } catch (Result::Type) {
        return false;
    }
}

void CmxParser::parseTimecode(const std::string& piece, EventBase& event, int which)
{
    static constexpr EventState badStates[4] = {EventState::BadSrcIn, EventState::BadSrcOut,
                                                EventState::BadDstIn, EventState::BadDstOut};
    int fields[4];
    if (!Timecode::parseText(piece, fields)) {
        event.addState(badStates[which]);
        return;
    }
    const Timecode tc(fields[0], fields[1], fields[2], fields[3]);
    switch (which) {
    case 0: event.setSrcIn(tc); break;
    case 1: event.setSrcOut(tc); break;
    case 2: event.setDstIn(tc); break;
    default: event.setDstOut(tc); break;
    }
    if (fields[3] < 60)
        ++frameHistogram[static_cast<size_t>(fields[3])];
}

Framerate CmxParser::suggestedFramerate() const
{
    if (dropState == 1)
        return Framerate(30, 1);
    // Only a lower bound: a 25 frames file that never shows frame 24 comes
    // out as 24. The caller compares it with the project's rate.
    int highest = 0;
    for (int frames = 59; frames > 0; --frames) {
        if (frameHistogram[static_cast<size_t>(frames)] != 0) {
            highest = frames;
            break;
        }
    }
    int nominal = 60;
    if (highest == 0)
        nominal = 0;
    else if (highest <= 23)
        nominal = 24;
    else if (highest == 24)
        nominal = 25;
    else if (highest <= 29)
        nominal = 30;
    return Framerate(nominal, dropState);
}

Result::Type parseEdlFile(const std::u16string& path, EventList& list, Framerate& framerate, bool acceptAudio)
{
    auto parser = std::make_shared<CmxParser>();
    EventList parsed(EventList::ChangeKind);
    const Result::Type result = parser->parse(path, parsed, framerate, acceptAudio);
    list = parsed;
    return result;
}

} // namespace montala::core::fileio
