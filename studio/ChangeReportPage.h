#pragma once

#include <string>

namespace montala::studio {

class Studio;

// The change report of the active project's cuts and Change EDL, as one
// HTML page: beside the session file (NAME-change-report.html), or in the
// temporary folder for a session not yet saved. Written through a
// temporary file. Returns the page's path; empty, with the reason in error,
// when there is no project, no cuts or no Change EDL yet, or the page
// cannot be written.
std::string writeChangeReportPage(Studio& studio, std::string& error);

} // namespace montala::studio
