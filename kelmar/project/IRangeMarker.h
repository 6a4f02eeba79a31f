#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// A marker with a length. From IHostServices::getService: a new marker that is
// not yet in a track. It also answers IProjectObject.
class IRangeMarker : public FUnknown {
public:
    static constexpr FUID iid{"{B52FC642-AA6F-4D32-AFA2-7CE272C1F81B}"};
};

} // namespace Kelmar
