#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IProject;
class IProjectEdit;

// Called when an undo group of a project closes. `edit` still records into that
// group, so that changes made in answer are undone together with it.
class IProjectEditHook : public FUnknown {
public:
    virtual tresult projectEdited(IProject* project, IProjectEdit* edit) = 0;

    static constexpr FUID iid{"{EDC5AF8F-AABD-46E8-B868-39CFE14CAB1F}"};
};

} // namespace Kelmar
