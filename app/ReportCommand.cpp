#include "app/Commands.h"
#include "app/EdlOptions.h"
#include "app/LoadReporting.h"
#include "core/model/DataModel.h"
#include "core/events/EdlLoader.h"
#include "core/time/FramerateNames.h"
#include "core/report/ChangeReport.h"
#include "core/report/ReportWriters.h"
#include "platform/FileIdentity.h"
#include "platform/SafeFileWriter.h"
#include "util/Result.h"
#include "util/StringConverter.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <sstream>

namespace montala::app {

using util::Result;

namespace {

struct ReportOptions : CutOptions {
    std::string output;
    std::string format = "text";
};

const char* const commandName = "montala: report: ";

std::string fileNames(const std::vector<std::string>& files)
{
    std::string names;
    for (const std::string& file : files)
        names += (names.empty() ? "" : " + ") + std::filesystem::path(file).filename().string();
    return names;
}

int runReport(const ReportOptions& options, CommandIo& io)
{
    util::StringConverter converter;
    util::ScopedStringConverter converterScope(converter);
    const std::optional<std::vector<core::VfxPatternEntry>> patterns =
        parseVfxPatterns(options.vfx, commandName, io.err);
    if (!patterns)
        return 2;

    const std::vector<std::string> all = cutFiles(options);
    core::EdlLoader loader(all, options.load);
    const std::optional<core::Framerate> rate = chooseProjectRate(options.rate, loader, io.err);
    if (!rate)
        return 2;
    core::FixedFramerateProvider provider(*rate);
    core::ScopedFramerateProvider providerScope(&provider);

    core::DataModel model;
    applyCutSettings(options, *patterns, model.getSettings());

    // Load notes go to the error stream: the report itself may be what is
    // printed.
    const std::vector<core::EdlFileReport> reports = loadCuts(options, loader, model, io.err, io.err);
    for (size_t index = 0; index < reports.size(); ++index) {
        if (!reports[index].opened) {
            io.err << commandName << "no report, since " << all[index] << " could not be read\n";
            return 2;
        }
    }
    model.applyVfxPatterns();
    const Result::Type generated = model.generateChangeEdl();
    if (generated != Result::Ok) {
        io.err << commandName << "the Change EDL could not be generated: "
               << (model.lastGenerationFailure().isSet() ? model.lastGenerationFailure().describe()
                                                         : std::string(Result::name(generated)))
               << "\n";
        return 1;
    }

    const core::report::ChangeReport report = core::report::ChangeReportBuilder().build(model, *rate);
    std::ostringstream text;
    if (options.format == "csv")
        core::report::writeCsv(text, report);
    else if (options.format == "json")
        core::report::writeJson(text, report);
    else if (options.format == "html")
        core::report::writeHtml(text, report, fileNames(options.oldFiles) + " to " + fileNames(options.newFiles));
    else
        core::report::writeText(text, report);

    if (options.output.empty()) {
        io.out << text.str();
        return 0;
    }
    for (const std::string& input : all) {
        if (platform::isSameFile(options.output, input)) {
            io.err << commandName << "-o " << options.output << " names an EDL that was read; nothing written\n";
            return 2;
        }
    }
    const platform::SafeFileWriter::Outcome written = platform::SafeFileWriter::write(options.output, text.str());
    if (!written.ok()) {
        io.err << commandName << "could not write " << written.message() << "\n";
        return 1;
    }
    io.out << report.summary() << "\nWrote " << options.output << "\n";
    return 0;
}

} // namespace

void registerReportCommand(CLI::App& program, CommandIo& io)
{
    auto options = std::make_shared<ReportOptions>();
    auto* command = program.add_subcommand(
        "report", "Tell shot by shot what changed between the cuts, and what needs sound.");
    addCutOptions(*command, *options);
    command->add_option("-o,--output", options->output, "Write the report to this file");
    command->add_option("--format", options->format, "text, csv, json or html")
        ->check(CLI::IsMember({"text", "csv", "json", "html"}));
    command->callback([options, &io] { runCommand(io, commandName, 1, [&] { return runReport(*options, io); }); });
}

} // namespace montala::app
