#pragma once

#include "core/time/Framerate.h"

#include <optional>
#include <string>
#include <vector>

namespace montala::core {

// The project rates a user can name: "23.976", "24", "25", "29.97",
// "29.97df", "30", "30df", "48", "50", "59.94", "60".
std::optional<Framerate> parseRateName(const std::string& name);
const std::vector<std::string>& rateNames();
// The name of a rate in that table, or its description when it has none.
std::string rateName(const Framerate& rate);

// What a file suggests, in words: "25 fps non-drop", "30 fps drop frame",
// "24 fps, drop mode not given", or that it suggests nothing.
std::string describeSuggestedRate(const Framerate& suggested);

// The project rate for the rate a file suggests: drop frame means 29.97
// drop frame (drop frame exists to keep 29.97 in step with the clock), an
// open drop mode is taken as non-drop. Empty when the file suggests no rate.
std::optional<Framerate> projectRateFor(const Framerate& suggested);

// True when the rate a file suggests contradicts the project's. A file
// without timecodes suggests nothing to compare with, and an open drop mode
// contradicts no drop mode.
bool rateMismatch(const Framerate& suggested, const Framerate& project);

} // namespace montala::core
