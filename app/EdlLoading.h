#pragma once

#include "core/EventList.h"
#include "core/Framerate.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace montala::app {

// The project rates a user can name on the command line.
std::optional<core::Framerate> parseRateName(const std::string& name);
std::string rateName(const core::Framerate& rate);
const std::vector<std::string>& rateNames();

struct EdlLoadOptions {
    bool acceptAudio = false;
    bool renameBRolls = true;
};

// What became of one file of a load.
struct LoadedEdlFile {
    std::string path;
    bool opened = false;
    core::Framerate suggestedRate;
    size_t events = 0;
};

// The rate the first readable file suggests, as a project rate: drop frame
// means 29.97 drop frame, an open drop mode is taken as non-drop. Empty if no
// file can be read or the file suggests no rate; notes go to err.
std::optional<core::Framerate> suggestProjectRate(const std::vector<std::string>& paths, std::ostream& err);

// Loads the files one after the other into list, as the Add EDLs dialog
// does, with the current provider's rate as the project rate. Prints each
// file's suggested rate to out and its warnings to err. Returns false if a
// file could not be opened (the others are still read).
bool loadEdlFiles(const std::vector<std::string>& paths, core::EventList& list, const EdlLoadOptions& options,
                  std::vector<LoadedEdlFile>& loaded, std::ostream& out, std::ostream& err);

// True when the rate a file suggests contradicts the project's.
bool rateMismatch(const core::Framerate& suggested, const core::Framerate& project);

} // namespace montala::app
