#include "sim/project/SimDocument.h"

#include "sim/project/SimPath.h"

namespace montala::sim {

Kelmar::tresult SimDocument::queryInterface(const Kelmar::FUID& iid, void** obj)
{
    if (Kelmar::answerInterface<Kelmar::IDocument>(this, iid, obj))
        return Kelmar::kResultOk;
    return FObject::queryInterface(iid, obj);
}

Kelmar::tresult SimDocument::getName(Kelmar::char16* buffer, Kelmar::int32 bufferBytes)
{
    return SimPath::copyOut(path, buffer, bufferBytes);
}

} // namespace montala::sim
