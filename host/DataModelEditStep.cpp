#include "host/DataModelEditStep.h"

#include <utility>

namespace montala::host {

DataModelEditStep::DataModelEditStep(core::DataModel& dataModel, core::serialize::SerializationTree snapshot)
    : snapshot(std::move(snapshot)), dataModel(&dataModel)
{
    this->snapshot.rewind();
}

Kelmar::tresult DataModelEditStep::queryInterface(const Kelmar::FUID& iid, void** obj)
{
    if (Kelmar::answerInterface<Kelmar::IEditStep>(this, iid, obj))
        return Kelmar::kResultOk;
    return FObject::queryInterface(iid, obj);
}

Kelmar::tresult DataModelEditStep::undo()
{
    swap();
    return Kelmar::kResultOk;
}

Kelmar::tresult DataModelEditStep::redo()
{
    swap();
    return Kelmar::kResultOk;
}

void DataModelEditStep::swap()
{
    core::serialize::SerializationTree current;
    current.writeObject(*dataModel);
    dataModel->restoreKeepingSettings(snapshot);
    snapshot = std::move(current);
    snapshot.rewind();
}

} // namespace montala::host
