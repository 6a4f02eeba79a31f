#pragma once

#include "core/conform/AudioInfo.h"
#include "core/conform/MarkerKinds.h"
#include "host/AutomationData.h"
#include "host/TrackEvent.h"
#include "host/TrackHome.h"

#include "kelmar/edit/IProjectEdit.h"
#include "kelmar/project/IProjectObject.h"
#include "kelmar/project/ITrack.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Kelmar {
class IAudioChainEntry;
}

namespace montala::host {

// The kinds of track Montala makes and finds again by the number it writes
// into an attribute of the track (typeAttribute names which one). The marker
// tracks of the marker kinds carry the kinds' own numbers.
enum class TrackType : int {
    Destination = static_cast<int>(core::MarkerKind::Destination),
    Transition = static_cast<int>(core::MarkerKind::Transition),
    Insert = static_cast<int>(core::MarkerKind::Insert),
    AutomationWarning = static_cast<int>(core::MarkerKind::AutomationWarning),
    Snippet = static_cast<int>(core::MarkerKind::Snippet),
    Overlap = static_cast<int>(core::MarkerKind::Overlap),
    Memos = 7,
    NewVideo = 8,
    Folder = 9,
    OldVideo = 10,
};

inline TrackType trackTypeOf(core::MarkerKind kind)
{
    return static_cast<TrackType>(kind);
}

// The name a track of that type is given (English; translated when written),
// "INVALID!" for any other number.
const char* trackTypeName(int type);

// One track of a host project, a light value: the host's track and the
// project it lives in, held without a reference of its own (the project
// keeps the track). A track that may have left the project since the last
// look (the home counts such notices) is looked up again before its next
// use (isValid).
//
// Times are absolute seconds unless a name says host-relative.
class Track {
public:
    Track() = default;
    Track(TrackHome* home, Kelmar::ITrack* hostTrack);

    bool isValid();

    Kelmar::ITrack* getHostTrack() const { return hostTrack; }
    // The track's IProjectObject; NotInitialized for an invalid track,
    // NoInterface when the host's track has none.
    Kelmar::IPtr<Kelmar::IProjectObject> object() const;

    bool isSelected() const;
    bool isLocked() const;
    void setLocked(bool on);
    bool hasLockState();

    bool isAudioTrack() const;
    bool isMarkerTrack() const;
    bool isVideoTrack() const;
    bool isFolderTrack() const;

    // "Montala:MarkerType", "Montala:VideoType" or "Montala:FolderType" by
    // the kind of track; NotSupported for any other kind.
    const char* typeAttribute() const;
    int getType();
    void setType(int type);
    // The type under `mask`: -1 compares the whole value.
    bool hasType(int type, int mask);

    std::string getName() const;
    void setName(const std::string& name);

    // The track's events: audio events on an audio track, video events on a
    // video track, markers on a marker track.
    std::vector<TrackEvent> getEvents() const;
    // Hands each of those events to `visit`, in the track's order, while
    // walking the host's list: a long track is read once, where gathering
    // its events first reads it again and again.
    void eachEvent(const std::function<void(Kelmar::IProjectObject& event)>& visit) const;
    // The events that belong to [start, end], host-relative: those wholly
    // inside, and those more than half inside.
    std::vector<TrackEvent> getEventsInRange(double start, double end) const;

    int64_t nextEventId() const;
    // Gives every event in [start, end] (host-relative) without an id the next
    // free one of the track.
    void assignEventIds(double start, double end);

    bool sameTrack(const Track& other) const { return hostTrack == other.hostTrack; }

    // The audio ranges around `position`: the one under it and its nearest
    // neighbours, absolute; each empty when there is none.
    void getSurroundings(double position, core::AudioInfo::Range& before, core::AudioInfo::Range& at,
                         core::AudioInfo::Range& after) const;
    // The absolute range an audio chain entry covers, joined members included.
    core::AudioInfo::Range chainRange(Kelmar::IAudioChainEntry& entry) const;

    // Reads every automation track anew into `automation`.
    void readAutomation();
    const std::vector<AutomationData>& getAutomation() const { return automation; }
    // Reads the times and values of every automation track's points before
    // `until` (absolute) for getAutomationAround, and lets them go again.
    void readAutomationValues(double until);
    void forgetAutomationValues() { automationValues = {}; }
    // The points on both sides of `position` for each automation track, from
    // readAutomationValues; none before it or after forgetAutomationValues.
    core::AudioInfo::Automation getAutomationAround(double position) const;
    // Holds each curve's value through [start, end] (absolute): a point at
    // each edge with the value there, and nothing of the curve between.
    void bridgeGap(Kelmar::IProjectEdit& edit, double start, double end);

private:
    // The track's audio chain as getSurroundings reads it: kept and shared by
    // every wrapper of the track while the project caches its tracks (a run's
    // detectors ask for it once per piece and position), read anew otherwise.
    std::shared_ptr<const ChainImage> chainImage() const;
    // The clock of the track's project; NotInitialized without one.
    HostClock clock() const;

    // One automation track's points in time order (of points at one time,
    // the host's order): all getAutomationAround asks, a few bytes a point,
    // where `automation` keeps a node and a host object for each.
    struct AutomationValues {
        std::vector<double> times;
        std::vector<float> values;
    };

    TrackHome* home = nullptr;
    std::vector<AutomationData> automation;
    std::vector<AutomationValues> automationValues;
    Kelmar::ITrack* hostTrack = nullptr;
    // The home's change count when the track was last known to be in it.
    uint64_t seenChanges = 0;
};

} // namespace montala::host
