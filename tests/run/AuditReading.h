#pragma once

#include "run/SyncAudit.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace montala::test {

using run::AuditReport;
using run::SyncMismatch;
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
             << track.newPicture << " new" << (track.untouched ? "" : ", touched")
             << (track.missing ? ", missing" : "");
        for (const SyncMismatch& mismatch : track.firstMismatches)
            text << "\n  " << mismatch.timecode << " expected " << mismatch.expected << " found " << mismatch.found;
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

} // namespace montala::test
