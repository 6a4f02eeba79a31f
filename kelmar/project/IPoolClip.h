#pragma once

#include "kelmar/base/FUnknown.h"
#include "kelmar/base/String.h"

namespace Kelmar {

class IPath;

// One clip of the media pool. It also answers IClipSource.
class IPoolClip : public FUnknown {
public:
    virtual IPath* getPath() = 0;
    virtual tresult getName(String& name) = 0;
    // Stable while the project is open; it is also the clip's stream for thumbnails.
    virtual int64 getId() = 0;
    virtual bool isKind(const char8* kind) = 0;
    // Seconds.
    virtual double getLength() = 0;

    static constexpr FUID iid{"{803C3FED-57A6-48E8-B81F-CE638CC87AD3}"};
};

} // namespace Kelmar
