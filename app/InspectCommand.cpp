#include "app/Commands.h"
#include "app/EdlLoading.h"
#include "app/EventPrinting.h"
#include "core/EventList.h"
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

    std::optional<core::Framerate> rate;
    if (!options.rate.empty()) {
        rate = parseRateName(options.rate);
    } else {
        rate = suggestProjectRate(options.files, io.err);
        if (!rate)
            return 2;
    }
    core::FixedFramerateProvider provider(*rate);
    core::ScopedFramerateProvider providerScope(&provider);

    // In JSON mode standard output holds the document alone.
    std::ostream& notes = options.json ? io.err : io.out;

    core::EventList list(core::EventList::ChangeKind);
    std::vector<LoadedEdlFile> loaded;
    EdlLoadOptions loadOptions;
    loadOptions.acceptAudio = options.acceptAudio;
    loadOptions.renameBRolls = !options.noBRollRenaming;
    const bool allOpened = loadEdlFiles(options.files, list, loadOptions, loaded, notes, io.err);

    if (options.json) {
        nlohmann::json files = nlohmann::json::array();
        for (const LoadedEdlFile& file : loaded) {
            files.push_back({{"path", file.path},
                             {"opened", file.opened},
                             {"suggestedRate", framerateToJson(file.suggestedRate)},
                             {"events", file.events}});
        }
        const nlohmann::json document = {
            {"rate", framerateToJson(*rate)},
            {"files", files},
            {"events", eventListToJson(list)},
            {"total", list.getSize()},
            {"invalid", list.countFlawedEvents()},
        };
        io.out << document.dump(2) << "\n";
    } else {
        io.out << "Project rate: " << rateName(*rate) << "\n";
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
    command->add_option("--rate", options->rate, "Project frame rate")
        ->check(CLI::IsMember(rateNames()));
    command->add_flag("--accept-audio", options->acceptAudio, "Accept audio-only events (channel A)");
    command->add_flag("--no-broll-renaming", options->noBRollRenaming,
                      "Keep roll names that end in B as they are");
    command->add_flag("--json", options->json, "Print one JSON document for scripts");
    command->callback([options, &io] { io.exitStatus = runInspect(*options, io); });
}

} // namespace montala::app
