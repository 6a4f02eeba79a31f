#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IProjectObject;

// Names the container that a change applies to (see IProject::getEditContext).
class IEditContext : public FUnknown {
public:
    // The container; null for the project root.
    virtual IProjectObject* getContainer() = 0;

    static constexpr FUID iid{"{FD4315BE-7D5F-4A6A-8AF4-EFE9D18A4585}"};
};

} // namespace Kelmar
