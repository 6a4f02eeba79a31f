#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IProject;

// Told before the host writes a project, so that data can be put into it.
class IProjectStorageNotification : public FUnknown {
public:
    virtual tresult projectSaving(IProject* project) = 0;

    static constexpr FUID iid{"{D361D332-604A-4DF7-83B1-7B91A35184DB}"};
};

} // namespace Kelmar
