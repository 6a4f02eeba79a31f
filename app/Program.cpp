#include "app/Program.h"

#include "util/Result.h"

#include <exception>
#include <ostream>
#include <string>

namespace montala::app {

int runProgram(int argc, const char* const* argv, CommandIo& io)
{
    CLI::App program{"Montala: re-conforms an audio project to a re-cut picture from its EDLs."};
    program.name("montala");
    program.require_subcommand(1);
    registerInspectCommand(program, io);
    registerGenerateCommand(program, io);
    registerSessionCommand(program, io);
    registerConformCommand(program, io);
    registerVerifyCommand(program, io);
    registerReportCommand(program, io);

    if (argc < 2) {
        io.out << program.help();
        return 0;
    }
    // CLI11 would only say that a sub-command is required; a mistyped one
    // deserves its name and the list to choose from.
    const std::string first = argv[1];
    if (!first.empty() && first[0] != '-') {
        bool known = false;
        std::string names;
        for (const CLI::App* command : program.get_subcommands({})) {
            known = known || command->get_name() == first;
            names += (names.empty() ? "" : ", ") + command->get_name();
        }
        if (!known) {
            io.err << "montala: unknown command \"" << first << "\"; the commands are " << names
                   << " (montala --help tells more)\n";
            return 2;
        }
    }

    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        // --help is a parse "error" of status 0; every other is a bad
        // argument, status 2, whatever number CLI11 gives its kind.
        return program.exit(e, io.out, io.err) == 0 ? 0 : 2;
    } catch (util::Result::Type code) {
        // The commands report their own failures; this is the last guard.
        io.err << "montala: failed with code " << static_cast<int>(code) << " (" << util::Result::name(code)
               << ")\n";
        return 1;
    } catch (const std::exception& e) {
        io.err << "montala: " << e.what() << "\n";
        return 1;
    }
    return io.exitStatus;
}

} // namespace montala::app
