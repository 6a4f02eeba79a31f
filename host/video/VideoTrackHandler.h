#pragma once

#include "core/services/VideoTrackHandlerBase.h"
#include "host/ProjectListener.h"
#include "host/Track.h"

#include <set>
#include <vector>

namespace montala::host {

// The video tracks of the current project, in project order, and the marks
// that say which one holds the old cut's picture (type "Old Video") and
// which the new ("New Video"). The marks are the tracks' own
// "Montala:VideoType" attribute, so they are stored with the project.
class VideoTrackHandler : public core::VideoTrackHandlerBase, public ProjectListener {
public:
    VideoTrackHandler() = default;
    VideoTrackHandler(const VideoTrackHandler&) = delete;
    VideoTrackHandler& operator=(const VideoTrackHandler&) = delete;
    ~VideoTrackHandler() override;

    // Leaves the old project, follows the new one (null: none) and reads its
    // tracks.
    void setProject(Project* project);
    Project* getProject() const { return project; }

    std::string getTrackName(int index) override;
    int getTrackCount() override;
    void setTrackRole(int index, int role) override;
    bool hasTrackRole(int index, int role) override;
    void addListener(Listener* listener) override;
    void removeListener(Listener* listener) override;

    // The first track carrying the mark of `role` (OldPicture or
    // NewPicture); an invalid Track when none does. `exact` compares the
    // whole attribute, otherwise its low byte.
    Track findTrack(int role, bool exact = true);
    // Reads the project's video tracks again and tells the listeners.
    void update();

    void projectChanged(Project& changed) override;
    void projectEdited(Project& changed) override;

private:
    Track& trackAt(int index);
    void notifyListeners();

    Project* project = nullptr;
    std::vector<Track> tracks;
    std::set<Listener*> listeners;
};

} // namespace montala::host
