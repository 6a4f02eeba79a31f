#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IPoolClip;
class IPath;

// The project's media pool. Its dependents hear IDependent::kChanged when clips
// are added. `kind` is "video", "audio", or null for all.
class IMediaPool : public FUnknown {
public:
    virtual int32 getClipCount(const char8* kind) = 0;
    virtual IPoolClip* getClip(int32 index, const char8* kind) = 0;
    virtual IPoolClip* addClip(IPath* path) = 0;

    static constexpr FUID iid{"{27173D15-D1FD-48CC-AB69-2196A070E587}"};
};

} // namespace Kelmar
