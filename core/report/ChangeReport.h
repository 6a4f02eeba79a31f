#pragma once

#include "core/model/DataModel.h"
#include "core/events/EventList.h"
#include "core/time/Framerate.h"
#include "core/model/Settings.h"
#include "core/events/VfxPatternEntry.h"

#include <string>
#include <vector>

namespace montala::core::report {

// What became of one shot between the cuts, as a sound editor names it.
enum class Fate {
    Unchanged,         // same place, same length
    Moved,             // same length, another place
    Trimmed,           // shorter at the head and/or the tail
    Extended,          // longer: the New cut shows handles the Old did not
    Split,             // one Old shot now stands in two or more places
    Deleted,           // an Old shot of which nothing is left
    Inserted,          // New material with no Old counterpart
    SpeedChanged,      // same picture at another speed
    Frozen,            // a frame of the Old cut held
    TransitionChanged, // a dissolve or wipe of another kind or length
    VfxVersion,        // a new version of a VFX shot
    ReplacedTake,      // another take of the same scene in place of a gone one
    Unmatched,         // the Old cut has the picture, yet nothing matched it
};
constexpr int fateCount = 13;

// The word scripts read ("speed-changed") and the one people read
// ("speed changed").
const char* fateName(Fate fate);
const char* fateLabel(Fate fate);

// Why a stretch of the New cut has no Change event to give it sound.
enum class GapReason {
    NewMaterial,       // nothing of it was in the Old cut
    Handles,           // source just beyond what the Old shot showed
    TransitionChanged, // the mixed frames of a dissolve of changed length
    SpeedChanged,      // generation matches only equal speeds
    Frozen,            // a freeze of a frame that ran in the Old cut
    VfxPattern,        // a VFX version whose name pattern is not set
    UnmatchedName,     // the same picture under another roll (or clip) name
    FlawedEvent,       // the New event has errors and takes no part
    NotCarried,        // matchable, but no Change event carries it
};
const char* gapReasonName(GapReason reason);

// A Change event and, for a healed one, which of its parts (1 on); part 0
// is the event itself (or a gap inside a healed event).
struct ChangeRef {
    int event = 0;
    int part = 0;
    bool operator==(const ChangeRef& other) const { return event == other.event && part == other.part; }
};

// One line of the report: a New shot, or an Old shot that is gone. Places
// are frame counts of the record timelines at the report's rate; out points
// are exclusive, as in the EDLs.
struct ShotRow {
    Fate fate = Fate::Unchanged;
    std::string detail; // what a person would add to the fate: "12 off the head, 8 off the tail"
    bool hasNew = false;
    int newEvent = 0;
    std::string roll; // the New shot's names; the Old shot's for a gone one
    std::string clip;
    int newIn = 0;
    int newOut = 0;
    bool hasOld = false;
    int oldEvent = 0;
    std::string oldRoll;
    std::string oldClip;
    int oldIn = 0;
    int oldOut = 0;
    bool hasOffset = false;
    int offset = 0; // New place minus Old place of the same picture
    std::vector<ChangeRef> carriedBy;

    int newDuration() const { return hasNew ? newOut - newIn : 0; }
    int oldDuration() const { return hasOld ? oldOut - oldIn : 0; }
};

// A stretch of the New cut that no Change event covers.
struct NeedsSound {
    int in = 0;
    int out = 0;
    int newEvent = 0;
    GapReason reason = GapReason::NewMaterial;
    std::string why;
};

// Two Change events that claim the same New frames.
struct ChangeOverlap {
    int in = 0;
    int out = 0;
    int first = 0;
    int second = 0;
};

// A match that was probably missed, and the option that would make it.
struct Suggestion {
    std::string text;
    std::string option;
};

struct ChangeReport {
    Framerate rate;
    std::vector<ShotRow> rows; // New shots in New order, then gone Old shots in Old order
    std::vector<NeedsSound> needsSound;
    std::vector<ChangeOverlap> overlaps;
    std::vector<Suggestion> suggestions;
    int newFrames = 0;        // New picture: the union of the New shots
    int coveredFrames = 0;    // of it, carried by a Change event
    int needsSoundFrames = 0; // of it, not
    int oldFrames = 0;        // Old picture
    int droppedFrames = 0;    // of it, carried by no Change event

    int count(Fate fate) const;
    // hh:mm:ss:ff of a frame count at the report's rate; signed with + or -.
    std::string timecode(int frames) const;
    std::string signedTimecode(int frames) const;
    // One paragraph: the counts per fate and what is covered, needs sound
    // and is dropped.
    std::string summary() const;
};

struct ReportOptions {
    MatchName matchName = MatchName::RollName;
    std::vector<VfxPatternEntry> vfxPatterns; // only active rows are used
};

// Reads the two cuts and the Change EDL made of them (healed or not, edited
// or not) and tells, shot by shot, what happened:
//
//   Old   |001 |002    |003  |004|        rec 1:00:00:00 on
//   New   |001 |003  |NEW|002    |        rec 1:00:00:00 on
//   Change [1 ]    [2  ]   [3    ]
//   rows  001 unchanged, 003 moved -7 and trimmed 2 off the tail,
//         NEW inserted (needs sound), 002 moved +9, Old 004 deleted
//
// A New shot is followed through the Change events over its record range
// back to the Old shots they came from; what no Change event covers is
// looked up in the Old cut by source to say why. Every New frame is either
// carried or needs sound, never both and never neither; frames two Change
// events claim are listed as overlaps.
class ChangeReportBuilder {
public:
    ChangeReport build(const EventList& oldList, const EventList& newList, const EventList& changeList,
                       const ReportOptions& options, const Framerate& rate) const;
    // The report of a model's three lists under its own match rule and
    // VFX rows.
    ChangeReport build(const DataModel& model, const Framerate& rate) const;
};

} // namespace montala::core::report
