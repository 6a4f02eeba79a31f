#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IProject;

// The changed object of an IDependent::update sent to the dependents of a project
// when its settings (frame rate, start) change.
class IProjectSettingsChange : public FUnknown {
public:
    virtual IProject* getProject() = 0;

    static constexpr FUID iid{"{5354D6AC-C0D4-4532-B1BD-A33E229B9F3D}"};
};

} // namespace Kelmar
