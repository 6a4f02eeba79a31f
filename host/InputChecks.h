#pragma once

#include "core/conform/InputChecks.h"

namespace montala::host {

class Project;

// What the checks before a run read of a project, through the host's
// tracks: the first picture track that is not Montala's, Montala's
// destination markers, and the sound on the tracks that take part (not
// locked; selected, when `selectedTracksOnly`). Only the old timeline
// counts: what lies at or past a conform offset is a preview's work area.
core::SessionEvidence sessionEvidence(Project& project, bool selectedTracksOnly);

// The checks before an apply or a preview of the project's model, as the
// window asks them: what they find is put to the user in the message box,
// with "Abort" and "Continue". True to go on: nothing found, or "Continue".
// A preview is of some events only, so the sound it drops is not asked.
bool confirmInputs(Project& project, bool preview);

} // namespace montala::host
