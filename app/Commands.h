#pragma once

#include <CLI/CLI.hpp>

#include <iosfwd>

namespace montala::app {

// Where a command prints, and the exit status it leaves. Commands never
// write to std::cout directly, so tests can run them.
struct CommandIo {
    std::ostream& out;
    std::ostream& err;
    int exitStatus = 0;
};

// Each adds its sub-command to the program; the callback runs the command
// and sets io.exitStatus.
void registerInspectCommand(CLI::App& program, CommandIo& io);
void registerGenerateCommand(CLI::App& program, CommandIo& io);
void registerSessionCommand(CLI::App& program, CommandIo& io);
void registerConformCommand(CLI::App& program, CommandIo& io);
void registerVerifyCommand(CLI::App& program, CommandIo& io);
void registerReportCommand(CLI::App& program, CommandIo& io);

} // namespace montala::app
