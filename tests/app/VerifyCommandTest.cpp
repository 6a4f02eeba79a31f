#include "app/CommandRunner.h"
#include "support/TempFolderTest.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

namespace fs = std::filesystem;
using namespace montala::test;
using namespace montala::test::shortFilm;

// Seconds after the project start (01:00:00:00) of a position in the
// sample, which is written as 25 fps timecode or as seconds.
double secondsOf(const nlohmann::json& position)
{
    if (position.is_number())
        return position.get<double>();
    int fields[4] = {};
    std::sscanf(position.get<std::string>().c_str(), "%d:%d:%d:%d", &fields[0], &fields[1], &fields[2], &fields[3]);
    return (fields[0] - 1) * 3600.0 + fields[1] * 60.0 + fields[2] + fields[3] / 25.0;
}

nlohmann::json* findTrack(nlohmann::json& tracks, const std::string& name)
{
    for (nlohmann::json& track : tracks) {
        if (track.value("name", "") == name)
            return &track;
        if (track.contains("tracks"))
            if (nlohmann::json* found = findTrack(track["tracks"], name))
                return found;
    }
    return nullptr;
}

class VerifyCommand : public montala::test::TempFolderTest {
protected:
    VerifyCommand() : TempFolderTest("montala-verify-command")
    {
        std::ifstream input(session);
        sample = nlohmann::json::parse(input);
    }

    // The sample with one track's events moved by `shift` seconds, or with
    // the last event of the track taken out.
    std::string altered(const std::string& track, double shift, bool dropLast = false)
    {
        nlohmann::json copy = sample;
        nlohmann::json* found = findTrack(copy["tracks"], track);
        EXPECT_NE(found, nullptr) << track;
        if (dropLast)
            (*found)["events"].erase((*found)["events"].size() - 1);
        for (nlohmann::json& event : (*found)["events"]) {
            event["start"] = secondsOf(event["start"]) + shift;
            event["end"] = secondsOf(event["end"]) + shift;
        }
        const fs::path path = folder / (track + std::to_string(shift) + ".json");
        std::ofstream(path) << copy.dump(1);
        return path.string();
    }

    nlohmann::json sample;
};

TEST_F(VerifyCommand, AConformOfTheSampleIsInSync)
{
    const std::string conformed = pathOf("conformed.json");
    ASSERT_EQ(runMontala({"conform", session, "--old", oldEdl, "--new", newEdl, "-o", conformed}).status, 0);
    const CommandRun run = runMontala({"verify", session, conformed, "--old", oldEdl, "--new", newEdl});
    EXPECT_EQ(run.status, 0) << run.out << run.err;
    EXPECT_TRUE(contains(run.out, "New cut: 8984 frames\n")) << run.out;
    EXPECT_TRUE(contains(run.out, "  ok   audio GUIDE: left out (locked), untouched\n")) << run.out;
    EXPECT_TRUE(contains(run.out, "  ok   audio DIALOGUE/DX A: ")) << run.out;
    EXPECT_TRUE(contains(run.out, "of new picture without old sound")) << run.out;
    EXPECT_TRUE(contains(run.out, "All in sync\n")) << run.out;

    const CommandRun json = runMontala({"verify", session, conformed, "--old", oldEdl, "--new", newEdl, "--json"});
    EXPECT_EQ(json.status, 0);
    const nlohmann::json document = nlohmann::json::parse(json.out);
    EXPECT_EQ(document["inSync"], true);
    EXPECT_EQ(document["newCutFrames"], 8984);
    EXPECT_FALSE(document["tracks"].empty());
}

TEST_F(VerifyCommand, NamesEveryStretchOutOfSyncAsATimecodeSpan)
{
    // The session against itself over the Old cut, FX 1 a frame late. Its
    // first event starts at 01:00:05:05, which then plays nothing, and the
    // shot there ends at 01:00:07:04.
    const std::string late = altered("FX 1", 0.04);
    const CommandRun run = runMontala({"verify", session, late, "--old", oldEdl, "--new", oldEdl});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(contains(run.out, "  FAIL audio EFFECTS/FX 1: ")) << run.out;
    EXPECT_TRUE(contains(run.out, "         01:00:05:05-01:00:07:04 (50 frames, A001 06:12:53:14) sound: expected "
                                  "door_open.wav @ 0.020 s, found silence\n"))
        << run.out;
    EXPECT_TRUE(contains(run.out, "         and 50 more stretches (--json lists them all)\n")) << run.out;
    EXPECT_TRUE(contains(run.out, "  ok   audio DIALOGUE/DX A: ")) << run.out;
    EXPECT_TRUE(contains(run.out, "NOT in sync\n")) << run.out;

    const CommandRun json = runMontala({"verify", session, late, "--old", oldEdl, "--new", oldEdl, "--json"});
    EXPECT_EQ(json.status, 1);
    const nlohmann::json document = nlohmann::json::parse(json.out);
    EXPECT_EQ(document["inSync"], false);
    bool named = false;
    for (const nlohmann::json& track : document["tracks"])
        if (track["name"] == "EFFECTS/FX 1") {
            named = true;
            EXPECT_EQ(track["ok"], false);
            ASSERT_EQ(track["spans"].size(), 60u);
            const nlohmann::json& first = track["spans"][0];
            EXPECT_EQ(first["what"], "sound");
            EXPECT_EQ(first["first"], "01:00:05:05");
            EXPECT_EQ(first["last"], "01:00:07:04");
            EXPECT_EQ(first["frames"], 50);
            EXPECT_EQ(first["source"], "A001 06:12:53:14");
        }
    EXPECT_TRUE(named);

    // A locked track that changed, though it took no part.
    const std::string guide = altered("GUIDE", 0.0, true);
    const CommandRun touched = runMontala({"verify", session, guide, "--old", oldEdl, "--new", oldEdl});
    EXPECT_EQ(touched.status, 1);
    EXPECT_TRUE(contains(touched.out, "  FAIL audio GUIDE: left out (locked), CHANGED, though it took no part\n"))
        << touched.out;
}

TEST_F(VerifyCommand, UnreadableInputAndBadArgumentsAreStatusTwo)
{
    const CommandRun noSession =
        runMontala({"verify", session, pathOf("none.json"), "--old", oldEdl, "--new", newEdl});
    EXPECT_EQ(noSession.status, 2);
    EXPECT_TRUE(contains(noSession.err, "none.json")) << noSession.err;
    const CommandRun noEdl =
        runMontala({"verify", session, session, "--old", oldEdl, "--new", pathOf("gone.edl")});
    EXPECT_EQ(noEdl.status, 2);
    EXPECT_TRUE(contains(noEdl.err, "gone.edl")) << noEdl.err;
    EXPECT_EQ(runMontala({"verify", session, session, "--old", oldEdl}).status, 2) << "--new is required";
    EXPECT_EQ(runMontala({"verify", session, session, "--old", oldEdl, "--new", newEdl, "--tracks", "odd"}).status, 2);
}

} // namespace
