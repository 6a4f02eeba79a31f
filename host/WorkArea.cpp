#include "host/WorkArea.h"

#include "host/CutEvent.h"
#include "host/HostCalls.h"

#include "core/model/PropertyKeys.h"
#include "core/model/Settings.h"
#include "core/model/Variant.h"
#include "core/services/ProgressHandlerBase.h"
#include "core/time/Timecode.h"
#include "core/time/Tolerances.h"

#include "kelmar/base/IObjectIterator.h"
#include "kelmar/edit/IRangeEdit.h"
#include "kelmar/project/IEditClip.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <map>

namespace montala::host {

using util::Result;

namespace {

double currentDayLength = 86400.0;

} // namespace

WorkArea::WorkArea(ProjectTracks& projectTracks, core::DataModel& dataModel, core::FramerateProvider& framerate)
    : tracks(projectTracks), model(dataModel), rate(framerate)
{
}

double WorkArea::dayLength() { return currentDayLength; }

void WorkArea::followRate(const core::Framerate& framerate)
{
    currentDayLength = core::Timecode(1, 0, 0, 0).toSeconds(framerate) * 24.0;
}

// ---- The offset

double WorkArea::getConformOffset() const
{
    core::Variant value;
    if (model.getProperty(conformOffsetKey, value) != Result::Ok)
        return std::numeric_limits<double>::lowest();
    return value.asDouble();
}

bool WorkArea::hasConformOffset() const { return getConformOffset() != std::numeric_limits<double>::lowest(); }

void WorkArea::clearConformOffset()
{
    model.setProperty(conformOffsetKey, core::Variant(std::numeric_limits<double>::lowest()));
}

double WorkArea::latestEnd(const std::vector<Track>& candidates, double end)
{
    const HostClock host = tracks.clock();
    double latest = host.projectStart;
    for (const Track& track : candidates)
        for (const TrackEvent& event : track.getEventsInRange(0.0, end))
            latest = std::max(latest, host.fromHost({event.getEnd()}).seconds);
    return latest;
}

void WorkArea::computeConformOffset()
{
    // The day's length follows the rate, which the project may not have read yet.
    rate.getFramerate();
    const double latest = latestEnd(tracks.getTracks(), tracks.toHost({tracks.getProjectEnd()}).seconds);
    const double offset = (std::floor(latest / currentDayLength) + 1.0) * currentDayLength;
    model.setProperty(conformOffsetKey, core::Variant(offset));
}

void WorkArea::extendProjectEnd(bool selectedOnly)
{
    if (!model.isPreviewActive() || !hasConformOffset())
        return;
    const double offset = getConformOffset();
    std::vector<Track> reaching;
    for (Track& track : tracks.getTracks())
        if (!selectedOnly || (track.object()->getFlags() & Kelmar::IProjectObject::kContentChanged) != 0)
            reaching.push_back(track);
    const double workAreaStart = tracks.toHost({offset}).seconds;
    double latest = 0.0;
    for (const Track& track : reaching)
        for (const TrackEvent& event : track.getEventsInRange(0.0, workAreaStart))
            latest = std::max(latest, event.getEnd());
    const double newEnd = (std::floor(latest / currentDayLength) + 1.0) * currentDayLength + offset;
    const double end = tracks.getProjectEnd();
    if (end < newEnd) {
        // The end the user had comes back when the preview ends.
        if (!hasStoredDouble(core::PropertyKey::ProjectEndBeforePreview))
            model.setProperty(core::PropertyKey::ProjectEndBeforePreview, core::Variant(end));
        check(tracks.getHostProject()->setProjectLength(tracks.toHost({newEnd}).seconds));
    }
}

void WorkArea::restoreProjectEnd()
{
    if (!hasStoredDouble(core::PropertyKey::ProjectEndBeforePreview))
        return;
    core::Variant end;
    model.getProperty(core::PropertyKey::ProjectEndBeforePreview, end);
    model.setProperty(core::PropertyKey::ProjectEndBeforePreview, core::Variant(std::numeric_limits<double>::lowest()));
    check(tracks.getHostProject()->setProjectLength(tracks.toHost({end.asDouble()}).seconds));
}

bool WorkArea::hasStoredDouble(int32_t key) const
{
    core::Variant value;
    return model.getProperty(key, value) == Result::Ok && value.asDouble() != std::numeric_limits<double>::lowest();
}

void WorkArea::getEditRange(double& start, double& end) const
{
    if (!hasConformOffset())
        throw Result::NotInitialized;
    const core::Settings& settings = model.getSettings();
    if (settings.getRestrictRange()) {
        start = settings.getPreserveBefore();
        end = settings.getPreserveAfter();
    } else {
        start = 0.0;
        end = getConformOffset();
    }
}

// ---- Building

void WorkArea::paste(Kelmar::IProjectEdit& edit, core::Cut& cut)
{
    // Pieces of the same source range go in one copy, on all their tracks at
    // once; the snippet algorithm may have moved some pieces' ends.
    struct Group {
        double start;
        double end;
        double destination;
        std::vector<Kelmar::ITrack*> tracks;
    };
    std::vector<Group> groups;
    for (const core::CutEventPtr& piece : cut.getPieces()) {
        auto* cutEvent = dynamic_cast<CutEvent*>(piece.get());
        if (!cutEvent)
            throw Result::InvalidArgument;
        auto same = std::find_if(groups.begin(), groups.end(), [&](const Group& group) {
            return std::abs(group.start - piece->getSrcStart()) <= core::positionTolerance
                   && std::abs(group.end - piece->getSrcEnd()) <= core::positionTolerance;
        });
        if (same == groups.end())
            same = groups.insert(groups.end(), Group{piece->getSrcStart(), piece->getSrcEnd(), piece->getDstStart(), {}});
        same->tracks.push_back(cutEvent->getTrack().getHostTrack());
    }
    std::sort(groups.begin(), groups.end(), [](const Group& a, const Group& b) { return a.start < b.start; });

    for (const Group& group : groups) {
        // A piece the snippet algorithm emptied has nothing to carry.
        if (group.end - group.start <= core::positionTolerance)
            continue;
        auto list = getService<Kelmar::IObjectList>(tracks.getServices());
        for (Kelmar::ITrack* track : group.tracks)
            check(list->add(track));
        copyRange(edit, {group.start}, {group.end}, behindEnd({group.destination}), list.get());
    }
}

void WorkArea::copyRange(Kelmar::IProjectEdit& edit, Absolute start, Absolute end, Absolute destination,
                         Kelmar::IObjectList* onTracks)
{
    tracks.forgetChains();
    const double from = tracks.toHost(start).seconds;
    const double to = tracks.toHost(end).seconds;
    const double at = tracks.toHost(destination).seconds;
    Kelmar::IProject* project = tracks.getHostProject();
    if (onTracks) {
        auto rangeEdit = queryRequired<Kelmar::IRangeEdit>(&edit);
        check(rangeEdit->copyRangeOnTracks(project, onTracks, from, to, at, 0));
        return;
    }
    Kelmar::IPtr<Kelmar::IEditClip> clip;
    check(edit.extractRange(project, from, to, clip.put()));
    check(edit.insertClip(project, clip.get(), at, 0));
}

void WorkArea::fillVirginTerritories(Kelmar::IProjectEdit& edit, core::CutList& cuts,
                                     core::ProgressHandlerBase* progress)
{
    // One image of each track's automation for the whole fill, so that what
    // one bridge changed is seen by the next.
    std::map<Kelmar::ITrack*, Track> images;
    auto trackOf = [&](CutEvent& piece) -> Track& {
        auto found = images.find(piece.getTrack().getHostTrack());
        if (found == images.end()) {
            found = images.emplace(piece.getTrack().getHostTrack(), piece.getTrack()).first;
            found->second.readAutomation();
        }
        return found->second;
    };
    auto advance = [progress](int64_t count) {
        if (progress)
            progress->advance(count);
    };

    const core::Cut* previous = nullptr;
    for (size_t index = 0; index < cuts.size(); ++index) {
        const core::Cut* cut = cuts.getCut(index).get();
        if (!cut)
            continue;
        if (previous && previous->getEvent() && cut->getEvent()
            && !(previous->getEvent()->getDstOut() == cut->getEvent()->getDstIn())) {
            int64_t gaps = 0;
            const auto& first = previous->getPieces();
            const auto& second = cut->getPieces();
            for (size_t t = 0; t < std::min(first.size(), second.size()); ++t) {
                auto* a = dynamic_cast<CutEvent*>(first[t].get());
                auto* b = dynamic_cast<CutEvent*>(second[t].get());
                if (!a || !b || !a->getTrack().sameTrack(b->getTrack()))
                    continue;
                // Exactly 0.01 s is no gap worth a bridge.
                if (b->getDstStart() - a->getDstEnd() > shortestLength + core::positionTolerance) {
                    trackOf(*a).bridgeGap(edit, behindEnd({a->getDstEnd()}).seconds,
                                          behindEnd({b->getDstStart()}).seconds);
                    ++gaps;
                }
            }
            advance(gaps == 0 ? 1 : gaps);
        } else if (previous) {
            advance(1);
        }
        if (progress && progress->isCancelled())
            throw Result::Cancelled;
        previous = cut;
    }
}

// ---- Going home

bool WorkArea::moveHome(Kelmar::IProjectEdit& edit, const std::vector<Track>& onTracks)
{
    const double offset = getConformOffset();
    const core::Settings& settings = model.getSettings();
    if (!settings.getRestrictRange()) {
        moveBack(edit, {offset}, {0.0}, offset, onTracks);
        return false;
    }
    const double before = settings.getPreserveBefore();
    const double after = settings.getPreserveAfter();
    moveBack(edit, {std::abs(before) + offset}, {before}, std::abs(after - before), onTracks);
    return true;
}

void WorkArea::moveBack(Kelmar::IProjectEdit& edit, Absolute from, Absolute to, double length,
                        const std::vector<Track>& onTracks)
{
    tracks.forgetChains();
    // What lies wholly in the home range is the old arrangement: it goes,
    // and the new one takes its place. Within a sample: the edges are
    // frames of the settings, and an event on them lies on the same frames
    // a few ulps away.
    const double homeLow = tracks.toHost(to).seconds - core::positionTolerance;
    const double homeHigh = tracks.toHost({to.seconds + length}).seconds + core::positionTolerance;
    // What lies well inside the range behind, clear of its edges where the
    // range work keeps or cuts, goes once its track has come home: a
    // deletion of the range would take it away in any case.
    const Absolute fromEnd{from.seconds + length};
    const double behindStart = tracks.toHost(from).seconds;
    const double behindEnd = tracks.toHost(fromEnd).seconds;
    constexpr double margin = 1e-6;
    const double insideLow = behindStart + margin;
    const double insideHigh = behindEnd - margin;
    // A track at a time, its events read once: its old arrangement goes, its
    // range comes home, then what of it lay inside the range behind goes, so
    // that the home copies and the work area are never all alive at once.
    // The range is deleted on all tracks afterwards as before; it then finds
    // only what crosses its edges, and the tracks that did not move.
    for (const Track& track : onTracks) {
        // The range work leaves a locked track as it is.
        const bool takesAway = !track.isLocked();
        // The walk sees the list as it was when it began: the old
        // arrangement goes as it is met, while the host has just fetched it.
        auto context = tracks.editContext(track.object().get());
        std::vector<Kelmar::IPtr<Kelmar::IProjectObject>> behind;
        track.eachEvent([&](Kelmar::IProjectObject& event) {
            const double start = event.getStart(nullptr);
            const double end = event.getEnd(nullptr);
            if (start >= homeLow && end <= homeHigh)
                check(edit.removeObject(context.get(), &event));
            else if (takesAway && start >= insideLow && end <= insideHigh)
                behind.push_back(Kelmar::shared(&event));
        });
        auto one = getService<Kelmar::IObjectList>(tracks.getServices());
        check(one->add(track.getHostTrack()));
        copyRange(edit, from, fromEnd, to, one.get());
        // Each is let go of as soon as it is removed, while the host has just
        // fetched it, not in a walk over all of them afterwards.
        for (auto& event : behind) {
            check(edit.removeObject(context.get(), event.get()));
            event.reset();
        }
        if (takesAway)
            removePoints(edit, track, [insideLow, insideHigh](double time) { return time >= insideLow && time <= insideHigh; });
    }
    check(edit.deleteRange(tracks.getHostProject(), behindStart, behindEnd, 0));
    removeWorkAreaPoints(edit);
}

void WorkArea::removePoints(Kelmar::IProjectEdit& edit, const Track& track, const std::function<bool(double)>& goes)
{
    Kelmar::IPtr<Kelmar::IObjectIterator> curves = Kelmar::owned(track.getHostTrack()->getAutomationTracks());
    while (curves && !curves->atEnd()) {
        Kelmar::IPtr<Kelmar::IProjectObject> curve = Kelmar::owned(curves->next());
        if (!curve)
            break;
        // The walk sees the list as it was when it began: a point goes as
        // it is met, while the host has just fetched it.
        Kelmar::IPtr<Kelmar::IEditContext> context;
        Kelmar::IPtr<Kelmar::IObjectIterator> points = Kelmar::owned(curve->getChildren());
        while (points && !points->atEnd()) {
            Kelmar::IPtr<Kelmar::IProjectObject> point = Kelmar::owned(points->next());
            if (!point)
                break;
            if (!goes(point->getStart(nullptr)))
                continue;
            if (!context)
                context = tracks.editContext(curve.get());
            check(edit.removeObject(context.get(), point.get()));
        }
    }
}

void WorkArea::removeWorkAreaPoints(Kelmar::IProjectEdit& edit)
{
    // Taking a range away, the host holds the curve on both sides of it with
    // a point on each edge; past the offset, those belong to nothing.
    if (!hasConformOffset())
        return;
    const double from = tracks.toHost({getConformOffset()}).seconds - core::positionTolerance;
    for (Track& track : tracks.getTracks())
        if (!track.isLocked())
            removePoints(edit, track, [from](double time) { return time >= from; });
}

void WorkArea::finishRange(Kelmar::IProjectEdit& edit, double start, double end, const std::vector<Track>& onTracks)
{
    tracks.forgetChains();
    auto rangeEdit = queryRequired<Kelmar::IRangeEdit>(&edit);
    auto list = getService<Kelmar::IObjectList>(tracks.getServices());
    for (const Track& track : onTracks)
        check(list->add(track.getHostTrack()));
    const Kelmar::tresult answer = rangeEdit->finishRange(tracks.getHostProject(), list.get(), start, end, 0.0);
    if (answer != Kelmar::kResultOk && answer != Kelmar::kResultFalse)
        throw Result::HostCallFailed;
}

void WorkArea::clear(Kelmar::IProjectEdit& edit)
{
    tracks.forgetChains();
    if (!hasConformOffset())
        return;
    const double offset = getConformOffset();
    check(edit.deleteRange(tracks.getHostProject(), tracks.toHost({offset}).seconds,
                           tracks.toHost({offset + tracks.getProjectEnd()}).seconds, 0));
    removeWorkAreaPoints(edit);
}

} // namespace montala::host
