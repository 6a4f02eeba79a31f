#include "host/InputChecks.h"

#include "core/services/AlertWindowBase.h"
#include "host/Project.h"
#include "host/Track.h"
#include "util/StringUtil.h"

#include "kelmar/project/IAudioChainEntry.h"
#include "kelmar/project/IPoolClip.h"
#include "kelmar/project/IVideoEvent.h"

#include <algorithm>
#include <limits>

namespace montala::host {

using util::StringUtil;

namespace {

// The picture a video track shows, absolute, up to `until`.
std::vector<core::MediaStretch> shownPicture(const Track& track, double projectStart, double until)
{
    std::vector<core::MediaStretch> layers;
    for (const TrackEvent& event : track.getEvents()) {
        core::MediaStretch layer;
        layer.start = event.getStart() + projectStart;
        layer.end = std::min(event.getEnd() + projectStart, until);
        layer.positionAtStart = event.getObject()->getOffset(nullptr);
        Kelmar::IPtr<Kelmar::IVideoEvent> video = Kelmar::queryInterface<Kelmar::IVideoEvent>(event.getObject());
        Kelmar::IPtr<Kelmar::IPoolClip> clip = video ? Kelmar::owned(video->getClip()) : nullptr;
        layer.clipId = clip ? clip->getId() : 0;
        layers.push_back(layer);
    }
    return core::heardStretches(layers);
}

// Where a track's audio events sound, absolute, up to `until`: an event in a
// part only inside the part's range.
std::vector<core::Interval> soundOf(const Track& track, double projectStart, double until)
{
    std::vector<core::Interval> sound;
    Kelmar::IPtr<Kelmar::IAudioChainEntry> entry = Kelmar::owned(track.getHostTrack()->getAudioChain());
    for (; entry; entry = Kelmar::owned(entry->next(0))) {
        double start = entry->getStart();
        double end = entry->getEnd();
        Kelmar::IPtr<Kelmar::IProjectObject> event = Kelmar::owned(entry->getObject());
        Kelmar::IPtr<Kelmar::IProjectObject> parent = event ? Kelmar::owned(event->getParent()) : nullptr;
        if (parent && parent->isKind("part")) {
            start = std::max(start, parent->getStart(nullptr));
            end = std::min(end, parent->getEnd(nullptr));
        }
        end = std::min(end + projectStart, until);
        start += projectStart;
        if (start < end)
            sound.emplace_back(start, end);
    }
    return sound;
}

} // namespace

core::SessionEvidence sessionEvidence(Project& project, bool selectedTracksOnly)
{
    core::SessionEvidence evidence;
    evidence.start = project.getProjectStart();
    evidence.end = project.getProjectEnd();
    const double until = project.workArea().hasConformOffset() ? project.workArea().getConformOffset() : std::numeric_limits<double>::max();
    const double frame = 1.0 / project.getFramerate().exactRate;
    for (Track& track : project.getTracks()) {
        // The user's picture: a video track Montala did not make, or the one
        // marked as the old cut's.
        if (track.isVideoTrack() && evidence.pictureEdges.empty()
            && (track.getType() < 0 || track.getType() == static_cast<int>(TrackType::OldVideo))) {
            evidence.pictureEdges = core::pictureEdges(shownPicture(track, evidence.start, until), frame);
        } else if (track.isMarkerTrack() && track.getType() == static_cast<int>(TrackType::Destination)) {
            for (const TrackEvent& marker : track.getEvents())
                if (marker.getStart() + evidence.start < until)
                    evidence.destinationMarkers.push_back(marker.getStart() + evidence.start);
        } else if (track.isAudioTrack() && !track.isLocked() && (!selectedTracksOnly || track.isSelected())) {
            evidence.soundByTrack.push_back(soundOf(track, evidence.start, until));
        }
    }
    return evidence;
}

bool confirmInputs(Project& project, bool preview)
{
    core::DataModel& model = project.getDataModel();
    const core::Settings& settings = model.getSettings();
    const core::SessionEvidence evidence =
        sessionEvidence(project, settings.getApplyTo() == core::ApplyTo::SelectedTracks);
    core::InputCheckOptions options;
    // Destination markers on the old timeline are an earlier run's.
    options.conformedBefore = !evidence.destinationMarkers.empty();
    options.wholeChange = !preview && !settings.getRestrictRange();
    options.swappedCutsQuestion = "were the Old and New EDLs added the wrong way round?";
    const std::vector<core::InputRefusal> refusals =
        core::checkInputs(evidence, project.getFramerate(), model.getOldList(), model.getNewList(),
                          model.getChangeList(), options);
    if (refusals.empty())
        return true;
    core::AlertWindowBase* alert = core::AlertWindowBase::getInstance();
    if (!alert)
        return false;
    std::string message;
    for (const core::InputRefusal& refusal : refusals)
        message += refusal.message + "\n";
    message += "\n" + StringUtil::toUtf8(StringUtil::translate(
                          u"Nothing has changed yet. Abort leaves the project as it is; Continue goes on anyway."));
    return alert->show(message, "Montala", StringUtil::toUtf8(StringUtil::translate(u"Abort")),
                       StringUtil::toUtf8(StringUtil::translate(u"Continue"))) == core::AlertWindowBase::SecondButton;
}

} // namespace montala::host
