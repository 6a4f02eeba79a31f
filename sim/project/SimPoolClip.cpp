#include "sim/project/SimPoolClip.h"

#include "sim/project/SimPath.h"

namespace montala::sim {

Kelmar::tresult SimPoolClip::queryInterface(const Kelmar::FUID& iid, void** obj)
{
    if (Kelmar::answerInterface<Kelmar::IPoolClip>(this, iid, obj)
        || Kelmar::answerInterface<Kelmar::IClipSource>(this, iid, obj))
        return Kelmar::kResultOk;
    if (iid == Kelmar::FUnknown::iid) {
        *obj = static_cast<Kelmar::IPoolClip*>(this);
        addRef();
        return Kelmar::kResultOk;
    }
    return FObject::queryInterface(iid, obj);
}

Kelmar::IPath* SimPoolClip::getPath()
{
    return new SimPath(data.path);
}

Kelmar::tresult SimPoolClip::getName(Kelmar::String& name)
{
    name.assign(std::u16string_view(data.name));
    return Kelmar::kResultOk;
}

bool SimPoolClip::isKind(const Kelmar::char8* kind)
{
    return kind && data.kind == kind;
}

} // namespace montala::sim
