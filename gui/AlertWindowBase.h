#pragma once

// The window's name for the message box. The base lives in core, so that the
// host adapter can put the host's message box behind it without seeing the
// window layer; the window only shows through it.
#include "core/services/AlertWindowBase.h"

namespace montala::gui {

using AlertWindowBase = core::AlertWindowBase;

} // namespace montala::gui
