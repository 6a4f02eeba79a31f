#pragma once

#include "core/conform/Cut.h"
#include "core/conform/InformationContext.h"
#include "core/conform/InformationEntry.h"
#include "core/conform/SnippetContext.h"
#include "util/Result.h"

#include <cstdint>
#include <string>
#include <vector>

namespace montala::core {

class CutList;
class EventList;
class MediaPoolInterface;
class ProgressHandlerBase;
class Settings;

// The conform machine. It knows the order of a run and which algorithm comes
// when; every touch of the project goes through the virtual slots, which the
// host adapter carries out. A run and a preview go:
//
//   clearWorkArea -> createCut per event -> snippet algorithm -> applyCut
//   per cut -> detectors -> generateMarkers -> complete (conform only)
//
// Slots answer a Result::Type, Ok for success. Inside a run any other
// answer is thrown; conform and preview catch it at their end and give it
// back as their result. The driver rolls nothing back: what was done stays
// until the host's undo takes it.
class MontalerBase {
public:
    virtual ~MontalerBase() = default;

    // A full run over the Change events: the new arrangement is built in the
    // work area behind the project's end, marked and moved home.
    virtual util::Result::Type conform(const EventList& events);
    // Asks for a run that the host carries out later.
    virtual util::Result::Type startConform() = 0;
    // A run over part of the list that leaves the work area open. The base
    // body reads neither the skipped counts nor showDestination: those tell
    // the host what to show afterwards.
    virtual util::Result::Type preview(const EventList& events, size_t first, size_t last, bool showDestination);
    virtual util::Result::Type showPreview(const EventList& events, size_t first, size_t last,
                                           bool showDestination) = 0;
    // Host-relative seconds.
    virtual void getLocators(double& left, double& right) = 0;
    virtual void setLocators(double left, double right, bool absolute) = 0;
    virtual void getCycle(double& start, double& end) = 0;
    virtual void setCycle(double start, double end) = 0;
    virtual double getCursor() = 0;
    virtual void setCursor(double position) = 0;
    // Clears the work area; the host does more.
    virtual util::Result::Type deletePreview();
    virtual std::string getProjectName() = 0;
    virtual MediaPoolInterface* getMediaPool() = 0;
    virtual double getProjectStart() = 0;
    virtual void setPreviewActive(bool on) = 0;
    virtual bool isPreviewActive() = 0;
    // Ok if a run can start.
    virtual util::Result::Type checkTracks() = 0;
    virtual util::Result::Type clearWorkArea() = 0;
    // Carries out one cut. A cancel seen here is thrown as Result::Cancelled.
    virtual util::Result::Type applyCut(Cut& cut) = 0;
    // One piece per taking-part track, in track order.
    virtual CutPtr createCut(const EventPtr& event) = 0;
    // Moves the built arrangement home and closes the work area.
    virtual util::Result::Type complete() = 0;
    virtual util::Result::Type generateMarkers(const std::vector<InformationEntry>& entries) = 0;
    virtual InformationContext getInformationContext() = 0;
    virtual SnippetContext getSnippetContext() = 0;
    // Applies every cut in order; a null cut is passed over. A failing cut
    // is thrown.
    virtual util::Result::Type applyCuts(CutList& cuts);
    virtual void setPreviewEvents(const EventList& events) = 0;
    // The steps the enabled detectors advance: all of them when every event
    // is cut on trackCount tracks at a start of its own, fewer when events
    // are skipped. The host adds those of its own cutting.
    virtual int64_t countSteps(int64_t eventCount, const Settings& settings, int64_t trackCount);

    // Makes a cut for every event that has a place on the timelines; events
    // with other flaws are taken, as the Change EDL is the user's word.
    util::Result::Type buildCuts(const EventList& events, CutList& cuts);
    // Ok, or what the algorithm threw.
    util::Result::Type runSnippetAlgorithm(CutList& cuts, SnippetContext& context);
    // Runs the enabled detectors in their fixed order and joins their
    // entries. Throws what they throw, a cancel among it.
    std::vector<InformationEntry> collectInformation(const CutList& cuts, const InformationContext& context);

    ProgressHandlerBase* getProgress() const { return progress; }
    // The host sets it for the time of a run only; not owned.
    void setProgress(ProgressHandlerBase* handler) { progress = handler; }

protected:
    ProgressHandlerBase* progress = nullptr;

private:
    // Steps 1 to 4, shared by a run and a preview: the arrangement stands
    // in the work area afterwards.
    void buildArrangement(const EventList& events, CutList& cuts);
};

// What the user is told when checkTracks refuses a run (or, with `preview`,
// a preview), in English: the window translates it where it shows it.
const char16_t* cannotStartText(util::Result::Type code, bool preview);

} // namespace montala::core
