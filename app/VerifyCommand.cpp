#include "app/Commands.h"
#include "app/EdlOptions.h"
#include "app/EventPrinting.h"
#include "app/LoadReporting.h"
#include "run/SyncAudit.h"
#include "util/Result.h"
#include "util/StringConverter.h"

#include <algorithm>
#include <memory>
#include <ostream>

namespace montala::app {

using util::Result;

namespace {

const char* const commandName = "montala: verify: ";

struct VerifyOptions {
    std::string oldSession;
    std::string newSession;
    std::vector<std::string> oldFiles;
    std::vector<std::string> newFiles;
    std::string match = "roll";
    std::string tracks = "all";
    core::EdlLoadOptions load;
    std::optional<unsigned> overhang;
    bool json = false;
};

nlohmann::json spansJson(const std::vector<run::SyncSpan>& spans)
{
    nlohmann::json list = nlohmann::json::array();
    for (const run::SyncSpan& span : spans) {
        nlohmann::json entry = {{"what", span.what},     {"first", span.first},   {"last", span.last},
                                {"frames", span.frames}, {"source", span.source}, {"expected", span.expected}};
        if (!span.found.empty())
            entry["found"] = span.found;
        list.push_back(entry);
    }
    return list;
}

nlohmann::json trackJson(const run::TrackAudit& track)
{
    nlohmann::json json = {{"name", track.name},
                           {"kind", track.kind},
                           {"ok", track.ok()},
                           {"missing", track.missing},
                           {"leftOut", track.leftOut},
                           {"untouched", track.untouched},
                           {"inSync", track.inSync},
                           {"outOfSync", track.outOfSync},
                           {"automationOff", track.automationOff},
                           {"markersOff", track.markersOff},
                           {"newPicture", track.newPicture},
                           {"notJudged", track.notJudged},
                           {"changedAtCuts", track.changedAtCuts},
                           {"spans", spansJson(track.spans)}};
    if (track.leftOut)
        json["leftOutReason"] = track.leftOutReason;
    return json;
}

// How many stretches of one track are printed; --json gives them all.
constexpr size_t printedSpans = 10;

// "01:00:05:05-01:00:07:09 (55 frames, A001 10:00:03:04)"
std::string spanText(const run::SyncSpan& span)
{
    std::string text = span.first;
    if (span.frames > 1)
        text += "-" + span.last;
    text += " (" + std::to_string(span.frames) + (span.frames == 1 ? " frame" : " frames");
    if (!span.source.empty())
        text += ", " + span.source;
    return text + ")";
}

void printTrack(std::ostream& out, const run::TrackAudit& track)
{
    out << (track.ok() ? "  ok   " : "  FAIL ") << track.kind << " " << track.name << ": ";
    if (track.missing) {
        out << "not in the conformed session\n";
        return;
    }
    if (track.leftOut) {
        out << "left out (" << track.leftOutReason << "), "
            << (track.untouched ? "untouched" : "CHANGED, though it took no part") << "\n";
        return;
    }
    out << track.inSync << " frames in sync, " << track.outOfSync << " out of sync, " << track.newPicture
        << " of new picture without old sound";
    if (track.automationOff > 0)
        out << ", " << track.automationOff << " with automation off";
    if (track.markersOff > 0)
        out << ", " << track.markersOff << " with markers off";
    if (track.notJudged > 0)
        out << ", " << track.notJudged
            << " not judged (picture at another speed, through another transition or past a shorter freeze)";
    if (track.changedAtCuts > 0)
        out << ", " << track.changedAtCuts << " changed at cuts by the overhang";
    out << "\n";
    for (size_t index = 0; index < std::min(track.spans.size(), printedSpans); ++index) {
        const run::SyncSpan& span = track.spans[index];
        out << "         " << spanText(span) << " " << span.what << ": expected " << span.expected << ", found "
            << span.found << "\n";
    }
    if (track.spans.size() > printedSpans)
        out << "         and " << (track.spans.size() - printedSpans) << " more stretches (--json lists them all)\n";
}

int verify(const VerifyOptions& options, CommandIo& io)
{
    util::StringConverter converter;
    util::ScopedStringConverter converterScope(converter);
    std::ostream& notes = options.json ? io.err : io.out;

    run::AuditRequest request;
    request.oldSession = options.oldSession;
    request.newSession = options.newSession;
    request.oldFiles = options.oldFiles;
    request.newFiles = options.newFiles;
    request.load = options.load;
    request.match = matchNameOf(options.match);
    request.selectedTracksOnly = options.tracks == "selected";
    if (options.overhang)
        request.overhangFrames = *options.overhang;

    const run::AuditReport report =
        run::auditSync(request, [&](const core::EdlFileReport& load) { printLoadReport(load, notes, io.err); });
    if (!report.readable) {
        io.err << commandName << report.message << "\n";
        return 2;
    }
    if (options.json) {
        nlohmann::json tracks = nlohmann::json::array();
        for (const run::TrackAudit& track : report.tracks)
            tracks.push_back(trackJson(track));
        const nlohmann::json document = {{"rate", framerateToJson(report.rate)},
                                         {"newCutFrames", report.newCutFrames},
                                         {"inSync", report.inSync()},
                                         {"newPicture", spansJson(report.newPicture)},
                                         {"tracks", tracks}};
        io.out << document.dump(2) << "\n";
    } else {
        io.out << "Project rate: " << report.rateName << "\n";
        io.out << "New cut: " << report.newCutFrames << " frames\n";
        if (!report.newPicture.empty()) {
            io.out << "New picture, where every track must be silent:\n";
            for (const run::SyncSpan& span : report.newPicture)
                io.out << "         " << spanText(span) << "\n";
        }
        for (const run::TrackAudit& track : report.tracks)
            printTrack(io.out, track);
        io.out << (report.inSync() ? "All in sync\n" : "NOT in sync\n");
    }
    return report.inSync() ? 0 : 1;
}

} // namespace

void registerVerifyCommand(CLI::App& program, CommandIo& io)
{
    auto options = std::make_shared<VerifyOptions>();
    auto* command = program.add_subcommand(
        "verify", "Check, frame by frame, that a conformed session plays on the New cut what the old one played "
                  "on the Old cut.");
    command->add_option("old-session", options->oldSession, "The session before the conform")->required();
    command->add_option("new-session", options->newSession, "The conformed session")->required();
    command->add_option("--old", options->oldFiles, "Old EDL file; repeatable")->required();
    command->add_option("--new", options->newFiles, "New EDL file; repeatable")->required();
    addMatchOption(*command, options->match, "Match shots by roll name or clip name");
    command->add_option("--tracks", options->tracks, "The conform ran on all tracks or the selected ones")
        ->check(CLI::IsMember({"all", "selected"}));
    addLoadFlags(*command, options->load);
    command->add_option("--overhang", options->overhang,
                        "The conform ran with --overhang FRAMES: short bits of sound by the cuts may have moved");
    command->add_flag("--json", options->json, "Print one JSON document for scripts");
    // A failure is no verdict on the sync: it ends like an unreadable input.
    command->callback([options, &io] { runCommand(io, commandName, 2, [&] { return verify(*options, io); }); });
}

} // namespace montala::app
