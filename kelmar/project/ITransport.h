#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// The transport of the active project.
class ITransport : public FUnknown {
public:
    virtual tresult stop() = 0;
    virtual bool isPlaying() = 0;
    virtual double getCursor() = 0;
    virtual tresult setCursor(double time) = 0;
    // "cycleLeftTime" or "cycleRightTime": an object answering ITimeParameter.
    virtual FUnknown* getParameter(const char8* name) = 0;

    static constexpr FUID iid{"{7E64890C-FA5C-4ECB-B37A-D80665A86C99}"};
};

} // namespace Kelmar
