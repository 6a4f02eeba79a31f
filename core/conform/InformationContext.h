#pragma once

#include "core/time/Framerate.h"

namespace montala::core {

class EventList;
class Settings;

// What the detectors read besides the cuts, filled by the driver's host.
// The pointers are not owned and live at least as long as the run.
struct InformationContext {
    EventList* oldList = nullptr;
    EventList* newList = nullptr;
    Framerate framerate;
    Settings* settings = nullptr;
    // The conform offset of the project, in seconds.
    double offset = 0.0;
};

} // namespace montala::core
