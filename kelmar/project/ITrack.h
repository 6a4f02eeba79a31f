#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IObjectIterator;
class IAudioChainEntry;

// A track of the project, asked of its IProjectObject.
class ITrack : public FUnknown {
public:
    // The automation tracks (IAutomationTrack); null when the track has none.
    virtual IObjectIterator* getAutomationTracks() = 0;
    // The first entry of the track's audio events in time order, parts included;
    // null when there is none.
    virtual IAudioChainEntry* getAudioChain() = 0;
    // The only toggle is "lock".
    virtual tresult setToggle(const char8* name, bool on) = 0;
    // kResultOk when on, kResultFalse when off.
    virtual tresult getToggle(const char8* name) = 0;

    static constexpr FUID iid{"{AE3A033C-70E0-4568-8715-0F35A8A446F2}"};
};

} // namespace Kelmar
