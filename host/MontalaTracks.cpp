#include "host/MontalaTracks.h"

#include "host/HostCalls.h"

#include "core/services/ProgressHandlerBase.h"
#include "core/time/Tolerances.h"
#include "util/StringUtil.h"

#include "kelmar/base/FVariant.h"
#include "kelmar/base/String.h"
#include "kelmar/project/IPointMarker.h"
#include "kelmar/project/IRangeMarker.h"

#include <algorithm>
#include <cmath>

namespace montala::host {

using util::Result;

namespace {

constexpr const char* userIdAttribute = "MontEventUserId";
constexpr const char* reelAttribute = "User:STR_MAReel";

std::string translatedName(TrackType type)
{
    return util::StringUtil::toUtf8(
        util::StringUtil::translate(Kelmar::String::utf8ToUtf16(trackTypeName(static_cast<int>(type)))));
}

} // namespace

MontalaTracks::MontalaTracks(ProjectTracks& projectTracks, core::FramerateProvider& framerate)
    : tracks(projectTracks), rate(framerate)
{
}

bool MontalaTracks::isMontalaTrack(Track& track)
{
    if (track.isFolderTrack())
        return track.hasType(static_cast<int>(TrackType::Folder), -1);
    if (track.isMarkerTrack()) {
        const int type = track.getType();
        return type >= static_cast<int>(TrackType::Destination) && type <= static_cast<int>(TrackType::Memos);
    }
    if (track.isVideoTrack())
        return track.hasType(static_cast<int>(TrackType::NewVideo), -1);
    return false;
}

bool MontalaTracks::holdsRunOutput(Track& track)
{
    // The memos are the user's: they go with the picture like any marker.
    return isMontalaTrack(track) && !(track.isMarkerTrack() && track.getType() == static_cast<int>(TrackType::Memos));
}

Track& MontalaTracks::markerTrack(TrackType type)
{
    const int index = static_cast<int>(type) - 1;
    if (index < 0 || index >= static_cast<int>(markerTracks.size()))
        throw Result::InvalidArgument;
    return markerTracks[static_cast<size_t>(index)];
}

bool MontalaTracks::hasMarkerTrack(TrackType type)
{
    std::vector<Track> candidates = tracks.getTracks("marker");
    return findByType(candidates, type) != nullptr;
}

void MontalaTracks::forget()
{
    markerTracks = {};
    folderTrack = Track();
}

Track* MontalaTracks::findByType(std::vector<Track>& candidates, TrackType type)
{
    for (Track& candidate : candidates)
        if (candidate.hasType(static_cast<int>(type), -1))
            return &candidate;
    return nullptr;
}

Track MontalaTracks::makeTrack(Kelmar::IProjectObject* object, TrackType type)
{
    auto hostTrack = queryRequired<Kelmar::ITrack>(object);
    Track made(&tracks, hostTrack.get());
    made.setName(translatedName(type));
    made.setType(static_cast<int>(type));
    return made;
}

Track& MontalaTracks::ensureMarkerTrack(Kelmar::IProjectEdit& edit, std::vector<Track>& candidates, Track& slot,
                                        TrackType type)
{
    if (!slot.isValid())
        if (Track* found = findByType(candidates, type))
            slot = *found;

    auto folderObject = folderTrack.object();
    auto folderContext = tracks.editContext(folderObject.get());
    if (slot.isValid()) {
        // Found elsewhere (the user moved it): back into the folder.
        auto object = slot.object();
        Kelmar::IPtr<Kelmar::IProjectObject> parent = Kelmar::owned(object->getParent());
        if (parent.get() != folderObject.get()) {
            auto source = tracks.editContext(parent && !parent->isKind("project") ? parent.get() : nullptr);
            check(edit.moveObject(source.get(), folderContext.get(), object.get()));
        }
        return slot;
    }

    // The host offers a marker track of its own while it has none in the
    // project; one already placed belongs to the user.
    Kelmar::IProject& project = *tracks.getHostProject();
    Kelmar::IPtr<Kelmar::IProjectObject> object = Kelmar::owned(project.getDefaultMarkerTrack());
    if (object) {
        Kelmar::IPtr<Kelmar::IProjectObject> parent = Kelmar::owned(object->getParent());
        if (parent)
            object.reset();
    }
    if (!object)
        object = Kelmar::owned(project.createTrack("marker"));
    slot = makeTrack(object.get(), type);
    check(edit.addObject(folderContext.get(), object.get()));
    tracks.addToCache(slot.getHostTrack());
    return slot;
}

Track& MontalaTracks::ensureTrack(Kelmar::IProjectEdit& edit, TrackType type, std::vector<Track>& candidates,
                                  Track& slot, const char* kind)
{
    if (!slot.isValid())
        if (Track* found = findByType(candidates, type))
            slot = *found;
    if (slot.isValid())
        return slot;

    Kelmar::IPtr<Kelmar::IProjectObject> object = Kelmar::owned(tracks.getHostProject()->createTrack(kind));
    slot = makeTrack(object.get(), type);
    check(edit.addObject(tracks.editContext(nullptr).get(), object.get()));
    tracks.addToCache(slot.getHostTrack());
    return slot;
}

void MontalaTracks::createFolderAndMarkers(Kelmar::IProjectEdit& edit, const core::Settings& settings)
{
    std::vector<Track> folders = tracks.getTracks("folder");
    ensureTrack(edit, TrackType::Folder, folders, folderTrack, "folder");

    std::vector<Track> candidates = tracks.getTracks("marker");
    for (const core::MarkerKindRow& row : core::markerKinds())
        if (settings.createsMarkers(row.kind))
            ensureMarkerTrack(edit, candidates, markerTrack(trackTypeOf(row.kind)), trackTypeOf(row.kind));
    // The user's memos have a track whatever the settings say.
    ensureMarkerTrack(edit, candidates, markerTrack(TrackType::Memos), TrackType::Memos);
}

Track MontalaTracks::ensureNewVideoTrack(Kelmar::IProjectEdit& edit)
{
    std::vector<Track> candidates = tracks.getTracks("video");
    Track newVideo;
    ensureTrack(edit, TrackType::NewVideo, candidates, newVideo, "video");
    return newVideo;
}

void MontalaTracks::setLocked(bool on)
{
    std::vector<Track> candidates = tracks.getTracks("marker");
    for (int type = 1; type <= static_cast<int>(markerTracks.size()); ++type) {
        Track& slot = markerTracks[static_cast<size_t>(type - 1)];
        if (!slot.isValid())
            if (Track* found = findByType(candidates, static_cast<TrackType>(type)))
                slot = *found;
        // The user writes memos during a preview: that track stays open.
        if (type == static_cast<int>(TrackType::Memos) || !slot.isValid())
            continue;
        slot.setLocked(on);
    }
    std::vector<Track> videos = tracks.getTracks("video");
    if (Track* newVideo = findByType(videos, TrackType::NewVideo))
        newVideo->setLocked(on);
}

// ---- Markers

void MontalaTracks::writeMarker(Kelmar::IProjectEdit& edit, Track* track, const std::string& name,
                                const std::string& reel, Absolute start, Absolute end, int64_t id)
{
    if (!track || !track->isValid())
        throw Result::NotInitialized;
    auto trackObject = track->object();
    auto context = tracks.editContext(trackObject.get());

    Kelmar::IPtr<Kelmar::IProjectObject> marker;
    const double length = end.seconds - start.seconds;
    // Absolute times near a day carry rounding in their last digits: a
    // length within one sample of 0.01 s is 0.01 s.
    if (length <= shortestLength + core::positionTolerance) {
        marker = queryRequired<Kelmar::IProjectObject>(getService<Kelmar::IPointMarker>(tracks.getServices()).get());
        check(marker->setStart(context.get(), tracks.toHost(start).seconds, 0));
    } else {
        marker = queryRequired<Kelmar::IProjectObject>(getService<Kelmar::IRangeMarker>(tracks.getServices()).get());
        check(marker->setStart(context.get(), tracks.toHost(start).seconds, 0));
        check(marker->setLength(context.get(), length, 0));
    }
    // Named and marked before it joins the track: the host's undo then keeps
    // one record of the addition, not one for each field of a new marker as
    // well (a feature's run writes tens of thousands of them).
    const std::u16string wideName = Kelmar::String::utf8ToUtf16(name);
    check(marker->setName(context.get(), wideName.c_str(), 0));
    check(marker->setAttribute(reelAttribute, Kelmar::FVariant(reel.c_str(), true), 1));
    if (id != 0)
        check(marker->setAttribute(userIdAttribute, Kelmar::FVariant(static_cast<Kelmar::int64>(id)), 1));
    check(edit.addObject(context.get(), marker.get()));
}

void MontalaTracks::writeDestination(Kelmar::IProjectEdit& edit, const core::EventBase& event,
                                     const core::Settings& settings, const WorkArea& area, MarkerCount& written)
{
    std::string name = util::StringUtil::toUtf8(util::StringUtil::translate(u"Event: "))
                       + std::to_string(event.getEventNumber()) + " - ";
    if (settings.getMatchName() == core::MatchName::ClipName)
        name += event.getClipName();
    else
        name += event.getRollName() + " ";
    const core::Framerate framerate = rate.getFramerate();
    Track& destination = markerTrack(TrackType::Destination);
    writeMarker(edit, destination.isValid() ? &destination : nullptr, name, event.getRollName(),
                area.behindEnd({event.getDstIn().toSeconds(framerate)}),
                area.behindEnd({event.getDstOut().toSeconds(framerate)}), 0);
    ++written[TrackType::Destination];
}

void MontalaTracks::generateMarkers(Kelmar::IProjectEdit& edit, const std::vector<core::InformationEntry>& entries,
                                    const WorkArea& area, core::ProgressHandlerBase* progress, MarkerCount& written)
{
    for (const core::InformationEntry& entry : entries) {
        const TrackType type = trackTypeOf(core::markerKindOf(entry.kind));
        Track& target = markerTrack(type);
        writeMarker(edit, target.isValid() ? &target : nullptr, entry.text, std::string(),
                    area.behindEnd({entry.start}), area.behindEnd({entry.end}), 0);
        ++written[type];
        if (progress)
            progress->advance(1);
    }
}

// ---- Memos of a preview

void MontalaTracks::numberMemos(const WorkArea& area)
{
    Track& memos = markerTrack(TrackType::Memos);
    if (memos.isValid() && area.hasConformOffset())
        memos.assignEventIds(0.0, tracks.toHost({area.getConformOffset()}).seconds);
}

void MontalaTracks::followMemos(Kelmar::IProjectEdit* edit, const core::EventList& previewEvents, const WorkArea& area)
{
    std::vector<Track> candidates = tracks.getTracks("marker");
    Track& memos = markerTrack(TrackType::Memos);
    if (!memos.isValid())
        if (Track* found = findByType(candidates, TrackType::Memos))
            memos = *found;
    if (memos.isValid() && (memos.object()->getFlags() & Kelmar::IProjectObject::kContentChanged) != 0) {
        memos.assignEventIds(0.0, area.getConformOffset());
        if (edit)
            syncMemos(*edit, previewEvents, area);
    }
}

void MontalaTracks::syncMemos(Kelmar::IProjectEdit& edit, const core::EventList& previewEvents, const WorkArea& area)
{
    Track& memos = markerTrack(TrackType::Memos);
    if (!memos.isValid())
        return;
    const core::Framerate framerate = rate.getFramerate();
    auto context = tracks.editContext(memos.object().get());

    auto idOf = [](const TrackEvent& marker) {
        int64_t id = 0;
        return marker.getUserId(id) ? id : int64_t{0};
    };
    auto contains = [&](const std::vector<TrackEvent>& markers, int64_t id) {
        return std::any_of(markers.begin(), markers.end(), [&](const TrackEvent& m) { return idOf(m) == id; });
    };
    auto hostTime = [&](double absolute) { return tracks.toHost({absolute}).seconds; };

    for (const core::EventPtr& event : previewEvents.getEvents()) {
        const double srcStart = event->getSrcIn().toSeconds(framerate);
        const double srcEnd = event->getSrcOut().toSeconds(framerate);
        const double dstStart = event->getDstIn().toSeconds(framerate);
        const double workStart = area.behindEnd({dstStart}).seconds;
        // Where a marker of the work area falls on the old timeline, absolute.
        auto toSource = [&](double markerTime) {
            return srcStart + (area.onNewTimeline(tracks.fromHost({markerTime})).seconds - dstStart);
        };

        std::vector<TrackEvent> source = memos.getEventsInRange(hostTime(srcStart), hostTime(srcEnd));
        std::vector<TrackEvent> destination = memos.getEventsInRange(
            hostTime(workStart), hostTime(area.behindEnd({event->getDstOut().toSeconds(framerate)}).seconds));
        if (destination.size() > source.size()) {
            for (const TrackEvent& marker : destination) {
                int64_t id = idOf(marker);
                if (id != 0 && contains(source, id))
                    continue;
                // A new memo, or one copied from another stretch with that
                // one's id: either way a pair of its own from here on, so
                // that no two stretches share an id.
                id = memos.nextEventId();
                check(marker.getObject()->setAttribute(userIdAttribute, Kelmar::FVariant(static_cast<Kelmar::int64>(id)), 1));
                const double start = std::max(srcStart, toSource(marker.getStart()));
                const double end = std::min(srcEnd, toSource(marker.getEnd()));
                writeMarker(edit, &memos, marker.getName(), std::string(), {start}, {std::max(start, end)}, id);
            }
        } else if (source.size() > destination.size()) {
            for (const TrackEvent& marker : source)
                if (!contains(destination, idOf(marker)))
                    check(edit.removeObject(context.get(), marker.getObject()));
        } else {
            for (const TrackEvent& marker : destination) {
                const int64_t id = idOf(marker);
                auto twin = std::find_if(source.begin(), source.end(), [&](const TrackEvent& m) { return idOf(m) == id; });
                if (twin == source.end())
                    continue;
                Kelmar::IProjectObject& target = *twin->getObject();
                if (twin->getName() != marker.getName()) {
                    const std::u16string name = Kelmar::String::utf8ToUtf16(marker.getName());
                    check(target.setName(context.get(), name.c_str(), 0));
                }
                const double start = std::max(srcStart, toSource(marker.getStart()));
                if (std::abs(twin->getStart() - hostTime(start)) > core::positionTolerance)
                    check(target.setStart(context.get(), hostTime(start), 0));
                if (marker.isRange()) {
                    const double length = marker.getEnd() - marker.getStart();
                    if (std::abs((twin->getEnd() - twin->getStart()) - length) > core::positionTolerance)
                        check(target.setLength(context.get(), length, 0));
                }
            }
        }
    }
}

} // namespace montala::host
