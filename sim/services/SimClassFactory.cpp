#include "sim/services/SimClassFactory.h"

#include "kelmar/base/IPtr.h"
#include "sim/services/SimThumbnailFactory.h"

#include <cstring>

namespace montala::sim {

using namespace Kelmar;

tresult SimClassFactory::queryInterface(const FUID& iid, void** obj)
{
    if (answerInterface<IClassFactory>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

tresult SimClassFactory::createInstance(const char8* category, const char8* className, const FUID& iid, void** object)
{
    if (!category || !className || !object)
        return kInvalidArgument;
    *object = nullptr;
    if (!thumbnails || std::strcmp(category, "Video") != 0 || std::strcmp(className, "VideoThumbnailFactory") != 0)
        return kResultFalse;
    auto factory = owned(new SimThumbnailFactory(videoService));
    return factory->queryInterface(iid, object);
}

} // namespace montala::sim
