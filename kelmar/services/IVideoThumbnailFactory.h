#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IVideoFrame;

// The host's thumbnail service: class "VideoThumbnailFactory" in category "Video"
// of the host's class factory. It may be slow and block, so it is called from a
// worker thread. A stream is a pool clip, named by its id (IPoolClip::getId);
// positions are frames into the clip.
class IVideoThumbnailFactory : public FUnknown {
public:
    virtual tresult openStream(int64 streamId, int64 position, int32 width, int32 height) = 0;
    // The frame at `position` of an open stream, or null.
    virtual IVideoFrame* getFrame(int64 streamId, int64 position) = 0;
    // Closes the caller's streams; called before the last release.
    virtual tresult unregisterClient() = 0;

    static constexpr FUID iid{"{CFFA9E82-6FC5-4D6C-84E3-BAB23F5CFB60}"};
};

} // namespace Kelmar
