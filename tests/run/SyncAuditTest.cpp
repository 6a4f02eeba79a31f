#include "AuditReading.h"

#include "core/events/EdlLoader.h"
#include "run/PlaybackTrace.h"
#include "run/ConformJob.h"
#include "run/SyncAudit.h"
#include "sim/session/SessionFile.h"
#include "sim/services/SimHost.h"
#include "sim/project/SimPlayback.h"
#include "util/StringConverter.h"

#include "support/TempFolderTest.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

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
    ASSERT_FALSE(moved.spans.empty());
    EXPECT_NE(moved.spans.front().expected, moved.spans.front().found);
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

TEST_F(SyncAuditTest, TheNewPictureMontalaWritesIsNotJudgedAsOldMaterial)
{
    // PICTURE marked as the new cut's picture track, and rewritten by the run.
    for (sim::SimProject* project : {before.get(), after.get()})
        project->findTrack(u"PICTURE")->setAttribute("Montala:VideoType", Kelmar::FVariant(Kelmar::int64{8}), 1);
    sim::SimObject* picture = after->findTrack(u"PICTURE");
    picture->removeChild(picture->children().front().get());
    const AuditReport report = audit();
    EXPECT_TRUE(report.inSync());
    EXPECT_TRUE(std::none_of(report.tracks.begin(), report.tracks.end(),
                             [](const TrackAudit& audited) { return audited.name == "PICTURE"; }));
}

TEST_F(SyncAuditTest, CatchesAutomationAndMarkersOffNamingTrackParameterAndPlace)
{
    // FX 1's mute ends a frame late, at 01:00:16:24 instead of 01:00:16:23.
    sim::SimObject* fx = after->findTrack(u"FX 1");
    ASSERT_NE(fx, nullptr);
    ASSERT_FALSE(fx->automation().empty());
    sim::SimObject& unmute = *fx->automation().front()->children()[1];
    sim::SimObject::Fields fields = unmute.get();
    fields.start += 0.04;
    unmute.setFields(fields);
    // The note "check sync" a frame late, at 01:01:53:18.
    sim::SimObject* notes = after->findTrack(u"Notes");
    ASSERT_NE(notes, nullptr);
    sim::SimObject& note = *notes->children().front();
    fields = note.get();
    fields.start += 0.04;
    note.setFields(fields);

    const AuditReport report = audit();
    EXPECT_FALSE(report.inSync());
    const TrackAudit& effects = track(report, "EFFECTS/FX 1");
    EXPECT_EQ(effects.outOfSync, 0u);
    EXPECT_EQ(effects.automationOff, 1u);
    ASSERT_EQ(effects.spans.size(), 1u);
    EXPECT_EQ(effects.spans[0].what, "Mute");
    EXPECT_EQ(effects.spans[0].first, "01:00:16:23");
    EXPECT_EQ(effects.spans[0].expected, "0.000");
    EXPECT_EQ(effects.spans[0].found, "1.000");

    const TrackAudit& marks = track(report, "Notes");
    EXPECT_EQ(marks.kind, "marker");
    EXPECT_EQ(marks.markersOff, 2u);
    ASSERT_EQ(marks.spans.size(), 1u);
    EXPECT_EQ(marks.spans[0].what, "markers");
    EXPECT_EQ(marks.spans[0].first, "01:01:53:17");
    EXPECT_EQ(marks.spans[0].last, "01:01:53:18");
    EXPECT_EQ(marks.spans[0].expected, "\"check sync\"");
    EXPECT_EQ(marks.spans[0].found, "no marker");
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

// Small reels at 25 fps with one dialogue track, conformed from two cuts and
// verified from the saved files. Shots are 4 s (100 frames) unless said;
// the session starts at 01:00:00:00, so host time 0 is the first Old frame.
class HandMadeConformTest : public test::TempFolderTest {
protected:
    HandMadeConformTest() : TempFolderTest("montala-audit-case") {}

    // A cut of CMX lines ("001  A001  V  C  10:00:00:00 10:00:04:00 ...").
    std::string cut(const std::string& name, const std::vector<std::string>& lines)
    {
        std::ofstream file(pathOf(name + ".edl"));
        file << "TITLE: " << name << "\nFCM: NON-DROP FRAME\n\n";
        for (const std::string& line : lines)
            file << line << "\n";
        return pathOf(name + ".edl");
    }

    // The session, its one track DX holding these events.
    ConformRequest request(const std::string& events, std::vector<std::string> oldFiles,
                           std::vector<std::string> newFiles, std::optional<std::uint32_t> overhang = std::nullopt)
    {
        ConformRequest conform;
        conform.sessionPath = pathOf("old.json");
        std::ofstream(conform.sessionPath)
            << R"({"format": "montala-session", "version": 1, "frameRate": {"fps": 25}, "start": "01:00:00:00",)"
            << R"( "end": 7300.0, "tracks": [{"kind": "audio", "name": "DX", "events": [)" << events << "]}]}";
        conform.oldFiles = std::move(oldFiles);
        conform.newFiles = std::move(newFiles);
        conform.outputPath = conform.newFiles.front() + ".json";
        conform.overhangFrames = overhang;
        return conform;
    }

    AuditReport conformAndVerify(const ConformRequest& conform)
    {
        const ConformOutcome outcome = runConform(conform, {});
        EXPECT_EQ(outcome.status, ConformOutcome::Status::Done) << outcome.message;
        const AuditReport report = test::verifyConform(conform);
        EXPECT_TRUE(report.readable) << report.message;
        return report;
    }

    // The conform is in sync, with this many frames of DX judged and not.
    void expectInSync(const ConformRequest& conform, size_t inSync, size_t notJudged)
    {
        const AuditReport report = conformAndVerify(conform);
        EXPECT_TRUE(report.inSync()) << test::describe(report);
        EXPECT_EQ(track(report, "DX").inSync, inSync);
        EXPECT_EQ(track(report, "DX").notJudged, notJudged);
    }

    // DX's stretches out of sync after slipFrom(at): "first-last source".
    std::vector<std::string> slippedSpans(const ConformRequest& conform, double at)
    {
        slipFrom(conform, at);
        const AuditReport report = test::verifyConform(conform);
        EXPECT_FALSE(report.inSync());
        std::vector<std::string> spans;
        for (const test::SyncSpan& span : track(report, "DX").spans)
            spans.push_back(span.first + "-" + span.last + " " + span.source);
        return spans;
    }

    // From host time `at` on, the conformed DX plays its sound a frame
    // early: the event across `at` split there, the rest slipped.
    void slipFrom(const ConformRequest& conform, double at)
    {
        test::alterSession(conform.outputPath, [&](sim::SimProject& project) {
            sim::SimObject& dx = *project.findTrack(u"DX");
            for (const auto& event : dx.children()) {
                sim::SimObject::Fields head = event->get();
                if (!(head.start < at && at < head.end))
                    continue;
                Kelmar::IPtr<sim::SimObject> rest = event->cloneTree();
                sim::SimObject::Fields tail = head;
                tail.start = at;
                tail.offset += at - head.start + 0.04;
                head.end = at;
                event->setFields(head);
                rest->setFields(tail);
                dx.appendChild(rest);
                return;
            }
            ADD_FAILURE() << "no DX event across " << at;
        });
    }

    util::StringConverter converter;
    util::ScopedStringConverter converterScope{converter};
};

const std::string wholeTake = R"({"kind": "audio", "name": "take", "start": 0.0, "end": 16.0, "file": "dx.wav"})";

TEST_F(HandMadeConformTest, FreezeIsJudgedFrameByFrameFromItsFirstFrame)
{
    // A freeze of 180 frames between two shots, 150 frames in one New cut
    // and 200 in another.
    const std::string old = cut("old", {"001  A001  V  C        10:00:00:00 10:00:04:00 01:00:00:00 01:00:04:00",
                                        "002  B001  V  C        10:00:00:00 10:00:00:01 01:00:04:00 01:00:11:05",
                                        "003  C001  V  C        10:00:00:00 10:00:04:00 01:00:11:05 01:00:15:05"});
    const std::string shorter = cut("shorter", {"001  A001  V  C        10:00:00:00 10:00:04:00 01:00:00:00 01:00:04:00",
                                                "002  B001  V  C        10:00:00:00 10:00:00:01 01:00:04:00 01:00:10:00",
                                                "003  C001  V  C        10:00:00:00 10:00:04:00 01:00:10:00 01:00:14:00"});
    const std::string longer = cut("longer", {"001  A001  V  C        10:00:00:00 10:00:04:00 01:00:00:00 01:00:04:00",
                                              "002  B001  V  C        10:00:00:00 10:00:00:01 01:00:04:00 01:00:12:00",
                                              "003  C001  V  C        10:00:00:00 10:00:04:00 01:00:12:00 01:00:16:00"});

    const ConformRequest toShorter = request(wholeTake, {old}, {shorter});
    expectInSync(toShorter, 350, 0);
    // The last 20 frames of the longer freeze were never played under it.
    expectInSync(request(wholeTake, {old}, {longer}), 380, 20);

    // The freeze's sound a frame early in the shorter cut, from its 50th frame.
    EXPECT_EQ(slippedSpans(toShorter, 6.0), std::vector<std::string>{"01:00:06:00-01:00:09:24 B001 10:00:00:00"});
}

TEST_F(HandMadeConformTest, DissolveFramesAreJudgedOnlyUnderTheSameTransition)
{
    // B001 comes in with the dissolve at `at` and gives way to C001 at `end`.
    const auto reel = [&](const std::string& name, const std::string& dissolve, const std::string& at,
                          const std::string& end, const std::string& last) {
        const std::string outgoingEnd = "10:" + at.substr(3);
        return cut(name, {"001  A001  V  C        10:00:00:00 " + outgoingEnd + " 01:00:00:00 " + at,
                          "002  A001  V  C        " + outgoingEnd + " " + outgoingEnd + " " + at + " " + at,
                          "002  B001  V  D    " + dissolve + " 10:00:00:00 10:00:04:00 " + at + " " + end,
                          "003  C001  V  C        10:00:00:00 10:00:04:00 " + end + " " + last});
    };
    const std::string old = reel("old", "025", "01:00:04:00", "01:00:08:00", "01:00:12:00");

    // The dissolve twice as long: its 50 clean frames are judged like any
    // other, the 50 under it are not.
    const ConformRequest longer =
        request(wholeTake, {old}, {reel("longer", "050", "01:00:04:00", "01:00:08:00", "01:00:12:00")});
    expectInSync(longer, 250, 50);
    // The same dissolve from an outgoing shot trimmed by 10 frames: what lies
    // under it is another mixture.
    expectInSync(request(wholeTake, {old}, {reel("outgoing", "025", "01:00:03:15", "01:00:07:15", "01:00:11:15")}),
                 265, 25);

    // A one-frame slip in the clean frames of the longer dissolve's shot, on
    // to the end of the take.
    EXPECT_EQ(slippedSpans(longer, 7.0), (std::vector<std::string>{"01:00:07:00-01:00:07:24 B001 10:00:03:00",
                                                                   "01:00:08:00-01:00:11:24 C001 10:00:00:00"}));
}

TEST_F(HandMadeConformTest, OverhangMayLeaveOutTheShortBitOfALowerLayer)
{
    // DX: a long take on top of a lower one that begins 7 frames before the
    // cut at 8 s. At that cut the snippet rule sees the lower one: its 7
    // frames go with the rest of it, and the take above is silent there.
    const std::string events = R"({"kind": "audio", "name": "lower", "start": 7.72, "end": 14.0, "file": "lower.wav"},)"
                               R"({"kind": "audio", "name": "take", "start": 0.0, "end": 13.0, "file": "dx.wav"})";
    const std::string old = cut("old", {"001  A001  V  C        10:00:00:00 10:00:04:00 01:00:00:00 01:00:04:00",
                                        "002  B001  V  C        10:00:00:00 10:00:04:00 01:00:04:00 01:00:08:00",
                                        "003  C001  V  C        10:00:00:00 10:00:04:00 01:00:08:00 01:00:12:00"});
    const std::string swapped = cut("new", {"001  A001  V  C        10:00:00:00 10:00:04:00 01:00:00:00 01:00:04:00",
                                            "002  C001  V  C        10:00:00:00 10:00:04:00 01:00:04:00 01:00:08:00",
                                            "003  B001  V  C        10:00:00:00 10:00:04:00 01:00:08:00 01:00:12:00"});
    const AuditReport report = conformAndVerify(request(events, {old}, {swapped}, 12));
    EXPECT_TRUE(report.inSync()) << test::describe(report);
    EXPECT_GE(track(report, "DX").changedAtCuts, 7u);
}

TEST_F(HandMadeConformTest, StretchBetweenTwoNewReelsIsNoPicture)
{
    const std::string old = cut("old", {"001  A001  V  C        10:00:00:00 10:00:04:00 01:00:00:00 01:00:04:00",
                                        "002  B001  V  C        10:00:00:00 10:00:04:00 01:00:04:00 01:00:08:00"});
    const std::string first = cut("reel1", {"001  A001  V  C        10:00:00:00 10:00:04:00 01:00:00:00 01:00:04:00"});
    const std::string second = cut("reel2", {"001  B001  V  C        10:00:00:00 10:00:04:00 02:00:00:00 02:00:04:00"});
    const AuditReport report = conformAndVerify(request(wholeTake, {old}, {first, second}));
    EXPECT_TRUE(report.inSync()) << test::describe(report);
    EXPECT_EQ(report.newCutFrames, 200u);
    EXPECT_TRUE(report.newPicture.empty());
    EXPECT_EQ(track(report, "DX").newPicture, 0u);
    EXPECT_EQ(track(report, "DX").inSync, 200u);
}

} // namespace
} // namespace montala::run
