#include "app/CommandRunner.h"
#include "support/TempFolderTest.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using montala::test::CommandRun;
using montala::test::generate;
using montala::test::inspect;
using montala::test::readFile;

// What -o may or may not replace, tried with the sample reel and with a cut
// of 1,000 one-roll events (its Change EDL needs two CMX files, 999 events
// and one).
class SafeOutputTest : public montala::test::TempFolderTest {
protected:
    SafeOutputTest() : TempFolderTest("montala-output")
    {
        const fs::path samples = fs::path(MONTALA_SOURCE_DIR) / "samples" / "edl" / "short-film-25";
        fs::copy_file(samples / "old.edl", folder / "old.edl");
        fs::copy_file(samples / "new.edl", folder / "new.edl");
        oldText = readFile(folder / "old.edl");
    }
    CommandRun generateSample(const std::string& output, std::vector<std::string> more = {})
    {
        std::vector<std::string> arguments = {"--old", pathOf("old.edl"), "--new", pathOf("new.edl"), "--rate", "25",
                                              "-o", output};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return generate(arguments);
    }

    CommandRun generateLong(const std::string& output, std::vector<std::string> more = {})
    {
        if (!fs::exists(folder / "long.edl")) {
            std::ofstream file(folder / "long.edl");
            file << "TITLE: long\nFCM: NON-DROP FRAME\n\n";
            const auto tc = [](int frame) {
                char text[16];
                std::snprintf(text, sizeof text, "%02d:%02d:%02d:%02d", frame / 90000, frame / 1500 % 60,
                              frame / 25 % 60, frame % 25);
                return std::string(text);
            };
            for (int i = 0; i < 1000; ++i) {
                const int source = 90000 + i * 50;
                const int record = 900000 + i * 50;
                char line[128];
                std::snprintf(line, sizeof line, "%03d  R%05d   V     C        %s %s %s %s\n", i % 1000, i,
                              tc(source).c_str(), tc(source + 50).c_str(), tc(record).c_str(),
                              tc(record + 50).c_str());
                file << line;
            }
        }
        std::vector<std::string> arguments = {"--old", pathOf("long.edl"), "--new", pathOf("long.edl"), "--rate", "25",
                                              "--heal", "none", "-o", output};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return generate(arguments);
    }

    std::string oldText;
};

TEST_F(SafeOutputTest, AnOutputThatIsAnInputFileIsRefusedHoweverItIsSpelled)
{
    fs::create_directory(folder / "sub");
    fs::create_symlink(folder / "old.edl", folder / "link.edl");
    for (const std::string& output : {pathOf("old.edl"), pathOf("sub/../old.edl"), pathOf("link.edl")}) {
        SCOPED_TRACE(output);
        const CommandRun run = generateSample(output);
        EXPECT_EQ(1, run.status);
        EXPECT_NE(std::string::npos, run.err.find(output + ": is one of the input files")) << run.err;
        EXPECT_EQ(oldText, readFile(folder / "old.edl"));
        EXPECT_TRUE(fs::is_symlink(folder / "link.edl"));
    }
    // The New EDL as well.
    const std::string newText = readFile(folder / "new.edl");
    EXPECT_EQ(1, generateSample(pathOf("new.edl")).status);
    EXPECT_EQ(newText, readFile(folder / "new.edl"));
}

TEST_F(SafeOutputTest, ReadOnlyFilesDevicesAndLinksAreTreatedAsTheUserExpects)
{
    // Read-only: refused with a message naming it, even for root.
    std::ofstream(folder / "locked.edl") << "keep";
    ::chmod((folder / "locked.edl").c_str(), 0444);
    CommandRun run = generateSample(pathOf("locked.edl"));
    EXPECT_EQ(1, run.status);
    EXPECT_NE(std::string::npos, run.err.find(pathOf("locked.edl") + ": is read-only (mode 444)")) << run.err;
    EXPECT_EQ("keep", readFile(folder / "locked.edl"));
    EXPECT_EQ(std::string::npos, run.err.find("part already written")) << "the old file is no part of this run";

    // A device node stays a device node.
    run = generateSample("/dev/null");
    EXPECT_EQ(1, run.status);
    EXPECT_NE(std::string::npos, run.err.find("/dev/null: is a device")) << run.err;
    struct stat status {};
    ASSERT_EQ(0, ::stat("/dev/null", &status));
    EXPECT_TRUE(S_ISCHR(status.st_mode));

    // A link is written through and stays a link.
    fs::create_directory(folder / "real");
    std::ofstream(folder / "real" / "change.edl") << "old";
    fs::create_symlink(folder / "real" / "change.edl", folder / "change.edl");
    run = generateSample(pathOf("change.edl"));
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_TRUE(fs::is_symlink(folder / "change.edl"));
    EXPECT_EQ(0u, readFile(folder / "real" / "change.edl").rfind("TITLE:   change.edl\n", 0));
}

TEST_F(SafeOutputTest, FilesOfAnEarlierRunAreRemovedAndNamed)
{
    // Yesterday's runs went to one file and to three; today's Change EDL
    // needs two.
    std::ofstream(folder / "change_3.edl") << "TITLE:   change_3.edl\n001  OLD ...\n";
    std::ofstream(folder / "change.edl") << "TITLE:   change.edl\n001  OLD ...\n";
    CommandRun run = generateLong(pathOf("change.edl"));
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_NE(std::string::npos, run.out.find("Wrote " + pathOf("change_1.edl") + "\nWrote " + pathOf("change_2.edl") + "\n"))
        << run.out;
    EXPECT_NE(std::string::npos, run.out.find("Total: 1000\n"));
    EXPECT_NE(std::string::npos, run.out.find("it went to 2 files"));
    EXPECT_NE(std::string::npos,
              run.out.find("Removed " + pathOf("change_3.edl") + ", left by an earlier Change EDL of that name\n"));
    EXPECT_NE(std::string::npos,
              run.out.find("Removed " + pathOf("change.edl") + ", left by an earlier Change EDL of that name\n"));
    EXPECT_FALSE(fs::exists(folder / "change_3.edl"));
    EXPECT_FALSE(fs::exists(folder / "change.edl"));
    EXPECT_NE(std::string::npos, inspect({pathOf("change_2.edl"), "--rate", "25"}).out.find("Total: 1\n"));

    // A file of the user's that only shares the name stays, with a warning.
    std::ofstream(folder / "change_3.edl") << "my notes\n";
    run = generateLong(pathOf("change.edl"));
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_EQ("my notes\n", readFile(folder / "change_3.edl"));
    EXPECT_NE(std::string::npos, run.err.find("warning: " + pathOf("change_3.edl") + ": was not written by Montala"))
        << run.err;
}

TEST_F(SafeOutputTest, AFailedSplitWriteNamesOnlyWhatThisRunWrote)
{
    // An old second part that may not be replaced: refused before the first
    // part is written, and neither old file is reported as written.
    std::ofstream(folder / "change_2.edl") << "TITLE:   change_2.edl\n";
    ::chmod((folder / "change_2.edl").c_str(), 0444);
    std::ofstream(folder / "change_1.edl") << "yesterday\n";
    const CommandRun run = generateLong(pathOf("change.edl"), {"--json"});
    EXPECT_EQ(1, run.status);
    EXPECT_NE(std::string::npos, run.err.find(pathOf("change_2.edl") + ": is read-only")) << run.err;
    EXPECT_EQ(std::string::npos, run.err.find("part already written")) << run.err;
    EXPECT_EQ("yesterday\n", readFile(folder / "change_1.edl"));
    const nlohmann::json document = nlohmann::json::parse(run.out);
    EXPECT_TRUE(document["written"].empty()) << run.out;
}

} // namespace
