#include "host/Project.h"

#include "host/CutEvent.h"
#include "host/HostCalls.h"
#include "host/MediaPool.h"

#include "core/services/ProgressHandlerBase.h"
#include "core/model/PropertyKeys.h"
#include "core/services/VideoTrackHandlerBase.h"
#include "core/time/Tolerances.h"
#include "core/model/Settings.h"
#include "core/time/Timecode.h"
#include "core/model/Variant.h"
#include "core/serialize/SerializationTree.h"
#include "util/StringUtil.h"

#include "kelmar/base/FVariant.h"
#include "kelmar/project/IDocument.h"
#include "kelmar/project/IEditClip.h"
#include "kelmar/edit/IEditContext.h"
#include "kelmar/project/IMarkerTrack.h"
#include "kelmar/project/IMediaPool.h"
#include "kelmar/base/IObjectIterator.h"
#include "kelmar/base/IParameterContainer.h"
#include "kelmar/project/IPointMarker.h"
#include "kelmar/project/IProjectSettings.h"
#include "kelmar/edit/IRangeEdit.h"
#include "kelmar/project/IRangeMarker.h"
#include "kelmar/project/IStorage.h"
#include "kelmar/project/ITimeParameter.h"
#include "kelmar/base/String.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace montala::host {

using util::Result;

namespace {

double currentDayLength = 86400.0;

constexpr const char* userIdAttribute = "MontEventUserId";
constexpr const char* reelAttribute = "User:STR_MAReel";

void setTime(Kelmar::IParameterContainer& container, const char* name, double time)
{
    Kelmar::IPtr<Kelmar::FUnknown> parameter = Kelmar::owned(container.getParameter(name));
    check(queryRequired<Kelmar::ITimeParameter>(parameter.get())->setTime(time, 1));
}

double getTime(Kelmar::IParameterContainer& container, const char* name)
{
    Kelmar::IPtr<Kelmar::FUnknown> parameter = Kelmar::owned(container.getParameter(name));
    return queryRequired<Kelmar::ITimeParameter>(parameter.get())->getTime();
}

std::u16string translated(const char* english)
{
    return util::StringUtil::translate(Kelmar::String::utf8ToUtf16(english));
}

} // namespace

Project::Project(Kelmar::IProject* project, Kelmar::IHostServices* hostServices)
    : hostProject(Kelmar::shared(project)), services(hostServices)
{
    if (!project)
        throw Result::NoInterface;
    hostPool = Kelmar::owned(project->getMediaPool());
    // The pool is reference counted as the host's dependents are; the
    // project gives back its own reference when it goes.
    mediaPool = std::shared_ptr<MediaPool>(new MediaPool(hostPool.get(), services), [](MediaPool* pool) { pool->release(); });
}

Project::~Project()
{
    lockedTracks.clear();
    trackCache.clear();
    folderTrack = Track();
    markerTracks = {};
}

// ---- Frame rate

namespace {

// The host's report as a Framerate. The pull-down flag must be read here as
// well as the drop flag: 29.97 is nominal 30 run 1000/1001 slow, and a rate
// taken as plain 30 puts 01:00:00;00 3.6 s early on the host's timeline.
core::Framerate rateOf(const Kelmar::IProjectSettings::FrameRate& rate)
{
    const bool drop = (rate.flags & Kelmar::IProjectSettings::FrameRate::kDropFrame) != 0;
    const bool pulled = (rate.flags & Kelmar::IProjectSettings::FrameRate::kPullDown) != 0;
    return core::Framerate(rate.framesPerSecond, pulled, drop ? 1 : 0);
}

} // namespace

core::Framerate Project::getFramerate()
{
    if (framerate.isUndefined()) {
        auto settings = Kelmar::queryInterface<Kelmar::IProjectSettings>(hostProject.get());
        Kelmar::IProjectSettings::FrameRate rate;
        if (settings && settings->getFrameRate(rate) == Kelmar::kResultOk) {
            framerate = rateOf(rate);
            currentDayLength = core::Timecode(1, 0, 0, 0).toSeconds(framerate) * 24.0;
        }
    }
    return framerate;
}

void Project::updateFramerate()
{
    auto settings = queryRequired<Kelmar::IProjectSettings>(hostProject.get());
    Kelmar::IProjectSettings::FrameRate rate;
    check(settings->getFrameRate(rate));
    const core::Framerate reported = rateOf(rate);
    if (reported.fps != framerate.fps || reported.dropMode != framerate.dropMode || reported.pulled != framerate.pulled) {
        framerate = reported;
        core::ScopedFramerateProvider provider(this);
        dataModel.revalidateAll();
    }
    currentDayLength = core::Timecode(1, 0, 0, 0).toSeconds(framerate) * 24.0;
    chainsKept.clear();
    if (mediaPool)
        mediaPool->notifyListeners();
    // A listener may leave while it is told (a track that forgets itself).
    const std::set<ProjectListener*> toTell = listeners;
    for (ProjectListener* listener : toTell)
        if (listeners.count(listener))
            listener->projectChanged(*this);
}

double Project::dayLength() { return currentDayLength; }

// ---- Times

double Project::getConformOffset() const
{
    core::Variant value;
    if (dataModel.getProperty(conformOffsetKey, value) != Result::Ok)
        return std::numeric_limits<double>::lowest();
    return value.asDouble();
}

bool Project::hasConformOffset() const { return getConformOffset() != std::numeric_limits<double>::lowest(); }

void Project::clearConformOffset()
{
    dataModel.setProperty(conformOffsetKey, core::Variant(std::numeric_limits<double>::lowest()));
}

double Project::latestEnd(const std::vector<Track>& tracks, double end)
{
    const double start = getProjectStart();
    double latest = start;
    for (const Track& track : tracks)
        for (const TrackEvent& event : track.getEventsInRange(0.0, end))
            latest = std::max(latest, event.getEnd() + start);
    return latest;
}

void Project::computeConformOffset()
{
    getFramerate();
    const double latest = latestEnd(getTracks(), getProjectEnd() - getProjectStart());
    const double offset = (std::floor(latest / currentDayLength) + 1.0) * currentDayLength;
    dataModel.setProperty(conformOffsetKey, core::Variant(offset));
}

void Project::extendProjectEnd(bool selectedOnly)
{
    if (!dataModel.isPreviewActive() || !hasConformOffset())
        return;
    const double start = getProjectStart();
    const double offset = getConformOffset();
    std::vector<Track> tracks;
    for (Track& track : getTracks())
        if (!selectedOnly || (track.object()->getFlags() & Kelmar::IProjectObject::kContentChanged) != 0)
            tracks.push_back(track);
    double latest = 0.0;
    for (const Track& track : tracks)
        for (const TrackEvent& event : track.getEventsInRange(0.0, offset - start))
            latest = std::max(latest, event.getEnd());
    const double newEnd = (std::floor(latest / currentDayLength) + 1.0) * currentDayLength + offset;
    const double end = getProjectEnd();
    if (end < newEnd) {
        // The end the user had comes back when the preview ends.
        if (!hasStoredDouble(core::PropertyKey::ProjectEndBeforePreview))
            dataModel.setProperty(core::PropertyKey::ProjectEndBeforePreview, core::Variant(end));
        check(hostProject->setProjectLength(newEnd - start));
    }
}

void Project::restoreProjectEnd()
{
    if (!hasStoredDouble(core::PropertyKey::ProjectEndBeforePreview))
        return;
    core::Variant end;
    dataModel.getProperty(core::PropertyKey::ProjectEndBeforePreview, end);
    dataModel.setProperty(core::PropertyKey::ProjectEndBeforePreview, core::Variant(std::numeric_limits<double>::lowest()));
    check(hostProject->setProjectLength(end.asDouble() - getProjectStart()));
}

bool Project::hasStoredDouble(int32_t key) const
{
    core::Variant value;
    return dataModel.getProperty(key, value) == Result::Ok && value.asDouble() != std::numeric_limits<double>::lowest();
}

void Project::getEditRange(double& start, double& end)
{
    if (!hasConformOffset())
        throw Result::NotInitialized;
    const core::Settings& settings = dataModel.getSettings();
    if (settings.getRestrictRange()) {
        start = settings.getPreserveBefore();
        end = settings.getPreserveAfter();
    } else {
        start = 0.0;
        end = getConformOffset();
    }
}

double Project::getProjectStart() const
{
    return queryRequired<Kelmar::IProjectSettings>(hostProject.get())->getProjectStart();
}

double Project::getProjectEnd() const
{
    auto context = editContext(nullptr);
    return projectObject()->getEnd(context.get()) + getProjectStart();
}

std::string Project::getProjectName() const
{
    Kelmar::IPtr<Kelmar::IDocument> document = Kelmar::owned(hostProject->getDocument());
    if (!document)
        return {};
    char16_t buffer[1024] = {};
    if (document->getName(buffer, sizeof(buffer)) != Kelmar::kResultOk)
        return {};
    return Kelmar::String::utf16ToUtf8(buffer);
}

void Project::getLocators(double& left, double& right) const
{
    Kelmar::IPtr<Kelmar::IParameterContainer> locators = Kelmar::owned(hostProject->getLocators());
    require(locators.get());
    left = getTime(*locators, "leftTime");
    right = getTime(*locators, "rightTime");
}

void Project::setLocators(double left, double right, bool absolute)
{
    Kelmar::IPtr<Kelmar::IParameterContainer> locators = Kelmar::owned(hostProject->getLocators());
    require(locators.get());
    if (absolute) {
        // Both move back by a tenth of the range, so the start is heard with
        // a little lead-in; the range keeps its length.
        const double lead = (right - left) / 10.0;
        const double start = getProjectStart();
        left = left - lead - start;
        right = right - lead - start;
    }
    setTime(*locators, "leftTime", left);
    setTime(*locators, "rightTime", right);
}

// ---- Tracks

Kelmar::IPtr<Kelmar::IProjectObject> Project::projectObject() const
{
    return queryRequired<Kelmar::IProjectObject>(hostProject.get());
}

Kelmar::IPtr<Kelmar::IEditContext> Project::editContext(Kelmar::IProjectObject* container) const
{
    Kelmar::IPtr<Kelmar::IEditContext> context = Kelmar::owned(hostProject->getEditContext(container));
    require(context.get());
    return context;
}

std::vector<Kelmar::ITrack*> Project::trackList()
{
    if (caching)
        return trackCache;
    std::vector<Kelmar::ITrack*> tracks;
    // Depth first: a folder's tracks follow the folder.
    auto walk = [&tracks](auto& self, Kelmar::IProjectObject& parent) -> void {
        Kelmar::IPtr<Kelmar::IObjectIterator> children = Kelmar::owned(parent.getChildren());
        if (!children)
            return;
        while (!children->atEnd()) {
            Kelmar::IPtr<Kelmar::IProjectObject> child = Kelmar::owned(children->next());
            if (!child)
                break;
            // The project holds the track; the list borrows it.
            if (auto track = Kelmar::queryInterface<Kelmar::ITrack>(child.get()))
                tracks.push_back(track.get());
            self(self, *child);
        }
    };
    walk(walk, *projectObject());
    return tracks;
}

void Project::setCaching(bool on)
{
    // The audio chains are kept only within a run: one that starts or ends
    // reads them anew.
    chainsKept.clear();
    if (on) {
        caching = false;
        trackCache = trackList();
        caching = true;
    } else {
        trackCache.clear();
        markerTracks = {};
        folderTrack = Track();
        caching = false;
    }
}

bool Project::containsTrack(const Track& track)
{
    if (!track.getHostTrack())
        return false;
    const std::vector<Kelmar::ITrack*> tracks = trackList();
    return std::find(tracks.begin(), tracks.end(), track.getHostTrack()) != tracks.end();
}

std::vector<Track> Project::getTracks()
{
    std::vector<Track> tracks;
    for (Kelmar::ITrack* hostTrack : trackList()) {
        auto asObject = Kelmar::queryInterface<Kelmar::IProjectObject>(hostTrack);
        if (asObject && asObject->isKind("track") && (asObject->isKind("folder") || asObject->isKind("ruler")))
            continue;
        tracks.emplace_back(this, hostTrack);
    }
    return tracks;
}

std::vector<Track> Project::getTracks(const char* kind)
{
    std::vector<Track> tracks;
    for (Kelmar::ITrack* hostTrack : trackList()) {
        auto asObject = Kelmar::queryInterface<Kelmar::IProjectObject>(hostTrack);
        if (asObject && asObject->isKind(kind))
            tracks.emplace_back(this, hostTrack);
    }
    return tracks;
}

Track& Project::markerTrack(TrackType type)
{
    const int index = static_cast<int>(type) - 1;
    if (index < 0 || index >= static_cast<int>(markerTracks.size()))
        throw Result::InvalidArgument;
    return markerTracks[static_cast<size_t>(index)];
}

bool Project::hasMarkerTrack(TrackType type)
{
    std::vector<Track> candidates = getTracks("marker");
    return findByType(candidates, static_cast<int>(type)) != nullptr;
}

// ---- Montala's own tracks

Track* Project::findByType(std::vector<Track>& candidates, int type)
{
    for (Track& candidate : candidates)
        if (candidate.hasType(type, -1))
            return &candidate;
    return nullptr;
}

Track& Project::ensureMarkerTrack(Kelmar::IProjectEdit& edit, std::vector<Track>& candidates, Track& slot, int type)
{
    if (!slot.isValid())
        if (Track* found = findByType(candidates, type))
            slot = *found;

    auto folderObject = folderTrack.object();
    auto folderContext = editContext(folderObject.get());
    if (slot.isValid()) {
        // Found elsewhere (the user moved it): back into the folder.
        auto object = slot.object();
        Kelmar::IPtr<Kelmar::IProjectObject> parent = Kelmar::owned(object->getParent());
        if (parent.get() != folderObject.get()) {
            auto source = editContext(parent && !parent->isKind("project") ? parent.get() : nullptr);
            check(edit.moveObject(source.get(), folderContext.get(), object.get()));
        }
        return slot;
    }

    // The host offers a marker track of its own while it has none in the
    // project; one already placed belongs to the user.
    Kelmar::IPtr<Kelmar::IProjectObject> object = Kelmar::owned(hostProject->getDefaultMarkerTrack());
    if (object) {
        Kelmar::IPtr<Kelmar::IProjectObject> parent = Kelmar::owned(object->getParent());
        if (parent)
            object.reset();
    }
    if (!object)
        object = Kelmar::owned(hostProject->createTrack("marker"));
    auto hostTrack = queryRequired<Kelmar::ITrack>(object.get());
    slot = Track(this, hostTrack.get());
    slot.setName(util::StringUtil::toUtf8(translated(trackTypeName(type))));
    slot.setType(type);
    check(edit.addObject(folderContext.get(), object.get()));
    if (caching)
        trackCache.push_back(hostTrack.get());
    return slot;
}

Track& Project::ensureTrack(Kelmar::IProjectEdit& edit, int type, std::vector<Track>& candidates, Track& slot,
                            const char* kind)
{
    if (!slot.isValid())
        if (Track* found = findByType(candidates, type))
            slot = *found;
    if (slot.isValid())
        return slot;

    Kelmar::IPtr<Kelmar::IProjectObject> object = Kelmar::owned(hostProject->createTrack(kind));
    auto hostTrack = queryRequired<Kelmar::ITrack>(object.get());
    slot = Track(this, hostTrack.get());
    slot.setName(util::StringUtil::toUtf8(translated(trackTypeName(type))));
    slot.setType(type);
    check(edit.addObject(editContext(nullptr).get(), object.get()));
    if (caching)
        trackCache.push_back(hostTrack.get());
    return slot;
}

void Project::createFolderAndMarkerTracks(Kelmar::IProjectEdit& edit)
{
    std::vector<Track> folders = getTracks("folder");
    ensureTrack(edit, static_cast<int>(TrackType::Folder), folders, folderTrack, "folder");

    std::vector<Track> candidates = getTracks("marker");
    const core::Settings& settings = dataModel.getSettings();
    const std::pair<TrackType, bool> wanted[] = {
        {TrackType::Destination, settings.getCreateDestinationMarkers()},
        {TrackType::Insert, settings.getCreateInsertMarkers()},
        {TrackType::Transition, settings.getCreateTransitionMarkers()},
        {TrackType::AutomationWarning, settings.getCreateAutomationWarningMarkers()},
        {TrackType::Snippet, settings.getCreateSnippetMarkers()},
        {TrackType::Overlap, settings.getCreateOverlapMarkers()},
        {TrackType::Memos, true},
    };
    for (const auto& [type, enabled] : wanted)
        if (enabled)
            ensureMarkerTrack(edit, candidates, markerTrack(type), static_cast<int>(type));
}

void Project::createVideoTrack(Kelmar::IProjectEdit& edit)
{
    if (dataModel.getVideoList().getSize() == 0)
        return;
    std::vector<Track> candidates = getTracks("video");
    const size_t before = candidates.size();
    Track newVideo;
    ensureTrack(edit, static_cast<int>(TrackType::NewVideo), candidates, newVideo, "video");
    if (!videoTrackHandler)
        return;

    // The handler counts the project's video tracks in project order; one
    // just made joins that list only once the handler has heard of it.
    std::vector<Track> videos = getTracks("video");
    if (videos.size() != before) {
        const std::set<ProjectListener*> toTell = listeners;
        for (ProjectListener* listener : toTell)
            if (listeners.count(listener))
                listener->projectChanged(*this);
    }
    for (size_t index = 0; index < videos.size(); ++index)
        if (videos[index].sameTrack(newVideo)) {
            videoTrackHandler->setTrackRole(static_cast<int>(index), core::VideoTrackHandlerBase::NewPicture);
            return;
        }
}

bool Project::isMontalaTrack(Track& track)
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

bool Project::holdsRunOutput(Track& track)
{
    // The memos are the user's: they go with the picture like any marker.
    return isMontalaTrack(track) && !(track.isMarkerTrack() && track.getType() == static_cast<int>(TrackType::Memos));
}

void Project::numberMemos()
{
    Track& memos = markerTrack(TrackType::Memos);
    if (memos.isValid() && hasConformOffset())
        memos.assignEventIds(0.0, getConformOffset() - getProjectStart());
}

bool Project::takesPart(const Track& track) const
{
    if (dataModel.getSettings().getApplyTo() == core::ApplyTo::SelectedTracks && !track.isSelected())
        return false;
    return !track.isLocked();
}

// ---- A run

core::CutPtr Project::createCut(const core::EventPtr& event)
{
    if (!event)
        throw Result::InvalidArgument;
    const core::Framerate rate = getFramerate();
    const double srcStart = event->getSrcIn().toSeconds(rate);
    const double srcEnd = event->getSrcOut().toSeconds(rate);
    const double dstStart = event->getDstIn().toSeconds(rate);
    const double dstEnd = event->getDstOut().toSeconds(rate);
    std::vector<core::CutEventPtr> pieces;
    for (Track& track : getTracks()) {
        // Montala's own tracks hold what a run writes, not old material.
        if (!takesPart(track) || holdsRunOutput(track))
            continue;
        pieces.push_back(std::make_shared<CutEvent>(track, srcStart, srcEnd, dstStart, dstEnd));
    }
    return std::make_shared<core::Cut>(event, std::move(pieces));
}

void Project::applyCut(Kelmar::IProjectEdit& edit, core::Cut& cut)
{
    const double offset = getConformOffset();
    const core::EventPtr& event = cut.getEvent();

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

    if (progress && event)
        progress->setText(util::StringUtil::fromUtf8(event->getRollName()));
    for (const Group& group : groups) {
        // A piece the snippet algorithm emptied has nothing to carry.
        if (group.end - group.start <= core::positionTolerance)
            continue;
        auto list = getService<Kelmar::IObjectList>(services);
        for (Kelmar::ITrack* track : group.tracks)
            check(list->add(track));
        copyRange(edit, group.start, group.end, offset + group.destination, list.get());
    }
    advance(static_cast<int64_t>(cut.getPieces().size()));

    if (event && dataModel.getSettings().getCreateDestinationMarkers()) {
        std::string name = util::StringUtil::toUtf8(translated("Event: ")) + std::to_string(event->getEventNumber()) + " - ";
        if (dataModel.getSettings().getMatchName() == core::MatchName::ClipName)
            name += event->getClipName();
        else
            name += event->getRollName() + " ";
        const core::Framerate rate = getFramerate();
        Track& destination = markerTrack(TrackType::Destination);
        writeMarker(edit, destination.isValid() ? &destination : nullptr, name, event->getRollName(),
                    offset + event->getDstIn().toSeconds(rate), offset + event->getDstOut().toSeconds(rate), 0);
    }
}

void Project::copyRange(Kelmar::IProjectEdit& edit, double start, double end, double destination,
                        Kelmar::IObjectList* tracks)
{
    chainsKept.clear();
    const double projectStart = getProjectStart();
    start -= projectStart;
    end -= projectStart;
    destination -= projectStart;
    if (tracks) {
        auto rangeEdit = queryRequired<Kelmar::IRangeEdit>(&edit);
        check(rangeEdit->copyRangeOnTracks(hostProject.get(), tracks, start, end, destination, 0));
        return;
    }
    Kelmar::IPtr<Kelmar::IEditClip> clip;
    check(edit.extractRange(hostProject.get(), start, end, clip.put()));
    check(edit.insertClip(hostProject.get(), clip.get(), destination, 0));
}

void Project::writeMarker(Kelmar::IProjectEdit& edit, Track* track, const std::string& name, const std::string& reel,
                          double start, double end, int64_t id)
{
    if (!track || !track->isValid())
        throw Result::NotInitialized;
    const double projectStart = getProjectStart();
    auto trackObject = track->object();
    auto context = editContext(trackObject.get());

    Kelmar::IPtr<Kelmar::IProjectObject> marker;
    // Absolute times near a day carry rounding in their last digits: a
    // length within one sample of 0.01 s is 0.01 s.
    if (end - start <= shortestLength + core::positionTolerance) {
        marker = queryRequired<Kelmar::IProjectObject>(getService<Kelmar::IPointMarker>(services).get());
        check(marker->setStart(context.get(), start - projectStart, 0));
    } else {
        marker = queryRequired<Kelmar::IProjectObject>(getService<Kelmar::IRangeMarker>(services).get());
        check(marker->setStart(context.get(), start - projectStart, 0));
        check(marker->setLength(context.get(), end - start, 0));
    }
    check(edit.addObject(context.get(), marker.get()));
    const std::u16string wideName = Kelmar::String::utf8ToUtf16(name);
    check(marker->setName(context.get(), wideName.c_str(), 0));
    check(marker->setAttribute(reelAttribute, Kelmar::FVariant(reel.c_str(), true), 1));
    if (id != 0)
        check(marker->setAttribute(userIdAttribute, Kelmar::FVariant(static_cast<Kelmar::int64>(id)), 1));
}

void Project::generateMarkers(Kelmar::IProjectEdit& edit, const std::vector<core::InformationEntry>& entries)
{
    const double offset = getConformOffset();
    for (const core::InformationEntry& entry : entries) {
        TrackType type;
        switch (entry.kind) {
        case core::InformationKind::Insert: type = TrackType::Insert; break;
        case core::InformationKind::Transition: type = TrackType::Transition; break;
        case core::InformationKind::AutomationWarning: type = TrackType::AutomationWarning; break;
        case core::InformationKind::Snippet: type = TrackType::Snippet; break;
        case core::InformationKind::Overlap: type = TrackType::Overlap; break;
        default: throw Result::InvalidArgument;
        }
        Track& target = markerTrack(type);
        writeMarker(edit, target.isValid() ? &target : nullptr, entry.text, std::string(), entry.start + offset,
                    entry.end + offset, 0);
        advance(1);
    }
}

void Project::complete(Kelmar::IProjectEdit& edit)
{
    std::vector<Track> targets;
    const bool selectedOnly = dataModel.getSettings().getApplyTo() == core::ApplyTo::SelectedTracks;
    for (Track& track : getTracks()) {
        if (track.isLocked())
            continue;
        // What the run wrote on its marker tracks comes home in any case.
        if (selectedOnly && !track.isSelected() && !(track.isMarkerTrack() && holdsRunOutput(track)))
            continue;
        targets.push_back(track);
    }
    const double offset = getConformOffset();
    const core::Settings& settings = dataModel.getSettings();
    if (!settings.getRestrictRange()) {
        moveBack(edit, offset, 0.0, offset, targets);
    } else {
        const double before = settings.getPreserveBefore();
        const double after = settings.getPreserveAfter();
        moveBack(edit, std::abs(before) + offset, before, std::abs(after - before), targets);
        clearWorkArea(edit);
    }
}

void Project::moveBack(Kelmar::IProjectEdit& edit, double from, double to, double length, std::vector<Track>& tracks)
{
    // What lies wholly in the home range is the old arrangement: it goes,
    // and the new one takes its place.
    chainsKept.clear();
    const double projectStart = getProjectStart();
    const double low = to - projectStart;
    const double high = to + length - projectStart;
    auto list = getService<Kelmar::IObjectList>(services);
    for (Track& track : tracks) {
        auto context = editContext(track.object().get());
        for (const TrackEvent& event : track.getEvents()) {
            // Within a sample: the edges are frames of the settings, and an
            // event on them lies on the same frames a few ulps away.
            if (event.getStart() >= low - positionTolerance && event.getEnd() <= high + positionTolerance)
                check(edit.removeObject(context.get(), event.getObject()));
        }
        check(list->add(track.getHostTrack()));
    }
    copyRange(edit, from, from + length, to, list.get());
    check(edit.deleteRange(hostProject.get(), from - projectStart, from + length - projectStart, 0));
    removeWorkAreaPoints(edit);
}

void Project::removeWorkAreaPoints(Kelmar::IProjectEdit& edit)
{
    // Taking a range away, the host holds the curve on both sides of it with
    // a point on each edge; past the offset, those belong to nothing.
    if (!hasConformOffset())
        return;
    const double from = getConformOffset() - getProjectStart() - positionTolerance;
    for (Track& track : getTracks()) {
        if (track.isLocked())
            continue;
        Kelmar::IPtr<Kelmar::IObjectIterator> curves = Kelmar::owned(track.getHostTrack()->getAutomationTracks());
        while (curves && !curves->atEnd()) {
            Kelmar::IPtr<Kelmar::IProjectObject> curve = Kelmar::owned(curves->next());
            if (!curve)
                break;
            std::vector<Kelmar::IPtr<Kelmar::IProjectObject>> past;
            Kelmar::IPtr<Kelmar::IObjectIterator> points = Kelmar::owned(curve->getChildren());
            while (points && !points->atEnd()) {
                Kelmar::IPtr<Kelmar::IProjectObject> point = Kelmar::owned(points->next());
                if (!point)
                    break;
                if (point->getStart(nullptr) >= from)
                    past.push_back(point);
            }
            if (past.empty())
                continue;
            auto context = editContext(curve.get());
            for (const auto& point : past)
                check(edit.removeObject(context.get(), point.get()));
        }
    }
}

void Project::finishRange(Kelmar::IProjectEdit& edit, double start, double end, bool selectedOnly)
{
    chainsKept.clear();
    auto rangeEdit = queryRequired<Kelmar::IRangeEdit>(&edit);
    auto list = getService<Kelmar::IObjectList>(services);
    for (Track& track : getTracks())
        if (!selectedOnly || track.isSelected())
            check(list->add(track.getHostTrack()));
    const Kelmar::tresult answer = rangeEdit->finishRange(hostProject.get(), list.get(), start, end, 0.0);
    if (answer != Kelmar::kResultOk && answer != Kelmar::kResultFalse)
        throw Result::HostCallFailed;
}

void Project::clearWorkArea(Kelmar::IProjectEdit& edit)
{
    chainsKept.clear();
    setTracksLocked(false);
    if (!hasConformOffset())
        return;
    const double projectStart = getProjectStart();
    const double offset = getConformOffset();
    check(edit.deleteRange(hostProject.get(), offset - projectStart, offset + getProjectEnd() - projectStart, 0));
    removeWorkAreaPoints(edit);
}

void Project::setTracksLocked(bool on)
{
    for (Track& track : lockedTracks)
        if (track.isValid())
            track.setLocked(on);

    std::vector<Track> candidates = getTracks("marker");
    for (int type = 1; type <= static_cast<int>(markerTracks.size()); ++type) {
        Track& slot = markerTracks[static_cast<size_t>(type - 1)];
        if (!slot.isValid())
            if (Track* found = findByType(candidates, type))
                slot = *found;
        // The user writes memos during a preview: that track stays open.
        if (type == static_cast<int>(TrackType::Memos) || !slot.isValid())
            continue;
        slot.setLocked(on);
    }
    std::vector<Track> videos = getTracks("video");
    if (Track* newVideo = findByType(videos, static_cast<int>(TrackType::NewVideo)))
        newVideo->setLocked(on);
}

void Project::collectLockedTracks()
{
    lockedTracks.clear();
    for (Track& track : getTracks())
        if (takesPart(track) && !isMontalaTrack(track))
            lockedTracks.push_back(track);
}

void Project::fillVirginTerritories(Kelmar::IProjectEdit& edit, core::CutList& cuts)
{
    const double offset = getConformOffset();
    // One image of each track's automation for the whole fill, so that what
    // one bridge changed is seen by the next.
    std::map<Kelmar::ITrack*, Track> tracks;
    auto trackOf = [&](CutEvent& piece) -> Track& {
        auto found = tracks.find(piece.getTrack().getHostTrack());
        if (found == tracks.end()) {
            found = tracks.emplace(piece.getTrack().getHostTrack(), piece.getTrack()).first;
            found->second.readAutomation();
        }
        return found->second;
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
                    trackOf(*a).bridgeGap(edit, a->getDstEnd() + offset, b->getDstStart() + offset);
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

// ---- The user's edits during a preview

void Project::edited(Kelmar::IProjectEdit* edit)
{
    chainsKept.clear();
    if (dataModel.isPreviewActive() && hasConformOffset()) {
        std::vector<Track> candidates = getTracks("marker");
        Track& memos = markerTrack(TrackType::Memos);
        if (!memos.isValid())
            if (Track* found = findByType(candidates, static_cast<int>(TrackType::Memos)))
                memos = *found;
        if (memos.isValid() && (memos.object()->getFlags() & Kelmar::IProjectObject::kContentChanged) != 0) {
            memos.assignEventIds(0.0, getConformOffset());
            if (edit)
                syncMemos(*edit);
        }
    }
    const std::set<ProjectListener*> toTell = listeners;
    for (ProjectListener* listener : toTell)
        if (listeners.count(listener))
            listener->projectEdited(*this);
}

void Project::syncMemos(Kelmar::IProjectEdit& edit)
{
    Track& memos = markerTrack(TrackType::Memos);
    if (!memos.isValid())
        return;
    const core::Framerate rate = getFramerate();
    const double projectStart = getProjectStart();
    const double offset = getConformOffset();
    auto context = editContext(memos.object().get());

    auto idOf = [](const TrackEvent& marker) {
        int64_t id = 0;
        return marker.getUserId(id) ? id : int64_t{0};
    };
    auto contains = [&](const std::vector<TrackEvent>& markers, int64_t id) {
        return std::any_of(markers.begin(), markers.end(), [&](const TrackEvent& m) { return idOf(m) == id; });
    };

    for (const core::EventPtr& event : previewList.getEvents()) {
        const double srcStart = event->getSrcIn().toSeconds(rate);
        const double srcEnd = event->getSrcOut().toSeconds(rate);
        const double dstStart = event->getDstIn().toSeconds(rate);
        // Where a marker of the work area falls on the old timeline, absolute.
        auto toSource = [&](double hostTime) { return srcStart + (hostTime + projectStart - offset - dstStart); };

        std::vector<TrackEvent> source = memos.getEventsInRange(srcStart - projectStart, srcEnd - projectStart);
        std::vector<TrackEvent> destination = memos.getEventsInRange(dstStart + offset - projectStart,
                                                                    event->getDstOut().toSeconds(rate) + offset - projectStart);
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
                writeMarker(edit, &memos, marker.getName(), std::string(), start, std::max(start, end), id);
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
                if (std::abs(twin->getStart() - (start - projectStart)) > core::positionTolerance)
                    check(target.setStart(context.get(), start - projectStart, 0));
                if (marker.isRange()) {
                    const double length = marker.getEnd() - marker.getStart();
                    if (std::abs((twin->getEnd() - twin->getStart()) - length) > core::positionTolerance)
                        check(target.setLength(context.get(), length, 0));
                }
            }
        }
    }
}

// ---- Stored block

void Project::load()
{
    auto object = queryRequired<Kelmar::IProjectObject>(hostProject.get());
    if (object->hasAttribute(dataAttribute) != Kelmar::kResultOk)
        return;

    Kelmar::FVariant stored;
    check(object->getAttribute(dataAttribute, stored));
    auto storage = queryRequired<Kelmar::IStorage>(stored.getObject());
    const Kelmar::int64 size = storage->getSize(blockName);
    if (size < 0)
        throw Result::BadStoredData;
    std::vector<uint8_t> bytes(static_cast<size_t>(size));
    if (size > 0)
        check(storage->read(blockName, bytes.data(), size));
    core::serialize::SerializationTree tree;
    tree.assign(bytes.data(), bytes.size());

    // From here on the block is there but may not be readable: it is kept
    // for the next save rather than replaced by an empty model.
    unreadBlockKept = true;
    Kelmar::FVariant checksum;
    check(object->getAttribute(checksumAttribute, checksum));
    const uint32_t expected = static_cast<uint32_t>(checksum.isInt() ? checksum.getInt() : 0);
    if (expected != tree.computeChecksum())
        throw Result::ChecksumMismatch;

    {
        // This project answers the rate while its timecodes are read; the
        // provider of the moment comes back afterwards.
        core::ScopedFramerateProvider provider(this);
        tree.readObject(dataModel);
        if (tree.getPosition() != tree.getSize()) {
            dataModel.clearAll();
            throw Result::BadStoredData;
        }
        for (Track& track : getTracks())
            if (track.hasLockState())
                lockedTracks.push_back(track);
    }
    unreadBlockKept = false;
}

void Project::save()
{
    if (unreadBlockKept && dataModel.getOldList().getEvents().empty() && dataModel.getNewList().getEvents().empty() &&
        dataModel.getChangeList().getEvents().empty())
        return;
    unreadBlockKept = false;
    auto object = queryRequired<Kelmar::IProjectObject>(hostProject.get());
    object->removeAttribute(dataAttribute);
    object->removeAttribute(checksumAttribute);

    core::serialize::SerializationTree tree;
    tree.writeObject(dataModel);

    auto storage = getService<Kelmar::IStorage>(services);
    check(storage->write(blockName, tree.getData(), static_cast<Kelmar::int64>(tree.getSize()), 1));
    check(object->setAttribute(dataAttribute, Kelmar::FVariant(storage.get(), false), 1));
    // A block without its checksum would read as a damaged one on the next
    // load: without the checksum, the block goes too.
    if (object->setAttribute(checksumAttribute, Kelmar::FVariant(static_cast<Kelmar::int64>(tree.computeChecksum())), 1)
        != Kelmar::kResultOk) {
        object->removeAttribute(dataAttribute);
        throw Result::HostCallFailed;
    }
}

std::u16string Project::loadFailureMessage(Result::Type code)
{
    switch (code) {
    case Result::UnknownVersion:
        return translated("The project was created with an unsupported Montala version. The data cannot be loaded.");
    case Result::NewerVersion:
        return translated("The project was created with a newer Montala version. The data cannot be loaded.");
    default:
        return translated("An error occurred while loading the Montala data. The data will be ignored.");
    }
}

std::u16string Project::saveFailureMessage()
{
    return translated("An error occurred while saving the Montala data.");
}

// ---- Parts

void Project::setPreviewEvents(const core::EventList& events)
{
    if (&events == &previewList)
        return;
    previewList = events;
}

core::InformationContext Project::getInformationContext()
{
    core::InformationContext context;
    context.oldList = &dataModel.getOldList();
    context.newList = &dataModel.getNewList();
    context.framerate = getFramerate();
    context.settings = &dataModel.getSettings();
    context.offset = hasConformOffset() ? getConformOffset() : 0.0;
    return context;
}

core::SnippetContext Project::getSnippetContext()
{
    core::SnippetContext context;
    context.framerate = getFramerate();
    context.settings = &dataModel.getSettings();
    return context;
}

void Project::advance(int64_t count)
{
    if (progress)
        progress->advance(count);
}

} // namespace montala::host
