#include "app/Commands.h"
#include "sim/session/SessionFile.h"
#include "sim/session/SessionSummary.h"
#include "sim/services/SimHost.h"

#include <memory>
#include <ostream>

namespace montala::app {

namespace {

struct SessionOptions {
    std::string input;
    std::string output;
};

int runCheck(const SessionOptions& options, CommandIo& io)
{
    auto host = sim::SimHost::create();
    std::string error;
    auto project = sim::SessionFile::load(*host, options.input, error);
    if (!project) {
        io.err << "montala: session check: " << error << "\n";
        return 1;
    }
    io.out << "Session: " << options.input << "\n" << sim::SessionSummary::of(*project).describe();
    return 0;
}

int runNormalize(const SessionOptions& options, CommandIo& io)
{
    auto host = sim::SimHost::create();
    std::string error;
    auto project = sim::SessionFile::load(*host, options.input, error);
    if (!project) {
        io.err << "montala: session normalize: " << error << "\n";
        return 1;
    }
    if (!sim::SessionFile::save(*project, options.output, error)) {
        io.err << "montala: session normalize: " << error << "\n";
        return 1;
    }
    io.out << "Wrote " << options.output << "\n";
    return 0;
}

} // namespace

void registerSessionCommand(CLI::App& program, CommandIo& io)
{
    auto options = std::make_shared<SessionOptions>();
    auto* command = program.add_subcommand("session", "Read and write session files of the simulated host.");
    command->require_subcommand(1);

    auto* check = command->add_subcommand("check", "Load a session and print what it holds.");
    check->add_option("file", options->input, "Session file (JSON)")->required();
    check->callback([options, &io] { io.exitStatus = runCheck(*options, io); });

    auto* normalize = command->add_subcommand("normalize", "Load a session and write it in its canonical form.");
    normalize->add_option("input", options->input, "Session file to read")->required();
    normalize->add_option("-o,--output", options->output, "Session file to write (may be the input)")->required();
    normalize->callback([options, &io] { io.exitStatus = runNormalize(*options, io); });
}

} // namespace montala::app
