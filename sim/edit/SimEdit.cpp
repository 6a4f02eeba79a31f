#include "sim/edit/SimEdit.h"

#include "kelmar/base/IObjectList.h"
#include "kelmar/base/IPtr.h"
#include "sim/project/SimClip.h"
#include "sim/edit/SimEditContext.h"
#include "sim/edit/SimEditGroup.h"
#include "sim/services/SimFailures.h"
#include "sim/services/SimHost.h"
#include "sim/project/SimProject.h"
#include "sim/edit/SimRangeEditor.h"

#include <cmath>

namespace montala::sim {

using namespace Kelmar;

namespace {

bool validRange(double start, double end)
{
    return std::isfinite(start) && std::isfinite(end) && end >= start;
}

// Whether changing what `container` holds is refused because of a lock.
bool refused(SimObject& container)
{
    return container.kind() != ObjectKind::Project && container.kind() != ObjectKind::Folder
           && container.isLockedContent();
}

bool within(SimObject* node, SimObject* ancestor)
{
    for (; node; node = node->parent())
        if (node == ancestor)
            return true;
    return false;
}

void put(SimObject& container, IPtr<SimObject> node)
{
    if (node->kind() == ObjectKind::AutomationPoint)
        container.insertPoint(std::move(node));
    else if (node->kind() == ObjectKind::AutomationTrack)
        container.appendAutomation(std::move(node));
    else
        container.appendChild(std::move(node));
}

// Automation tracks come and go only with their track.
bool takeOut(SimObject& container, SimObject* node)
{
    return node->kind() != ObjectKind::AutomationTrack && container.removeChild(node);
}

// The content tracks of a project, in tree order.
std::vector<SimObject*> contentTracks(SimProject& project)
{
    std::vector<SimObject*> result;
    for (SimObject* track : project.allTracks())
        if (track->isContentTrack())
            result.push_back(track);
    return result;
}

} // namespace

SimEdit::~SimEdit()
{
    for (const auto& step : waitingSteps)
        step->discard();
}

bool SimEdit::failing(const char* call)
{
    return host->failures().fails(call);
}

tresult SimEdit::queryInterface(const FUID& iid, void** obj)
{
    if (obj && host->failures().isWithheld(iid)) {
        *obj = nullptr;
        return kNoInterface;
    }
    if (answerInterface<IProjectEdit>(this, iid, obj) || answerInterface<IRangeEdit>(this, iid, obj))
        return kResultOk;
    if (iid == FUnknown::iid) {
        *obj = static_cast<IProjectEdit*>(this);
        addRef();
        return kResultOk;
    }
    return FObject::queryInterface(iid, obj);
}

tresult SimEdit::beginEdit(int32)
{
    if (failing("beginEdit"))
        return kResultFailed;
    host->beginGroup();
    return kResultOk;
}

tresult SimEdit::endEdit(IProject* project, const char16* title)
{
    if (failing("endEdit"))
        return kResultFailed;
    if (!waitingSteps.empty()) {
        // The steps handed in outside a group close now, as one group.
        if (!host->isGroupOpen())
            host->beginGroup();
        for (const auto& step : waitingSteps)
            host->currentGroup()->addStep(step.get());
        waitingSteps.clear();
    }
    return host->endGroup(simProject(project), title ? title : u"");
}

tresult SimEdit::addObject(IEditContext* context, IProjectObject* object)
{
    if (failing("addObject"))
        return kResultFailed;
    SimObject* container = SimEditContext::containerOf(context);
    SimObject* node = simObject(object);
    if (!container || !node || node->parent() || node->kind() == ObjectKind::Project)
        return kInvalidArgument;
    const bool asAutomation = node->kind() == ObjectKind::AutomationTrack;
    if (asAutomation ? !container->isTrack() : !container->accepts(node->kind()))
        return kInvalidArgument;
    if (refused(*container))
        return kResultFalse;
    const SimHost::OwnStep step(container->project(), u"Add");
    put(*container, shared(node));
    return kResultOk;
}

tresult SimEdit::removeObject(IEditContext* context, IProjectObject* object)
{
    if (failing("removeObject"))
        return kResultFailed;
    SimObject* container = SimEditContext::containerOf(context);
    SimObject* node = simObject(object);
    if (!node || !node->parent() || (container && node->parent() != container))
        return kInvalidArgument;
    container = node->parent();
    if (refused(*container))
        return kResultFalse;
    IPtr<SimObject> keep = shared(node);
    const SimHost::OwnStep step(container->project(), u"Remove");
    return takeOut(*container, node) ? kResultOk : kInvalidArgument;
}

tresult SimEdit::moveObject(IEditContext* source, IEditContext* target, IProjectObject* object)
{
    if (failing("moveObject"))
        return kResultFailed;
    SimObject* from = SimEditContext::containerOf(source);
    SimObject* to = SimEditContext::containerOf(target);
    SimObject* node = simObject(object);
    if (!from || !to || !node || node->parent() != from || !to->accepts(node->kind()) || within(to, node))
        return kInvalidArgument;
    if (from == to)
        return kResultOk;
    if (refused(*from) || refused(*to))
        return kResultFalse;
    IPtr<SimObject> keep = shared(node);
    const SimHost::OwnStep step(from->project(), u"Move");
    if (!takeOut(*from, node))
        return kInvalidArgument;
    put(*to, keep);
    return kResultOk;
}

tresult SimEdit::extractRange(IProject* project, double start, double end, IEditClip** clip)
{
    if (failing("extractRange"))
        return kResultFailed;
    SimProject* target = simProject(project);
    if (!target || !clip || !validRange(start, end))
        return kInvalidArgument;
    std::vector<SimRangeEditor::TrackCopy> copies;
    for (SimObject* track : contentTracks(*target))
        copies.push_back(SimRangeEditor::copyTrack(*track, start, end));
    *clip = new SimClip(std::move(copies), end - start);
    return kResultOk;
}

tresult SimEdit::insertClip(IProject* project, IEditClip* clip, double position, int32)
{
    SimProject* target = simProject(project);
    auto* simClip = dynamic_cast<SimClip*>(clip);
    if (failing("insertClip"))
        return kResultFailed;
    if (!target || !simClip || !std::isfinite(position))
        return kInvalidArgument;
    const SimHost::OwnStep step(target, u"Insert");
    for (const auto& copy : simClip->tracks())
        if (copy.track->project() == target && copy.track->isInProject() && !copy.track->isLockedContent())
            SimRangeEditor::paste(copy, position, simClip->getLength());
    return kResultOk;
}

tresult SimEdit::deleteRange(IProject* project, double start, double end, int32)
{
    if (failing("deleteRange"))
        return kResultFailed;
    SimProject* target = simProject(project);
    if (!target || !validRange(start, end))
        return kInvalidArgument;
    const SimHost::OwnStep step(target, u"Delete Range");
    for (SimObject* track : contentTracks(*target))
        if (!track->isLockedContent())
            SimRangeEditor::deleteOnTrack(*track, start, end);
    return kResultOk;
}

tresult SimEdit::addEditStep(IEditStep* step)
{
    if (failing("addEditStep"))
        return kResultFailed;
    if (!step)
        return kInvalidArgument;
    if (SimEditGroup* open = host->currentGroup())
        open->addStep(step);
    else
        waitingSteps.push_back(shared(step));
    return kResultOk;
}

tresult SimEdit::copyRangeOnTracks(IProject* project, IObjectList* tracks, double start, double end,
                                   double destination, int32)
{
    if (failing("copyRangeOnTracks"))
        return kResultFailed;
    SimProject* target = simProject(project);
    if (!target || !tracks || !validRange(start, end) || !std::isfinite(destination))
        return kInvalidArgument;
    std::vector<SimObject*> chosen;
    for (int32 i = 0; i < tracks->getCount(); ++i) {
        IPtr<FUnknown> entry = owned(tracks->getAt(i));
        SimObject* track = simObject(entry.get());
        if (!track || !track->isTrack() || track->project() != target)
            return kInvalidArgument;
        chosen.push_back(track);
    }
    const SimHost::OwnStep step(target, u"Copy Range");
    for (SimObject* track : chosen)
        if (track->isContentTrack() && !track->isLockedContent())
            SimRangeEditor::paste(SimRangeEditor::copyTrack(*track, start, end, destination >= 0.0), destination,
                                  end - start);
    return kResultOk;
}

tresult SimEdit::finishRange(IProject* project, IObjectList* tracks, double start, double end, double)
{
    if (failing("finishRange"))
        return kResultFailed;
    SimProject* target = simProject(project);
    if (!target || !tracks)
        return kInvalidArgument;
    SimProject::FinishRangeCall call;
    call.start = start;
    call.end = end;
    for (int32 i = 0; i < tracks->getCount(); ++i) {
        IPtr<FUnknown> entry = owned(tracks->getAt(i));
        if (SimObject* track = simObject(entry.get()))
            call.tracks.push_back(shared(track));
    }
    target->finishRangeCalls.push_back(std::move(call));
    return kResultOk;
}

} // namespace montala::sim
