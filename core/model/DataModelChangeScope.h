#pragma once

#include "core/model/DataModelChangeCommand.h"

#include <memory>
#include <string>

namespace montala::core {

// Every user action that changes the model runs inside one of these, so
// that it becomes one undo step under its title:
//
//   {
//       DataModelChangeScope scope("Generate Change EDL");
//       model.generateChangeEdl();
//   }   // the step closes here, with the state before and after
//
// With no creator set it holds nothing and the change still happens.
class DataModelChangeScope {
public:
    explicit DataModelChangeScope(const std::string& title);
    ~DataModelChangeScope();
    DataModelChangeScope(const DataModelChangeScope&) = delete;
    DataModelChangeScope& operator=(const DataModelChangeScope&) = delete;

    bool isRecording() const { return command != nullptr; }

private:
    std::unique_ptr<DataModelChangeCommand> command;
};

// Records a change already made: a step opened and closed at once.
void touchDataModel(const std::string& title);

} // namespace montala::core
