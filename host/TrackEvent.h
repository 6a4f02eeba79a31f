#pragma once

#include "kelmar/project/IProjectObject.h"
#include "kelmar/base/IPtr.h"

#include <cstdint>
#include <string>

namespace montala::host {

class Track;

// One event of a track: an audio or video event or a marker. `owned` marks
// an event Montala made that is not yet in the track: the wrapper then takes
// over the maker's reference instead of adding one of its own, so the event
// goes away with its last wrapper unless the track took it in.
class TrackEvent {
public:
    TrackEvent(const Track* track, Kelmar::IProjectObject* object, bool owned = false);

    bool isOwned() const { return owned; }

    Kelmar::IProjectObject* getObject() const { return object.get(); }
    const Track* getTrack() const { return track; }

    // Host-relative seconds, as the host answers them; a marker's end is its
    // start when it is a point.
    double getStart() const;
    double getEnd() const;
    std::string getName() const;
    bool isRange() const { return object->isKind("range"); }
    // The marker's "MontEventUserId"; false when it has none.
    bool getUserId(int64_t& id) const;

private:
    const Track* track = nullptr;
    Kelmar::IPtr<Kelmar::IProjectObject> object;
    bool owned = false;
};

} // namespace montala::host
