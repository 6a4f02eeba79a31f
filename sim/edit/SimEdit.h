#pragma once

#include "kelmar/edit/IProjectEdit.h"
#include "kelmar/edit/IRangeEdit.h"
#include "kelmar/base/IPtr.h"
#include "sim/project/SimBase.h"

#include <vector>

namespace montala::sim {

class SimHost;
class SimProject;

// The edit service: every change goes into the host's open undo group; with
// none open, each call that changes the project is an undo step of its own.
// Each getService call hands out a new edit; all of them share the host's one
// open group. An edit step handed in while no group is open waits on this
// edit for its endEdit, which puts it on the undo list under its title; an
// edit released before then drops it. Content of locked tracks is left
// alone: changes to it answer kResultFalse, range work skips it.
class SimEdit : public SimBase, public Kelmar::IProjectEdit, public Kelmar::IRangeEdit {
public:
    explicit SimEdit(SimHost& host) : host(&host) {}
    ~SimEdit() override;

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    // ---- Kelmar::IProjectEdit
    Kelmar::tresult beginEdit(Kelmar::int32 flags) override;
    Kelmar::tresult endEdit(Kelmar::IProject* project, const Kelmar::char16* title) override;
    Kelmar::tresult addObject(Kelmar::IEditContext* context, Kelmar::IProjectObject* object) override;
    Kelmar::tresult removeObject(Kelmar::IEditContext* context, Kelmar::IProjectObject* object) override;
    Kelmar::tresult moveObject(Kelmar::IEditContext* source, Kelmar::IEditContext* target,
                               Kelmar::IProjectObject* object) override;
    Kelmar::tresult extractRange(Kelmar::IProject* project, double start, double end, Kelmar::IEditClip** clip) override;
    Kelmar::tresult insertClip(Kelmar::IProject* project, Kelmar::IEditClip* clip, double position,
                               Kelmar::int32 flags) override;
    Kelmar::tresult deleteRange(Kelmar::IProject* project, double start, double end, Kelmar::int32 flags) override;
    Kelmar::tresult addEditStep(Kelmar::IEditStep* step) override;

    // ---- Kelmar::IRangeEdit
    Kelmar::tresult copyRangeOnTracks(Kelmar::IProject* project, Kelmar::IObjectList* tracks, double start,
                                      double end, double destination, Kelmar::int32 flags) override;
    // Only recorded (SimProject::finishRangeCalls).
    Kelmar::tresult finishRange(Kelmar::IProject* project, Kelmar::IObjectList* tracks, double start, double end,
                                double tail) override;

private:
    bool failing(const char* call);

    SimHost* host;
    std::vector<Kelmar::IPtr<Kelmar::IEditStep>> waitingSteps;
};

} // namespace montala::sim
