#pragma once

#include "studio/StudioOptions.h"

#include <ostream>

namespace montala::gui {
class MainGui;
}

namespace montala::studio {

class Studio;

// The steps of the command line, taken in the window as a user takes them:
// the EDLs are added, Generate and Start Montala are clicked, the rows are
// selected in the Change table, and the host's idle calls run the conform.
// What each step did goes to `out`, what failed to `err`. Stops at the
// first step that fails; the answer is the program's exit status (0 when
// every step did its work, 1 otherwise).
int runSteps(Studio& studio, gui::MainGui& window, const StudioOptions& options, std::ostream& out,
             std::ostream& err);

// The window of the studio's active project, wired to Montala as the
// plug-in's view is: driver, project notifier, video provider, in that
// order, at the size the skin gives the view.
class ViewWiring {
public:
    static void wire(gui::MainGui& window, Studio& studio);
    static void unwire(gui::MainGui& window);
};

} // namespace montala::studio
