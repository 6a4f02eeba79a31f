#pragma once

#include <cstdint>
#include <set>

namespace montala::host {

// Where the picture of one of the two cuts lies at a time: which media stream
// (a pool clip's id) and which frame of it. A source tells its listeners when
// what it answers may have changed, so that the shown pictures are asked for
// again.
class VideoSourceBase {
public:
    class Listener {
    public:
        virtual ~Listener() = default;
        virtual void sourceChanged() = 0;
    };

    virtual ~VideoSourceBase() = default;

    // `seconds` absolute. Both outputs are 0 when nothing shows there.
    virtual void findFrame(double seconds, int64_t& stream, int64_t& position, int pictureIndex) = 0;

    // Not owned; each removes itself before it goes.
    void addListener(Listener* listener) { listeners.insert(listener); }
    void removeListener(Listener* listener) { listeners.erase(listener); }

protected:
    void notifyListeners()
    {
        const std::set<Listener*> toTell = listeners;
        for (Listener* listener : toTell)
            if (listeners.count(listener))
                listener->sourceChanged();
    }

private:
    std::set<Listener*> listeners;
};

} // namespace montala::host
