#pragma once

#include "core/EventList.h"
#include "core/Framerate.h"

#include <nlohmann/json.hpp>

#include <ostream>

namespace montala::app {

// The JSON forms that scripts rely on; keep the key names.
nlohmann::json framerateToJson(const core::Framerate& rate);
// One event; a healed event carries its parts under "healedEvents".
nlohmann::json eventToJson(const core::EventBase& event);
nlohmann::json eventListToJson(const core::EventList& list);

// A readable table: one row per event (the parts of a healed event indented
// below it), then the Total and Invalid counts.
void printEventTable(std::ostream& out, const core::EventList& list);

} // namespace montala::app
