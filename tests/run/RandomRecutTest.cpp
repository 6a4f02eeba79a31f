#include "AuditReading.h"
#include "run/RandomSession.h"

#include "run/ConformJob.h"
#include "run/SyncAudit.h"
#include "sim/session/SessionFile.h"
#include "sim/services/SimHost.h"
#include "sim/project/SimPlayback.h"
#include "util/StringConverter.h"

#include "support/TempFolderTest.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <sstream>

namespace montala::run {
namespace {

namespace fs = std::filesystem;
using test::RandomRecut;
using test::describe;
using test::SyncSpan;

// Every scenario is a rate and a seed; a failure names both, and the case
// can be run alone by starting the loops there. Reels are small and few per
// rate: each is conformed and verified twice.
struct Rate {
    int fps;
    bool pullDown;
    bool dropFrame;
};
constexpr Rate rates[] = {{24, true, false},  {24, false, false}, {25, false, false},
                          {30, true, true},   {30, false, false}, {50, false, false}};
constexpr std::uint64_t firstSeed = 1;
constexpr std::uint64_t seedsPerRate = 12;

// What a conform left where nothing of the old arrangement may be: an
// object on a track that took part lying outside the New cut, or anything
// at all in the work area a day past the material.
struct Leftover {
    std::string track;
    std::string what;
    double start;
    double end;
};

// `reels` are the New reels in host seconds, [start, end], in time order.
void collectLeftovers(const sim::SimObject& track, const std::string& name,
                      const std::vector<std::pair<double, double>>& reels, std::vector<Leftover>& found)
{
    // A hair either side: edges of the cut are frame lines in seconds.
    constexpr double tolerance = 1e-6;
    const auto inside = [&](double start, double end) {
        return std::any_of(reels.begin(), reels.end(), [&](const auto& reel) {
            return start >= reel.first - tolerance && end <= reel.second + tolerance;
        });
    };
    for (const auto& child : track.children()) {
        if (child->isTrack())
            continue; // a folder's tracks are looked at on their own
        const sim::SimObject::Fields& fields = child->get();
        const double end = std::max(fields.start, fields.end);
        if (!inside(fields.start, end))
            found.push_back({name, sim::kindName(child->kind()), fields.start, end});
    }
    // Deleting a range puts a point on each of its edges, so the curve
    // outside keeps its value; past a reel such points may stay, but they
    // must hold the value the curve has at the reel's end.
    for (const auto& lane : track.automation()) {
        std::optional<double> held;
        for (const auto& point : lane->children()) {
            const sim::SimObject::Fields& fields = point->get();
            if (inside(fields.start, fields.start))
                held = fields.value;
            else if (!held || fields.value != *held)
                found.push_back({name, "automation point", fields.start, fields.start});
        }
    }
}

class RandomRecutTest : public test::TempFolderTest {
protected:
    RandomRecutTest() : TempFolderTest("montala-recut") {}

    // The reel of one seed written out, and the request that conforms it.
    ConformRequest writeReel(RandomRecut& recut)
    {
        ConformRequest request;
        request.sessionPath = (folder / "old.json").string();
        RandomRecut::write(request.sessionPath, recut.session());
        const auto writeAll = [&](const std::vector<std::string>& texts, const std::string& stem) {
            std::vector<std::string> paths;
            for (size_t index = 0; index < texts.size(); ++index) {
                paths.push_back((folder / (stem + std::to_string(index) + ".edl")).string());
                RandomRecut::write(paths.back(), texts[index]);
            }
            return paths;
        };
        request.oldFiles = writeAll(recut.oldEdls(), "old");
        request.newFiles = writeAll(recut.newEdls(), "new");
        request.outputPath = (folder / "new.json").string();
        // A random re-cut may leave out any share of the sound.
        request.maxDroppedShare = 1.0;
        return request;
    }

    static std::string describeRecut(const RandomRecut& recut)
    {
        std::ostringstream text;
        text << recut.getShape().fps << (recut.getShape().pullDown ? " x 1000/1001" : "") << " fps; New cut:";
        for (const RandomRecut::Reel& reel : recut.newReels()) {
            text << " [";
            for (const RandomRecut::Shot& shot : reel.shots)
                text << " " << shot.id << "[" << shot.srcIn << "," << shot.srcOut << ")"
                     << (shot.normal() ? "" : "@" + std::to_string(shot.record))
                     << (shot.dissolve ? "D" + std::to_string(shot.dissolve) : "");
            text << " ]";
        }
        return text.str();
    }

    // Conforms the reel, lets verify judge it from the saved files, and
    // plants a one-frame slip that verify must find.
    void checkScenario(const RandomRecut& recut, const ConformRequest& request)
    {
        // An overhang run carries short bits of sound past the reels' ends.
        const double reach = recut.seconds(request.overhangFrames.value_or(0));
        std::vector<std::pair<double, double>> reels;
        for (const RandomRecut::Reel& reel : recut.newReels())
            reels.emplace_back(recut.seconds(reel.start) - reach, recut.seconds(reel.end()) + reach);
        std::vector<Leftover> leftovers;
        ConformWatcher watcher;
        watcher.conformed = [&](sim::SimProject& after) {
            for (sim::SimObject* track : after.allTracks())
                if (!track->get().locked && track->kind() != sim::ObjectKind::Folder &&
                    track->attributes().count("Montala:MarkerType") == 0)
                    collectLeftovers(*track, std::string(track->get().name.begin(), track->get().name.end()), reels,
                                     leftovers);
        };
        const ConformOutcome outcome = runConform(request, watcher);
        ASSERT_EQ(outcome.status, ConformOutcome::Status::Done) << outcome.message;
        EXPECT_GT(outcome.summary.eventsApplied, 0u);
        for (const Leftover& left : leftovers)
            ADD_FAILURE() << "left of the old arrangement: " << left.what << " on " << left.track << " at "
                          << left.start << "-" << left.end << " s, the New cut ending at " << reels.back().second
                          << " s";

        const AuditReport report = test::verifyConform(request);
        ASSERT_TRUE(report.readable) << report.message;
        EXPECT_TRUE(report.inSync()) << describe(report);
        EXPECT_TRUE(test::trackNamed(report, RandomRecut::lockedTrack).untouched) << "the locked track changed";
        EXPECT_GT(test::trackNamed(report, "DX 0").inSync, 0u);
        const std::vector<std::int64_t> candidates = judgedFrames(recut);
        if (candidates.empty())
            return; // no shot long enough to slip in, away from its edges

        // The event DX 0 plays at a judged frame, a frame off.
        const std::int64_t frame = candidates[candidates.size() / 2];
        const double frameLength = recut.seconds(1);
        bool planted = false;
        std::string slipped;
        test::alterSession(request.outputPath, [&](sim::SimProject& project) {
            sim::SimObject* track = project.findTrack(u"DX 0");
            ASSERT_NE(track, nullptr);
            // The first frame at or after the chosen one that has sound.
            for (const std::int64_t at : candidates) {
                if (at < frame)
                    continue;
                const auto heard = sim::SimPlayback::at(*track, recut.seconds(at) + frameLength / 2);
                if (!heard)
                    continue;
                auto* event = const_cast<sim::SimObject*>(heard->event);
                sim::SimObject::Fields fields = event->get();
                // Early, unless that would take it before the project start.
                const double slip = fields.start >= frameLength ? -frameLength : frameLength;
                fields.start += slip;
                fields.end += slip;
                event->setFields(fields);
                planted = true;
                slipped = recut.timecode(recut.hourFrame(1) + at);
                return;
            }
        });
        if (!planted)
            return; // no sound on DX 0 in the reel's judged frames: nothing to slip
        ++slips;
        const AuditReport slip = test::verifyConform(request);
        EXPECT_FALSE(slip.inSync()) << "a slip at " << slipped;
        const auto& spans = test::trackNamed(slip, "DX 0").spans;
        EXPECT_TRUE(std::any_of(spans.begin(), spans.end(),
                                [&](const SyncSpan& span) { return span.first <= slipped && slipped <= span.last; }))
            << "the slip at " << slipped << " is in no stretch out of sync: " << describe(slip);
    }

    size_t slips = 0;

    // A frame of the New cut, host frames after its start, that verify must
    // judge on a dialogue track: well inside a shot the Old cut showed at the
    // same speed, away from its cuts, dissolves and the overhang's reach.
    static std::vector<std::int64_t> judgedFrames(const RandomRecut& recut)
    {
        constexpr std::int64_t margin = 40;
        std::vector<std::int64_t> frames;
        for (const RandomRecut::Reel& reel : recut.newReels()) {
            std::int64_t record = reel.start;
            for (const RandomRecut::Shot& shot : reel.shots) {
                const auto old = std::find_if(recut.oldCut().begin(), recut.oldCut().end(),
                                              [&](const RandomRecut::Shot& o) { return o.id == shot.id; });
                if (old != recut.oldCut().end() && old->normal() && shot.normal())
                    for (std::int64_t at = margin; at < shot.length() - margin; at += 7) {
                        const std::int64_t source = shot.srcIn + at;
                        if (source >= old->srcIn + margin && source < old->srcOut - margin)
                            frames.push_back(record + at);
                    }
                record += shot.length();
            }
        }
        return frames;
    }

    util::StringConverter converter;
    util::ScopedStringConverter converterScope{converter};
};

TEST_F(RandomRecutTest, VerifyJudgesEveryReelInSyncAndAOneFrameSlipOutOfIt)
{
    for (const Rate rate : rates)
        for (std::uint64_t seed = firstSeed; seed < firstSeed + seedsPerRate; ++seed) {
            const std::string scenario = std::to_string(rate.fps) + (rate.pullDown ? "/1.001" : "") +
                                         (rate.dropFrame ? " drop frame" : "") + " fps, seed " + std::to_string(seed);
            SCOPED_TRACE(scenario);
            RandomRecut::Shape shape;
            shape.fps = rate.fps;
            shape.pullDown = rate.pullDown;
            shape.dropFrame = rate.dropFrame;
            shape.shots = 8 + static_cast<int>(seed * 7 % 15);
            shape.audioTracks = 4 + static_cast<int>(seed % 3);
            shape.edits = 2 + static_cast<int>(seed % 8);
            shape.effects = seed % 4 != 0;
            shape.newReels = seed % 3 == 1 ? 2 : 1;
            shape.edgeSteps = true;
            RandomRecut recut(seed * 31 + static_cast<std::uint64_t>(rate.fps), shape);
            ConformRequest request = writeReel(recut);
            if (seed % 3 == 2)
                request.overhangFrames = 10;
            SCOPED_TRACE(describeRecut(recut));
            checkScenario(recut, request);
            if (HasFailure())
                return; // the first scenario that fails is the one to look at
        }
    EXPECT_GT(slips, std::size(rates) * seedsPerRate * 3 / 4);
}

} // namespace
} // namespace montala::run
