#include "sim/project/SimStorage.h"

#include "sim/services/SimFailures.h"

#include <cstring>

namespace montala::sim {

using namespace Kelmar;

tresult SimStorage::queryInterface(const FUID& iid, void** obj)
{
    if (obj && failures && failures->isWithheld(iid)) {
        *obj = nullptr;
        return kNoInterface;
    }
    if (answerInterface<IStorage>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

IPtr<SimStorage> SimStorage::copy() const
{
    IPtr<SimStorage> made = owned(new SimStorage(failures));
    made->data = data;
    return made;
}

tresult SimStorage::write(const char8* name, const void* bytes, int64 size, int32)
{
    if (failures && failures->fails("write"))
        return kResultFailed;
    if (!name || size < 0 || (size > 0 && !bytes))
        return kInvalidArgument;
    const auto* first = static_cast<const unsigned char*>(bytes);
    data[name].assign(first, first + size);
    return kResultOk;
}

tresult SimStorage::read(const char8* name, void* buffer, int64 size)
{
    if (!name || size < 0 || (size > 0 && !buffer))
        return kInvalidArgument;
    const auto found = data.find(name);
    if (found == data.end() || static_cast<int64>(found->second.size()) < size)
        return kResultFalse;
    if (size > 0)
        std::memcpy(buffer, found->second.data(), static_cast<std::size_t>(size));
    return kResultOk;
}

int64 SimStorage::getSize(const char8* name)
{
    const auto found = name ? data.find(name) : data.end();
    return found == data.end() ? 0 : static_cast<int64>(found->second.size());
}

} // namespace montala::sim
