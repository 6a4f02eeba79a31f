#include "support/ModelFixture.h"

#include "core/events/EdlLoader.h"
#include "core/events/EventList.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <unistd.h>

using namespace montala::core;
using montala::test::ModelFixture;
using montala::util::Result;
namespace fs = std::filesystem;

namespace {

class EdlLoaderTest : public ModelFixture {
protected:
    EdlLoaderTest()
    {
        folder = fs::temp_directory_path() / ("montala-loader-" + std::to_string(::getpid()) + "-" +
                                              ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(folder);
        fs::create_directories(folder);
    }
    ~EdlLoaderTest() override { fs::remove_all(folder); }

    std::string write(const std::string& name, const std::string& text) const
    {
        const fs::path path = folder / name;
        std::ofstream(path, std::ios::binary) << text;
        return path.string();
    }

    fs::path folder;
};

// Drop frame, with a timecode (frame 00 of minute 1) that exists only
// without it.
const char* const dropFrameReel = "FCM: DROP FRAME\n"
                                  "001  A001 V C 01:00:59;20 01:01:00;10 10:00:00;00 10:00:00;20\n"
                                  "002  A001 V C 01:01:00;00 01:01:00;10 10:00:00;20 10:00:01;00\n";
const char* const reel25 = "FCM: NON-DROP FRAME\n"
                           "001  A001 V C 01:00:00:00 01:00:04:24 10:00:00:00 10:00:04:24\n"
                           "002  A001B V C 01:00:05:00 01:00:06:00 10:00:04:24 10:00:05:24\n";

} // namespace

TEST_F(EdlLoaderTest, FirstReadableFileSuggestsTheRateAndIsReadOnlyOnce)
{
    const std::string first = write("first.edl", dropFrameReel);
    const std::string second = write("second.edl", reel25);
    EdlLoader loader({(folder / "missing.edl").string(), first, second}, EdlLoadOptions{});
    const RateSuggestion suggestion = loader.suggestProjectRate();
    ASSERT_TRUE(suggestion.rate.has_value());
    EXPECT_EQ(*suggestion.rate, Framerate(30, true, 1)) << "drop frame means 29.97 drop frame";
    EXPECT_EQ(suggestion.path, first);
    EXPECT_FALSE(suggestion.dropModeAssumed);

    // The file suggestProjectRate read is built, not read again: a change
    // on disk meanwhile is not seen.
    write("first.edl", "TITLE: CHANGED\n");
    setRate(30, 1, true);
    EventList list(EventList::OldKind);
    std::vector<EdlFileReport> reports;
    EXPECT_FALSE(loader.loadAll(list, reports));
    ASSERT_EQ(reports.size(), 3u);
    EXPECT_FALSE(reports[0].opened);
    EXPECT_EQ(reports[0].parse.openFailure, fileio::OpenFailure::Missing);
    EXPECT_EQ(reports[1].events, 2u);
    ASSERT_EQ(list.getSize(), 4u);
    // Judged at the rate set after the suggestion.
    EXPECT_FALSE(list.getEvent(0)->hasState(EventState::InvalidTimecode));
    EXPECT_TRUE(list.getEvent(1)->hasState(EventState::InvalidTimecode));
    EXPECT_TRUE(reports[1].timecodesOffRate);
    EXPECT_FALSE(reports[1].rateMismatch);
    EXPECT_TRUE(reports[2].rateMismatch) << "25 fps against 29.97 drop frame";
    // B-roll renaming looks at one file at a time.
    EXPECT_EQ(list.getEvent(3)->getRollName(), "A001");
}

TEST_F(EdlLoaderTest, SuggestionsWithoutARate)
{
    const std::string noFcm = write("nofcm.edl", "001 A V C 10:00:00:00 10:00:00:29 01:00:00:00 01:00:00:29\n");
    RateSuggestion suggestion = EdlLoader({noFcm}, {}).suggestProjectRate();
    ASSERT_TRUE(suggestion.rate.has_value());
    EXPECT_EQ(*suggestion.rate, Framerate(30, 0));
    EXPECT_TRUE(suggestion.dropModeAssumed);

    const std::string empty = write("empty.edl", "TITLE: NOTHING\nFCM: NON-DROP FRAME\n");
    suggestion = EdlLoader({empty, noFcm}, {}).suggestProjectRate();
    EXPECT_FALSE(suggestion.rate.has_value()) << "the first readable file decides, even when it says nothing";
    EXPECT_EQ(suggestion.path, empty);

    suggestion = EdlLoader({(folder / "gone.edl").string(), folder.string()}, {}).suggestProjectRate();
    EXPECT_FALSE(suggestion.rate.has_value());
    EXPECT_EQ(suggestion.path, "") << "no file could be read";
}

TEST_F(EdlLoaderTest, ReportTellsWhatBecameOfEachFile)
{
    const std::string hostile = write("hostile.edl", "TITLE: X\n"
                                                     "-1 A V C 01:00:00:00 01:00:01:00 01:00:00:00 01:00:01:00\n"
                                                     "1 A+B A C 01:00:00:00 01:00:01:12 01:00:00:00 01:00:01:12\n"
                                                     "* FROM CLIP NAME: caf\xE9.mov\n");
    EdlLoadOptions options;
    options.renameBRolls = false;
    EdlLoader loader({hostile, folder.string(), std::string("bad\xFFpath.edl")}, options);
    EventList list(EventList::NewKind);
    const EdlFileReport report = loader.load(0, list);
    EXPECT_TRUE(report.opened);
    EXPECT_EQ(report.fileName, "hostile.edl");
    EXPECT_EQ(report.events, 1u);
    EXPECT_TRUE(report.noValidEntries) << "its one event has format errors";
    EXPECT_EQ(report.suggestedRate.getFps(), 24);
    EXPECT_TRUE(report.rateMismatch) << "24 against the fixture's 25";
    EXPECT_EQ(report.parse.lines, (std::vector<fileio::LineNote>{{2, fileio::LineIssue::SignedEventNumber},
                                                                {4, fileio::LineIssue::Windows1252}}));
    EXPECT_EQ(list.getEvent(0)->getClipName(), "caf\xC3\xA9.mov");

    const EdlFileReport folderReport = loader.load(1, list);
    EXPECT_FALSE(folderReport.opened);
    EXPECT_EQ(folderReport.result, Result::FileNotOpened);
    EXPECT_EQ(folderReport.parse.openFailure, fileio::OpenFailure::Directory);
    const EdlFileReport badPath = loader.load(2, list);
    EXPECT_EQ(badPath.parse.openFailure, fileio::OpenFailure::PathNotUtf8);
    EXPECT_EQ(list.getSize(), 1u) << "a file that cannot be read adds nothing";
}
