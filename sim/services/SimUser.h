#pragma once

#include "kelmar/base/IPtr.h"
#include "sim/project/SimObject.h"

#include <string>

namespace montala::sim {

class SimHost;
class SimProject;

// The simulated user: edits a project as a user would with the host's own
// tools. Each edit is one undo group under a title, and the project
// notifications' edit hooks hear of it before the group closes. An edit of a
// locked track's content is refused (false) and changes nothing.
class SimUser {
public:
    explicit SimUser(SimHost& host) : host(host) {}

    // Puts a new event, part or marker into a track (or an event into a part).
    bool addEvent(SimObject& container, Kelmar::IPtr<SimObject> event);
    // Moves an event, part or marker on the timeline; its length stays.
    bool moveEvent(SimObject& event, double start);
    // Trims an event to [start, end] inside its present range; a trimmed head
    // advances the source offset, so the sound stays in place. A part keeps
    // the events inside it where they are on the timeline.
    bool trimEvent(SimObject& event, double start, double end);
    bool deleteEvent(SimObject& event);
    bool addMarker(SimObject& markerTrack, std::u16string name, double start, double end);
    bool setLocked(SimObject& track, bool on);
    // Not an edit: it is not undone, but the edit hooks hear of it.
    void setSelected(SimObject& track, bool on);

    // The host's Edit menu, through the action manager.
    bool undo();
    bool redo();
    // A click on a menu entry.
    bool clickMenu(const std::string& menu, std::u16string_view title);
    // Saves the project: its storage notifications are told first.
    void save(SimProject& project);

private:
    // Runs `change` as one undo group of the node's project.
    template <class Change>
    bool edit(SimObject& node, const char16_t* title, Change change);

    SimHost& host;
};

} // namespace montala::sim
