#pragma once

#include "kelmar/base/IClassFactory.h"
#include "sim/project/SimBase.h"
#include "sim/services/SimVideoService.h"

#include <memory>

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
    // Shared by every thumbnail service it makes: the pools' files and a
    // test's hold on the service.
    SimVideoService& videos() const { return *videoService; }
    const std::shared_ptr<SimVideoService>& videosShared() const { return videoService; }

private:
    bool thumbnails = true;
    std::shared_ptr<SimVideoService> videoService = std::make_shared<SimVideoService>();
};

} // namespace montala::sim
