#pragma once

#include "app/Commands.h"
#include "app/Program.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace montala::test {

// What one call of a command left: its exit status and what it printed.
struct CommandRun {
    int status;
    std::string out;
    std::string err;
};

// One sub-command on a parser of its own, as if the program were called
// with `name arguments...`; the status is the command's.
inline CommandRun runCommand(const char* name, void (*registerCommand)(CLI::App&, app::CommandIo&),
                             std::vector<std::string> arguments)
{
    std::ostringstream out, err;
    app::CommandIo io{out, err};
    CLI::App program;
    registerCommand(program, io);
    arguments.insert(arguments.begin(), name);
    // CLI11 takes the words of a vector from its back.
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
    program.parse(reversed);
    return {io.exitStatus, out.str(), err.str()};
}

inline CommandRun generate(const std::vector<std::string>& arguments)
{
    return runCommand("generate", app::registerGenerateCommand, arguments);
}

inline CommandRun inspect(const std::vector<std::string>& arguments)
{
    return runCommand("inspect", app::registerInspectCommand, arguments);
}

// The whole program, as a user calls it: bad arguments are found by the
// parser before the command runs, so their status comes from there.
inline CommandRun runMontala(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), "montala");
    std::vector<const char*> argv;
    for (const std::string& argument : arguments)
        argv.push_back(argument.c_str());
    std::ostringstream out, err;
    app::CommandIo io{out, err};
    const int status = app::runProgram(static_cast<int>(argv.size()), argv.data(), io);
    return {status, out.str(), err.str()};
}

// The short film at 25 fps that ships with the sources: its session and cuts.
namespace shortFilm {
inline const std::string session = MONTALA_SOURCE_DIR "/samples/sessions/short-film-25.json";
inline const std::string oldEdl = MONTALA_SOURCE_DIR "/samples/edl/short-film-25/old.edl";
inline const std::string newEdl = MONTALA_SOURCE_DIR "/samples/edl/short-film-25/new.edl";
} // namespace shortFilm

inline bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

// The file's bytes; empty when it cannot be read.
inline std::string readFile(const std::filesystem::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

} // namespace montala::test
