#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IPlugWindowFactory;

// The plug-in window factories the host knows.
class IWindowRegistry : public FUnknown {
public:
    // Borrowed: a factory removes itself before it is destroyed.
    virtual tresult addWindowFactory(IPlugWindowFactory* factory) = 0;
    virtual tresult removeWindowFactory(IPlugWindowFactory* factory) = 0;

    static constexpr FUID iid{"{23F569F3-6EBE-44D6-9C03-64CE6908C3E8}"};
};

} // namespace Kelmar
