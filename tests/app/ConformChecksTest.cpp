#include "app/CommandRunner.h"
#include "support/TempFolderTest.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <map>
#include <tuple>
#include <regex>

namespace {

namespace fs = std::filesystem;
using namespace montala::test;
using namespace montala::test::shortFilm;

// The sample's New cut re-cut once more: event 010 (87 frames) taken out and
// what follows moved up.
const std::string thirdCut = MONTALA_SOURCE_DIR "/tests/app/fixtures/short-film-25-r3.edl";

class ConformChecks : public TempFolderTest {
protected:
    ConformChecks() : TempFolderTest("montala-conform-checks") {}

    // A copy of an EDL with one text replaced, in the folder.
    std::string edited(const std::string& edl, const std::string& name, const std::string& from,
                       const std::string& to) const
    {
        std::string text = readFile(edl);
        text = std::regex_replace(text, std::regex(from), to, std::regex_constants::format_first_only);
        std::ofstream(folder / name) << text;
        return pathOf(name);
    }

    // The sample conformed once, from its Old cut to its New one.
    std::string conformedOnce()
    {
        const std::string once = pathOf("once.json");
        const CommandRun run = runMontala({"conform", session, "--old", oldEdl, "--new", newEdl, "-o", once});
        EXPECT_EQ(run.status, 0) << run.err;
        return once;
    }
};

TEST_F(ConformChecks, SecondConformStartsFromTheListsItIsGivenAndStaysInSync)
{
    const std::string once = conformedOnce();
    const std::string twice = pathOf("twice.json");
    const CommandRun run = runMontala({"conform", once, "--old", newEdl, "--new", thirdCut, "-o", twice, "--json"});
    ASSERT_EQ(run.status, 0) << run.err;
    const nlohmann::json document = nlohmann::json::parse(run.out);
    // Before and after the 87 frames taken out; nothing of the first run.
    EXPECT_EQ(document["changeEvents"], 2);
    EXPECT_EQ(document["refusals"], nlohmann::json::array());

    const CommandRun audit = runMontala({"verify", once, twice, "--old", newEdl, "--new", thirdCut});
    EXPECT_EQ(audit.status, 0) << audit.out << audit.err;

    // A ready Change EDL replaces the stored one too.
    const std::string change = pathOf("change.edl");
    ASSERT_EQ(generate({"--old", newEdl, "--new", thirdCut, "-o", change}).status, 0);
    const CommandRun fromChange =
        runMontala({"conform", once, "--change", change, "-o", pathOf("twice2.json"), "--json"});
    ASSERT_EQ(fromChange.status, 0) << fromChange.err;
    EXPECT_EQ(nlohmann::json::parse(fromChange.out)["changeEvents"], 2);
}

TEST_F(ConformChecks, InputsThatDoNotBelongTogetherAreRefusedUnlessForced)
{
    const auto refused = [&](const std::vector<std::string>& arguments, const std::string& why) {
        std::vector<std::string> call = {"conform"};
        call.insert(call.end(), arguments.begin(), arguments.end());
        call.insert(call.end(), {"-o", pathOf("out.json")});
        const CommandRun run = runMontala(call);
        EXPECT_EQ(run.status, 1) << why;
        EXPECT_TRUE(contains(run.err, why)) << run.err;
        EXPECT_TRUE(contains(run.err, "montala: nothing was changed;")) << run.err;
        EXPECT_FALSE(fs::exists(pathOf("out.json"))) << why;
        call.push_back("--force");
        EXPECT_EQ(runMontala(call).status, 0) << why << ": --force goes on";
        fs::remove(pathOf("out.json"));
    };
    refused({session, "--old", newEdl, "--new", oldEdl}, "did you swap --old and --new?");
    const std::string once = conformedOnce();
    refused({once, "--old", oldEdl, "--new", newEdl}, "this session already follows the New cut");
    refused({once, "--old", thirdCut, "--new", oldEdl}, "the session's picture does not follow the Old cut");
    // A picture EDL for a Change EDL: its SRC are camera timecodes, far from
    // the session's.
    refused({session, "--change", oldEdl}, "the Change EDL would drop 100% of the session's sound (more than 80%)");
    const std::string dropFrame = edited(newEdl, "df.edl", "NON-DROP FRAME", "DROP FRAME");
    refused({session, "--old", oldEdl, "--new", dropFrame},
            "df.edl suggests 30 fps drop frame, but the session runs at 25");
}

TEST_F(ConformChecks, EveryEventThatCouldNotBeUsedIsListedWithFileLineAndWhy)
{
    // Line 22 of the New cut, event 010, with a roll name outside ASCII.
    const std::string umlaut = edited(newEdl, "umlaut.edl", "010  B002 ", "010  B\xC3\x96" "02 ");
    const CommandRun run = runMontala({"conform", session, "--old", oldEdl, "--new", umlaut, "-o", pathOf("o.json")});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(contains(run.err, "montala: umlaut.edl line 22, event 10: not used: Roll name contains "
                                  "non-alphanumeric characters\n"))
        << run.err;
    EXPECT_TRUE(contains(run.err, "montala: no sound for the New cut 01:00:50:00-01:00:53:12\n")) << run.err;
    // The sample's own holes: the freeze, the slowed shot, the longer dissolve.
    EXPECT_TRUE(contains(run.err, "montala: no sound for the New cut 01:03:27:02-01:03:29:02\n")) << run.err;

    const CommandRun json =
        runMontala({"conform", session, "--old", oldEdl, "--new", umlaut, "-o", pathOf("j.json"), "--json"});
    const nlohmann::json document = nlohmann::json::parse(json.out);
    EXPECT_EQ(document["unused"][0],
              nlohmann::json::parse(R"({"file": "umlaut.edl", "line": 22, "event": 10,
                                       "reason": "Roll name contains non-alphanumeric characters"})"));
    EXPECT_EQ(document["silentSpans"][0], nlohmann::json::parse(R"({"in": "01:00:50:00", "out": "01:00:53:12"})"));

    // Change events that lie outside the session, forced past the check.
    const CommandRun outside = runMontala({"conform", session, "--change", oldEdl, "-o", pathOf("c.json"), "--force",
                                           "--json"});
    const nlohmann::json answer = nlohmann::json::parse(outside.out);
    EXPECT_EQ(answer["unused"].size(), 82u);
    EXPECT_EQ(answer["unused"][0]["line"], 4);
    EXPECT_EQ(answer["unused"][0]["reason"], "SRC 06:12:48:09-06:12:55:14 lies outside the session");
}

TEST_F(ConformChecks, StoredBlocksThatCannotBeReadAreNamed)
{
    const std::string fixtures = MONTALA_SOURCE_DIR "/tests/app/fixtures/";
    const std::pair<std::string, std::string> cases[] = {
        {"short-film-25-trailing-block.json",
         "An error occurred while loading the Montala data. The data will be ignored."},
        {"short-film-25-newer-block.json",
         "The project was created with a newer Montala version. The data cannot be loaded."},
    };
    for (const auto& [file, message] : cases) {
        const CommandRun run = runMontala(
            {"conform", fixtures + file, "--old", oldEdl, "--new", newEdl, "-o", pathOf("out.json"), "--json"});
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(nlohmann::json::parse(run.out)["sessionMessages"], nlohmann::json::array({message})) << file;
        fs::remove(pathOf("out.json"));
    }
    const CommandRun text =
        runMontala({"conform", fixtures + cases[0].first, "--old", oldEdl, "--new", newEdl, "-o", pathOf("out.json")});
    EXPECT_TRUE(contains(text.err, "montala: " + fixtures + cases[0].first + ": " + cases[0].second + "\n")) << text.err;
}

TEST_F(ConformChecks, WhatCannotBeWrittenOrHoldsNothingIsRefusedBeforeTheRun)
{
    // A read-only output is found before the session is even loaded.
    std::ofstream(folder / "locked.json") << "keep";
    fs::permissions(folder / "locked.json", fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    const CommandRun locked = runMontala({"conform", session, "--old", oldEdl, "--new", newEdl, "-o", pathOf("locked.json")});
    EXPECT_EQ(locked.status, 2);
    EXPECT_TRUE(contains(locked.err, "montala: conform: cannot write " + pathOf("locked.json") + ": is read-only"))
        << locked.err;
    EXPECT_FALSE(contains(locked.out + locked.err, "== Loading the session")) << locked.out;
    EXPECT_EQ(readFile(folder / "locked.json"), "keep");

    // A range that no Change event reaches.
    const CommandRun empty = runMontala({"conform", session, "--old", oldEdl, "--new", newEdl, "-o", pathOf("o.json"),
                                         "--range", "02:00:00:00", "02:00:10:00"});
    EXPECT_EQ(empty.status, 2);
    EXPECT_TRUE(contains(empty.err, "--range 02:00:00:00 02:00:10:00: no event of the Change EDL lies in it"))
        << empty.err;
    EXPECT_FALSE(fs::exists(pathOf("o.json")));
}

TEST_F(ConformChecks, AChangeEdlInPartsIsReadWholeInOrder)
{
    const std::string change = pathOf("change.edl");
    ASSERT_EQ(generate({"--old", oldEdl, "--new", newEdl, "-o", change}).status, 0);
    // The twelve events cut in two files after the sixth, as the writer
    // splits a long list.
    const std::string text = readFile(change);
    const size_t seventh = text.find("\n007 ");
    ASSERT_NE(seventh, std::string::npos);
    const std::string header = text.substr(0, text.find("\n001 ") + 1);
    std::ofstream(folder / "change_1.edl") << text.substr(0, seventh + 1);
    std::ofstream(folder / "change_2.edl") << header << text.substr(seventh + 1);

    const CommandRun whole = runMontala({"conform", session, "--change", change, "-o", pathOf("whole.json")});
    ASSERT_EQ(whole.status, 0) << whole.err;
    const CommandRun parts = runMontala({"conform", session, "--change", pathOf("change_1.edl"),
                                         pathOf("change_2.edl"), "-o", pathOf("parts.json")});
    ASSERT_EQ(parts.status, 0) << parts.err;
    EXPECT_TRUE(contains(parts.out, "Change EDL: 12 events\n")) << parts.out;
    // The same session, but for the stored block, which names the files.
    const auto tracks = [&](const char* name) { return nlohmann::json::parse(readFile(folder / name))["tracks"]; };
    EXPECT_EQ(tracks("parts.json"), tracks("whole.json"));
}

TEST_F(ConformChecks, MarkersWrittenAreThoseOnMontalasMarkerTracksOfTheWrittenSession)
{
    // Markers on the tracks Montala marks with its kind, by the name the
    // summary gives that kind.
    const auto markersIn = [&](const std::string& path) {
        const char* names[] = {"", "destination", "transition", "insert", "automation", "snippet", "overlap"};
        std::map<std::string, int> counts;
        const auto walk = [&](const auto& self, const nlohmann::json& tracks) -> void {
            for (const nlohmann::json& track : tracks) {
                const int kind = track.value("attributes", nlohmann::json::object()).value("Montala:MarkerType", 0);
                const size_t markers = track.value("events", nlohmann::json::array()).size();
                if (kind >= 1 && kind <= 6 && markers > 0)
                    counts[names[kind]] += static_cast<int>(markers);
                self(self, track.value("tracks", nlohmann::json::array()));
            }
        };
        walk(walk, nlohmann::json::parse(readFile(path))["tracks"]);
        return counts;
    };
    // The first conform of the sample, and a second one, which replaces the
    // first one's markers with its own.
    const std::string once = pathOf("once.json");
    const std::string twice = pathOf("twice.json");
    for (const auto& [from, to, cuts] : {std::tuple{session, once, std::pair{oldEdl, newEdl}},
                                         std::tuple{once, twice, std::pair{newEdl, thirdCut}}}) {
        SCOPED_TRACE(to);
        const CommandRun run =
            runMontala({"conform", from, "--old", cuts.first, "--new", cuts.second, "-o", to, "--json"});
        ASSERT_EQ(run.status, 0) << run.err;
        const auto written = nlohmann::json::parse(run.out)["markersWritten"].get<std::map<std::string, int>>();
        EXPECT_EQ(written, markersIn(to));
    }
    EXPECT_EQ(markersIn(twice), (std::map<std::string, int>{{"destination", 2}, {"insert", 2}}));
}

} // namespace
