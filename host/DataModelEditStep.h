#pragma once

#include "core/model/DataModel.h"
#include "core/serialize/SerializationTree.h"

#include "kelmar/base/FObject.h"
#include "kelmar/edit/IEditStep.h"

namespace montala::host {

// The data model's step on the host's undo list. It holds the one state of
// the model that is not the current one; undo and redo are the same swap:
//
//   made:     model = after,  snapshot = before
//   undo:     model = before, snapshot = after
//   redo:     model = after,  snapshot = before
//
// The settings are not part of the swap: what the user set while the project
// was open stays as it is, whichever way the list moves.
class DataModelEditStep : public Kelmar::FObject, public Kelmar::IEditStep {
public:
    // `snapshot` is the state to go to at the next undo. The model is borrowed:
    // the project that owns it goes when the host closes the project, and the
    // host's undo list of that project goes with it.
    DataModelEditStep(core::DataModel& dataModel, core::serialize::SerializationTree snapshot);

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT
    const char* isA() const override { return "DataModelEditStep"; }

    // The model's change is made when the step is added: nothing to do.
    Kelmar::tresult perform() override { return Kelmar::kResultOk; }
    // A stored state that fails to load passes its Result::Type on to the
    // host's undo; the model is then empty, never half read.
    Kelmar::tresult undo() override;
    Kelmar::tresult redo() override;
    Kelmar::tresult discard() override { return Kelmar::kResultOk; }

    const core::serialize::SerializationTree& getSnapshot() const { return snapshot; }

private:
    void swap();

    core::serialize::SerializationTree snapshot;
    core::DataModel* dataModel;
};

} // namespace montala::host
