#pragma once

#include "core/conform/Cut.h"
#include "core/conform/CutList.h"
#include "core/model/DataModel.h"
#include "core/time/Framerate.h"
#include "host/Positions.h"
#include "host/ProjectTracks.h"
#include "host/Track.h"

#include "kelmar/base/IObjectList.h"
#include "kelmar/edit/IProjectEdit.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace montala::core {
class ProgressHandlerBase;
}

namespace montala::host {

// The room behind all material of a project where a run builds the new
// arrangement, one whole day of timecode past it (the conform offset), and
// from where it is moved home:
//
//   0            project end      offset                offset + length
//   |--old arrangement--|    ...    |--new arrangement--|
//                                          | moveHome
//   |--new arrangement--|  <---------------'
//
// A place on the new timeline lies in the work area at behindEnd(place);
// the host takes either as ProjectTracks::toHost converts it. The offset is
// kept in the data model, so that it lives as long as a preview does.
class WorkArea {
public:
    // The data model's key of the conform offset (a double).
    static constexpr int32_t conformOffsetKey = 10004;

    WorkArea(ProjectTracks& tracks, core::DataModel& model, core::FramerateProvider& rate);
    WorkArea(const WorkArea&) = delete;
    WorkArea& operator=(const WorkArea&) = delete;

    // Seconds in one day of timecode at the rate last followed; shared by
    // all projects, as it follows the active one.
    static double dayLength();
    static void followRate(const core::Framerate& rate);

    // ---- The offset
    double getConformOffset() const;
    bool hasConformOffset() const;
    void clearConformOffset();
    // The first whole day of timecode past all material.
    void computeConformOffset();
    // Where a place of the new timeline is built.
    Absolute behindEnd(Absolute place) const { return {place.seconds + getConformOffset()}; }
    // Where a place of the work area lies on the new timeline.
    Absolute onNewTimeline(Absolute place) const { return {place.seconds - getConformOffset()}; }

    // While a preview is active: makes the project reach one whole day past
    // what the work area holds.
    void extendProjectEnd(bool selectedOnly);
    // When a preview ends: the project ends where it did before.
    void restoreProjectEnd();
    // The range of the old timeline a run rebuilds; NotInitialized without an
    // offset.
    void getEditRange(double& start, double& end) const;

    // ---- Building
    // Copies the cut's pieces to their places behind the end; pieces of the
    // same source range go in one copy, on all their tracks at once.
    void paste(Kelmar::IProjectEdit& edit, core::Cut& cut);
    // With a list, the range of those tracks; without, of all tracks.
    void copyRange(Kelmar::IProjectEdit& edit, Absolute start, Absolute end, Absolute destination,
                   Kelmar::IObjectList* tracks);
    // Holds automation through the stretches of the new timeline that no old
    // material fills.
    void fillVirginTerritories(Kelmar::IProjectEdit& edit, core::CutList& cuts, core::ProgressHandlerBase* progress);

    // ---- Going home
    // Moves the arrangement on `tracks` home. True when the run kept to a
    // range and what is left behind the end must still be cleared.
    bool moveHome(Kelmar::IProjectEdit& edit, const std::vector<Track>& tracks);
    // Removes what lies wholly in [to, to + length] of `tracks` and moves
    // [from, from + length] there.
    void moveBack(Kelmar::IProjectEdit& edit, Absolute from, Absolute to, double length,
                  const std::vector<Track>& tracks);
    // The host's closing work over [start, end] on `tracks`; times passed as
    // they are.
    void finishRange(Kelmar::IProjectEdit& edit, double start, double end, const std::vector<Track>& tracks);
    // Takes everything behind the offset away.
    void clear(Kelmar::IProjectEdit& edit);
    // Removes the automation points at or past the conform offset.
    void removeWorkAreaPoints(Kelmar::IProjectEdit& edit);
    // Removes the automation points of `track` whose host time `goes` picks.
    void removePoints(Kelmar::IProjectEdit& edit, const Track& track, const std::function<bool(double)>& goes);

private:
    // The largest event end of the tracks in [0, end] host-relative, absolute.
    double latestEnd(const std::vector<Track>& tracks, double end);
    bool hasStoredDouble(int32_t key) const;

    ProjectTracks& tracks;
    core::DataModel& model;
    core::FramerateProvider& rate;
};

} // namespace montala::host
