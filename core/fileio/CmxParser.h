#pragma once

#include "core/events/EventArena.h"
#include "core/events/EventBase.h"
#include "core/fileio/ParseReport.h"
#include "core/fileio/ParserInterface.h"

#include <array>
#include <cstdint>
#include <istream>
#include <string>
#include <string_view>
#include <vector>

namespace montala::core::fileio {

// The CMX 3600 reader. Forgiving by design: it drops a line that it cannot
// split into enough fields, keeps a line whose fields are wrong (the event
// carries a state) and ignores every line it does not know. Only a file that
// cannot be opened fails. What it drops or changes on the way is listed in
// its report, with the line number.
//
// Reading is two steps. read() splits the text into events whose timecodes
// wait as numbers; build() hands the timecodes to the events, which judge
// them at the project's rate, and adds the events to a list. parse() is the
// two in one. A caller whose project rate follows from the file itself reads
// it, looks at the suggested rate, sets the project rate and builds, so that
// no file is read twice.
class CmxParser : public ParserInterface {
public:
    util::Result::Type parse(const std::u16string& path, EventList& list, Framerate& framerate,
                             bool acceptAudio) override;
    // The same over an open stream; edlFile names the events' file.
    util::Result::Type parseStream(std::istream& stream, const std::string& edlFile, EventList& list,
                                   Framerate& framerate, bool acceptAudio);

    // FileNotOpened when the path names no readable regular file; the
    // report says why.
    util::Result::Type read(const std::u16string& path, bool acceptAudio);
    util::Result::Type readStream(std::istream& stream, const std::string& edlFile, bool acceptAudio);
    void readText(std::string_view text, const std::string& edlFile, bool acceptAudio);
    // The rate that the text read last suggests.
    Framerate getSuggestedFramerate() const;
    // Adds the events read last to list, in file order, at the current
    // project rate. The events go once: a second call adds nothing.
    void build(EventList& list);

    const ParseReport& getReport() const { return report; }

private:
    // An event whose line was good, as plain values: the event itself is
    // made by build(), in one step, once the rate is known.
    struct PendingEvent {
        // The event's text: bytes of texts from textStart.
        size_t textStart = 0;
        size_t textLength = 0;
        // The names, as bytes of the event's text from its start.
        uint32_t rollStart = 0;
        uint32_t rollLength = 0;
        uint32_t clipStart = 0;
        uint32_t clipLength = 0;
        int eventNumber = 0;
        int transitionDuration = 0;
        uint16_t formatStates = 0; // bits of the EventStates found
        uint8_t transitionType = EventBase::Cut;
        uint8_t readTimecodes = 0; // bit n: timecode n matched the pattern
        // Two digits a field at most, as the pattern allows.
        std::array<std::array<uint8_t, 4>, 4> timecodes{};
        size_t line = 0;

        void addState(EventState state)
        {
            formatStates = static_cast<uint16_t>(formatStates | (1u << static_cast<int>(state)));
        }
    };

    // sizeHint: the bytes the stream is expected to hold, to make room for
    // its events at once.
    bool readWhole(std::istream& stream, const std::string& edlFile, bool acceptAudio, size_t sizeHint = 0);
    // Takes the whole lines of text, and at the end of the text the last
    // one too; returns where the lines not taken begin.
    size_t takeLines(std::string_view text, char delimiter, size_t& lineNumber, bool acceptAudio, bool atEnd);
    void startText(const std::string& edlFile, size_t textSize);
    // plain: the line is known to hold neither a NUL nor a byte above 0x7F.
    void takeLine(std::string_view line, size_t lineNumber, bool acceptAudio, bool plain);
    void finishText();
    void readLine(std::string_view line, size_t lineNumber, bool acceptAudio);
    bool parseEventLine(std::string_view line, PendingEvent& pending, bool acceptAudio);
    void parseTimecode(std::string_view piece, PendingEvent& pending, int which);
    void addComment(std::string_view line, PendingEvent& pending);

    int dropState = -1;
    std::array<int, 60> frameHistogram{};
    ParseReport report;

    // Shared by the events of the text.
    std::shared_ptr<const std::string> edlFile;
    EventArena arena;
    // The texts of all events one after the other, which they share once
    // built: one block for the file instead of one for each event.
    std::string texts;
    std::vector<PendingEvent> pending;
    // The event line being read, and whether it was good; it joins pending
    // when the next event line or the end of the text comes.
    PendingEvent current;
    bool lastLineGood = false;
    // Stands before the first event, so that a comment of a transition pair
    // always has a "previous" to compare with; what it receives is lost.
    PendingEvent dummy;
    // A line as it reads once made UTF-8 and free of NULs.
    std::string repaired;
};

// Parses into a fresh scratch list that is then assigned to list, whatever
// the result; a list that nobody listens to takes the events directly, to
// the same end. The report, when asked for, receives the parser's.
util::Result::Type parseEdlFile(const std::u16string& path, EventList& list, Framerate& framerate,
                                bool acceptAudio, ParseReport* report = nullptr);

} // namespace montala::core::fileio
