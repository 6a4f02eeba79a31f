#include "core/model/DataModelCommandCreator.h"

namespace montala::core {

namespace {
DataModelCommandCreator* currentCreator = nullptr;
}

void DataModelCommandCreator::setCommandCreator(DataModelCommandCreator* creator)
{
    currentCreator = creator;
}

DataModelCommandCreator* DataModelCommandCreator::getCommandCreator()
{
    return currentCreator;
}

} // namespace montala::core
