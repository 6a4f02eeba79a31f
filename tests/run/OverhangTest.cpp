#include "AuditReading.h"

#include "core/events/EdlLoader.h"
#include "run/ConformJob.h"
#include "run/SyncAudit.h"
#include "sim/session/SessionFile.h"
#include "sim/services/SimHost.h"
#include "util/StringConverter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

namespace montala::run {
namespace {

namespace fs = std::filesystem;

const std::string session = test::sampleSession("short-film-25");
const std::string oldEdl = test::sampleEdl("short-film-25", "old");
const std::string newEdl = test::sampleEdl("short-film-25", "new");
const auto& track = test::trackNamed;

// The 25 fps sample conformed with an overhang, and audited with and without
// knowing it. Around the cut at 01:01:00:20 of the New cut, reckoned by hand:
//
//   Old cut:      [ B002_C001 ..... 01:01:01:07 | A002_C001 01:01:01:07 ...
//   DX A (old):                  [013 from 01:01:01:03 .........................
//   New cut:      [ B002_C001 ... new 01:01:00:20 ][ A002_C001 from old 01:01:01:15
//
// The first piece ends 4 frames into event 013, the next starts 12 frames
// into it: with an overhang of 10 the 4 frames are a short beginning left
// out of the first piece, and too far from the second to be drawn into it.
// New 01:01:00:16 to 01:01:00:19 are silent where 013's first frames played.
class OverhangTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        folder = fs::temp_directory_path() / ("montala-overhang-" + std::to_string(::getpid()));
        fs::create_directories(folder);
        std::string error;
        before = sim::SessionFile::load(*host, session, error);
        ASSERT_TRUE(before) << error;
        core::ScopedFramerateProvider scope(&provider);
        core::EdlLoader loader({oldEdl, newEdl}, {});
        loader.load(0, oldCut);
        loader.load(1, newCut);
    }
    void TearDown() override
    {
        before.reset();
        after.reset();
        host->shutdown();
        fs::remove_all(folder);
    }

    // Conforms the sample with this overhang and loads the result as `after`.
    void conform(std::uint32_t overhang)
    {
        ConformRequest request;
        request.sessionPath = session;
        request.oldFiles = {oldEdl};
        request.newFiles = {newEdl};
        request.outputPath = (folder / "out.json").string();
        request.overhangFrames = overhang;
        const ConformOutcome outcome = runConform(request, {});
        ASSERT_EQ(outcome.status, ConformOutcome::Status::Done) << outcome.message;
        std::string error;
        after.reset();
        after = sim::SessionFile::load(*host, request.outputPath, error);
        ASSERT_TRUE(after) << error;
    }

    AuditReport audit(std::optional<std::uint32_t> overhang)
    {
        AuditReport report;
        auditProjects(*before, *after, oldCut, newCut, core::MatchName::RollName, false, report, overhang);
        EXPECT_TRUE(report.readable) << report.message;
        return report;
    }

    static size_t changed(const AuditReport& report)
    {
        size_t total = 0;
        for (const TrackAudit& audit : report.tracks)
            total += audit.changedAtCuts;
        return total;
    }

    // The conformed event of DX A that starts at `start` (host time).
    sim::SimObject& dxEventAt(double start)
    {
        sim::SimObject* dx = after->findTrack(u"DX A");
        EXPECT_NE(dx, nullptr);
        for (const auto& event : dx->children())
            if (std::fabs(event->get().start - start) < 1e-6)
                return *event;
        ADD_FAILURE() << "no DX A event at " << start;
        return *dx;
    }

    util::StringConverter converter;
    util::ScopedStringConverter converterScope{converter};
    core::FixedFramerateProvider provider{core::Framerate(25, 0)};
    Kelmar::IPtr<sim::SimHost> host = sim::SimHost::create();
    Kelmar::IPtr<sim::SimProject> before;
    Kelmar::IPtr<sim::SimProject> after;
    core::EventList oldCut{core::EventList::OldKind};
    core::EventList newCut{core::EventList::NewKind};
    fs::path folder;
};

TEST_F(OverhangTest, ShortBitLeftOutAtATrimmedCutIsInSyncForAnAuditThatKnowsTheOverhang)
{
    conform(10);

    // Strict, the audit finds exactly the four frames reckoned above.
    const AuditReport strict = audit(std::nullopt);
    EXPECT_FALSE(strict.inSync());
    const TrackAudit& dx = track(strict, "DIALOGUE/DX A");
    EXPECT_EQ(dx.outOfSync, 4u);
    ASSERT_EQ(dx.spans.size(), 1u);
    EXPECT_EQ(dx.spans[0].first, "01:01:00:16");
    EXPECT_EQ(dx.spans[0].last, "01:01:00:19");
    EXPECT_EQ(dx.spans[0].frames, 4u);
    EXPECT_EQ(dx.spans[0].found, "silence");
    EXPECT_EQ(dx.spans[0].expected, "A002_C001_0411KQ.wav @ 67.220 s");

    // Knowing the run's overhang, those frames are the run's doing and
    // nothing else is.
    const AuditReport knowing = audit(10);
    EXPECT_TRUE(knowing.inSync());
    EXPECT_EQ(track(knowing, "DIALOGUE/DX A").changedAtCuts, 4u);
    EXPECT_EQ(track(knowing, "DIALOGUE/DX A").inSync, dx.inSync);
    EXPECT_EQ(changed(knowing), 4u);
}

TEST_F(OverhangTest, AuditAllowsChangesWithinTheOverhangAndNoFurther)
{
    // At 12 frames the run also carries the sample's 12-frame tails across
    // their cuts and leaves out 12-frame beginnings, on both dialogue tracks.
    conform(12);
    EXPECT_FALSE(audit(std::nullopt).inSync());
    const AuditReport knowing = audit(12);
    EXPECT_TRUE(knowing.inSync());
    EXPECT_GT(track(knowing, "DIALOGUE/DX A").changedAtCuts, 0u);
    EXPECT_GT(track(knowing, "DIALOGUE/DX B").changedAtCuts, 0u);
    EXPECT_EQ(track(knowing, "EFFECTS/FX 1").changedAtCuts, 0u);

    // One frame less of window: the twelfth frame of each change is a fault.
    const AuditReport narrower = audit(11);
    EXPECT_FALSE(narrower.inSync());
    EXPECT_GT(track(narrower, "DIALOGUE/DX A").outOfSync, 0u);
    const std::string& first = track(narrower, "DIALOGUE/DX A").spans.front().first;
    EXPECT_EQ(first, "01:00:57:08") << "the last frame of event 011's tail, carried 12 frames past the cut";
}

TEST_F(OverhangTest, AuditThatKnowsTheOverhangStillCatchesSoundLostOrMovedNearACut)
{
    conform(10);

    // Event 013 after the cut at 01:01:00:20 (60.8 s) loses its first 4
    // frames, its sound staying in place: they are no short bit of their
    // event, which goes on for 3 seconds, so the window does not excuse them.
    sim::SimObject& rest = dxEventAt(60.8);
    sim::SimObject::Fields fields = rest.get();
    const sim::SimObject::Fields kept = fields;
    fields.start += 0.16;
    fields.offset += 0.16;
    rest.setFields(fields);
    const AuditReport trimmed = audit(10);
    EXPECT_FALSE(trimmed.inSync());
    EXPECT_EQ(track(trimmed, "DIALOGUE/DX A").outOfSync, 4u);
    EXPECT_EQ(track(trimmed, "DIALOGUE/DX A").spans.front().first, "01:01:00:20");

    // The same event a frame late: right next to the cut, but not what the
    // shot across the cut would have played there.
    fields = kept;
    fields.start += 0.04;
    fields.end += 0.04;
    rest.setFields(fields);
    const AuditReport late = audit(10);
    EXPECT_FALSE(late.inSync());
    EXPECT_EQ(track(late, "DIALOGUE/DX A").outOfSync, 77u)
        << "all 76 frames of the event and the one it now reaches past its end, not only those by the cut";

    rest.setFields(kept);
    EXPECT_TRUE(audit(10).inSync());
}

} // namespace
} // namespace montala::run
