#include "app/Commands.h"
#include "app/EdlOptions.h"
#include "app/EventPrinting.h"
#include "app/LoadReporting.h"
#include "app/ReportPrinting.h"
#include "core/model/DataModel.h"
#include "core/events/EdlLoader.h"
#include "core/time/FramerateNames.h"
#include "core/events/VfxRowCheck.h"
#include "core/fileio/CmxWriter.h"
#include "util/Result.h"
#include "util/StringConverter.h"
#include "util/StringUtil.h"

#include <algorithm>
#include <fstream>
#include <memory>
#include <optional>
#include <ostream>
#include <stdexcept>

namespace montala::app {

using util::Result;
using util::StringUtil;

namespace {

struct GenerateOptions : CutOptions {
    std::string output;
    bool json = false;
};

const char* const commandName = "montala: generate: ";

// Why generation failed, in the user's terms. The generator names the event
// it stopped on; a refused VFX row is found by the core's own rule.
std::string describeFailure(Result::Type code, const core::DataModel& model, const core::Settings& settings)
{
    if (model.lastGenerationFailure().isSet())
        return model.lastGenerationFailure().describe();
    if (code == Result::InvalidArgument) {
        const std::vector<core::VfxPatternEntry>& rows = settings.getVfxPatterns();
        if (const std::optional<size_t> row = core::findRefusedVfxRow(rows)) {
            const core::VfxPatternEntry& entry = rows[*row];
            return "VFX pattern " + std::to_string(*row + 1) + " \"" + entry.prefix + ":" + entry.postfix +
                   "\" holds a character outside letters, digits and . * - _";
        }
        return "an argument was refused";
    }
    if (code == Result::OutOfRange)
        return "a timecode left the day (00:00:00:00 to 23:59:59) while the events were worked out";
    return "generation failed";
}

class GenerateRun {
public:
    GenerateRun(const GenerateOptions& options, CommandIo& io)
        : options(options), io(io), notes(options.json ? io.err : io.out)
    {
    }

    int run()
    {
        util::StringConverter converter;
        util::ScopedStringConverter converterScope(converter);

        const std::optional<std::vector<core::VfxPatternEntry>> parsed =
            parseVfxPatterns(options.vfx, commandName, io.err);
        if (!parsed)
            return 2;
        const std::vector<core::VfxPatternEntry>& patterns = *parsed;

        core::EdlLoader loader(cutFiles(options), options.load);
        const std::optional<core::Framerate> rate = chooseProjectRate(options.rate, loader, io.err);
        if (!rate)
            return 2;
        core::FixedFramerateProvider provider(*rate);
        core::ScopedFramerateProvider providerScope(&provider);

        core::DataModel model;
        core::Settings& settings = model.getSettings();
        applyCutSettings(options, patterns, settings);

        const std::vector<core::EdlFileReport> reports = loadCuts(options, loader, model, notes, io.err);
        const bool allOpened = std::all_of(reports.begin(), reports.end(),
                                           [](const core::EdlFileReport& report) { return report.opened; });
        if (!allOpened) {
            // A Change EDL from part of a cut would move audio to wrong places.
            io.err << commandName << "not generated, since not every EDL file could be read\n";
            return 1;
        }

        Result::Type result = Result::Ok;
        try {
            // As after the settings dialog: the rows mark the VFX events.
            model.applyVfxPatterns();
            result = model.generateChangeEdl();
        } catch (Result::Type code) {
            result = code;
        } catch (const std::out_of_range& e) {
            // The VFX name rule's one standard failure: a prefix whose
            // pattern is longer than a name it was tried on.
            io.err << commandName << "the Change EDL could not be generated: a VFX pattern does not fit a name it "
                   << "was tried on (" << e.what() << ")\n";
            return 1;
        }
        const core::EventList& change = model.getChangeList();

        if (result != Result::Ok) {
            io.err << commandName << "the Change EDL could not be generated: " << describeFailure(result, model, settings)
                   << " (" << Result::name(result) << ")\n";
        }

        std::vector<std::string> written;
        int status = result == Result::Ok ? 0 : 1;
        if (status == 0 && !options.output.empty())
            status = writeOutput(change, written);

        if (options.json) {
            nlohmann::json files = nlohmann::json::array();
            for (size_t index = 0; index < reports.size(); ++index)
                files.push_back(loadReportToJson(reports[index], index < options.oldFiles.size() ? "old" : "new"));
            io.out << "{\n  \"rate\": " << dumpJson(framerateToJson(*rate)) << ",\n  \"files\": " << dumpJson(files)
                   << ",\n  \"events\": ";
            writeEventListJson(io.out, change, "  ");
            io.out << ",\n  \"total\": " << change.getSize() << ",\n  \"invalid\": " << change.countFlawedEvents()
                   << ",\n  \"result\": " << static_cast<int>(result);
            if (model.lastGenerationFailure().isSet()) {
                io.out << ",\n  \"failure\": ";
                writeJsonString(io.out, model.lastGenerationFailure().describe());
            }
            if (result == Result::Ok)
                io.out << ",\n  \"report\": " << dumpJson(reportDigestJson(model, *rate));
            io.out << ",\n  \"written\": " << dumpJson(written) << "\n}\n";
        } else if (result == Result::Ok) {
            io.out << "Project rate: " << core::rateName(*rate) << "\n";
            printEventTable(io.out, change);
            for (const std::string& path : written)
                io.out << "Wrote " << path << "\n";
            printReportDigest(io.out, model, *rate);
        }
        return status;
    }

private:
    int writeOutput(const core::EventList& change, std::vector<std::string>& written)
    {
        if (change.getSize() == 0) {
            io.err << commandName << "nothing written to " << options.output
                   << ": the Change EDL is empty (no picture of the Old EDL is found in the New one)\n";
            return 1;
        }
        // The writer refuses to replace any of the EDLs just read, by file
        // identity, so "-o ./old.edl" or a link to it is caught as well.
        std::vector<std::u16string> inputs;
        for (const std::vector<std::string>* files : {&options.oldFiles, &options.newFiles})
            for (const std::string& file : *files)
                inputs.push_back(StringUtil::fromUtf8(file));
        core::fileio::CmxWriter::Report report;
        const Result::Type code =
            core::fileio::writeEdlFile(StringUtil::fromUtf8(options.output), change, report, inputs);
        // Only what this run wrote: an old file that a failure left in place
        // is not named.
        for (const std::u16string& path : report.written)
            written.push_back(StringUtil::toUtf8(path));
        if (code != Result::Ok) {
            // What the system said, where it said something.
            io.err << commandName << "could not write ";
            if (!report.reason.empty())
                io.err << report.reason;
            else if (code == Result::FileNotOpened)
                io.err << options.output << ": the file cannot be created there";
            else if (code == Result::NotInitialized)
                io.err << options.output << ": the path names no file";
            else
                io.err << options.output << ": no event of the Change EDL can be written";
            io.err << "\n";
            for (const std::string& path : written)
                io.err << commandName << "part already written: " << path << "\n";
            return 1;
        }
        if (written.size() > 1)
            notes << "The Change EDL has " << change.getSize() << " events, more than a CMX EDL holds; it went to "
                  << written.size() << " files\n";
        for (const std::u16string& path : report.removed)
            notes << "Removed " << StringUtil::toUtf8(path) << ", left by an earlier Change EDL of that name\n";
        for (const std::string& reason : report.keptStaleReasons)
            io.err << commandName << "warning: " << reason << "\n";
        return 0;
    }

    const GenerateOptions& options;
    CommandIo& io;
    std::ostream& notes;
};

} // namespace

void registerGenerateCommand(CLI::App& program, CommandIo& io)
{
    auto options = std::make_shared<GenerateOptions>();
    auto* command = program.add_subcommand(
        "generate", "Compare Old and New EDLs and work out the Change EDL: where each stretch of the old cut now lies.");
    addCutOptions(*command, *options);
    command->add_option("-o,--output", options->output, "Write the Change EDL to this CMX file");
    command->add_flag("--json", options->json, "Print one JSON document for scripts");
    command->callback(
        [options, &io] { runCommand(io, commandName, 1, [&] { return GenerateRun(*options, io).run(); }); });
}

} // namespace montala::app
