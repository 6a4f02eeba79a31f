#pragma once

#include <string>

namespace montala::gui {
class MainGui;
}

namespace montala::studio {

// One "NAME=VALUE" of the command line, set the way a user sets it: the
// settings overlay is opened with its button, the control is changed, and a
// click beside the panel closes it. Names and values:
//
//   b-roll-renaming, include-overhanging, destination-markers,
//   transition-markers, insert-markers, automation-warning-markers,
//   overlap-markers, snippet-markers, virgin-territories,
//   restrict-range                      on | off
//   match-name                          roll | clip
//   heal                                none | normal | gaps-without-inserts | gaps-with-inserts
//   apply-to                            all | selected
//   overhang-frames, snippet-frames     a whole number of frames
//   preserve-before, preserve-after     a timecode, -HH:MM:SS:FF for one before the event
//   vfx1, vfx2, vfx3                    PREFIX#POSTFIX (the version number at #), or off
//
// False with `error` naming what is wrong.
bool changeSetting(gui::MainGui& window, const std::string& assignment, std::string& error);

} // namespace montala::studio
