#pragma once

#include <string>

namespace montala::core {

// One undo step of the data model, as a scope: the host's derived command
// records the model's state when it is made and closes the step when it is
// destroyed. The model's clients only create and destroy it.
class DataModelChangeCommand {
public:
    DataModelChangeCommand() = default;
    explicit DataModelChangeCommand(std::string title) : title(std::move(title)) {}
    virtual ~DataModelChangeCommand() = default;
    DataModelChangeCommand(const DataModelChangeCommand&) = delete;
    DataModelChangeCommand& operator=(const DataModelChangeCommand&) = delete;

    const std::string& getTitle() const { return title; }

protected:
    // UTF-8, untranslated: the host translates it when it names the step.
    std::string title;
};

} // namespace montala::core
