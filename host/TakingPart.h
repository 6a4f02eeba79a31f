#pragma once

#include "core/model/Settings.h"
#include "host/RunSummary.h"
#include "host/Track.h"
#include "util/Result.h"

#include <cstdint>
#include <string>
#include <vector>

namespace montala::host {

class Project;

// Which tracks of a project a run works on, decided once, as the run starts.
//
// The user's tracks take part unless the user locked them, or the run is for
// selected tracks and they are not selected. A lock that a preview put on is
// no lock of the user's: the run takes it off before it cuts. Montala's own
// tracks hold what a run writes and are no part of the choice, except
// "Memos", whose markers are the user's and move with the picture.
class TakingPart {
public:
    TakingPart(Project& project, const core::Settings& settings);

    // Why no run can start on the project: NoTracks, NoSelectedTracks or Ok.
    static util::Result::Type refusal(Project& project, const core::Settings& settings);

    bool isSelectedOnly() const { return selectedOnly; }
    // The tracks whose old material is cut, in the project's order.
    const std::vector<Track>& carried() const { return carriedTracks; }
    // The user's tracks among them ("Memos" is not).
    std::vector<Track> usersTracks() const;
    // "Memos" made by the run is carried too, when the choice takes it.
    void addMemos(Track& memos);
    // How many tracks each cut has a piece on, counting "Memos" that the
    // run will make.
    int64_t piecesPerCut() const;

    // What moves home: the carried tracks, and Montala's tracks the run
    // wrote on, as the project has them now.
    std::vector<Track> movingHome(Project& project) const;
    // The tracks the host closes the run's range on: all of them, or the
    // selected ones.
    std::vector<Track> closing(Project& project) const;

    // The summary's lists: the user's tracks by name, taking part or left
    // out and why.
    void describe(RunSummary& summary) const;

private:
    bool chosen(const Track& track) const { return !selectedOnly || track.isSelected(); }
    bool isCarried(const Track& track) const;

    bool selectedOnly = false;
    bool memosMissing = false;
    std::vector<Track> carriedTracks;
    std::vector<Track> memosTracks;
    std::vector<RunSummary::LeftOutTrack> leftOut;
};

} // namespace montala::host
