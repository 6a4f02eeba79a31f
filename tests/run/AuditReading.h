#pragma once

#include "run/ConformJob.h"
#include "run/SyncAudit.h"
#include "sim/session/SessionFile.h"
#include "sim/services/SimHost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <sstream>
#include <string>

namespace montala::test {

using run::AuditReport;
using run::SyncSpan;
using run::TrackAudit;

// The sample sessions and their cuts, by reel name.
inline const std::string samples = MONTALA_SOURCE_DIR "/samples";
inline std::string sampleSession(const std::string& reel) { return samples + "/sessions/" + reel + ".json"; }
inline std::string sampleEdl(const std::string& reel, const char* cut) { return samples + "/edl/" + reel + "/" + cut + ".edl"; }

// An audit as a failure message: each track that is not in order, with its
// first frames off.
inline std::string describe(const AuditReport& report)
{
    std::ostringstream text;
    text << report.message;
    for (const TrackAudit& track : report.tracks) {
        if (track.ok())
            continue;
        text << "\n" << track.name << ": " << track.inSync << " in sync, " << track.outOfSync << " out, "
             << track.newPicture << " new, " << track.automationOff << " automation off, " << track.markersOff
             << " markers off" << (track.untouched ? "" : ", touched")
             << (track.missing ? ", missing" : "");
        for (size_t index = 0; index < std::min<size_t>(track.spans.size(), 5); ++index) {
            const run::SyncSpan& span = track.spans[index];
            text << "\n  " << span.what << " " << span.first << "-" << span.last << " (" << span.source << ") expected "
                 << span.expected << " found " << span.found;
        }
    }
    return text.str();
}

inline const TrackAudit& trackNamed(const AuditReport& report, const std::string& name)
{
    for (const TrackAudit& audit : report.tracks)
        if (audit.name == name)
            return audit;
    static TrackAudit none;
    ADD_FAILURE() << "no track " << name;
    return none;
}

// The audit of a conform's saved session, as `montala verify` makes it.
inline AuditReport verifyConform(const run::ConformRequest& conform)
{
    run::AuditRequest request;
    request.oldSession = conform.sessionPath;
    request.newSession = conform.outputPath;
    request.oldFiles = conform.oldFiles;
    request.newFiles = conform.newFiles;
    request.load = conform.load;
    request.match = conform.match;
    request.selectedTracksOnly = conform.selectedTracksOnly;
    request.overhangFrames = conform.overhangFrames;
    return run::auditSync(request);
}

// A saved session changed in place, as a faulty conform would have left it.
inline void alterSession(const std::string& path, const std::function<void(sim::SimProject&)>& change)
{
    auto host = sim::SimHost::create();
    {
        std::string error;
        auto project = sim::SessionFile::load(*host, path, error);
        ASSERT_TRUE(project) << error;
        change(*project);
        ASSERT_TRUE(sim::SessionFile::save(*project, path, error)) << error;
    }
    host->shutdown();
}

} // namespace montala::test
