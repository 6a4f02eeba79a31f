#pragma once

#include "core/events/EdlLoader.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <ostream>
#include <string>

namespace montala::app {

// The project rate: the one named with --rate, or else the one the first
// readable file suggests, with a note to err of where it came from. Empty,
// with the reason in err, when there is none.
std::optional<core::Framerate> chooseProjectRate(const std::string& rateOption, core::EdlLoader& loader,
                                                 std::ostream& err);

// What a load did to one file: the rate it suggests to out, what went wrong
// to err (why it did not open, rate warnings, each dropped or changed line
// with its number).
void printLoadReport(const core::EdlFileReport& report, std::ostream& out, std::ostream& err);

// The file's entry of the "files" array; list names the Old or New list.
nlohmann::json loadReportToJson(const core::EdlFileReport& report, const char* list = nullptr);

} // namespace montala::app
