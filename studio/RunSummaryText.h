#pragma once

#include "host/RunSummary.h"

#include <string>

namespace montala::studio {

// One finished run as the studio tells the user about it: the host's
// summary, with what the window knew when the run began.
struct FinishedRun {
    host::RunSummary summary;
    std::string rateName;       // "25", "29.97df", ...
    size_t changeEvents = 0;
    double seconds = 0.0;       // from the click to the end of the run
};

// The title of the message: "Apply Montala" or "Preview", in the user's language.
std::string summaryTitle(const FinishedRun& run);
// The facts `montala conform` prints, one to a line, in the user's language:
//
//   Project rate: 25
//   Change EDL: 12 events
//   Events applied: 12
//   Tracks taking part (2): Dialogue; Music;
//   Tracks left out (1): FX (locked);
//   Markers written: 5, Destination 3, Insert 2
//   Time taken: 0.412 s
//
// A run that did not end well says so first.
std::string summaryText(const FinishedRun& run);

} // namespace montala::studio
