#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// A plug-in's own step on the host's undo list, undone and redone with its group.
class IEditStep : public FUnknown {
public:
    // Not called when the step is added; the step's change is already made.
    virtual tresult perform() = 0;
    virtual tresult undo() = 0;
    virtual tresult redo() = 0;
    // Called when the host drops the step from its list for good.
    virtual tresult discard() = 0;

    static constexpr FUID iid{"{AC4023C3-7575-4B3C-BF81-70138CBD8C05}"};
};

} // namespace Kelmar
