// The change report on small hand-made re-cuts at 25 fps: for each fate,
// the row a person would write down with the two EDLs side by side.

#include "../ChangeEdlFixture.h"

#include "core/generation/ChangeEdlGenerator.h"
#include "core/generation/HealProcessing.h"
#include "core/report/ChangeReport.h"

#include <gtest/gtest.h>

namespace montala::core::report {
namespace {

class ChangeReportTest : public test::ChangeEdlFixture {
protected:
    static EventPtr shot(int number, const std::string& roll, const char* srcIn, const char* srcOut, const char* dstIn,
                         const char* dstOut, const std::string& clip = "")
    {
        EventPtr e = event(roll, srcIn, srcOut, dstIn, dstOut, number);
        e->setClipName(clip);
        return e;
    }

    // Generates and heals the Change EDL as the window does, then reports.
    ChangeReport report(const std::vector<EventPtr>& oldEvents, const std::vector<EventPtr>& newEvents,
                        const ReportOptions& options = {})
    {
        oldList = list(EventList::OldKind, oldEvents);
        newList = list(EventList::NewKind, newEvents);
        Settings settings;
        settings.setMatchName(options.matchName);
        for (size_t index = 0; index < options.vfxPatterns.size(); ++index)
            settings.setVfxPattern(options.vfxPatterns[index], index);
        ChangeEdlGenerator generator;
        generator.configure(settings.getMatchName(), settings.getVfxPatterns());
        generator.generate(oldList, newList, changes);
        EventListAlgorithm::Context context{&newList, &settings, provider.getFramerate()};
        HealProcessing().process(changes, context);
        return ChangeReportBuilder().build(oldList, newList, changes, options, provider.getFramerate());
    }

    // "fate old new offset oldDur newDur [change] detail" of one row.
    static std::string row(const ChangeReport& report, size_t index)
    {
        const ShotRow& r = report.rows.at(index);
        std::string text = std::string(fateName(r.fate)) + " old " + (r.hasOld ? std::to_string(r.oldEvent) : "-") +
                           " new " + (r.hasNew ? std::to_string(r.newEvent) : "-");
        if (r.hasOffset)
            text += " offset " + report.signedTimecode(r.offset);
        text += " dur " + std::to_string(r.oldDuration()) + "/" + std::to_string(r.newDuration()) + " [";
        for (const ChangeRef& ref : r.carriedBy)
            text += std::to_string(ref.event) + "." + std::to_string(ref.part) + " ";
        return text + "]" + (r.detail.empty() ? "" : " " + r.detail);
    }

    static std::vector<std::string> rows(const ChangeReport& report)
    {
        std::vector<std::string> lines;
        for (size_t index = 0; index < report.rows.size(); ++index)
            lines.push_back(row(report, index));
        return lines;
    }

    static std::vector<std::string> gaps(const ChangeReport& report)
    {
        std::vector<std::string> lines;
        for (const NeedsSound& gap : report.needsSound)
            lines.push_back(report.timecode(gap.in) + "-" + report.timecode(gap.out) + " " +
                            gapReasonName(gap.reason));
        return lines;
    }

    EventList oldList{EventList::OldKind};
    EventList newList{EventList::NewKind};
    EventList changes{EventList::ChangeKind};
};

using Lines = std::vector<std::string>;

TEST_F(ChangeReportTest, NamesWhatBecameOfShotsThatKeepTheirPicture)
{
    // Old: A 4 s, B 2 s, C 10 s. New: B first, then A, then C trimmed by 12
    // frames at the head and 8 at the tail.
    const ChangeReport r = report(
        {shot(1, "A", "01:00:00:00", "01:00:04:00", "10:00:00:00", "10:00:04:00"),
         shot(2, "B", "02:00:00:00", "02:00:02:00", "10:00:04:00", "10:00:06:00"),
         shot(3, "C", "03:00:00:00", "03:00:10:00", "10:00:06:00", "10:00:16:00"),
         shot(4, "D", "04:00:00:00", "04:00:02:00", "10:00:16:00", "10:00:18:00")},
        {shot(1, "B", "02:00:00:00", "02:00:02:00", "10:00:00:00", "10:00:02:00"),
         shot(2, "A", "01:00:00:00", "01:00:04:00", "10:00:02:00", "10:00:06:00"),
         shot(3, "C", "03:00:00:12", "03:00:09:17", "10:00:06:00", "10:00:15:05"),
         shot(4, "D", "04:00:00:00", "04:00:02:00", "10:00:16:00", "10:00:18:00")});
    EXPECT_EQ(rows(r), (Lines{
                           "moved old 2 new 1 offset -00:00:04:00 dur 50/50 [1.0 ]",
                           "moved old 1 new 2 offset +00:00:02:00 dur 100/100 [2.0 ]",
                           "trimmed old 3 new 3 offset -00:00:00:12 dur 250/230 [3.0 ] 12 off the head, 8 off the tail",
                           "unchanged old 4 new 4 offset +00:00:00:00 dur 50/50 [4.0 ]",
                       }));
    EXPECT_TRUE(r.needsSound.empty());
    EXPECT_EQ(r.droppedFrames, 20);
}

TEST_F(ChangeReportTest, SplitInsertExtendAndDeleteLeaveTheRightStretchesWithoutSound)
{
    // Old A is cut in two around an insert of C; Old B is gone; D now
    // starts a second earlier in its source.
    const ChangeReport r = report(
        {shot(1, "A", "01:00:00:00", "01:00:10:00", "10:00:00:00", "10:00:10:00"),
         shot(2, "B", "02:00:00:00", "02:00:03:00", "10:00:10:00", "10:00:13:00"),
         shot(3, "D", "04:00:02:00", "04:00:06:00", "10:00:13:00", "10:00:17:00")},
        {shot(1, "A", "01:00:00:00", "01:00:04:00", "10:00:00:00", "10:00:04:00"),
         shot(2, "C", "05:00:00:00", "05:00:02:00", "10:00:04:00", "10:00:06:00"),
         shot(3, "A", "01:00:04:00", "01:00:10:00", "10:00:06:00", "10:00:12:00"),
         shot(4, "D", "04:00:01:00", "04:00:06:00", "10:00:12:00", "10:00:17:00")});
    EXPECT_EQ(rows(r), (Lines{
                           "split old 1 new 1 offset +00:00:00:00 dur 250/100 [1.0 ] one of 2 places of Old 001",
                           "inserted old - new 2 dur 0/50 []",
                           "split old 1 new 3 offset +00:00:02:00 dur 250/150 [2.0 ] one of 2 places of Old 001",
                           "extended old 3 new 4 offset +00:00:00:00 dur 100/125 [3.0 ] 25 more at the head",
                           "deleted old 2 new - dur 75/0 []",
                       }));
    EXPECT_EQ(gaps(r), (Lines{"10:00:04:00-10:00:06:00 new-material", "10:00:12:00-10:00:13:00 handles"}));
    EXPECT_EQ(r.newFrames, 425);
    EXPECT_EQ(r.coveredFrames + r.needsSoundFrames, r.newFrames);
    EXPECT_EQ(r.droppedFrames, 75);
}

TEST_F(ChangeReportTest, SaysWhyPictureTheOldCutHadIsNotMatched)
{
    EventPtr oldDissolve = shot(2, "B", "02:00:00:00", "02:00:04:00", "10:00:04:00", "10:00:08:00");
    oldDissolve->setTransitionType(EventBase::Dissolve);
    oldDissolve->setTransitionDuration(25);
    EventPtr newDissolve = shot(3, "B", "02:00:00:00", "02:00:04:00", "10:00:06:00", "10:00:10:00");
    newDissolve->setTransitionType(EventBase::Dissolve);
    newDissolve->setTransitionDuration(50);
    const ChangeReport r = report(
        {shot(1, "A", "01:00:00:00", "01:00:04:00", "10:00:00:00", "10:00:04:00"), oldDissolve,
         shot(3, "E", "03:00:00:00", "03:00:04:00", "10:00:08:00", "10:00:12:00"),
         shot(4, "SH010V01", "06:00:00:00", "06:00:04:00", "10:00:12:00", "10:00:16:00")},
        {shot(1, "A", "01:00:00:00", "01:00:04:00", "10:00:00:00", "10:00:04:00"),
         // the last frame of A held for two seconds
         shot(2, "A", "01:00:03:24", "01:00:04:00", "10:00:04:00", "10:00:06:00"),
         // the dissolve into B lengthened from 25 to 50 frames
         newDissolve,
         // E at half speed: two seconds of source over four
         shot(4, "E", "03:00:00:00", "03:00:02:00", "10:00:10:00", "10:00:14:00"),
         // a new version of the VFX shot
         shot(5, "SH010V02", "06:00:00:00", "06:00:04:00", "10:00:14:00", "10:00:18:00")});
    EXPECT_EQ(rows(r), (Lines{
                           "unchanged old 1 new 1 offset +00:00:00:00 dur 100/100 [1.0 ]",
                           "frozen old 1 new 2 offset +00:00:00:01 dur 100/50 [] a frame of Old 001 held for 50 frames",
                           "transition-changed old 2 new 3 offset +00:00:02:00 dur 100/100 [2.0 ] dissolve 25 to "
                           "dissolve 50",
                           "speed-changed old 3 new 4 offset +00:00:02:00 dur 100/100 [] 100 % to 50 %",
                           "vfx-version old 4 new 5 offset +00:00:02:00 dur 100/100 [] SH010V01 to SH010V02",
                       }));
    EXPECT_EQ(gaps(r), (Lines{
                           "10:00:04:00-10:00:06:00 frozen",
                           "10:00:06:00-10:00:08:00 transition-changed",
                           "10:00:10:00-10:00:14:00 speed-changed",
                           "10:00:14:00-10:00:18:00 vfx-pattern",
                       }));
    ASSERT_EQ(r.suggestions.size(), 1u);
    EXPECT_EQ(r.suggestions[0].option, "--vfx SH***V:");

    // With the pattern set, the VFX shot is carried and needs no sound.
    ReportOptions withPattern;
    withPattern.vfxPatterns = {VfxPatternEntry(r.suggestions[0].option.substr(6, 6), "", true)};
    const ChangeReport matched =
        report({shot(4, "SH010V01", "06:00:00:00", "06:00:04:00", "10:00:12:00", "10:00:16:00")},
               {shot(5, "SH010V02", "06:00:00:00", "06:00:04:00", "10:00:14:00", "10:00:18:00")}, withPattern);
    EXPECT_EQ(rows(matched),
              (Lines{"vfx-version old 4 new 5 offset +00:00:02:00 dur 100/100 [1.0 ] SH010V01 to SH010V02"}));
    EXPECT_TRUE(matched.needsSound.empty());
    EXPECT_TRUE(matched.suggestions.empty());
}

TEST_F(ChangeReportTest, FindsAnotherTakeInPlaceOfAGoneOneAndARenamedRoll)
{
    const ChangeReport r = report(
        {shot(1, "A", "01:00:00:00", "01:00:04:00", "10:00:00:00", "10:00:04:00", "SC1_T1"),
         shot(2, "B", "02:00:00:00", "02:00:03:00", "10:00:04:00", "10:00:07:00", "SC2_T3"),
         shot(3, "A", "01:00:10:00", "01:00:14:00", "10:00:07:00", "10:00:11:00", "SC3_T2"),
         shot(4, "K001", "07:00:00:00", "07:00:02:00", "10:00:11:00", "10:00:13:00", "K_C1.mov"),
         shot(5, "K001", "07:00:10:00", "07:00:12:00", "10:00:13:00", "10:00:15:00", "K_C2.mov")},
        {shot(1, "A", "01:00:00:00", "01:00:04:00", "10:00:00:00", "10:00:04:00", "SC1_T1"),
         shot(2, "B", "02:10:00:00", "02:10:03:00", "10:00:04:00", "10:00:07:00", "SC2_T4"),
         shot(3, "A", "01:00:10:00", "01:00:14:00", "10:00:07:00", "10:00:11:00", "SC3_T2"),
         shot(4, "K001X", "07:00:00:00", "07:00:02:00", "10:00:11:00", "10:00:13:00", "K_C1.mov"),
         shot(5, "K001X", "07:00:10:00", "07:00:12:00", "10:00:13:00", "10:00:15:00", "K_C2.mov")});
    EXPECT_EQ(rows(r), (Lines{
                           "unchanged old 1 new 1 offset +00:00:00:00 dur 100/100 [1.0 ]",
                           "replaced-take old 2 new 2 dur 75/75 [] SC2_T4 in place of SC2_T3",
                           "unchanged old 3 new 3 offset +00:00:00:00 dur 100/100 [2.0 ]",
                           "unmatched old 4 new 4 offset +00:00:00:00 dur 50/50 [] the Old cut has this picture "
                           "under roll K001 (Old 004)",
                           "unmatched old 5 new 5 offset +00:00:00:00 dur 50/50 [] the Old cut has this picture "
                           "under roll K001 (Old 005)",
                       }));
    ASSERT_EQ(r.suggestions.size(), 1u);
    EXPECT_EQ(r.suggestions[0].option, "--match clip");
    EXPECT_EQ(r.count(Fate::Deleted), 0);
}

TEST_F(ChangeReportTest, ReportsChangeEventsThatClaimTheSameNewFramesAndNamesHealedParts)
{
    oldList = list(EventList::OldKind, {shot(1, "A", "01:00:00:00", "01:00:08:00", "10:00:00:00", "10:00:08:00")});
    newList = list(EventList::NewKind, {shot(1, "A", "01:00:00:00", "01:00:08:00", "10:00:00:00", "10:00:08:00")});
    // Edited by hand: the first event's source a frame longer than its
    // record, so the second starts a frame inside it.
    changes.addEvent(shot(1, "A", "10:00:00:00", "10:00:04:01", "10:00:00:00", "10:00:04:01"));
    changes.addEvent(shot(2, "A", "10:00:04:00", "10:00:08:00", "10:00:04:00", "10:00:08:00"));
    const ChangeReport r = ChangeReportBuilder().build(oldList, newList, changes, {}, provider.getFramerate());
    ASSERT_EQ(r.overlaps.size(), 1u);
    EXPECT_EQ(r.timecode(r.overlaps[0].in), "10:00:04:00");
    EXPECT_EQ(r.overlaps[0].out - r.overlaps[0].in, 1);
    EXPECT_EQ(r.overlaps[0].second, 2);
    EXPECT_EQ(r.coveredFrames, 200);

    // Healed, the two halves of a moved shot are parts 1 and 2 of event 1.
    const ChangeReport healed =
        report({shot(1, "A", "01:00:00:00", "01:00:04:00", "10:00:00:00", "10:00:04:00"),
                shot(2, "A", "01:00:04:00", "01:00:08:00", "10:00:04:00", "10:00:08:00")},
               {shot(1, "A", "01:00:00:00", "01:00:08:00", "10:00:00:00", "10:00:08:00")});
    EXPECT_EQ(rows(healed), (Lines{"unchanged old 1 new 1 offset +00:00:00:00 dur 100/200 [1.1 1.2 ]"}));
}

TEST_F(ChangeReportTest, SummarySaysCountsCoveredNeedsSoundAndDropped)
{
    const ChangeReport r =
        report({shot(1, "A", "01:00:00:00", "01:00:04:00", "10:00:00:00", "10:00:04:00"),
                shot(2, "B", "02:00:00:00", "02:00:02:00", "10:00:04:00", "10:00:06:00")},
               {shot(1, "A", "01:00:00:00", "01:00:04:00", "10:00:00:00", "10:00:04:00"),
                shot(2, "C", "05:00:00:00", "05:00:01:00", "10:00:04:00", "10:00:05:00")});
    EXPECT_EQ(r.summary(),
              "2 New shots: 1 unchanged, 1 inserted; 1 Old shot deleted. The Change EDL carries 00:00:04:00 (100 "
              "frames) of the New cut's 00:00:05:00; 00:00:01:00 (25 frames) in 1 stretch needs sound. 00:00:02:00 "
              "(50 frames) of the Old cut's 00:00:06:00 is dropped.");
}

} // namespace
} // namespace montala::core::report
