// The change report of real cuts: the sample reels, whose README gives the
// record map a person worked out, and the corpus, where every New frame must
// be carried or need sound, once.

#include "support/ModelFixture.h"

#include "core/model/DataModel.h"
#include "core/fileio/CmxParser.h"
#include "core/report/ChangeReport.h"
#include "util/StringUtil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>

namespace montala::core::report {
namespace {

using util::Result;

class SampleReportTest : public test::ModelFixture {
protected:
    // Loads a reel as the window does and reports on the generated,
    // healed Change EDL.
    ChangeReport reportOf(const std::string& reel, int fps, int dropMode)
    {
        setRate(fps, dropMode);
        const std::string folder = std::string(MONTALA_SOURCE_DIR) + "/samples/edl/" + reel + "/";
        Framerate suggested;
        model.getOldList().loadEdl(util::StringUtil::fromUtf8(folder + "old.edl"), false, suggested, true, false);
        model.getNewList().loadEdl(util::StringUtil::fromUtf8(folder + "new.edl"), false, suggested, true, false);
        EXPECT_EQ(model.generateChangeEdl(), Result::Ok);
        return ChangeReportBuilder().build(model, provider.getFramerate());
    }

    // A run of New events with one fate and offset: a row of the README's
    // record map.
    struct MapRow {
        int first;
        int last;
        const char* fate;
        int offset;
    };

    static void expectMap(const ChangeReport& report, const std::vector<MapRow>& map)
    {
        for (const MapRow& expected : map) {
            for (int number = expected.first; number <= expected.last; ++number) {
                SCOPED_TRACE("New " + std::to_string(number));
                const auto row = std::find_if(report.rows.begin(), report.rows.end(), [&](const ShotRow& r) {
                    return r.hasNew && r.newEvent == number;
                });
                ASSERT_NE(row, report.rows.end());
                EXPECT_STREQ(fateName(row->fate), expected.fate);
                if (row->fate != Fate::Inserted) {
                    EXPECT_EQ(row->offset, expected.offset);
                }
            }
        }
    }

    DataModel model;
};

TEST_F(SampleReportTest, ShortFilmAt25FpsGivesTheReadmesRecordMapAndItsHoles)
{
    const ChangeReport report = reportOf("short-film-25", 25, 0);
    expectMap(report, {{1, 11, "unchanged", 0},
                       {12, 12, "trimmed", -12},
                       {13, 18, "moved", -20},
                       {19, 19, "inserted", 0},
                       {20, 27, "moved", 48},
                       {28, 35, "moved", -2673},
                       {36, 47, "moved", 849},
                       {48, 48, "frozen", 850}, // the last frame of Old 038, 01:02:53:02
                       {49, 53, "moved", 899},
                       {54, 54, "vfx-version", 899},
                       {55, 56, "moved", 899},
                       {57, 59, "moved", 785},
                       {60, 65, "moved", -16},
                       {66, 66, "speed-changed", -16},
                       {67, 73, "moved", -16},
                       {74, 74, "transition-changed", -16},
                       {75, 81, "moved", -16}});
    const ShotRow& trimmed = report.rows[11];
    EXPECT_EQ(trimmed.detail, "12 off the head, 8 off the tail");
    EXPECT_EQ(trimmed.oldDuration(), 118);
    EXPECT_EQ(trimmed.newDuration(), 98);

    // The one deleted shot, A004, comes after the New shots.
    ASSERT_EQ(report.count(Fate::Deleted), 1);
    EXPECT_EQ(report.rows.back().oldEvent, 47);
    EXPECT_EQ(report.rows.back().oldDuration(), 114);

    // The README's three holes, the insert, and the VFX shot that no
    // pattern matches; with the pattern it would be carried.
    std::vector<std::string> spans;
    for (const NeedsSound& gap : report.needsSound)
        spans.push_back(report.timecode(gap.in) + "-" + report.timecode(gap.out) + " " + gapReasonName(gap.reason));
    EXPECT_EQ(spans, (std::vector<std::string>{"01:01:22:09-01:01:25:02 new-material",
                                               "01:03:27:02-01:03:29:02 frozen",
                                               "01:03:47:01-01:03:51:13 vfx-pattern",
                                               "01:04:42:11-01:04:46:07 speed-changed",
                                               "01:05:12:08-01:05:14:08 transition-changed"}));
    EXPECT_EQ(report.needsSoundFrames, 68 + 50 + 112 + 96 + 50);
    EXPECT_EQ(report.newFrames, 8984);
    EXPECT_EQ(report.coveredFrames, 8984 - report.needsSoundFrames);
    ASSERT_EQ(report.suggestions.size(), 1u);
    EXPECT_EQ(report.suggestions[0].option, "--vfx SH***V:");
    EXPECT_TRUE(report.overlaps.empty());
}

TEST_F(SampleReportTest, ShortFilmAt2997DropFrameGivesTheReadmesRecordMap)
{
    const ChangeReport report = reportOf("short-film-2997df", 30, 1);
    expectMap(report, {{1, 3, "unchanged", 0},
                       {4, 4, "moved", -1583},
                       {5, 5, "moved", 99},
                       {6, 6, "trimmed", 99},
                       {7, 10, "moved", 84},
                       {11, 16, "moved", 5},
                       {17, 19, "moved", -94}});
    EXPECT_EQ(report.rows[5].detail, "15 off the tail");
    ASSERT_EQ(report.count(Fate::Deleted), 1);
    EXPECT_EQ(report.rows.back().oldEvent, 10);
    EXPECT_TRUE(report.needsSound.empty());
    EXPECT_EQ(report.droppedFrames, 15 + 79);
}

// Every cut of the corpus against itself and against the next file (the
// successive versions of a reel lie side by side): no crash, the same fates
// each time, and each New frame is carried or needs sound, exactly once.
TEST_F(SampleReportTest, CorpusCutsAccountForEveryNewFrameOnce)
{
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(MONTALA_CORPUS_DIR))
        if (entry.is_regular_file() && entry.path().extension() != ".md")
            files.push_back(entry.path().string());
    std::sort(files.begin(), files.end());
    ASSERT_GT(files.size(), 10u);
    int reports = 0;
    for (size_t i = 0; i < files.size(); ++i) {
        for (const std::string& next : {files[i], files[(i + 1) % files.size()]}) {
            SCOPED_TRACE(files[i] + " -> " + next);
            DataModel pair;
            Framerate rate;
            if (fileio::parseEdlFile(converter.fromUtf8(files[i]), pair.getOldList(), rate, false) != Result::Ok)
                continue;
            provider.setFramerate(rate.isUndefined() ? Framerate(25, 0) : rate);
            if (fileio::parseEdlFile(converter.fromUtf8(next), pair.getNewList(), rate, false) != Result::Ok)
                continue;
            pair.revalidateAll();
            if (pair.generateChangeEdl() != Result::Ok)
                continue; // the generation's own tests cover its refusals
            const ChangeReport report = ChangeReportBuilder().build(pair, provider.getFramerate());
            ++reports;
            // Stable: the same cuts give the same fates, row for row.
            const ChangeReport again = ChangeReportBuilder().build(pair, provider.getFramerate());
            ASSERT_EQ(again.rows.size(), report.rows.size());
            for (size_t row = 0; row < report.rows.size(); ++row)
                EXPECT_EQ(again.rows[row].fate, report.rows[row].fate) << "row " << row;

            // The New picture frame by frame, counted here from the events.
            std::set<int> picture, covered, needing;
            const Framerate fr = provider.getFramerate();
            const auto frames = [&fr](const EventList& list, std::set<int>& into) {
                for (const EventPtr& e : list.getEvents()) {
                    const Timecode& in = e->getDstIn();
                    const Timecode& out = e->getDstOut();
                    if (in.isValid(fr) && out.isValid(fr) && in.getFrames() < fr.fps && out.getFrames() < fr.fps)
                        for (int f = in.toFrames(fr); f < out.toFrames(fr); ++f)
                            into.insert(f);
                }
            };
            frames(pair.getNewList(), picture);
            frames(pair.getChangeList(), covered);
            for (const NeedsSound& gap : report.needsSound) {
                for (int f = gap.in; f < gap.out; ++f) {
                    EXPECT_TRUE(needing.insert(f).second) << "frame " << f << " needs sound twice";
                    EXPECT_EQ(covered.count(f), 0u) << "frame " << f << " is carried and needs sound";
                    EXPECT_EQ(picture.count(f), 1u) << "frame " << f << " needs sound but has no picture";
                }
            }
            size_t carried = 0;
            for (int f : picture)
                carried += covered.count(f);
            EXPECT_EQ(carried + needing.size(), picture.size());
            EXPECT_EQ(report.newFrames, static_cast<int>(picture.size()));

            // Against itself a cut has no new picture and nothing re-timed.
            // (Layered EDLs that use one source many times at once do get
            // moves and splits: the rivals' pruning may pick another use.)
            if (next == files[i]) {
                for (const ShotRow& row : report.rows) {
                    EXPECT_TRUE(row.fate != Fate::Inserted && row.fate != Fate::SpeedChanged &&
                                row.fate != Fate::Frozen && row.fate != Fate::TransitionChanged)
                        << fateName(row.fate) << " New " << row.newEvent;
                }
            }
        }
    }
    EXPECT_GT(reports, 20);
}

} // namespace
} // namespace montala::core::report
