#include "core/model/DataModelChangeScope.h"

#include "core/model/DataModelCommandCreator.h"

namespace montala::core {

namespace {

std::unique_ptr<DataModelChangeCommand> createCommand(const std::string& title)
{
    DataModelCommandCreator* creator = DataModelCommandCreator::getCommandCreator();
    return creator != nullptr ? creator->createCommand(title) : nullptr;
}

} // namespace

DataModelChangeScope::DataModelChangeScope(const std::string& title) : command(createCommand(title)) {}

DataModelChangeScope::~DataModelChangeScope() = default;

void touchDataModel(const std::string& title)
{
    createCommand(title);
}

} // namespace montala::core
