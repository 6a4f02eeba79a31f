#pragma once

#include "core/EventBase.h"
#include "core/fileio/ParserInterface.h"

#include <array>
#include <istream>
#include <string>

namespace montala::core::fileio {

// The CMX 3600 reader. Forgiving by design: it drops a line that it cannot
// split into enough fields, keeps a line whose fields are wrong (the event
// carries a state) and ignores every line it does not know. Only a file that
// cannot be opened fails.
class CmxParser : public ParserInterface {
public:
    util::Result::Type parse(const std::u16string& path, EventList& list, Framerate& framerate,
                             bool acceptAudio) override;
    // The same over an open stream; edlFile names the events' file.
    util::Result::Type parseStream(std::istream& stream, const std::string& edlFile, EventList& list,
                                   Framerate& framerate, bool acceptAudio);

private:
    void readLines(std::istream& stream, const std::string& edlFile, EventList& list, bool acceptAudio);
    bool parseEventLine(const std::string& line, EventBase& event, bool acceptAudio);
    void parseTimecode(const std::string& piece, EventBase& event, int which);
    static void addComment(const std::string& line, EventBase& event);
    Framerate suggestedFramerate() const;

    int dropState = -1;
    std::array<int, 60> frameHistogram{};
};

// Parses into a fresh scratch list that is then assigned to list, whatever
// the result.
util::Result::Type parseEdlFile(const std::u16string& path, EventList& list, Framerate& framerate,
                                bool acceptAudio);

} // namespace montala::core::fileio
