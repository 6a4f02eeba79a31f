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

class ConformCommand : public montala::test::TempFolderTest {
protected:
    ConformCommand() : TempFolderTest("montala-conform-command") {}

    std::string output() const { return pathOf("out.json"); }
};

TEST_F(ConformCommand, ConformsTheSampleAndTouchesOnlyItsOutput)
{
    const std::string before = readFile(session);
    const CommandRun run = runMontala({"conform", session, "--old", oldEdl, "--new", newEdl, "-o", output()});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(contains(run.out, "Project rate: 25\n")) << run.out;
    EXPECT_TRUE(contains(run.out, "Change EDL: 12 events\n")) << run.out;
    EXPECT_TRUE(contains(run.out, "Tracks left out (1): GUIDE (locked);\n")) << run.out;
    EXPECT_TRUE(contains(run.out, "Markers written: ")) << run.out;
    EXPECT_TRUE(contains(run.out, "Wrote " + output() + "\n")) << run.out;
    // Without a terminal, one line per stage and the EDLs' load report.
    EXPECT_TRUE(contains(run.out, "== Conforming\n")) << run.out;
    EXPECT_EQ(readFile(session), before);
    const std::string conformed = readFile(output());
    EXPECT_NE(conformed, before);
    EXPECT_TRUE(contains(conformed, "\"MontData\"")) << "the model's block is saved with the session";

    // Never over an input; over the session only when asked, keeping it.
    const fs::path copy = folder / "session.json";
    fs::copy_file(session, copy);
    const std::string edl = (folder / "old.edl").string();
    fs::copy_file(oldEdl, edl);
    for (const std::string& input : {copy.string(), edl}) {
        const CommandRun over = runMontala({"conform", copy.string(), "--old", edl, "--new", newEdl, "-o", input});
        EXPECT_EQ(over.status, 2) << input;
        EXPECT_TRUE(contains(over.err, "montala: conform: -o " + input + ": is ")) << over.err;
    }
    EXPECT_EQ(readFile(edl), readFile(oldEdl));
    const CommandRun inPlace = runMontala({"conform", copy.string(), "--old", oldEdl, "--new", newEdl, "--in-place"});
    ASSERT_EQ(inPlace.status, 0) << inPlace.err;
    EXPECT_EQ(readFile(copy), conformed);
    EXPECT_EQ(readFile(copy.string() + ".bak"), before);
}

TEST_F(ConformCommand, JsonIsOneDocumentWithTheNumericResult)
{
    const CommandRun run =
        runMontala({"conform", session, "--old", oldEdl, "--new", newEdl, "-o", output(), "--json", "--no-markers",
                 "insert", "overlap"});
    ASSERT_EQ(run.status, 0) << run.err;
    const nlohmann::json document = nlohmann::json::parse(run.out); // the notes went to err
    EXPECT_EQ(document["status"], "done");
    EXPECT_EQ(document["result"], 0);
    EXPECT_EQ(document["written"], output());
    EXPECT_EQ(document["changeEvents"], 12);
    EXPECT_GT(document["eventsApplied"].get<int>(), 0);
    EXPECT_EQ(document["tracksLeftOut"], nlohmann::json::parse(R"([{"name": "GUIDE", "reason": "locked"}])"));
    EXPECT_FALSE(document["markersWritten"].contains("insert"));
    EXPECT_FALSE(document["markersWritten"].contains("overlap"));
    EXPECT_TRUE(document["markersWritten"].contains("destination"));
    EXPECT_TRUE(contains(run.err, "== Conforming\n"));

    // A run that checkTracks refuses: its code, and the window's alert.
    const CommandRun refused =
        runMontala({"conform", session, "--old", oldEdl, "--new", newEdl, "-o", output() + "2", "--tracks", "selected",
                 "--json"});
    EXPECT_EQ(refused.status, 1);
    const nlohmann::json answer = nlohmann::json::parse(refused.out);
    EXPECT_EQ(answer["status"], "failed");
    EXPECT_NE(answer["result"], 0);
    EXPECT_EQ(answer["resultName"], "NoSelectedTracks");
    EXPECT_EQ(answer["message"],
              "No tracks selected for Montala process.\nPlease select the tracks that you want to use.");
    EXPECT_TRUE(answer["written"].is_null());
    EXPECT_FALSE(fs::exists(output() + "2"));
}

TEST_F(ConformCommand, ExitStatusSaysWhoseFaultItWasAndNothingIsWritten)
{
    const std::vector<std::string> cuts = {"--old", oldEdl, "--new", newEdl};
    const auto conform = [&](std::vector<std::string> extra, bool withCuts = true) {
        std::vector<std::string> arguments = {"conform", session, "-o", output()};
        if (withCuts)
            arguments.insert(arguments.end(), cuts.begin(), cuts.end());
        arguments.insert(arguments.end(), extra.begin(), extra.end());
        return runMontala(arguments);
    };

    // Bad arguments: 2.
    for (const std::vector<std::string>& extra :
         std::vector<std::vector<std::string>>{{"--tracks", "some"},
                                               {"--no-markers", "everything"},
                                               {"--match", "colour"},
                                               {"--overhang", "-3"},
                                               {"--range", "01:00:00:00"},
                                               {"--vfx", "NOCOLON"},
                                               {"--change", oldEdl}}) {
        const CommandRun run = conform(extra);
        EXPECT_EQ(run.status, 2) << extra[0] << ": " << run.err;
        EXPECT_FALSE(run.err.empty()) << extra[0];
    }
    EXPECT_EQ(runMontala({"conform", session, "--old", oldEdl, "-o", output()}).status, 2) << "--old without --new";
    EXPECT_EQ(runMontala({"conform", session}).status, 2) << "no output named";

    // Unreadable input: 2, named.
    const CommandRun noSession = runMontala({"conform", pathOf("none.json"), "--old", oldEdl, "--new",
                                          newEdl, "-o", output()});
    EXPECT_EQ(noSession.status, 2);
    EXPECT_TRUE(contains(noSession.err, "none.json")) << noSession.err;
    const CommandRun noEdl = conform({"--new", pathOf("gone.edl")});
    EXPECT_EQ(noEdl.status, 2);
    EXPECT_TRUE(contains(noEdl.err, "gone.edl")) << noEdl.err;
    const CommandRun badRange = conform({"--range", "01:00:10:00", "01:00:05:00"});
    EXPECT_EQ(badRange.status, 2);
    EXPECT_TRUE(contains(badRange.err, "--range 01:00:10:00 01:00:05:00")) << badRange.err;

    // A run that cannot start: 1, with the window's text.
    std::ofstream(folder / "empty.edl") << "TITLE: EMPTY\nFCM: NON-DROP FRAME\n";
    const CommandRun empty = conform({"--change", pathOf("empty.edl")}, false);
    EXPECT_EQ(empty.status, 1);
    EXPECT_TRUE(contains(empty.err, "the run cannot start (EmptyChangeList): No events in Change EDL.\n"))
        << empty.err;

    EXPECT_FALSE(fs::exists(output()));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 1)
        << "only the empty EDL; no temporary file left behind";
}

} // namespace
