#pragma once

#include "app/Commands.h"
#include "core/model/DataModel.h"
#include "core/events/EdlLoader.h"
#include "core/model/Settings.h"
#include "core/events/VfxPatternEntry.h"

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace montala::app {

// The options of reading and matching EDLs that several commands take. Each
// is spelt, checked and read in one place, so that a word means the same
// thing, and is refused the same way, in every command.

// --match: "roll" or "clip".
void addMatchOption(CLI::App& command, std::string& match, const std::string& description);
core::MatchName matchNameOf(const std::string& match);

// --heal: one of the heal modes; left empty, the settings' default stays.
void addHealOption(CLI::App& command, std::string& heal);
core::HealProcessingMode healModeOf(const std::string& heal);

// --vfx: the name patterns PREFIX:POSTFIX, at most as many as the settings
// hold.
void addVfxOption(CLI::App& command, std::vector<std::string>& vfx);
// The patterns, each switched on; empty, with the reason to err under
// commandName, when there are too many or one has no colon.
std::optional<std::vector<core::VfxPatternEntry>> parseVfxPatterns(const std::vector<std::string>& texts,
                                                                   const char* commandName, std::ostream& err);

// --accept-audio and --no-broll-renaming, straight into the load options.
void addLoadFlags(CLI::App& command, core::EdlLoadOptions& load);

// What every command that generates from the cuts takes: --old, --new,
// --rate, --match, --heal, --vfx and the load flags.
struct CutOptions {
    std::vector<std::string> oldFiles;
    std::vector<std::string> newFiles;
    std::string rate;
    std::string match = "roll";
    std::string heal;
    std::vector<std::string> vfx;
    core::EdlLoadOptions load;
};
void addCutOptions(CLI::App& command, CutOptions& options);
// The match rule, heal mode, B-roll renaming and VFX rows into the settings.
void applyCutSettings(const CutOptions& options, const std::vector<core::VfxPatternEntry>& patterns,
                      core::Settings& settings);

// The files of --old, then those of --new: the order a loader of both cuts
// takes them in.
std::vector<std::string> cutFiles(const CutOptions& options);
// Reads each file of the loader (made from cutFiles) into the model's Old or
// New list and prints its load report; the reports, in the loader's order.
std::vector<core::EdlFileReport> loadCuts(const CutOptions& options, core::EdlLoader& loader, core::DataModel& model,
                                          std::ostream& notes, std::ostream& err);

// Runs a command's body and sets io.exitStatus to what it answers. A failure
// it throws (a Result code or a standard exception) ends the command, never
// the program: it is named under commandName and the status is
// failureStatus.
void runCommand(CommandIo& io, const char* commandName, int failureStatus, const std::function<int()>& body);

} // namespace montala::app
