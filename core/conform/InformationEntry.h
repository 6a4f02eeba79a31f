#pragma once

#include <string>

namespace montala::core {

// Which marker track an entry goes to. The numbers are those of the
// detectors, not the type numbers of the marker tracks themselves.
enum class InformationKind {
    Insert = 1,
    Transition = 2,
    AutomationWarning = 3,
    Snippet = 4,
    Overlap = 5,
};

// One proposed marker: a range of the new timeline in absolute seconds and
// its UTF-8 name.
struct InformationEntry {
    double start = 0.0;
    double end = 0.0;
    std::string text;
    InformationKind kind = InformationKind::Insert;
};

} // namespace montala::core
