#pragma once

#include "core/model/DataModelChangeCommand.h"

#include <memory>
#include <string>

// Only named here; the host adapter implements the creator and alone knows
// the edit. The model never calls through it.
namespace Kelmar {
class IProjectEdit;
}

namespace montala::core {

namespace serialize {
class SerializationTree;
}

// Makes the undo steps of the model. The host implements it; without a
// creator the model works the same, only nothing can be undone.
class DataModelCommandCreator {
public:
    virtual ~DataModelCommandCreator() = default;

    // A step of its own that closes under the title. Null without a project.
    virtual std::unique_ptr<DataModelChangeCommand> createCommand(const std::string& title) = 0;
    // A step inside the given, already open edit; it closes nothing.
    virtual std::unique_ptr<DataModelChangeCommand> createCommand(Kelmar::IProjectEdit* edit) = 0;
    // The same, with a state taken earlier as the state before.
    virtual std::unique_ptr<DataModelChangeCommand> createCommand(Kelmar::IProjectEdit* edit,
                                                                  const serialize::SerializationTree& snapshot) = 0;

    // The process-wide creator; not owned, may be null.
    static void setCommandCreator(DataModelCommandCreator* creator);
    static DataModelCommandCreator* getCommandCreator();
};

} // namespace montala::core
