#pragma once

#include "core/services/VideoTrackHandlerBase.h"
#include "core/time/Timecode.h"

#include <cstdint>
#include <string>
#include <vector>

namespace montala::core {

// One picture of the video preview: a frame as 32-bit pixels (bytes blue,
// green, red, alpha; rows packed), or, while there is none to show, a short
// message ("Loading", "No video available.") to be drawn white on black.
struct VideoImage {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> pixels;
    std::string message; // translated; empty for a frame

    bool isFrame() const { return message.empty() && !pixels.empty(); }
};

// The two pictures of the video preview as the window sees them: index 0 the
// old cut, index 1 the new. The window asks for the frame at a timecode; the
// answer comes later, and listeners hear imageChanged when a picture is
// there. The host adapter gives the real one; it is declared here, below the
// window and the adapter, so that both can reach it without knowing each
// other.
class VideoProviderBase {
public:
    static constexpr int pictureCount = 2;

    class Listener {
    public:
        virtual ~Listener() = default;
        virtual void imageChanged(int index) = 0;
    };

    VideoProviderBase();
    virtual ~VideoProviderBase() = default;

    virtual VideoTrackHandlerBase* getTrackHandler() = 0;
    // Asks for the picture `index` at `seconds` (absolute), width x height.
    // `position` says which picture the sources look for (the index).
    virtual void setFrameSize(int index, int width, int height, double seconds, int position) = 0;

    // InvalidArgument for an index above 1, on every operation that takes one.
    const VideoImage& getImage(int index) const;
    // Stores the picture and tells the listeners.
    void setImage(VideoImage image, int index);
    // Not owned; each removes itself before it goes.
    void addListener(Listener* listener);
    void removeListener(Listener* listener);
    // The size of both pictures; asks for both again when it changed.
    // OutOfRange for a width or height below 1.
    void setSize(int width, int height);
    int getWidth() const { return width; }
    int getHeight() const { return height; }
    void setLastFrame(bool on) { lastFrame = on; }
    bool isLastFrame() const { return lastFrame; }
    // The picture `index` at `timecode`, at the size set.
    void requestFrame(int index, const Timecode& timecode);

private:
    static void checkIndex(int index);

    VideoImage images[pictureCount];
    Timecode frames[pictureCount];
    bool lastFrame = false;
    int width = 1;
    int height = 1;
    std::vector<Listener*> listeners;
};

} // namespace montala::core
