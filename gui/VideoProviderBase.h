#pragma once

// The window's name for the preview's picture source. The base lives in
// core, so that the host adapter can implement it without seeing the window
// layer.
#include "core/services/VideoProviderBase.h"

namespace montala::gui {

using VideoProviderBase = core::VideoProviderBase;
using VideoTrackHandlerBase = core::VideoTrackHandlerBase;

} // namespace montala::gui
