#include "app/Commands.h"
#include "util/Result.h"

#include <exception>
#include <iostream>

int main(int argc, char** argv)
{
    using namespace montala;
    app::CommandIo io{std::cout, std::cerr};
    CLI::App program{"Montala: re-conforms an audio project to a re-cut picture from its EDLs."};
    program.require_subcommand(1);
    app::registerInspectCommand(program, io);
    app::registerGenerateCommand(program, io);
    app::registerSessionCommand(program, io);
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return program.exit(e);
    } catch (util::Result::Type code) {
        // The commands report their own failures; this is the last guard.
        std::cerr << "montala: failed with code " << static_cast<int>(code) << " ("
                  << util::Result::name(code) << ")\n";
        return 1;
    } catch (const std::exception& e) {
        std::cerr << "montala: " << e.what() << "\n";
        return 1;
    }
    return io.exitStatus;
}
