#pragma once

#include "app/Commands.h"

namespace montala::app {

// The whole command line: the sub-commands, what to do without one or with
// one that does not exist, and the exit status.
//
//   montala                  the help on out, status 0
//   montala frobnicate ...   names the unknown command and the known ones on err, status 2
//   montala inspect ...      the command's own status
int runProgram(int argc, const char* const* argv, CommandIo& io);

} // namespace montala::app
