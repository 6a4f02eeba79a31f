#include "sim/services/SimUser.h"

#include "kelmar/base/Types.h"
#include "sim/services/SimActionManager.h"
#include "sim/services/SimHost.h"
#include "sim/services/SimMenuRegistry.h"
#include "sim/project/SimProject.h"
#include "sim/project/SimProjectManager.h"
#include "sim/edit/SimRangeEditor.h"

namespace montala::sim {

template <class Change>
bool SimUser::edit(SimObject& node, const char16_t* title, Change change)
{
    SimProject* project = node.project();
    if (!project || !project->isRecording() || node.isLockedContent())
        return false;
    host.beginGroup();
    const bool done = change();
    host.endGroup(project, title);
    return done;
}

bool SimUser::addEvent(SimObject& container, Kelmar::IPtr<SimObject> event)
{
    if (!event || event->parent() || !container.accepts(event->kind()) || container.kind() == ObjectKind::Project
        || container.kind() == ObjectKind::Folder)
        return false;
    return edit(container, u"Add Event", [&] {
        if (event->kind() == ObjectKind::AutomationPoint)
            container.insertPoint(event);
        else
            container.appendChild(event);
        return true;
    });
}

bool SimUser::moveEvent(SimObject& event, double start)
{
    if (!event.isTimed())
        return false;
    return edit(event, u"Move Event", [&] { return event.setStart(nullptr, start, 0) == Kelmar::kResultOk; });
}

bool SimUser::trimEvent(SimObject& event, double start, double end)
{
    const SimObject::Fields& now = event.get();
    if (!event.isTimed() || start < now.start || end > now.end || end <= start)
        return false;
    return edit(event, u"Trim Event", [&] {
        if (event.kind() == ObjectKind::Part) {
            SimRangeEditor::fitPart(event, start, end);
            return true;
        }
        SimObject::Fields values = now;
        if (event.kind() == ObjectKind::AudioEvent || event.kind() == ObjectKind::VideoEvent)
            values.offset += start - now.start;
        values.start = start;
        values.end = end;
        event.setFields(values);
        return true;
    });
}

bool SimUser::deleteEvent(SimObject& event)
{
    SimObject* container = event.parent();
    if (!container || !event.isTimed())
        return false;
    Kelmar::IPtr<SimObject> keep = Kelmar::shared(&event);
    return edit(event, u"Delete Event", [&] { return container->removeChild(&event); });
}

bool SimUser::addMarker(SimObject& markerTrack, std::u16string name, double start, double end)
{
    if (markerTrack.kind() != ObjectKind::MarkerTrack || end < start)
        return false;
    return addEvent(markerTrack, SimObject::makeMarker(std::move(name), start, end));
}

bool SimUser::setLocked(SimObject& track, bool on)
{
    SimProject* project = track.project();
    if (!track.isTrack() || !project || !project->isRecording())
        return false;
    host.beginGroup();
    const bool done = track.setToggle("lock", on) == Kelmar::kResultOk;
    host.endGroup(project, on ? u"Lock Track" : u"Unlock Track");
    return done;
}

void SimUser::setSelected(SimObject& track, bool on)
{
    track.setSelectedFlag(on);
    if (SimProject* project = track.project(); project && project->isRecording())
        host.notifyEdited(*project);
}

bool SimUser::undo()
{
    return host.actionManager().invoke("Edit", "Undo") == Kelmar::kResultOk;
}

bool SimUser::redo()
{
    return host.actionManager().invoke("Edit", "Redo") == Kelmar::kResultOk;
}

bool SimUser::clickMenu(const std::string& menu, std::u16string_view title)
{
    return host.menus().click(menu, title) == Kelmar::kResultOk;
}

void SimUser::save(SimProject& project)
{
    host.projectManager().saveProject(&project);
}

} // namespace montala::sim
