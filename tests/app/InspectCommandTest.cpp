#include "app/CommandRunner.h"
#include "support/TempFolderTest.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <fstream>
#include <sstream>

namespace {

using montala::test::CommandRun;
using montala::test::inspect;

const char* const reel =
    "TITLE: REEL 1\nFCM: NON-DROP FRAME\n"
    "001  A001     V     C        10:00:00:00 10:00:04:00 01:00:00:00 01:00:04:00\n"
    "* FROM CLIP NAME: A001_C001.mov\n"
    "002  A001B    V     C        10:00:10:00 10:00:12:24 01:00:04:00 01:00:06:24\n"
    "003  B+1      V     C        10:00:10:00 10:00:12:00 01:00:06:24 01:00:08:24\n";

class InspectCommand : public montala::test::TempFolderTest {
protected:
    InspectCommand() : TempFolderTest("montala-inspect") {}

    std::string writeFile(const std::string& name, const std::string& text) const
    {
        std::ofstream(folder / name, std::ios::binary) << text;
        return pathOf(name);
    }
};

} // namespace

TEST_F(InspectCommand, PrintsEventsWithStatesAndCountsAndWarnsOfRateAndUnreadableFiles)
{
    const std::string path = writeFile("inspect_reel.edl", reel);
    const CommandRun run = inspect({path, "--rate", "25"});
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.out.find("inspect_reel.edl: suggests 25 fps non-drop"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("A001_C001.mov"), std::string::npos);
    EXPECT_NE(run.out.find("Roll name contains non-alphanumeric characters."), std::string::npos);
    EXPECT_NE(run.out.find("Total: 3"), std::string::npos);
    EXPECT_NE(run.out.find("Invalid: 1"), std::string::npos);
    EXPECT_EQ(run.err, "");

    const CommandRun at24 = inspect({path, "--rate", "24"});
    EXPECT_EQ(at24.status, 0);
    EXPECT_NE(at24.err.find("Frame rate mismatch between current project and loaded EDL inspect_reel.edl"),
              std::string::npos);
    EXPECT_NE(at24.err.find("Some timecodes in the loaded EDL file inspect_reel.edl do not match the current "
                            "project frame rate."),
              std::string::npos);

    // An unreadable file is reported and the others are still read.
    const CommandRun missing = inspect({"/nonexistent/missing.edl", path, "--rate", "25"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.err.find("An error occurred while loading the file. /nonexistent/missing.edl"),
              std::string::npos);
    EXPECT_NE(missing.out.find("Total: 3"), std::string::npos);
}

TEST_F(InspectCommand, JsonDocumentKeepsTheScriptInterface)
{
    const std::string path = writeFile("inspect_json.edl", reel);
    const CommandRun run = inspect({path, "--rate", "25", "--json"});
    ASSERT_EQ(run.status, 0);
    const auto document = nlohmann::json::parse(run.out);
    EXPECT_EQ(document["rate"], (nlohmann::json{{"fps", 25}, {"pulled", false}, {"dropMode", 0}}));
    EXPECT_EQ(document["files"][0]["suggestedRate"]["fps"], 25);
    EXPECT_EQ(document["files"][0]["events"], 3);
    EXPECT_EQ(document["total"], 3);
    EXPECT_EQ(document["invalid"], 1);
    const auto& second = document["events"][1];
    EXPECT_EQ(second["rollName"], "A001") << "B-roll renaming is on by default";
    EXPECT_EQ(second["srcOut"], "10:00:12:24");
    EXPECT_EQ(second["dstIn"], "01:00:04:00");
    EXPECT_EQ(second["edlFile"], "inspect_json.edl");
    EXPECT_EQ(second["transitionType"], 0);
    EXPECT_NEAR(second["motionSpeed"].template get<double>(), 1.0, 1e-9);
    EXPECT_EQ(second["states"], nlohmann::json::array());
    EXPECT_EQ(document["events"][2]["states"], (nlohmann::json{3}));

    const CommandRun kept = inspect({path, "--rate", "25", "--json", "--no-broll-renaming"});
    EXPECT_EQ(nlohmann::json::parse(kept.out)["events"][1]["rollName"], "A001B");
}

TEST_F(InspectCommand, RateComesFromTheFirstFileOrTheUserMustNameIt)
{
    const std::string withoutFcm = writeFile("inspect_nofcm.edl",
                                             "001 A V C 10:00:00:00 10:00:00:29 01:00:00:00 01:00:00:29\n");
    CommandRun run = inspect({withoutFcm});
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.err.find("assuming non-drop frame"), std::string::npos);
    EXPECT_NE(run.out.find("Project rate: 30"), std::string::npos);

    const std::string dropFrame = writeFile("inspect_df.edl", "FCM: DROP FRAME\n"
                                                              "001 A V C 10:00:00;00 10:00:01;00 01:00:00;00 01:00:01;00\n");
    run = inspect({dropFrame});
    EXPECT_NE(run.out.find("Project rate: 29.97df"), std::string::npos);

    const std::string empty = writeFile("inspect_empty.edl", "TITLE: NOTHING\n");
    run = inspect({empty});
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.err.find("--rate"), std::string::npos);
    run = inspect({empty, "--rate", "25"});
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.err.find("The loaded EDL file inspect_empty.edl does not contain valid entries."), std::string::npos);
}

TEST_F(InspectCommand, CorpusFileInWindows1252PrintsAsJsonWithItsAccentedName)
{
    const std::string path = std::string(MONTALA_CORPUS_DIR) + "/pycmx/adobe_dai109_test.txt";
    const CommandRun run = inspect({path, "--rate", "24", "--json"});
    ASSERT_EQ(run.status, 0) << run.err;
    const auto document = nlohmann::json::parse(run.out);
    bool found = false;
    for (const auto& event : document["events"])
        found = found || event["clipName"] == "\xC3\x81\xC3\xBA\xC2\xB1\xC3\xAA" "422.mov";
    EXPECT_TRUE(found) << "the name read as Windows-1252";
    const auto& lines = document["files"][0]["lines"];
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines[0]["action"], "converted");
    EXPECT_NE(run.err.find("adobe_dai109_test.txt line "), std::string::npos);
}

TEST_F(InspectCommand, DroppedAndChangedLinesAreWarnedWithFileAndLine)
{
    const std::string path = writeFile("inspect_hostile.edl",
                                       std::string("TITLE: HOSTILE\n"
                                                   "-1 A V C 01:00:00:00 01:00:01:00 01:00:00:00 01:00:01:00\n"
                                                   "2 A V C 01:00:00:00 01:00:01:00 01:00:00:00 01:00:01:00\n"
                                                   "* FROM CLIP NAME: a") +
                                           '\0' + "b.mov\n3 A V C 01:00:00:00\n");
    const CommandRun text = inspect({path, "--rate", "25"});
    EXPECT_EQ(text.status, 0);
    EXPECT_NE(text.err.find("inspect_hostile.edl line 2: event number with a sign"), std::string::npos) << text.err;
    EXPECT_NE(text.err.find("inspect_hostile.edl line 4: NUL bytes read as blanks"), std::string::npos);
    EXPECT_NE(text.err.find("inspect_hostile.edl line 5: event line with too few fields"), std::string::npos);
    // The whole name is printed, never cut at the NUL.
    EXPECT_NE(text.out.find("a b.mov"), std::string::npos);

    const CommandRun json = inspect({path, "--rate", "25", "--json"});
    const auto lines = nlohmann::json::parse(json.out)["files"][0]["lines"];
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0]["line"], 2);
    EXPECT_EQ(lines[0]["action"], "dropped");
    EXPECT_EQ(lines[1]["action"], "changed");
}

TEST_F(InspectCommand, JsonNeverStopsOnBytesAndAFolderIsNoEdl)
{
    // Every byte value in a clip name; the document stays valid JSON.
    std::string name;
    for (int byte = 1; byte < 256; ++byte) {
        if (byte != '\n' && byte != '\r')
            name += static_cast<char>(byte);
    }
    const std::string path = writeFile("inspect_bytes.edl",
                                       "1 A V C 01:00:00:00 01:00:01:00 01:00:00:00 01:00:01:00\n* FROM CLIP NAME: " +
                                           name + "\n");
    const CommandRun run = inspect({path, "--rate", "25", "--json"});
    ASSERT_EQ(run.status, 0);
    EXPECT_NO_THROW(nlohmann::json::parse(run.out)) << run.out;

    const CommandRun notAFile = inspect({folder.string(), path, "--rate", "25"});
    EXPECT_EQ(notAFile.status, 1);
    EXPECT_NE(notAFile.err.find("(it is a folder, not a file)"), std::string::npos) << notAFile.err;
    EXPECT_NE(notAFile.out.find("Total: 1"), std::string::npos);
    const CommandRun missing = inspect({"/nonexistent/missing.edl", "--rate", "25", "--json"});
    EXPECT_EQ(nlohmann::json::parse(missing.out)["files"][0]["error"], "no such file");
}

TEST_F(InspectCommand, AudioEventsHintAtTheirOptionAndInvalidTimecodesShowNoSpeed)
{
    // An audio event, and a video event whose record out has frame 30, which
    // 25 fps does not have.
    const std::string path = writeFile("inspect_audio.edl", "FCM: NON-DROP FRAME\n"
                                       "001  A001  A  C  10:00:00:00 10:00:01:00 01:00:00:00 01:00:01:00\n"
                                       "002  A001  V  C  10:00:01:00 10:00:02:00 01:00:01:00 01:00:01:30\n");
    const CommandRun run = inspect({path, "--rate", "25"});
    EXPECT_NE(run.err.find("montala: inspect_audio.edl: 1 audio-only events are not used; --accept-audio reads them\n"),
              std::string::npos)
        << run.err;
    const size_t row = run.out.find("\n2 ");
    ASSERT_NE(row, std::string::npos) << run.out;
    EXPECT_EQ(run.out.find("-86400", row), std::string::npos) << run.out;
    const CommandRun json = inspect({path, "--rate", "25", "--json"});
    EXPECT_TRUE(nlohmann::json::parse(json.out)["events"][1]["motionSpeed"].is_null()) << json.out;
    EXPECT_EQ(inspect({path, "--rate", "25", "--accept-audio"}).err.find("--accept-audio reads them"),
              std::string::npos);
}
