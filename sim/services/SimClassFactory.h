#pragma once

#include "kelmar/base/IClassFactory.h"
#include "sim/project/SimBase.h"

namespace montala::sim {

// The host's class factory; it makes the thumbnail service ("Video",
// "VideoThumbnailFactory") unless a test has switched it off.
class SimClassFactory : public SimBase, public Kelmar::IClassFactory {
public:
    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult createInstance(const Kelmar::char8* category, const Kelmar::char8* className,
                                   const Kelmar::FUID& iid, void** object) override;

    void setThumbnailsAvailable(bool on) { thumbnails = on; }

private:
    bool thumbnails = true;
};

} // namespace montala::sim
