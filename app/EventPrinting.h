#pragma once

#include "core/events/EventList.h"
#include "core/time/Framerate.h"

#include <nlohmann/json.hpp>

#include <ostream>
#include <string_view>

namespace montala::app {

// The JSON forms that scripts rely on; keep the key names.
nlohmann::json framerateToJson(const core::Framerate& rate);
// A document part as text. Bytes that are not UTF-8 print as U+FFFD rather
// than stop the program.
std::string dumpJson(const nlohmann::json& json);

// The events are written as they come, never built into one document: a
// long list would otherwise hold its whole text twice in memory.
//
// A JSON string, escaped; a byte that is not part of valid UTF-8 becomes
// U+FFFD.
void writeJsonString(std::ostream& out, std::string_view text);
// One event as a JSON object on one line; a healed event carries its parts
// under "healedEvents".
void writeEventJson(std::ostream& out, const core::EventBase& event);
// The events as a JSON array, one event per line behind indent.
void writeEventListJson(std::ostream& out, const core::EventList& list, std::string_view indent);

// A readable table: one row per event (the parts of a healed event indented
// below it), then the Total and Invalid counts.
void printEventTable(std::ostream& out, const core::EventList& list);

} // namespace montala::app
