#include "app/CommandRunner.h"
#include "support/TempFolderTest.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

using montala::test::CommandRun;
using montala::test::readFile;

CommandRun session(const std::vector<std::string>& arguments)
{
    return montala::test::runCommand("session", montala::app::registerSessionCommand, arguments);
}

std::string sample(const char* name)
{
    return std::string(MONTALA_SOURCE_DIR) + "/samples/sessions/" + name;
}

class SessionCommand : public montala::test::TempFolderTest {
protected:
    SessionCommand() : TempFolderTest("montala-session") {}
};

TEST_F(SessionCommand, CheckPrintsWhatTheSessionHolds)
{
    const CommandRun run = session({"check", sample("short-film-25.json")});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("Frame rate: 25 fps\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("Range: 01:00:00:00 - 01:06:10:00 (length 00:06:10:00)\n"), std::string::npos);
    EXPECT_NE(run.out.find("Tracks: 12 (audio 6, video 1, marker 2, folder 2, ruler 1)\n"), std::string::npos);
    EXPECT_NE(run.out.find("Markers: 10\n"), std::string::npos);
    EXPECT_NE(run.out.find("Automation points: 32 on 3 automation tracks\n"), std::string::npos);
    EXPECT_NE(run.out.find("  GUIDE     audio         1        0           0  locked\n"), std::string::npos);
    EXPECT_NE(run.out.find("    DX A    audio        40"), std::string::npos) << "tracks in a folder are indented";

    const CommandRun dropFrame = session({"check", sample("short-film-2997df.json")});
    ASSERT_EQ(dropFrame.status, 0) << dropFrame.err;
    EXPECT_NE(dropFrame.out.find("Frame rate: 29.97 fps drop frame\n"), std::string::npos);
    EXPECT_NE(dropFrame.out.find("Range: 01:00:00;00 - 01:01:30;00"), std::string::npos);
}

TEST_F(SessionCommand, CheckNamesThePlaceOfAnErrorAndFailsWithStatusOne)
{
    const fs::path path = folder / "bad.json";
    std::ofstream(path) << R"({"format": "montala-session", "version": 1, "frameRate": {"fps": 25},
        "start": "01:00:00:00", "end": "01:01:00:00",
        "tracks": [{"kind": "audio", "events": [{"kind": "audio", "start": 20, "end": 10, "file": "a.wav"}]}]})";
    const CommandRun run = session({"check", path.string()});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err,
              "montala: session check: " + path.string() + ": line 3: /tracks/0/events/0: the event ends before it starts\n");

    const CommandRun missing = session({"check", "/nonexistent/film.json"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err, "montala: session check: /nonexistent/film.json: does not exist\n");
    const CommandRun notAFile = session({"check", folder.string()});
    EXPECT_EQ(notAFile.status, 1);
    EXPECT_EQ(notAFile.err, "montala: session check: " + folder.string() + ": is a folder, not a file\n");
}

TEST_F(SessionCommand, HostileSessionsGetAMessageWithFileAndLineNotACrash)
{
    const std::string head = R"({"format": "montala-session", "version": 1, "frameRate": {"fps": 25},)"
                             "\n\"start\": 0, \"end\": 10,\n";
    // 7,400 folders in folders overflowed the stack of the recursive reader.
    std::string tracks = R"({"kind": "audio"})";
    for (int i = 0; i < 7400; ++i)
        tracks = R"({"kind": "folder", "tracks": [)" + tracks + "]}";
    const std::vector<std::pair<std::string, std::string>> cases = {
        {head + "\"tracks\": [" + tracks + "]}", "line 3: /tracks/0/tracks/0/tracks/0/"},
        {head + "\"cursor\": 1e400}", "line 3: /cursor: 1e400 is out of range\n"},
        {head + "\"attributes\": {\"n\": 18446744073709551615}}",
         "line 3: /attributes/n: 18446744073709551615 is out of range"},
    };
    for (const auto& [text, expected] : cases) {
        const fs::path path = folder / "hostile.json";
        std::ofstream(path) << text;
        for (const std::string& command : {"check", "normalize"}) {
            SCOPED_TRACE(command + " " + expected);
            std::vector<std::string> arguments = {command, path.string()};
            if (command == "normalize")
                arguments.insert(arguments.end(), {"-o", (folder / "out.json").string()});
            const CommandRun run = session(arguments);
            EXPECT_EQ(run.status, 1);
            EXPECT_EQ(run.err.rfind("montala: session " + command + ": " + path.string() + ": " + expected, 0), 0u)
                << run.err.substr(0, 300);
            EXPECT_FALSE(fs::exists(folder / "out.json"));
        }
    }
}

TEST_F(SessionCommand, NormalizeWritesTheCanonicalFormAndTheSamplesAreInIt)
{
    for (const char* name : {"short-film-25.json", "short-film-2997df.json"}) {
        const fs::path output = folder / name;
        const CommandRun run = session({"normalize", sample(name), "-o", output.string()});
        ASSERT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.out, "Wrote " + output.string() + "\n");
        EXPECT_EQ(readFile(output), readFile(sample(name))) << name << " is not in canonical form";
    }

    // A hand-written file: times on a frame come out as timecode, others as seconds.
    const fs::path hand = folder / "hand.json";
    std::ofstream(hand) << R"({"format":"montala-session","version":1,"frameRate":{"fps":25},"start":3600,
        "end":60,"tracks":[{"kind":"marker","name":"M","events":[{"kind":"point","start":1.48},{"kind":"point","start":1.5}]}]})";
    ASSERT_EQ(session({"normalize", hand.string(), "-o", hand.string()}).status, 0);
    EXPECT_NE(readFile(hand).find(R"({"kind": "point", "start": "01:00:01:12"},
        {"kind": "point", "start": 1.5})"), std::string::npos)
        << readFile(hand);

    const CommandRun failed = session({"normalize", sample("short-film-25.json"), "-o", pathOf("no/such/dir.json")});
    EXPECT_EQ(failed.status, 1);
    EXPECT_NE(failed.err.find("dir.json: the folder " + (folder / "no/such").string() + " does not exist"),
              std::string::npos)
        << failed.err;
}

} // namespace
