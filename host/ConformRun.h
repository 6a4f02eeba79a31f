#pragma once

#include "core/conform/Cut.h"
#include "core/conform/CutList.h"
#include "core/conform/InformationEntry.h"
#include "core/conform/MontalerBase.h"
#include "core/events/EventList.h"
#include "core/serialize/SerializationTree.h"
#include "host/RunSummary.h"
#include "host/TakingPart.h"

#include "kelmar/base/IPtr.h"
#include "kelmar/edit/IProjectEdit.h"
#include "kelmar/edit/IRangeEdit.h"
#include "kelmar/project/ITransport.h"
#include "kelmar/services/IHostServices.h"

#include <functional>
#include <memory>

namespace montala::host {

class ProgressHandler;
class VideoProvider;
class Project;

// One apply or preview, from start to end: the tracks that take part,
// decided once; the progress window and the host's busy state; the undo
// group it works in; and its summary, counted where events and markers are
// written. The conform driver (Host) forwards its slots here while the run
// goes:
//
//   ConformRun::apply -> frame (progress, busy, caching) -> group "Apply Montala"
//      -> driver.conform -> driver's slots -> ConformRun::createCut, applyCut, ...
//
// An apply is one group on the host's undo list with the model's step inside
// it, so that one undo takes back both. A cancel ends in the host's own undo
// of that group; a failure outside the conform itself closes the group as
// "Apply Montala (incomplete)".
class ConformRun {
public:
    // What a preview shows: the events, how many of them at the list's begin
    // and end only lead in and out, which timeline, and the model as it was
    // before the preview was asked for.
    struct PreviewRequest {
        core::EventList events{core::EventList::ChangeKind};
        size_t first = 0;
        size_t last = 0;
        bool showDestination = false;
        core::serialize::SerializationTree snapshot;
    };

    // The steps of one group in `project` made with `context`'s services.
    ConformRun(Project& project, Kelmar::IHostServices* context, RunSummary::Kind kind);
    // The steps of a run inside a group that the caller opened and closes.
    ConformRun(Project& project, Kelmar::IProjectEdit& edit);
    ~ConformRun();
    ConformRun(const ConformRun&) = delete;
    ConformRun& operator=(const ConformRun&) = delete;

    // The whole run, driven by `driver`; the summary says how it went.
    RunSummary apply(core::MontalerBase& driver, Kelmar::ITransport* transport);
    RunSummary preview(core::MontalerBase& driver, const PreviewRequest& request);

    // The run's own edits are under way: the host's notices of them are no
    // user's.
    bool isEditing() const { return editing; }
    // Writes the new cut's picture onto its track; none: no picture.
    void setVideoProvider(VideoProvider* provider) { video = provider; }
    const TakingPart& takingPart() const { return tracks; }

    // ---- What the driver's slots do while the run goes
    void clearWorkArea();
    // A cut with one piece per carried track.
    core::CutPtr createCut(const core::EventPtr& event);
    // Copies the cut's pieces into the work area and marks the destination.
    void applyCut(core::Cut& cut);
    // After the cuts: automation held through what no old material fills.
    void fillVirginTerritories(core::CutList& cuts);
    // Before the detectors: the pieces' tracks read their automation on the
    // old timeline, when the warnings are asked for.
    void readAutomationForDetectors();
    void generateMarkers(const std::vector<core::InformationEntry>& entries);
    // Moves the arrangement home and closes the work area.
    void complete();

    // Opens one undo group on the project, does `work` in it and closes it
    // under `title`. A throw closes it under `incompleteTitle` (and sets
    // `incomplete`) and is the answer; otherwise the answer is what `work`
    // gave back.
    using EditWork = std::function<util::Result::Type(Kelmar::IProjectEdit&)>;
    static util::Result::Type inEditGroup(Kelmar::IHostServices* context, Kelmar::IProject* project,
                                          const char16_t* title, const char16_t* incompleteTitle,
                                          const EditWork& work, bool& incomplete);

private:
    // The new videos onto their track, shifted by `offset`; a failure is thrown.
    void writePicture(double offset);

    VideoProvider* video = nullptr;
    // The frame both runs share: the progress window, the host's busy state
    // and the project's caching are on around `work`, and off again on every
    // way out.
    RunSummary framed(core::MontalerBase& driver, const core::EventList& events, Kelmar::ITransport* stopping,
                      const std::function<util::Result::Type()>& work);
    util::Result::Type inGroup(const char16_t* title, const char16_t* incompleteTitle,
                               const std::function<util::Result::Type()>& work);
    Kelmar::IProjectEdit& edit();
    void prepareTracks();

    Project& project;
    Kelmar::IHostServices* context = nullptr;
    TakingPart tracks;
    // One wrapper of each carried track, shared by that track's pieces of
    // every cut.
    std::shared_ptr<std::vector<Track>> pieceTracks;
    RunSummary summary;
    std::unique_ptr<ProgressHandler> progress;
    Kelmar::IProjectEdit* openEdit = nullptr;
    bool editing = false;
};

} // namespace montala::host
