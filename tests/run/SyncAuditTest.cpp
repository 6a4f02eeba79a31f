#include "AuditReading.h"

#include "core/EdlLoader.h"
#include "run/PlaybackTrace.h"
#include "run/SyncAudit.h"
#include "sim/SessionFile.h"
#include "sim/SimHost.h"
#include "sim/SimPlayback.h"
#include "util/StringConverter.h"

#include <gtest/gtest.h>

namespace montala::run {
namespace {

const std::string session = test::sampleSession("short-film-25");
const auto& track = test::trackNamed;

// The sample session audited against itself over its Old cut: every frame
// is where it was, so a fault put in by hand is the only thing to find.
class SyncAuditTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::string error;
        before = sim::SessionFile::load(*host, session, error);
        after = sim::SessionFile::load(*host, session, error);
        ASSERT_TRUE(before && after) << error;
        core::EdlLoader loader({test::sampleEdl("short-film-25", "old")}, {});
        core::ScopedFramerateProvider scope(&provider);
        loader.load(0, cut);
    }
    void TearDown() override
    {
        before.reset();
        after.reset();
        host->shutdown();
    }

    AuditReport audit()
    {
        AuditReport report;
        auditProjects(*before, *after, cut, cut, core::MatchName::RollName, false, report);
        return report;
    }

    util::StringConverter converter;
    util::ScopedStringConverter converterScope{converter};
    core::FixedFramerateProvider provider{core::Framerate(25, 0)};
    Kelmar::IPtr<sim::SimHost> host = sim::SimHost::create();
    Kelmar::IPtr<sim::SimProject> before;
    Kelmar::IPtr<sim::SimProject> after;
    core::EventList cut{core::EventList::OldKind};
};

TEST_F(SyncAuditTest, CatchesOneTrackOneFrameOffAndALockedTrackThatChanged)
{
    const AuditReport same = audit();
    ASSERT_TRUE(same.readable) << same.message;
    EXPECT_TRUE(same.inSync());
    EXPECT_EQ(same.newCutFrames, 9000u);
    EXPECT_EQ(track(same, "EFFECTS/FX 1").outOfSync, 0u);
    EXPECT_TRUE(track(same, "GUIDE").leftOut);

    // Every event of FX 1 one frame late.
    sim::SimObject* fx = after->findTrack(u"FX 1");
    ASSERT_NE(fx, nullptr);
    for (const auto& event : fx->children()) {
        sim::SimObject::Fields fields = event->get();
        fields.start += 0.04;
        fields.end += 0.04;
        event->setFields(fields);
    }
    const AuditReport late = audit();
    EXPECT_FALSE(late.inSync());
    const TrackAudit& moved = track(late, "EFFECTS/FX 1");
    EXPECT_GT(moved.outOfSync, 0u);
    ASSERT_FALSE(moved.firstMismatches.empty());
    EXPECT_NE(moved.firstMismatches.front().expected, moved.firstMismatches.front().found);
    EXPECT_EQ(track(late, "DIALOGUE/DX A").outOfSync, 0u);
    EXPECT_TRUE(track(late, "DIALOGUE/DX A").ok());

    // Back in place, and the locked guide track loses an event.
    for (const auto& event : fx->children()) {
        sim::SimObject::Fields fields = event->get();
        fields.start -= 0.04;
        fields.end -= 0.04;
        event->setFields(fields);
    }
    sim::SimObject* guide = after->findTrack(u"GUIDE");
    ASSERT_NE(guide, nullptr);
    ASSERT_FALSE(guide->children().empty());
    guide->removeChild(guide->children().back().get());
    const AuditReport touched = audit();
    EXPECT_FALSE(touched.inSync());
    EXPECT_FALSE(track(touched, "GUIDE").untouched);
    EXPECT_TRUE(track(touched, "EFFECTS/FX 1").ok());
}

TEST_F(SyncAuditTest, TraceHearsWhatThePlaybackHearsAtEveryFrame)
{
    for (sim::SimObject* node : before->allTracks()) {
        if (node->kind() != sim::ObjectKind::AudioTrack && node->kind() != sim::ObjectKind::VideoTrack)
            continue;
        SCOPED_TRACE(std::string(node->get().name.begin(), node->get().name.end()));
        const PlaybackTrace trace(*node);
        for (int frame = 0; frame < 9000; frame += 3) {
            const double time = frame / 25.0 + 0.013;
            const auto expected = sim::SimPlayback::at(*node, time);
            const auto heard = trace.at(time);
            ASSERT_EQ(expected.has_value(), heard.has_value()) << frame;
            if (expected) {
                EXPECT_EQ(heard->file, expected->file);
                EXPECT_EQ(heard->clipId, expected->clipId);
                EXPECT_NEAR(heard->position, expected->position, 1e-9);
            }
        }
    }
}

} // namespace
} // namespace montala::run
