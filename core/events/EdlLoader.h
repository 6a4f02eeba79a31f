#pragma once

#include "core/events/EventList.h"
#include "core/time/Framerate.h"
#include "core/fileio/CmxParser.h"
#include "core/fileio/ParseReport.h"
#include "util/Result.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace montala::core {

struct EdlLoadOptions {
    bool acceptAudio = false;
    bool renameBRolls = true;
};

// An event of a file that a run cannot use as it stands.
struct UnusableEvent {
    size_t line = 0; // 0 when the event came from no file line
    int eventNumber = 0;
    std::string reason; // the event's state messages, "; " between them
};

// What became of one file of a load: everything the Add EDLs overlay and
// the command line tell the user about it.
struct EdlFileReport {
    std::string path;
    std::string fileName; // without its folder, as the messages name it
    bool opened = false;
    util::Result::Type result = util::Result::Ok;
    Framerate suggestedRate;
    size_t events = 0;
    // The rate the file suggests contradicts the project's.
    bool rateMismatch = false;
    // Some timecodes do not exist at the project's rate.
    bool timecodesOffRate = false;
    // No event without a format error: the file adds nothing usable.
    bool noValidEntries = false;
    // Why it did not open, and the lines the reader dropped or changed.
    fileio::ParseReport parse;
    // Events kept with a state that keeps them out of a Change EDL (a bad
    // roll name, an invalid timecode, ...), in file order.
    std::vector<UnusableEvent> unusable;
    // Of those, the audio-only events, which --accept-audio would read.
    size_t audioEvents = 0;
};

// Why a run cannot use the event as it stands: its state messages, "; "
// between them; empty when it can.
std::string unusableReason(const EventBase& event);

// The events of list that carry a state other than the legacy text, with
// the line each came from (lines[i] for the i-th event, when given).
std::vector<UnusableEvent> unusableEvents(const EventList& list, const std::vector<size_t>& lines = {});

// The project rate that a set of files suggests: that of the first file
// that can be read.
struct RateSuggestion {
    std::optional<Framerate> rate;
    // The file it came from; empty when no file could be read. When rate is
    // empty and this is not, that file suggests no rate.
    std::string path;
    // The file has no FCM line, and the rate was taken as non-drop.
    bool dropModeAssumed = false;
};

// Loads EDL files one after the other into lists, as the Add EDLs overlay
// does. Without a known project rate, suggestProjectRate() reads the first
// readable file to find it; that file is kept as read, and load() builds its
// events at the rate then set instead of reading it again.
class EdlLoader {
public:
    EdlLoader(std::vector<std::string> paths, EdlLoadOptions options);

    RateSuggestion suggestProjectRate();
    // Appends the events of the file at index to list, judged at the current
    // project rate, B-roll renamed within that file alone when the options
    // say so. A file that cannot be read adds nothing.
    EdlFileReport load(size_t index, EventList& list);
    // Every file in turn; true when all of them opened.
    bool loadAll(EventList& list, std::vector<EdlFileReport>& reports);

    const std::vector<std::string>& getPaths() const { return paths; }

private:
    std::vector<std::string> paths;
    EdlLoadOptions options;
    // The file that suggestProjectRate() read, waiting to be built.
    std::optional<size_t> readIndex;
    std::unique_ptr<fileio::CmxParser> readParser;
};

} // namespace montala::core
