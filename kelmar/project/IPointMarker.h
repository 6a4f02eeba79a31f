#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// A marker at one position. From IHostServices::getService: a new marker that is
// not yet in a track. It also answers IProjectObject.
class IPointMarker : public FUnknown {
public:
    static constexpr FUID iid{"{0499AB46-4C5F-463D-9BAF-00E704B52D35}"};
};

} // namespace Kelmar
