#pragma once

#include "core/events/EventBase.h"
#include "core/events/EventList.h"
#include "core/generation/GenerationFailure.h"
#include "core/generation/MatchCandidate.h"
#include "core/model/Settings.h"
#include "core/events/VfxNameFilter.h"

#include <string>
#include <vector>

namespace montala::core {

// Works out the Change EDL from the Old and the New EDL. Source timecode is
// the common ground: an Old and a New event show the same picture where
// their match keys are equal and their source ranges overlap. Each such
// overlap becomes one Change event whose SRC is the stretch of the old
// record timeline and whose DST the stretch of the new one:
//
//   Old  src 01:00:00 |=========A=========| 01:00:10   at rec 10:00:00
//   New  src      01:00:02 |===A===| 01:00:08           at rec 10:00:20
//   Change         SRC 10:00:02-10:00:08  DST 10:00:20-10:00:26
//
// New picture found nowhere in the Old EDL gives no event (a hole), and
// neither does Old picture that is gone.
//
// Rivals: when a source was used twice in the Old EDL, one New event gets
// two candidates for the same source frames. The longer candidate stays;
// of two equally long ones, the one whose time shift lies nearer to that of
// the event emitted last, which keeps a moved run of shots together. On an
// exact tie the candidate met later in the walk stays. A loser goes whole,
// even where the winner does not cover all of it:
//
//   New source   |-------------------|
//   candidate X  |======|                 (shorter: deleted whole)
//   candidate Y      |===============|
//   result       hole|===============|
//
// Transitions: the incoming clip of a dissolve or wipe is split into the
// mixed part under the transition (named TRANS_<in>--<out>_<tc>_<tc>) and
// the clean rest, so each matches on its own; an unchanged transition is
// joined again at the end:
//
//   line 2  A  cut       rec 10:00:10:00-10:00:10:00
//   line 3  B  diss 25   rec 10:00:10:00-10:00:15:00
//   split   TRANS_B--A_...  10:00:10:00-10:00:11:00 | B 10:00:11:00-10:00:15:00
//   merged  B               10:00:10:00-10:00:15:00
//
// Every dissolve and wipe is split, flawed or not: one whose timecodes do not
// fit the rate, or whose range runs backwards, cannot be split and fails the
// whole generation rather than leave its stretch out without a word.
//
// Finding the candidates: Old events are grouped by key and, within a key,
// into classes of events that match alike (same source range, speed and
// transition; only their record places differ). An interval index over the
// classes' source ranges gives the Old events a New event overlaps, so the
// work follows the overlaps and not the size of a roll.
//
// Deciding the rivals: candidates whose New source stretches overlap,
// directly or through others, are decided together. When they all overlap
// one another (a take used many times, perhaps trimmed differently) the
// walk keeps the longest, then the one nearest the last shift, then the
// latest: each class's nearest member is found by a binary search over its
// record places, so many uses of one source range cost little:
//
//   New source      |===================|
//   class A (x500)  |===========|             all rivals: one stays,
//   class B (x3)        |=============|       the longest, then nearest
//
// Otherwise their candidates go through the pairwise walk, which costs the
// candidates times those that do not rival the outer one: quadratic at
// worst, in the Old events of one key that overlap one New event in
// different ways without sharing a common stretch.
//
// The input lists are never touched: a transition is split on a copy of its
// event, and every event placed in the change list is new. Failures are thrown as
// Result::Type (OutOfRange when arithmetic leaves the day), and
// lastFailure() then names the event and says why.
class ChangeEdlGenerator {
public:
    // Takes the match name and the active, non-empty VFX rows. A row with a
    // character that is not allowed throws Result::InvalidArgument.
    void configure(MatchName rule, const std::vector<VfxPatternEntry>& vfxPatterns);

    // Replaces the change list by the generated events. Returns 0; every
    // failure is thrown.
    int generate(const EventList& oldList, const EventList& newList, EventList& changeList);

    // Splits every dissolve or wipe of the list into the part under the
    // transition, appended behind all other events, and the clean rest.
    // Throws when a timecode of one does not fit the rate or its range runs
    // backwards (OutOfRange or FramesAboveRate).
    void splitTransitions(EventList& list) const;
    // The normalised name the rule compares; changedByVfx tells whether the
    // VFX patterns changed it.
    std::string matchKey(const EventBase& event, bool& changedByVfx) const;
    bool tryMatch(const EventBase& oldEvent, const EventBase& newEvent, MatchCandidate& candidate) const;
    // The overlap of the ranges a and b, with the offset of its start from
    // each range's start. Ranges that only touch do not overlap; the
    // outputs are left alone then.
    static bool computeOverlap(const Timecode& aIn, const Timecode& aOut, const Timecode& bIn,
                               const Timecode& bOut, Timecode& aOffset, Timecode& bOffset,
                               Timecode& length);
    // Joins the part under a transition with the clean rest that follows it
    // on both timelines, and clears every transition type.
    void mergeTransitions(EventList& changeList) const;

    MatchName getMatchName() const { return matchName; }
    const VfxNameFilter& getVfxFilter() const { return vfxFilter; }
    // Why the last configure or generate failed; empty after a success.
    const GenerationFailure& lastFailure() const { return failure; }

private:
    // Splits the transitions among events and appends their mixed parts;
    // with copyChanged, a split event is replaced by a changed copy and the
    // original is left alone. On a failure *failed is the event that could
    // not be split, as it was given.
    static void splitEvents(std::vector<EventPtr>& events, bool copyChanged, EventPtr* failed);
    const std::string& nameOf(const EventBase& event) const;

    MatchName matchName = MatchName::RollName;
    VfxNameFilter vfxFilter;
    GenerationFailure failure;
};

} // namespace montala::core
