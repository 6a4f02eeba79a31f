#include "host/video/VideoTrackHandler.h"

#include "host/Project.h"
#include "util/Result.h"

namespace montala::host {

using util::Result;

namespace {

int typeOfRole(int role)
{
    return role == core::VideoTrackHandlerBase::OldPicture || role == core::VideoTrackHandlerBase::NotOldPicture
               ? static_cast<int>(TrackType::OldVideo)
               : static_cast<int>(TrackType::NewVideo);
}

} // namespace

VideoTrackHandler::~VideoTrackHandler()
{
    if (project)
        project->removeListener(this);
}

void VideoTrackHandler::setProject(Project* newProject)
{
    if (project == newProject)
        return;
    if (project) {
        project->removeListener(this);
        if (project->getVideoTrackHandler() == this)
            project->setVideoTrackHandler(nullptr);
    }
    project = newProject;
    if (project) {
        project->addListener(this);
        project->setVideoTrackHandler(this);
    }
    update();
}

std::string VideoTrackHandler::getTrackName(int index)
{
    return trackAt(index).getName();
}

int VideoTrackHandler::getTrackCount()
{
    return static_cast<int>(tracks.size());
}

void VideoTrackHandler::setTrackRole(int index, int role)
{
    Track& track = trackAt(index);
    if (role < OldPicture || role > NotNewPicture)
        throw Result::InvalidArgument;
    const int type = typeOfRole(role);
    if (role == OldPicture || role == NewPicture)
        track.setType(type);
    else if (track.hasType(type, -1))
        track.setType(0);
    notifyListeners();
}

bool VideoTrackHandler::hasTrackRole(int index, int role)
{
    if (index < 0 || index >= getTrackCount())
        return false;
    return tracks[static_cast<size_t>(index)].hasType(typeOfRole(role), -1);
}

void VideoTrackHandler::addListener(Listener* listener)
{
    if (listener)
        listeners.insert(listener);
}

void VideoTrackHandler::removeListener(Listener* listener)
{
    listeners.erase(listener);
}

Track VideoTrackHandler::findTrack(int role, bool exact)
{
    const int type = typeOfRole(role);
    for (Track& track : tracks)
        if (track.hasType(type, exact ? -1 : 0xFF))
            return track;
    return Track();
}

void VideoTrackHandler::update()
{
    tracks = project ? project->getTracks("video") : std::vector<Track>();
    notifyListeners();
}

void VideoTrackHandler::projectChanged(Project& changed)
{
    update();
}

void VideoTrackHandler::projectEdited(Project& changed)
{
    update();
}

Track& VideoTrackHandler::trackAt(int index)
{
    if (index < 0 || index >= getTrackCount())
        throw Result::InvalidArgument;
    return tracks[static_cast<size_t>(index)];
}

void VideoTrackHandler::notifyListeners()
{
    const std::set<Listener*> toTell = listeners;
    for (Listener* listener : toTell)
        if (listeners.count(listener))
            listener->tracksChanged();
}

} // namespace montala::host
