#include "host/Project.h"

#include "host/HostCalls.h"
#include "host/MediaPool.h"

#include "core/services/VideoTrackHandlerBase.h"
#include "core/model/Settings.h"
#include "core/time/Timecode.h"
#include "core/serialize/SerializationTree.h"
#include "util/StringUtil.h"

#include "kelmar/base/FVariant.h"
#include "kelmar/project/IDocument.h"
#include "kelmar/project/IMediaPool.h"
#include "kelmar/base/IParameterContainer.h"
#include "kelmar/project/IProjectSettings.h"
#include "kelmar/project/IStorage.h"
#include "kelmar/project/ITimeParameter.h"
#include "kelmar/base/String.h"


namespace montala::host {

using util::Result;

namespace {

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
    : projectTracks(project, hostServices)
{
    hostPool = Kelmar::owned(project->getMediaPool());
    // The pool is reference counted as the host's dependents are; the
    // project gives back its own reference when it goes.
    mediaPool = std::shared_ptr<MediaPool>(new MediaPool(hostPool.get(), hostServices), [](MediaPool* pool) { pool->release(); });
}

Project::~Project() = default;

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
        auto settings = Kelmar::queryInterface<Kelmar::IProjectSettings>(getHostProject());
        Kelmar::IProjectSettings::FrameRate rate;
        if (settings && settings->getFrameRate(rate) == Kelmar::kResultOk) {
            framerate = rateOf(rate);
            WorkArea::followRate(framerate);
        }
    }
    return framerate;
}

void Project::updateFramerate()
{
    auto settings = queryRequired<Kelmar::IProjectSettings>(getHostProject());
    Kelmar::IProjectSettings::FrameRate rate;
    check(settings->getFrameRate(rate));
    const core::Framerate reported = rateOf(rate);
    if (reported.fps != framerate.fps || reported.dropMode != framerate.dropMode || reported.pulled != framerate.pulled) {
        framerate = reported;
        core::ScopedFramerateProvider provider(this);
        dataModel.revalidateAll();
    }
    WorkArea::followRate(framerate);
    if (mediaPool)
        mediaPool->notifyListeners();
    tellListeners(false);
}

void Project::tellListeners(bool edited)
{
    projectTracks.noteChange();
    // A listener may leave while it is told.
    const std::set<ProjectListener*> toTell = listeners;
    for (ProjectListener* listener : toTell)
        if (listeners.count(listener)) {
            if (edited)
                listener->projectEdited(*this);
            else
                listener->projectChanged(*this);
        }
}

std::string Project::getProjectName() const
{
    Kelmar::IPtr<Kelmar::IDocument> document = Kelmar::owned(getHostProject()->getDocument());
    if (!document)
        return {};
    char16_t buffer[1024] = {};
    if (document->getName(buffer, sizeof(buffer)) != Kelmar::kResultOk)
        return {};
    return Kelmar::String::utf16ToUtf8(buffer);
}

void Project::getLocators(double& left, double& right) const
{
    Kelmar::IPtr<Kelmar::IParameterContainer> locators = Kelmar::owned(getHostProject()->getLocators());
    require(locators.get());
    left = getTime(*locators, "leftTime");
    right = getTime(*locators, "rightTime");
}

void Project::setLocators(double left, double right, bool absolute)
{
    Kelmar::IPtr<Kelmar::IParameterContainer> locators = Kelmar::owned(getHostProject()->getLocators());
    require(locators.get());
    if (absolute) {
        // Both move back by a tenth of the range, so the start is heard with
        // a little lead-in; the range keeps its length.
        const double lead = (right - left) / 10.0;
        const HostClock host = projectTracks.clock();
        left = host.toHost({left - lead}).seconds;
        right = host.toHost({right - lead}).seconds;
    }
    setTime(*locators, "leftTime", left);
    setTime(*locators, "rightTime", right);
}

// ---- Tracks

void Project::setCaching(bool on)
{
    projectTracks.setCaching(on);
    if (!on)
        montalaTracks.forget();
}

void Project::createVideoTrack(Kelmar::IProjectEdit& edit)
{
    if (dataModel.getVideoList().getSize() == 0)
        return;
    const size_t before = getTracks("video").size();
    const Track newVideo = montalaTracks.ensureNewVideoTrack(edit);
    if (!videoTrackHandler)
        return;

    // The handler counts the project's video tracks in project order; one
    // just made joins that list only once the handler has heard of it.
    std::vector<Track> videos = getTracks("video");
    if (videos.size() != before)
        tellListeners(false);
    for (size_t index = 0; index < videos.size(); ++index)
        if (videos[index].sameTrack(newVideo)) {
            videoTrackHandler->setTrackRole(static_cast<int>(index), core::VideoTrackHandlerBase::NewPicture);
            return;
        }
}

// ---- A run

void Project::clearWorkArea(Kelmar::IProjectEdit& edit)
{
    projectTracks.forgetChains();
    setTracksLocked(false);
    area.clear(edit);
}

void Project::setTracksLocked(bool on)
{
    for (Track& track : lockedTracks)
        if (track.isValid())
            track.setLocked(on);
    montalaTracks.setLocked(on);
}

// ---- The user's edits during a preview

void Project::edited(Kelmar::IProjectEdit* edit)
{
    projectTracks.forgetChains();
    if (dataModel.isPreviewActive() && area.hasConformOffset())
        montalaTracks.followMemos(edit, previewList, area);
    tellListeners(true);
}

// ---- Stored block

void Project::load()
{
    auto object = projectTracks.projectObject();
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
    auto object = projectTracks.projectObject();
    object->removeAttribute(dataAttribute);
    object->removeAttribute(checksumAttribute);

    core::serialize::SerializationTree tree;
    tree.writeObject(dataModel);

    auto storage = getService<Kelmar::IStorage>(getServices());
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
    context.offset = area.hasConformOffset() ? area.getConformOffset() : 0.0;
    return context;
}

core::SnippetContext Project::getSnippetContext()
{
    core::SnippetContext context;
    context.framerate = getFramerate();
    context.settings = &dataModel.getSettings();
    return context;
}

} // namespace montala::host
