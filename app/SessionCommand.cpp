#include "app/Commands.h"

#include <ostream>

namespace montala::app {

void registerSessionCommand(CLI::App& program, CommandIo& io)
{
    auto* command = program.add_subcommand("session", "Not available in this build yet.");
    command->allow_extras();
    command->callback([&io] {
        io.err << "montala session: not available in this build yet\n";
        io.exitStatus = 2;
    });
}

} // namespace montala::app
