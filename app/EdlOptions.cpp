#include "app/EdlOptions.h"

#include "app/LoadReporting.h"

#include "core/time/FramerateNames.h"
#include "util/Result.h"

#include <exception>
#include <utility>

namespace montala::app {

using util::Result;

namespace {

// In the order the help lists them.
const std::vector<std::pair<std::string, core::MatchName>> matchNames = {
    {"roll", core::MatchName::RollName},
    {"clip", core::MatchName::ClipName},
};

const std::vector<std::pair<std::string, core::HealProcessingMode>> healModes = {
    {"none", core::HealProcessingMode::None},
    {"normal", core::HealProcessingMode::Normal},
    {"gaps-without-inserts", core::HealProcessingMode::GapsWithoutInserts},
    {"gaps-with-inserts", core::HealProcessingMode::GapsWithInserts},
};

template <typename Value>
std::vector<std::string> namesOf(const std::vector<std::pair<std::string, Value>>& table)
{
    std::vector<std::string> names;
    for (const auto& entry : table)
        names.push_back(entry.first);
    return names;
}

// The parser has let only the table's names through.
template <typename Value>
Value valueOf(const std::vector<std::pair<std::string, Value>>& table, const std::string& name)
{
    for (const auto& entry : table)
        if (entry.first == name)
            return entry.second;
    throw Result::InvalidArgument;
}

} // namespace

void addMatchOption(CLI::App& command, std::string& match, const std::string& description)
{
    command.add_option("--match", match, description)->check(CLI::IsMember(namesOf(matchNames)));
}

core::MatchName matchNameOf(const std::string& match)
{
    return valueOf(matchNames, match);
}

void addHealOption(CLI::App& command, std::string& heal)
{
    command.add_option("--heal", heal, "How neighbouring Change events are joined")
        ->check(CLI::IsMember(namesOf(healModes)));
}

core::HealProcessingMode healModeOf(const std::string& heal)
{
    return valueOf(healModes, heal);
}

void addVfxOption(CLI::App& command, std::vector<std::string>& vfx)
{
    command.add_option("--vfx", vfx, "VFX name pattern PREFIX:POSTFIX, up to three");
}

std::optional<std::vector<core::VfxPatternEntry>> parseVfxPatterns(const std::vector<std::string>& texts,
                                                                   const char* commandName, std::ostream& err)
{
    if (texts.size() > core::Settings::vfxPatternCount) {
        err << commandName << "at most " << core::Settings::vfxPatternCount << " --vfx patterns\n";
        return std::nullopt;
    }
    std::vector<core::VfxPatternEntry> patterns;
    for (const std::string& text : texts) {
        // Split at the first colon; either side may be empty.
        const size_t colon = text.find(':');
        if (colon == std::string::npos) {
            err << commandName << "--vfx \"" << text << "\" is not PREFIX:POSTFIX\n";
            return std::nullopt;
        }
        patterns.emplace_back(text.substr(0, colon), text.substr(colon + 1), true);
    }
    return patterns;
}

void addLoadFlags(CLI::App& command, core::EdlLoadOptions& load)
{
    command.add_flag_callback(
        "--accept-audio", [&load] { load.acceptAudio = true; }, "Accept audio-only events (channel A)");
    command.add_flag_callback(
        "--no-broll-renaming", [&load] { load.renameBRolls = false; }, "Keep roll names that end in B as they are");
}

void addCutOptions(CLI::App& command, CutOptions& options)
{
    command.add_option("--old", options.oldFiles, "Old EDL file (the cut the sound was done on); repeatable")
        ->required();
    command.add_option("--new", options.newFiles, "New EDL file (the re-cut picture); repeatable")->required();
    command.add_option("--rate", options.rate, "Project frame rate")->check(CLI::IsMember(core::rateNames()));
    addMatchOption(command, options.match, "Match events by roll name or clip name");
    addHealOption(command, options.heal);
    addVfxOption(command, options.vfx);
    addLoadFlags(command, options.load);
}

void applyCutSettings(const CutOptions& options, const std::vector<core::VfxPatternEntry>& patterns,
                      core::Settings& settings)
{
    settings.setMatchName(matchNameOf(options.match));
    if (!options.heal.empty())
        settings.setHealProcessing(healModeOf(options.heal));
    settings.setBRollRenaming(options.load.renameBRolls);
    for (size_t index = 0; index < patterns.size(); ++index)
        settings.setVfxPattern(patterns[index], index);
}

void runCommand(CommandIo& io, const char* commandName, int failureStatus, const std::function<int()>& body)
{
    try {
        io.exitStatus = body();
    } catch (Result::Type code) {
        io.err << commandName << "failed: " << Result::name(code) << "\n";
        io.exitStatus = failureStatus;
    } catch (const std::exception& e) {
        // A standard exception of the model's own rules (a VFX prefix longer
        // than a name, say) ends the run, never the program.
        io.err << commandName << "failed: " << e.what() << "\n";
        io.exitStatus = failureStatus;
    }
}

std::vector<std::string> cutFiles(const CutOptions& options)
{
    std::vector<std::string> files = options.oldFiles;
    files.insert(files.end(), options.newFiles.begin(), options.newFiles.end());
    return files;
}

std::vector<core::EdlFileReport> loadCuts(const CutOptions& options, core::EdlLoader& loader, core::DataModel& model,
                                          std::ostream& notes, std::ostream& err)
{
    std::vector<core::EdlFileReport> reports;
    for (size_t index = 0; index < options.oldFiles.size() + options.newFiles.size(); ++index) {
        core::EventList& list = index < options.oldFiles.size() ? model.getOldList() : model.getNewList();
        reports.push_back(loader.load(index, list));
        printLoadReport(reports.back(), notes, err);
    }
    return reports;
}

} // namespace montala::app
