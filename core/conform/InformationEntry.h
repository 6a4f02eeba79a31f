#pragma once

#include "core/conform/MarkerKinds.h"

#include <string>

namespace montala::core {

// One proposed marker: a range of the new timeline in absolute seconds and
// its UTF-8 name.
struct InformationEntry {
    double start = 0.0;
    double end = 0.0;
    std::string text;
    InformationKind kind = InformationKind::Insert;
};

} // namespace montala::core
