#include "app/Commands.h"
#include "app/EdlOptions.h"
#include "app/EventPrinting.h"
#include "app/LoadReporting.h"
#include "run/SyncAudit.h"
#include "util/Result.h"
#include "util/StringConverter.h"

#include <memory>
#include <ostream>

namespace montala::app {

using util::Result;

namespace {

const char* const commandName = "montala verify: ";

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

nlohmann::json trackJson(const run::TrackAudit& track)
{
    nlohmann::json mismatches = nlohmann::json::array();
    for (const run::SyncMismatch& mismatch : track.firstMismatches)
        mismatches.push_back(
            {{"timecode", mismatch.timecode}, {"expected", mismatch.expected}, {"found", mismatch.found}});
    nlohmann::json json = {{"name", track.name},         {"kind", track.kind},       {"ok", track.ok()},
                           {"missing", track.missing},   {"leftOut", track.leftOut}, {"untouched", track.untouched},
                           {"inSync", track.inSync},     {"outOfSync", track.outOfSync},
                           {"newPicture", track.newPicture}, {"notJudged", track.notJudged},
                           {"changedAtCuts", track.changedAtCuts},
                           {"firstMismatches", mismatches}};
    if (track.leftOut)
        json["leftOutReason"] = track.leftOutReason;
    return json;
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
    if (track.notJudged > 0)
        out << ", " << track.notJudged << " not judged (picture at another speed or through another transition)";
    if (track.changedAtCuts > 0)
        out << ", " << track.changedAtCuts << " changed at cuts by the overhang";
    out << "\n";
    for (const run::SyncMismatch& mismatch : track.firstMismatches)
        out << "         at " << mismatch.timecode << ": expected " << mismatch.expected << ", found "
            << mismatch.found << "\n";
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
                                         {"tracks", tracks}};
        io.out << document.dump(2) << "\n";
    } else {
        io.out << "Project rate: " << report.rateName << "\n";
        io.out << "New cut: " << report.newCutFrames << " frames\n";
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
