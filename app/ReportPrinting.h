#pragma once

#include "core/report/ChangeReport.h"

#include <nlohmann/json.hpp>

#include <ostream>

namespace montala::app {

// What generate and conform add after their own output, from the model's
// cuts and Change EDL: the summary paragraph, the likely missed matches and
// the stretches that need sound.
void printReportDigest(std::ostream& out, const core::report::ChangeReport& report);
void printReportDigest(std::ostream& out, const core::DataModel& model, const core::Framerate& rate);
// The same for --json: {"summary", "needsSound", "suggestions"}.
nlohmann::json reportDigestJson(const core::report::ChangeReport& report);
nlohmann::json reportDigestJson(const core::DataModel& model, const core::Framerate& rate);

} // namespace montala::app
