#pragma once

// The window's name for the file dialog. The base lives in core, so that the
// host adapter can put the host's dialog behind it without seeing the window
// layer.
#include "core/services/FileBrowserDialogBase.h"

namespace montala::gui {

using FileBrowserDialogBase = core::FileBrowserDialogBase;

} // namespace montala::gui
