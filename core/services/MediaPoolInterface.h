#pragma once

#include <cstdint>
#include <string>

namespace montala::core {

// The video clips of the project's media pool, as the dialogs and the video
// preview see them: by position, with their path, name and the host's id.
// The host adapter gives the real one; texts are UTF-8.
class MediaPoolInterface {
public:
    // Told when clips come or go, so that a table of them can be rebuilt.
    class Listener {
    public:
        virtual ~Listener() = default;
        virtual void poolChanged() = 0;
    };

    virtual ~MediaPoolInterface() = default;

    virtual int getClipCount() = 0;
    virtual std::string getClipPath(int index) = 0;
    virtual std::string getClipName(int index) = 0;
    // The file-name part of the clip's path, which a video list entry is
    // matched by.
    virtual std::string getClipFileName(int index) = 0;
    // Stable while the project is open; its meaning is the host's.
    virtual int64_t getClipId(int index) = 0;
    // Seconds.
    virtual double getClipLength(int index) = 0;

    // Not owned. A listener added twice is told once; it removes itself
    // before it goes.
    virtual void addListener(Listener* listener) = 0;
    virtual void removeListener(Listener* listener) = 0;
};

} // namespace montala::core
