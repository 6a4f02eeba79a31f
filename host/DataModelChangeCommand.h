#pragma once

#include "core/model/DataModel.h"
#include "core/model/DataModelChangeCommand.h"
#include "core/serialize/SerializationTree.h"
#include "host/DataModelEditStep.h"

#include "kelmar/project/IProject.h"
#include "kelmar/edit/IProjectEdit.h"
#include "kelmar/base/IPtr.h"

#include <string>

namespace montala::host {

// The host's undo step of a change of the data model, as a scope: made
// before the change, it takes the state before; destroyed after it, it
// hands the host a DataModelEditStep that swaps the model between the two
// states. A user's change in the window:
//
//   {
//       DataModelChangeCommand command("Edit Event", edit, model, project, true);
//       ... change the model ...
//   }   // the host's undo list now shows "Edit Event"
//
// A run makes the command on its own open edit, closing nothing: the step
// joins the run's group, so one undo takes back the project and the model.
class DataModelChangeCommand : public core::DataModelChangeCommand {
public:
    // With `closesEdit` the command is a group of its own: it opens one on
    // `edit` now (HostCallFailed when the host refuses) and closes it under
    // the translated title when destroyed. Without, the step goes into the
    // group the caller holds open. The model is borrowed and must outlive the
    // command.
    DataModelChangeCommand(std::string title, Kelmar::IPtr<Kelmar::IProjectEdit> edit, core::DataModel& dataModel,
                           Kelmar::IProject* project, bool closesEdit);
    // The same, with the state before taken earlier (a preview takes it when
    // it starts, before its own changes of the model).
    DataModelChangeCommand(std::string title, Kelmar::IPtr<Kelmar::IProjectEdit> edit, core::DataModel& dataModel,
                           Kelmar::IProject* project, bool closesEdit, const core::serialize::SerializationTree& before);
    // A run's form: no title, and the step joins the run's open group.
    DataModelChangeCommand(Kelmar::IPtr<Kelmar::IProjectEdit> edit, core::DataModel& dataModel,
                           Kelmar::IProject* project);
    // Hands the step to the host; failures of the host are not reported, as
    // the model's change is made either way.
    ~DataModelChangeCommand() override;

    bool closesTheEdit() const { return closesEdit; }

private:
    Kelmar::IPtr<Kelmar::IProjectEdit> edit;
    core::DataModel* dataModel;
    Kelmar::IPtr<Kelmar::IProject> project;
    Kelmar::IPtr<DataModelEditStep> step;
    bool closesEdit;
};

} // namespace montala::host
