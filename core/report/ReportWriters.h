#pragma once

#include "core/report/ChangeReport.h"

#include <iosfwd>
#include <string>

namespace montala::core::report {

// The forms of a change report: text for a terminal, CSV for spreadsheets,
// JSON for scripts, HTML for people. Times are written as timecode at the
// report's rate and, where a script needs to count, as frames.

// The stretches that need sound, one a line:
//   "01:01:22:09-01:01:25:02  68 frames  New 19: new material: not in the Old cut"
void writeNeedsSoundText(std::ostream& out, const ChangeReport& report);
// The same as a JSON array, for the documents of other commands.
void writeNeedsSoundJson(std::ostream& out, const ChangeReport& report, const std::string& indent);

void writeText(std::ostream& out, const ChangeReport& report);
void writeCsv(std::ostream& out, const ChangeReport& report);
void writeJson(std::ostream& out, const ChangeReport& report);
// One self-contained page: no network, no script or style from elsewhere.
// heading names the cuts, for instance "old.edl to new.edl".
void writeHtml(std::ostream& out, const ChangeReport& report, const std::string& heading);

// "3", or "3.2" for the second part of a healed event; several joined by
// ", ".
std::string changeRefText(const ShotRow& row);
// A JSON string literal of UTF-8 text.
std::string jsonString(const std::string& text);

} // namespace montala::core::report
