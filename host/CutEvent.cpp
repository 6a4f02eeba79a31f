#include "host/CutEvent.h"

namespace montala::host {

core::AudioInfo CutEvent::getAudioInfo(double position)
{
    core::AudioInfo info;
    track->getSurroundings(position, info.before, info.at, info.after);
    info.automation = track->getAutomationAround(position);
    return info;
}

} // namespace montala::host
