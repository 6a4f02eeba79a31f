#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IProject;

// Follows the host's open projects. When a project opens and becomes active the
// order is projectOpened, then projectDeactivated of the previous active one, then
// projectActivated; closing the active one sends projectDeactivated before
// projectClosed.
class IProjectNotification : public FUnknown {
public:
    virtual tresult projectActivated(IProject* project) = 0;
    virtual tresult projectDeactivated(IProject* project) = 0;
    virtual tresult projectOpened(IProject* project) = 0;
    virtual tresult projectClosed(IProject* project) = 0;
    virtual tresult projectRenamed(IProject* project) = 0;

    static constexpr FUID iid{"{98F69AC5-578D-4A22-B8E0-2781C06CFF25}"};
};

} // namespace Kelmar
