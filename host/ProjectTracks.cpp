#include "host/ProjectTracks.h"

#include "host/HostCalls.h"

#include "kelmar/base/IObjectIterator.h"
#include "kelmar/project/IProjectSettings.h"

#include <algorithm>

namespace montala::host {

using util::Result;

ProjectTracks::ProjectTracks(Kelmar::IProject* project, Kelmar::IHostServices* hostServices)
    : hostProject(Kelmar::shared(project)), services(hostServices)
{
    if (!project)
        throw Result::NoInterface;
}

double ProjectTracks::getProjectStart() const
{
    return queryRequired<Kelmar::IProjectSettings>(hostProject.get())->getProjectStart();
}

double ProjectTracks::getProjectEnd() const
{
    auto context = editContext(nullptr);
    return fromHost({projectObject()->getEnd(context.get())}).seconds;
}

Kelmar::IPtr<Kelmar::IProjectObject> ProjectTracks::projectObject() const
{
    return queryRequired<Kelmar::IProjectObject>(hostProject.get());
}

Kelmar::IPtr<Kelmar::IEditContext> ProjectTracks::editContext(Kelmar::IProjectObject* container) const
{
    Kelmar::IPtr<Kelmar::IEditContext> context = Kelmar::owned(hostProject->getEditContext(container));
    require(context.get());
    return context;
}

std::vector<Kelmar::ITrack*> ProjectTracks::trackList()
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

void ProjectTracks::setCaching(bool on)
{
    // The audio chains are kept only within a run: one that starts or ends
    // reads them anew.
    chainsKept.clear();
    caching = false;
    trackCache.clear();
    if (on) {
        trackCache = trackList();
        caching = true;
    }
}

void ProjectTracks::addToCache(Kelmar::ITrack* track)
{
    if (caching)
        trackCache.push_back(track);
}

void ProjectTracks::noteChange()
{
    chainsKept.clear();
    ++changes;
}

bool ProjectTracks::containsTrack(const Kelmar::ITrack* track)
{
    if (!track)
        return false;
    const std::vector<Kelmar::ITrack*> tracks = trackList();
    return std::find(tracks.begin(), tracks.end(), track) != tracks.end();
}

std::vector<Track> ProjectTracks::getTracks()
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

std::vector<Track> ProjectTracks::getTracks(const char* kind)
{
    std::vector<Track> tracks;
    for (Kelmar::ITrack* hostTrack : trackList()) {
        auto asObject = Kelmar::queryInterface<Kelmar::IProjectObject>(hostTrack);
        if (asObject && asObject->isKind(kind))
            tracks.emplace_back(this, hostTrack);
    }
    return tracks;
}

} // namespace montala::host
