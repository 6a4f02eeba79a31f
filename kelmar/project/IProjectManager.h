#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IProject;
class IProjectNotification;

// The host's open projects, one of them active.
class IProjectManager : public FUnknown {
public:
    virtual int32 getProjectCount() = 0;
    virtual IProject* getProject(int32 index) = 0;
    virtual IProject* getActiveProject() = 0;
    // Borrowed: a notification removes itself before it is destroyed.
    virtual tresult addNotification(IProjectNotification* notification) = 0;
    virtual tresult removeNotification(IProjectNotification* notification) = 0;

    static constexpr FUID iid{"{3D7C2813-8ABF-4AAE-A23A-11BF37214C36}"};
};

} // namespace Kelmar
