#pragma once

#include "util/Result.h"

#include <string>

namespace montala::core {

// Why the last generation of a Change EDL failed, and on which event, kept
// beside the thrown code so that the caller can name the event without
// redoing the work. Empty (code Ok) after a run that succeeded.
struct GenerationFailure {
    enum class Stage {
        None,
        SplitOldTransition, // a dissolve or wipe of the Old EDL could not be split
        SplitNewTransition, // the same in the New EDL
        Match,              // placing a match of a New and an Old event left the day
    };

    // What is known of an event that took part: enough for a person to
    // find it in its EDL file.
    struct EventInfo {
        int eventNumber = 0;
        std::string rollName;
        std::string clipName;
        std::string edlFile;
        // The event's line as it stood in its file, empty if not known.
        std::string lineText;
    };

    util::Result::Type code = util::Result::Ok;
    Stage stage = Stage::None;
    EventInfo event;    // the transition, or the New event of a match
    EventInfo oldEvent; // the Old event of a match
    // What is wrong with the event, for example "SRC OUT 01:00:00:00 lies
    // before SRC IN 01:00:05:00".
    std::string reason;

    bool isSet() const { return code != util::Result::Ok; }
    // One line for a person: the event, its file and line, and the reason.
    std::string describe() const;
};

} // namespace montala::core
