#pragma once

#include "core/time/Framerate.h"

namespace montala::core {

class Settings;

// What the snippet algorithm reads: the project's rate and the options.
struct SnippetContext {
    Framerate framerate;
    Settings* settings = nullptr;
};

} // namespace montala::core
