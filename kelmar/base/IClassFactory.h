#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// The host's own class factory, reached through IHostServices::getService.
class IClassFactory : public FUnknown {
public:
    virtual tresult createInstance(const char8* category, const char8* className, const FUID& iid, void** object) = 0;

    static constexpr FUID iid{"{2260F564-1F82-41A4-8E75-CCCBF4BABFA3}"};
};

} // namespace Kelmar
