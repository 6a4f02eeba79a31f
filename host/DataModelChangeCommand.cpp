#include "host/DataModelChangeCommand.h"

#include "host/HostCalls.h"
#include "util/StringUtil.h"

#include "kelmar/base/String.h"

#include <utility>

namespace montala::host {

namespace {

core::serialize::SerializationTree snapshotOf(const core::DataModel& dataModel)
{
    core::serialize::SerializationTree tree;
    tree.writeObject(dataModel);
    return tree;
}

// The step's name on the host's undo list, in the user's language; as it
// stands when no translator is set.
std::u16string undoTitle(const std::string& title)
{
    try {
        return util::StringUtil::translate(util::StringUtil::fromUtf8(title));
    } catch (...) {
        return Kelmar::String::utf8ToUtf16(title);
    }
}

} // namespace

DataModelChangeCommand::DataModelChangeCommand(std::string title, Kelmar::IPtr<Kelmar::IProjectEdit> edit,
                                               core::DataModel& dataModel, Kelmar::IProject* project, bool closesEdit)
    : DataModelChangeCommand(std::move(title), std::move(edit), dataModel, project, closesEdit, snapshotOf(dataModel))
{
}

DataModelChangeCommand::DataModelChangeCommand(std::string title, Kelmar::IPtr<Kelmar::IProjectEdit> edit,
                                               core::DataModel& dataModel, Kelmar::IProject* project, bool closesEdit,
                                               const core::serialize::SerializationTree& before)
    : core::DataModelChangeCommand(std::move(title)), edit(std::move(edit)), dataModel(&dataModel),
      project(Kelmar::shared(project)), closesEdit(closesEdit)
{
    require(this->edit.get());
    if (closesEdit)
        require(project);
    step = Kelmar::owned(new DataModelEditStep(dataModel, before));
    if (closesEdit)
        check(this->edit->beginEdit(1));
}

DataModelChangeCommand::DataModelChangeCommand(Kelmar::IPtr<Kelmar::IProjectEdit> edit, core::DataModel& dataModel,
                                               Kelmar::IProject* project)
    : DataModelChangeCommand(std::string(), std::move(edit), dataModel, project, false)
{
}

DataModelChangeCommand::~DataModelChangeCommand()
{
    edit->addEditStep(step.get());
    if (closesEdit)
        edit->endEdit(project.get(), undoTitle(title).c_str());
    step.reset();
    edit.reset();
}

} // namespace montala::host
