#include "ConformFixture.h"

#include "core/conform/RemainsDetectAlgorithm.h"
#include "util/Result.h"

#include <gtest/gtest.h>

using namespace montala::core;
using montala::util::Result;

namespace montala::test {
namespace {

// snippetMarkerFrames 5 (0.2 s at 25 fps). The old timeline from
// 10:00:00:00 (36000.0) moves to 10:00:20:00 (36020.0).
class RemainsDetectAlgorithmTest : public ConformFixture {
protected:
    RemainsDetectAlgorithmTest() { host.settings.setSnippetMarkerFrames(5); }

    std::vector<InformationEntry> detect()
    {
        buildCuts(changes);
        return RemainsDetectAlgorithm().detect(cuts, host.getInformationContext(), &progress);
    }

    FakeTrack& track = host.addTrack("Dia 1");
};

TEST_F(RemainsDetectAlgorithmTest, ASnippetThatIsTheWholePieceIsReportedOnce)
{
    // A piece of 4 frames; the audio event ends exactly at its end.
    track.clip("A", 35990.0, 36000.16);
    changes.addEvent(move("10:00:00:00", "10:00:00:04", "10:00:20:00"));
    const auto entries = detect();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_NEAR(entries[0].start, 36020.0, 1e-6);
    EXPECT_NEAR(entries[0].end, 36020.16, 1e-6);
    EXPECT_EQ(entries[0].text, "Audio snippet in Dia 1");
    EXPECT_EQ(entries[0].kind, InformationKind::Snippet);
}

TEST_F(RemainsDetectAlgorithmTest, MarksShortBitsAtBothEndsUpToTheFrameLimit)
{
    changes.addEvent(move("10:00:00:00", "10:00:10:00", "10:00:20:00"));
    track.clip("head", 35995.0, 36000.12).clip("tail", 36009.8, 36015.0);
    auto entries = detect();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_NEAR(entries[0].start, 36020.0, 1e-6);
    EXPECT_NEAR(entries[0].end, 36020.12, 1e-6) << "3 frames at the head";
    EXPECT_NEAR(entries[1].start, 36029.8, 1e-6) << "exactly 5 frames at the tail count";
    EXPECT_NEAR(entries[1].end, 36030.0, 1e-6);

    // 6 frames at each end are no snippet.
    track.editClips() = {{"head", 35995.0, 36000.24, 0.0}, {"tail", 36009.76, 36015.0, 0.0}};
    EXPECT_TRUE(RemainsDetectAlgorithm().detect(cuts, host.getInformationContext(), nullptr).empty());
}

TEST_F(RemainsDetectAlgorithmTest, LooksOnlyAtAudioTracks)
{
    track.audio = false;
    track.clip("A", 35990.0, 36000.16);
    changes.addEvent(move("10:00:00:00", "10:00:00:04", "10:00:20:00"));
    EXPECT_TRUE(detect().empty());
    EXPECT_EQ(host.audioInfoQueries, 0);
}

TEST_F(RemainsDetectAlgorithmTest, StopsWithCancelledAfterTheStepThatSawTheCancel)
{
    host.addTrack("Dia 2");
    changes.addEvent(move("10:00:00:00", "10:00:10:00", "10:00:20:00"));
    changes.addEvent(move("10:00:10:00", "10:00:20:00", "10:00:40:00"));
    progress.cancelAfter = 3;
    EXPECT_EQ(test::thrownCode([&] { detect(); }), Result::Cancelled);
    EXPECT_EQ(progress.advanced, 3) << "one step per piece, of four";
}

} // namespace
} // namespace montala::test
