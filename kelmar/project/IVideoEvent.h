#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IPoolClip;
class IEditContext;
class IClipSource;

// An event of a video track. From IHostServices::getService: a new event, not
// yet in a track.
class IVideoEvent : public FUnknown {
public:
    virtual IPoolClip* getClip() = 0;
    virtual tresult setClip(IEditContext* context, IClipSource* clip, int32 flags) = 0;

    static constexpr FUID iid{"{EE190F09-858B-473B-B1B4-981BB7C9BD28}"};
};

} // namespace Kelmar
