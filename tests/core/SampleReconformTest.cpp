// The sample reels under samples/edl come with the record map a correct
// Change EDL must give; generation and healing are checked against it.

#include "ChangeEdlFixture.h"

#include "core/generation/ChangeEdlGenerator.h"
#include "core/events/EventList.h"
#include "core/generation/HealProcessing.h"
#include "core/model/Settings.h"
#include "core/fileio/CmxParser.h"
#include "util/StringUtil.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace montala::core {
namespace {

using Lines = std::vector<std::string>;
using util::Result;

class SampleReconformTest : public test::ChangeEdlFixture {
protected:
    // Loads the reel's two EDLs as the Add EDLs dialog does (B-roll
    // renaming on), generates and heals with the given settings.
    EventList reconform(const std::string& reel, const Settings& settings)
    {
        EventList oldList(EventList::OldKind);
        EventList newList(EventList::NewKind);
        const std::string folder = std::string(MONTALA_SOURCE_DIR) + "/samples/edl/" + reel + "/";
        Framerate suggested;
        oldList.loadEdl(util::StringUtil::fromUtf8(folder + "old.edl"), false, suggested, true, false);
        newList.loadEdl(util::StringUtil::fromUtf8(folder + "new.edl"), false, suggested, true, false);

        ChangeEdlGenerator generator;
        generator.configure(settings.getMatchName(), settings.getVfxPatterns());
        EventList changes(EventList::ChangeKind);
        EXPECT_EQ(generator.generate(oldList, newList, changes), 0);
        EventListAlgorithm::Context context{&newList, &settings, provider.getFramerate()};
        HealProcessing().process(changes, context);
        return changes;
    }

    // "SRC old in-out DST new in-out" without the name: the record map.
    static Lines recordMap(const EventList& changes)
    {
        Lines rows;
        for (const EventPtr& e : changes.getEvents())
            rows.push_back(e->getSrcIn().toString() + "-" + e->getSrcOut().toString() + " -> "
                           + e->getDstIn().toString() + "-" + e->getDstOut().toString());
        return rows;
    }
};

TEST_F(SampleReconformTest, ShortFilmAt25FpsFollowsTheRecordMapExceptWhereTimingChanged)
{
    Settings settings;
    // The VFX shot's roll goes from SH010V01 to SH010V02: one key for both.
    settings.setVfxPattern(VfxPatternEntry("SH***V", "", true), 0);
    const EventList changes = reconform("short-film-25", settings);

    // The README's rows, healed where neighbours moved together. Three of
    // its rows stay holes here, since matching demands the same speed and
    // the same transition on both sides:
    //   048  a freeze (speed 0) of a frame that ran at speed 1 in the Old cut
    //   066  the shot slowed to 50 %
    //   074  the dissolve lengthened from 25 to 50 frames: its 50 mixed
    //        frames, 01:05:12:08-01:05:14:08, have no Change event
    // They are left to the insert markers and the user's own edits.
    EXPECT_EQ(recordMap(changes), (Lines{
        "01:00:00:00-01:00:56:22 -> 01:00:00:00-01:00:56:22",  // 001-011 same
        "01:00:57:09-01:01:01:07 -> 01:00:56:22-01:01:00:20",  // 012 trimmed
        "01:01:01:15-01:01:23:04 -> 01:01:00:20-01:01:22:09",  // 013-018 -20
        "01:01:23:04-01:01:53:17 -> 01:01:25:02-01:01:55:15",  // 020-027 after the insert
        "01:03:42:13-01:04:14:14 -> 01:01:55:15-01:02:27:16",  // 028-035 SC5 moved
        "01:01:53:17-01:02:53:03 -> 01:02:27:16-01:03:27:02",  // 036-047 with the unchanged dissolve
        "01:02:53:03-01:03:21:23 -> 01:03:29:02-01:03:57:22",  // 049-056 with the VFX version
        "01:03:26:12-01:03:42:13 -> 01:03:57:22-01:04:13:23",  // 057-059 after the delete
        "01:04:14:14-01:04:43:02 -> 01:04:13:23-01:04:42:11",  // 060-065
        "01:04:46:23-01:05:12:24 -> 01:04:46:07-01:05:12:08",  // 067-073
        "01:05:14:24-01:06:00:00 -> 01:05:14:08-01:05:59:09",  // 074 clean rest-081
    }));
    EXPECT_EQ(numbers(changes), (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));

    // Without the VFX row the new version is new picture.
    const EventList withoutVfx = reconform("short-film-25", Settings());
    EXPECT_EQ(withoutVfx.getSize(), 12u);
}

TEST_F(SampleReconformTest, ShortFilmAt2997DropFrameFollowsTheRecordMap)
{
    setRate(30, 1);
    const EventList changes = reconform("short-film-2997df", Settings());
    EXPECT_EQ(recordMap(changes), (Lines{
        "01:00:00:00-01:00:11:27 -> 01:00:00:00-01:00:11:27",  // 001-003 same
        "01:01:04:22-01:01:08:01 -> 01:00:11:27-01:00:15:06",  // 004 moved
        "01:00:11:27-01:00:21:08 -> 01:00:15:06-01:00:24:17",  // 005-006 +99
        "01:00:21:23-01:00:37:03 -> 01:00:24:17-01:00:39:27",  // 007-010 +84
        "01:00:39:22-01:01:04:22 -> 01:00:39:27-01:01:04:27",  // 011-016 +5, across 01:01:00
        "01:01:08:01-01:01:21:26 -> 01:01:04:27-01:01:18:22",  // 017-019 -94
    }));
}

TEST_F(SampleReconformTest, EdlsOfOtherToolsGenerateWithoutHarm)
{
    // Every file of the corpus against itself and against its neighbour,
    // at the rate it suggests: generation either succeeds or throws one of
    // our codes, and never places an event outside the New cut's span.
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(MONTALA_CORPUS_DIR)) {
        if (entry.is_regular_file() && entry.path().extension() != ".md")
            files.push_back(entry.path().string());
    }
    std::sort(files.begin(), files.end());
    ASSERT_GT(files.size(), 10u);

    Settings settings;
    settings.setVfxPattern(VfxPatternEntry("*_", "", true), 0);
    settings.setHealProcessing(HealProcessingMode::GapsWithInserts);
    ChangeEdlGenerator generator;
    generator.configure(settings.getMatchName(), settings.getVfxPatterns());
    int failures = 0;
    for (size_t i = 0; i < files.size(); ++i) {
        const std::string& oldFile = files[i];
        for (const std::string& newFile : {oldFile, files[(i + 1) % files.size()]}) {
            EventList oldList(EventList::OldKind);
            EventList newList(EventList::NewKind);
            Framerate rate;
            if (fileio::parseEdlFile(converter.fromUtf8(oldFile), oldList, rate, false) != Result::Ok)
                continue;
            if (!rate.isUndefined())
                provider.setFramerate(rate);
            if (fileio::parseEdlFile(converter.fromUtf8(newFile), newList, rate, false) != Result::Ok)
                continue;
            for (EventList* events : {&oldList, &newList}) {
                for (const EventPtr& e : events->getEvents())
                    e->revalidate();
            }
            EventList changes(EventList::ChangeKind);
            try {
                generator.generate(oldList, newList, changes);
                EventListAlgorithm::Context context{&newList, &settings, provider.getFramerate()};
                HealProcessing().process(changes, context);
            } catch (Result::Type code) {
                // Placements past the end of the day, and transitions whose
                // timecodes do not fit the rate or run backwards, fail the
                // run; the report says which event, in which file.
                const GenerationFailure& failure = generator.lastFailure();
                EXPECT_TRUE(code == Result::OutOfRange || code == Result::FramesAboveRate)
                    << oldFile << " -> " << newFile << ": " << Result::name(code);
                EXPECT_EQ(failure.code, code) << oldFile << " -> " << newFile;
                EXPECT_FALSE(failure.event.edlFile.empty()) << failure.describe();
                EXPECT_NE(failure.describe().find(failure.event.edlFile), std::string::npos) << failure.describe();
                ++failures;
                continue;
            }
            if (changes.getSize() == 0)
                continue;
            // A New event within 0.01 of normal speed is conformed at its
            // source length, so it may pass the New cut's end by up to 1 %.
            const TimecodeRange span = newList.getRange(EventList::Dst);
            for (const EventPtr& e : changes.getEvents()) {
                const std::string where = oldFile + " -> " + newFile + ": " + describe(*e);
                EXPECT_FALSE(e->getDstIn() < span.start) << where;
                const int over = e->getDstOut().toFrames() - span.end.toFrames();
                const int length = e->getDstOut().toFrames() - e->getDstIn().toFrames();
                EXPECT_LE(over * 100, length) << where;
            }
        }
        provider.setFramerate(Framerate(25, 0));
    }
    // The corpus holds wipes whose source runs backwards and whose record
    // does not fit the rate: they must have failed their runs.
    EXPECT_GT(failures, 0);
}

} // namespace
} // namespace montala::core
