#include "app/ConformFindings.h"

namespace montala::app {

namespace {

// A dialogue EDL of audio events would fill the screen; the JSON form has
// every one.
constexpr size_t printedEvents = 20;

// "old.edl line 12, event 5" or "Change event 5" when it came from no file.
std::string placeOf(const run::UnusedEvent& event)
{
    std::string place = event.file.empty() ? "Change EDL" : event.file;
    if (event.line > 0)
        place += " line " + std::to_string(event.line);
    return place + ", event " + std::to_string(event.eventNumber);
}

} // namespace

void printFindings(const run::ConformOutcome& outcome, const std::string& session, std::ostream& err)
{
    for (const std::string& message : outcome.sessionMessages)
        err << "montala: " << session << ": " << message << "\n";
    for (size_t index = 0; index < outcome.unused.size() && index < printedEvents; ++index)
        err << "montala: " << placeOf(outcome.unused[index]) << ": not used: " << outcome.unused[index].reason << "\n";
    if (outcome.unused.size() > printedEvents)
        err << "montala: " << outcome.unused.size() - printedEvents
            << " more events not used (--json lists them all)\n";
    for (const run::TimecodeSpan& span : outcome.silentSpans)
        err << "montala: no sound for the New cut " << span.in << "-" << span.out << "\n";
    const bool wentOn = outcome.status != run::ConformOutcome::Status::Refused;
    for (const run::Refusal& refusal : outcome.refusals)
        err << "montala: " << refusal.message << (wentOn ? " (going on, as --force asks)" : "") << "\n";
    if (!wentOn)
        err << "montala: nothing was changed; if the inputs are right all the same, --force goes on anyway\n";
}

void addFindingsToJson(const run::ConformOutcome& outcome, nlohmann::json& document)
{
    nlohmann::json refusals = nlohmann::json::array();
    for (const run::Refusal& refusal : outcome.refusals)
        refusals.push_back({{"check", refusal.check}, {"message", refusal.message}});
    nlohmann::json unused = nlohmann::json::array();
    for (const run::UnusedEvent& event : outcome.unused) {
        unused.push_back({{"file", event.file.empty() ? nlohmann::json(nullptr) : nlohmann::json(event.file)},
                          {"line", event.line == 0 ? nlohmann::json(nullptr) : nlohmann::json(event.line)},
                          {"event", event.eventNumber},
                          {"reason", event.reason}});
    }
    nlohmann::json silent = nlohmann::json::array();
    for (const run::TimecodeSpan& span : outcome.silentSpans)
        silent.push_back({{"in", span.in}, {"out", span.out}});
    document["sessionMessages"] = outcome.sessionMessages;
    document["refusals"] = refusals;
    document["unused"] = unused;
    document["audioEventsLeftOut"] = outcome.audioEventsLeftOut;
    document["silentSpans"] = silent;
}

} // namespace montala::app
