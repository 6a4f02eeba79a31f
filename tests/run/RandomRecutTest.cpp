#include "AuditReading.h"
#include "run/RandomSession.h"

#include "core/EdlLoader.h"
#include "run/ConformJob.h"
#include "run/SyncAudit.h"
#include "sim/SessionFile.h"
#include "sim/SimHost.h"
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

// Every seed is a reel of its own; a failure names its seed, and the case
// can be run alone by starting the loop there.
constexpr std::uint64_t firstSeed = 1;
constexpr std::uint64_t seedCount = 150;
constexpr int rates[] = {25, 24, 30};

// What a conform left where nothing of the old arrangement may be: an
// object on a track that took part lying outside the New cut, or anything
// at all in the work area a day past the material.
struct Leftover {
    std::string track;
    std::string what;
    double start;
    double end;
};

void collectLeftovers(const sim::SimObject& track, const std::string& name, double low, double high,
                      std::vector<Leftover>& found)
{
    // A hair either side: edges of the cut are frame lines in seconds.
    constexpr double tolerance = 1e-6;
    for (const auto& child : track.children()) {
        if (child->isTrack())
            continue; // a folder's tracks are looked at on their own
        const sim::SimObject::Fields& fields = child->get();
        const double end = std::max(fields.start, fields.end);
        if (fields.start < low - tolerance || end > high + tolerance)
            found.push_back({name, sim::kindName(child->kind()), fields.start, end});
    }
    // Deleting a range puts a point on each of its edges, so the curve
    // outside keeps its value; past the cut such points may stay, but they
    // must hold the value the curve has at the cut's end.
    for (const auto& lane : track.automation()) {
        std::optional<double> held;
        for (const auto& point : lane->children()) {
            const sim::SimObject::Fields& fields = point->get();
            if (fields.start <= high + tolerance)
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
        return request;
    }

    static std::string describeRecut(const RandomRecut& recut)
    {
        std::ostringstream text;
        text << recut.getShape().fps << " fps; New cut:";
        for (const RandomRecut::Shot& shot : recut.newCut())
            text << " " << shot.id << "[" << shot.srcIn << "," << shot.srcOut << ")";
        return text.str();
    }

    util::StringConverter converter;
    util::ScopedStringConverter converterScope{converter};
};

TEST_F(RandomRecutTest, EveryFrameStaysInSyncAndNothingOfTheOldArrangementIsLeft)
{
    for (std::uint64_t seed = firstSeed; seed < firstSeed + seedCount; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomRecut::Shape shape;
        shape.fps = rates[seed % std::size(rates)];
        shape.shots = 8 + static_cast<int>(seed * 7 % 23);
        shape.audioTracks = 4 + static_cast<int>(seed % 3);
        shape.edits = 1 + static_cast<int>(seed % 8);
        RandomRecut recut(seed, shape);
        const ConformRequest request = writeReel(recut);
        SCOPED_TRACE(describeRecut(recut));

        AuditReport report;
        std::vector<Leftover> leftovers;
        ConformWatcher watcher;
        watcher.conformed = [&](sim::SimProject& after) {
            auto host = sim::SimHost::create();
            std::string error;
            auto before = sim::SessionFile::load(*host, request.sessionPath, error);
            ASSERT_TRUE(before) << error;
            core::FixedFramerateProvider provider(core::Framerate(shape.fps, 0));
            core::ScopedFramerateProvider scope(&provider);
            core::EventList oldCut(core::EventList::OldKind);
            core::EventList newCut(core::EventList::NewKind);
            std::vector<std::string> all = request.oldFiles;
            all.insert(all.end(), request.newFiles.begin(), request.newFiles.end());
            core::EdlLoader loader(all, request.load);
            for (size_t index = 0; index < all.size(); ++index)
                loader.load(index, index < request.oldFiles.size() ? oldCut : newCut);
            auditProjects(*before, after, oldCut, newCut, request.match, false, report);

            const double newEnd = static_cast<double>(recut.newLength()) / shape.fps;
            for (sim::SimObject* track : after.allTracks())
                if (!track->get().locked && track->kind() != sim::ObjectKind::Folder)
                    collectLeftovers(*track, std::string(track->get().name.begin(), track->get().name.end()), 0.0,
                                     newEnd, leftovers);
            before.reset();
            host->shutdown();
        };
        const ConformOutcome outcome = runConform(request, watcher);
        ASSERT_EQ(outcome.status, ConformOutcome::Status::Done) << outcome.message;
        EXPECT_GT(outcome.summary.eventsApplied, 0u);
        EXPECT_TRUE(report.inSync()) << describe(report);
        size_t judged = 0;
        for (const TrackAudit& track : report.tracks) {
            judged += track.inSync;
            if (track.name == RandomRecut::lockedTrack) {
                EXPECT_TRUE(track.leftOut && track.untouched) << "the locked track changed";
            }
        }
        EXPECT_GT(judged, 0u);
        for (const Leftover& left : leftovers)
            ADD_FAILURE() << "left of the old arrangement: " << left.what << " on " << left.track << " at "
                          << left.start << "-" << left.end << " s";

        // The saved session reads back.
        auto host = sim::SimHost::create();
        std::string error;
        EXPECT_TRUE(sim::SessionFile::load(*host, request.outputPath, error)) << error;
        host->shutdown();
        if (HasFailure())
            return; // the first seed that fails is the one to look at
    }
}

} // namespace
} // namespace montala::run
