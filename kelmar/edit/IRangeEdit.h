#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IProject;
class IObjectList;

// Range work on chosen tracks. The object also answers IProjectEdit.
class IRangeEdit : public FUnknown {
public:
    // Copies what lies between start and end on the listed tracks to `destination`,
    // over what is there.
    virtual tresult copyRangeOnTracks(IProject* project, IObjectList* tracks, double start, double end,
                                      double destination, int32 flags) = 0;
    // The host's closing work over a range, asked once at the end of a run.
    virtual tresult finishRange(IProject* project, IObjectList* tracks, double start, double end, double tail) = 0;

    static constexpr FUID iid{"{287CB9DE-71E5-4E36-BDE1-C43BC6ED78CC}"};
};

} // namespace Kelmar
