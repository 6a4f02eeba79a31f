#include "app/CommandRunner.h"
#include "support/TempFolderTest.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

using montala::test::CommandRun;
using montala::test::contains;
using montala::test::readFile;
using montala::test::generate;
using montala::test::inspect;

const std::string samples = std::string(MONTALA_SOURCE_DIR) + "/samples/edl/";

// Old: A for ten seconds, then B for five. New: B first, then the middle
// six seconds of A, whose clip was renamed. At 25 fps, so every number can
// be checked by hand.
const char* const oldReel =
    "TITLE: OLD\nFCM: NON-DROP FRAME\n"
    "001  A        V     C        01:00:00:00 01:00:10:00 10:00:00:00 10:00:10:00\n"
    "* FROM CLIP NAME: A.MOV\n"
    "002  B        V     C        02:00:00:00 02:00:05:00 10:00:10:00 10:00:15:00\n"
    "* FROM CLIP NAME: B.MOV\n";
const char* const newReel =
    "TITLE: NEW\nFCM: NON-DROP FRAME\n"
    "001  B        V     C        02:00:00:00 02:00:05:00 10:00:00:00 10:00:05:00\n"
    "* FROM CLIP NAME: B.MOV\n"
    "002  A        V     C        01:00:02:00 01:00:08:00 10:00:05:00 10:00:11:00\n"
    "* FROM CLIP NAME: A_NEW.MOV\n";

class GenerateCommandTest : public montala::test::TempFolderTest {
protected:
    GenerateCommandTest() : TempFolderTest("montala-generate")
    {
        oldPath = write("old.edl", oldReel);
        newPath = write("new.edl", newReel);
    }

    std::string write(const std::string& name, const std::string& text) const
    {
        const fs::path path = folder / name;
        std::ofstream(path, std::ios::binary) << text;
        return path.string();
    }
    // The Old reel against this New cut at 25 fps, with more arguments.
    CommandRun generateFrom(const std::string& newEdl, std::vector<std::string> more) const
    {
        more.insert(more.begin(), {"--old", oldPath, "--new", newEdl, "--rate", "25"});
        return generate(more);
    }

    std::string oldPath;
    std::string newPath;
};

TEST_F(GenerateCommandTest, SampleFilmAt25FpsGivesAChangeEdlThatLoadsAgain)
{
    const std::string output = pathOf("change.edl");
    const CommandRun run = generate({"--old", samples + "short-film-25/old.edl", "--new", samples + "short-film-25/new.edl",
                              "-o", output});
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_TRUE(contains(run.out, "Project rate: 25\n"));
    EXPECT_TRUE(contains(run.out, "Wrote " + output + "\n"));
    EXPECT_TRUE(contains(run.err, "using 25, the rate suggested by"));
    EXPECT_TRUE(contains(run.out, "Invalid: 0\n"));

    const CommandRun back = inspect({output, "--rate", "25"});
    EXPECT_EQ(0, back.status) << back.err;
    EXPECT_TRUE(contains(back.out, "Invalid: 0\n"));
    // One line for each Change event, numbered by position.
    const std::string written = readFile(output);
    const size_t total = std::stoul(run.out.substr(run.out.find("Total: ") + 7));
    EXPECT_EQ(total + 1, static_cast<size_t>(std::count(written.begin(), written.end(), '\n')));
    EXPECT_TRUE(contains(back.out, "Total: " + std::to_string(total) + "\n"));
    EXPECT_EQ(0u, written.find("TITLE:   change.edl\n001  "));
}

TEST_F(GenerateCommandTest, JsonHoldsTheChangeEventsWithTheirHealedPartsAndTheResult)
{
    const CommandRun run = generate({"--old", samples + "short-film-2997df/old.edl", "--new",
                              samples + "short-film-2997df/new.edl", "--json"});
    ASSERT_EQ(0, run.status) << run.err;
    const nlohmann::json document = nlohmann::json::parse(run.out);
    EXPECT_EQ(0, document["result"]);
    EXPECT_EQ(1, document["rate"]["dropMode"]);
    EXPECT_EQ(30, document["rate"]["fps"]);
    ASSERT_EQ(2u, document["files"].size());
    EXPECT_EQ("old", document["files"][0]["list"]);
    EXPECT_EQ("new", document["files"][1]["list"]);
    EXPECT_EQ(document["total"], document["events"].size());
    bool anyHealed = false;
    for (const nlohmann::json& event : document["events"]) {
        if (!event.contains("healedEvents"))
            continue;
        anyHealed = true;
        // The healed event spans its parts on the new timeline.
        EXPECT_EQ(event["dstIn"], event["healedEvents"].front()["dstIn"]);
        EXPECT_EQ(event["dstOut"], event["healedEvents"].back()["dstOut"]);
    }
    EXPECT_TRUE(anyHealed);
    // In JSON mode the notes go to standard error.
    EXPECT_TRUE(contains(run.err, "suggests 30 fps drop frame"));
}

TEST_F(GenerateCommandTest, AppliesMatchAndHealSettings)
{
    const CommandRun run = generateFrom(newPath, {"--heal", "none", "--json"});
    ASSERT_EQ(0, run.status) << run.err;
    const nlohmann::json events = nlohmann::json::parse(run.out)["events"];
    ASSERT_EQ(2u, events.size());
    // B moved from 10:00:10:00 to the head; the middle of A follows.
    EXPECT_EQ("10:00:10:00", events[0]["srcIn"]);
    EXPECT_EQ("10:00:15:00", events[0]["srcOut"]);
    EXPECT_EQ("10:00:00:00", events[0]["dstIn"]);
    EXPECT_EQ("10:00:02:00", events[1]["srcIn"]);
    EXPECT_EQ("10:00:08:00", events[1]["srcOut"]);
    EXPECT_EQ("10:00:05:00", events[1]["dstIn"]);
    EXPECT_EQ("10:00:11:00", events[1]["dstOut"]);

    // By clip name the renamed clip of A no longer matches: only B is found.
    const CommandRun byClip = generateFrom(newPath, {"--match", "clip", "--json"});
    EXPECT_EQ(0, byClip.status);
    const nlohmann::json clipEvents = nlohmann::json::parse(byClip.out)["events"];
    ASSERT_EQ(1u, clipEvents.size());
    EXPECT_EQ("10:00:10:00", clipEvents[0]["srcIn"]);

    // B rolls are renamed per file unless asked not to.
    const std::string newWithBRoll = write("new-b.edl", std::string(newReel) +
        "003  AB       V     C        01:00:08:00 01:00:09:00 10:00:11:00 10:00:12:00\n");
    const CommandRun renamed = generateFrom(newWithBRoll, {"--heal", "none", "--json"});
    EXPECT_EQ(3u, nlohmann::json::parse(renamed.out)["events"].size());
    const CommandRun kept = generateFrom(newWithBRoll, {"--heal", "none", "--no-broll-renaming", "--json"});
    EXPECT_EQ(2u, nlohmann::json::parse(kept.out)["events"].size());
}

TEST_F(GenerateCommandTest, FailuresNameTheirCauseAndExitNonZero)
{
    const std::string output = pathOf("change.edl");
    // "#" is outside the characters a VFX pattern may hold.
    const CommandRun badPattern = generateFrom(newPath, {"--vfx", "SH_:_v", "--vfx", "SH#:", "-o", output});
    EXPECT_EQ(1, badPattern.status);
    EXPECT_TRUE(contains(badPattern.err, "VFX pattern 2 \"SH#:\" holds a character outside")) << badPattern.err;
    EXPECT_FALSE(fs::exists(output));
    const CommandRun badPatternJson = generateFrom(newPath, {"--vfx", "SH#:", "--json"});
    EXPECT_EQ(1, badPatternJson.status);
    const nlohmann::json document = nlohmann::json::parse(badPatternJson.out);
    EXPECT_EQ(17, document["result"]);
    EXPECT_EQ(0u, document["events"].size());

    const CommandRun fourPatterns = generateFrom(newPath, {"--vfx", "A:", "--vfx", "B:", "--vfx", "C:", "--vfx", "D:"});
    EXPECT_EQ(2, fourPatterns.status);
    EXPECT_TRUE(contains(fourPatterns.err, "at most 3 --vfx patterns"));
    const CommandRun noColon = generateFrom(newPath, {"--vfx", "SH_"});
    EXPECT_EQ(2, noColon.status);
    EXPECT_TRUE(contains(noColon.err, "\"SH_\" is not PREFIX:POSTFIX"));

    // A missing Old file: nothing is generated from half a cut.
    const CommandRun missing = generate({"--old", pathOf("missing.edl"), "--old", oldPath, "--new", newPath, "--rate", "25",
                                  "-o", output});
    EXPECT_EQ(1, missing.status);
    EXPECT_TRUE(contains(missing.err, "missing.edl"));
    EXPECT_FALSE(fs::exists(output));

    // Nothing of the Old cut in the New one: no file is written.
    const std::string other = write("other.edl", "001  Z        V     C        05:00:00:00 05:00:01:00 10:00:00:00 "
                                                 "10:00:01:00\n");
    const CommandRun empty = generateFrom(other, {"-o", output});
    EXPECT_EQ(1, empty.status);
    EXPECT_TRUE(contains(empty.err, "the Change EDL is empty"));
    EXPECT_FALSE(fs::exists(output));

    // A dissolve whose source runs backwards cannot be split: generation
    // stops and names the event and its file rather than leave a hole.
    const std::string backwards = write("backwards.edl",
        "FCM: NON-DROP FRAME\n"
        "001  A        V     C        01:00:00:00 01:00:00:00 10:00:00:00 10:00:00:00\n"
        "001  B        V     D    025 02:00:05:00 02:00:00:00 10:00:00:00 10:00:05:00\n");
    const CommandRun dissolve = generateFrom(backwards, {"-o", output});
    EXPECT_EQ(1, dissolve.status);
    EXPECT_TRUE(contains(dissolve.err, "New EDL event 1")) << dissolve.err;
    EXPECT_TRUE(contains(dissolve.err, "\"backwards.edl\"")) << dissolve.err;
    EXPECT_FALSE(fs::exists(output));
    const CommandRun dissolveJson = generateFrom(backwards, {"--json"});
    const nlohmann::json failed = nlohmann::json::parse(dissolveJson.out);
    EXPECT_TRUE(contains(failed.value("failure", ""), "cannot be split")) << dissolveJson.out;

    const CommandRun unwritable = generateFrom(newPath, {"-o", pathOf("no-such-folder/change.edl")});
    EXPECT_EQ(1, unwritable.status);
    EXPECT_TRUE(contains(unwritable.err, "could not write")) << unwritable.err;
}

TEST_F(GenerateCommandTest, StandardExceptionsOfTheNameRulesAreReportedNotFatal)
{
    // The prefix "A." makes a longer pattern than the name "A.": the name
    // rule fails with a standard exception, which the command reports.
    const std::string dotted = write("dot.edl", "FCM: NON-DROP FRAME\n"
                                                "001  A.       V     C        01:00:00:00 01:00:04:00 10:00:00:00 "
                                                "10:00:04:00\n");
    const CommandRun run = generate({"--old", dotted, "--new", dotted, "--rate", "25", "--vfx", "A.:"});
    EXPECT_EQ(1, run.status);
    EXPECT_TRUE(contains(run.err, "could not be generated")) << run.err;
}

} // namespace
