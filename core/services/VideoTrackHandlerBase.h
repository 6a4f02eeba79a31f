#pragma once

#include <string>

namespace montala::core {

// The project's video tracks as the window, the video preview and a run see
// them: by position among the project's video tracks in project order, each
// with a name and the marks that say which one shows the old picture cut
// and which one the new. The marks live on the host's tracks themselves, so
// they come back with the project. The host adapter gives the real one; it
// is declared here, below the window and the adapter, so that both can reach
// it without knowing each other.
class VideoTrackHandlerBase {
public:
    // What setTrackRole does to the track's marks.
    enum Role {
        OldPicture = 0,   // marks it as the old cut's picture
        NewPicture = 1,   // marks it as the new cut's picture
        NotOldPicture = 2, // takes the old mark off
        NotNewPicture = 3, // takes the new mark off
    };

    // Told when the list of tracks or a mark changed.
    class Listener {
    public:
        virtual ~Listener() = default;
        virtual void tracksChanged() = 0;
    };

    virtual ~VideoTrackHandlerBase() = default;

    // UTF-8; InvalidArgument for an index past the end.
    virtual std::string getTrackName(int index) = 0;
    virtual int getTrackCount() = 0;
    // One of Role; InvalidArgument for an index past the end.
    virtual void setTrackRole(int index, int role) = 0;
    // Whether the track at `index` carries the mark of OldPicture or
    // NewPicture; false past the end.
    virtual bool hasTrackRole(int index, int role) = 0;

    // Not owned; each removes itself before it goes.
    virtual void addListener(Listener* listener) = 0;
    virtual void removeListener(Listener* listener) = 0;
};

} // namespace montala::core
