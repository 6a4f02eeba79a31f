#pragma once

#include "run/ConformJob.h"

#include <nlohmann/json.hpp>

#include <ostream>
#include <string>

namespace montala::app {

// What a conform found before and around its run, as the user reads it: what
// the session said on opening (a stored block that could not be read), the
// checks that refused the inputs (or were passed over with --force), every
// event it could not use with file, line and why, and the stretches of the
// New cut left without sound. Each line starts "montala: ".
void printFindings(const run::ConformOutcome& outcome, const std::string& session, std::ostream& err);

// The same as members of the --json document.
void addFindingsToJson(const run::ConformOutcome& outcome, nlohmann::json& document);

} // namespace montala::app
