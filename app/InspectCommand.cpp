#include "app/Commands.h"
#include "app/EventPrinting.h"
#include "app/LoadReporting.h"
#include "core/events/EdlLoader.h"
#include "core/time/FramerateNames.h"
#include "util/StringConverter.h"

#include <memory>
#include <ostream>

namespace montala::app {

namespace {

struct InspectOptions {
    std::vector<std::string> files;
    std::string rate;
    bool acceptAudio = false;
    bool noBRollRenaming = false;
    bool json = false;
};

int runInspect(const InspectOptions& options, CommandIo& io)
{
    util::StringConverter converter;
    util::ScopedStringConverter converterScope(converter);

    core::EdlLoadOptions loadOptions;
    loadOptions.acceptAudio = options.acceptAudio;
    loadOptions.renameBRolls = !options.noBRollRenaming;
    core::EdlLoader loader(options.files, loadOptions);
    const std::optional<core::Framerate> rate = chooseProjectRate(options.rate, loader, io.err);
    if (!rate)
        return 2;
    core::FixedFramerateProvider provider(*rate);
    core::ScopedFramerateProvider providerScope(&provider);

    // In JSON mode standard output holds the document alone.
    std::ostream& notes = options.json ? io.err : io.out;

    core::EventList list(core::EventList::ChangeKind);
    std::vector<core::EdlFileReport> reports;
    const bool allOpened = loader.loadAll(list, reports);
    for (const core::EdlFileReport& report : reports)
        printLoadReport(report, notes, io.err);

    if (options.json) {
        nlohmann::json files = nlohmann::json::array();
        for (const core::EdlFileReport& report : reports)
            files.push_back(loadReportToJson(report));
        io.out << "{\n  \"rate\": " << dumpJson(framerateToJson(*rate)) << ",\n  \"files\": " << dumpJson(files)
               << ",\n  \"events\": ";
        writeEventListJson(io.out, list, "  ");
        io.out << ",\n  \"total\": " << list.getSize() << ",\n  \"invalid\": " << list.countFlawedEvents()
               << "\n}\n";
    } else {
        io.out << "Project rate: " << core::rateName(*rate) << "\n";
        printEventTable(io.out, list);
    }
    return allOpened ? 0 : 1;
}

} // namespace

void registerInspectCommand(CLI::App& program, CommandIo& io)
{
    auto options = std::make_shared<InspectOptions>();
    auto* command = program.add_subcommand("inspect", "Read EDL files and list their events with their states.");
    command->add_option("files", options->files, "CMX EDL files")->required();
    command->add_option("--rate", options->rate, "Project frame rate")->check(CLI::IsMember(core::rateNames()));
    command->add_flag("--accept-audio", options->acceptAudio, "Accept audio-only events (channel A)");
    command->add_flag("--no-broll-renaming", options->noBRollRenaming,
                      "Keep roll names that end in B as they are");
    command->add_flag("--json", options->json, "Print one JSON document for scripts");
    command->callback([options, &io] { io.exitStatus = runInspect(*options, io); });
}

} // namespace montala::app
