#pragma once

#include "kelmar/base/Types.h"

#include <string>

// Exported with C linkage and default visibility; everything else of the
// module stays hidden (see exports.map).
#if defined(_WIN32)
#define MONTALA_EXPORT extern "C" __declspec(dllexport)
#else
#define MONTALA_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace montala::host::module {

// The module's own handle: the one handle given to the menu registry, the
// translation service and the skin service, so that the host finds the
// module's entries and resources by it.
Kelmar::ModuleHandle handle();
// The folder of the module's file, with its separator at the end.
const std::string& folder();

} // namespace montala::host::module
