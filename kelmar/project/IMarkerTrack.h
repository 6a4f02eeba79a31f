#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// Answered by marker tracks; it has no operation.
class IMarkerTrack : public FUnknown {
public:
    static constexpr FUID iid{"{E9C743A1-6C48-4AFA-99BC-24C081225239}"};
};

} // namespace Kelmar
