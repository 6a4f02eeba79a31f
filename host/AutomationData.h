#pragma once

#include "host/AutomationCurve.h"
#include "kelmar/project/IAutomationPoint.h"
#include "kelmar/project/IAutomationTrack.h"
#include "kelmar/base/IPtr.h"

#include <map>

namespace montala::host {

// One automation track of an audio track as read at a moment: the host's
// points by absolute time (equal times kept, in the host's order) and the
// curve they make.
struct AutomationData {
    Kelmar::IPtr<Kelmar::IAutomationTrack> track;
    std::multimap<double, Kelmar::IPtr<Kelmar::IAutomationPoint>> points;
    AutomationCurve curve;
};

} // namespace montala::host
