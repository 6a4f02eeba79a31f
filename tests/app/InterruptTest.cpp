// Ctrl-C sent to the montala program itself, as at a terminal. During the
// run the host's undo takes the project back; during the saving stage the
// file there stays whole. Either way nothing is written, no temporary file
// is left behind, and no summary of a run that did not count is printed.

#include "app/CommandRunner.h"
#include "support/TempFolderTest.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <set>

namespace {

namespace fs = std::filesystem;
using namespace montala::test;
using namespace montala::test::shortFilm;

struct Interrupted {
    bool signalSent = false;
    int status = 0;  // as waitpid gives it
    std::string out; // and err: both on the terminal
};

class Interrupt : public TempFolderTest {
protected:
    Interrupt() : TempFolderTest("montala-interrupt") {}

    // Runs `montala conform ...` on a terminal, so that each line comes as it
    // is printed and the run draws its progress bar, and sends SIGINT once
    // the line `stage` shows. With `holdOutput` the terminal's output is
    // stopped first, as Ctrl-S does: the program's next write waits, so that
    // the signal comes while it is inside that stage however fast it runs.
    Interrupted interruptAt(const std::string& stage, bool holdOutput, const std::vector<std::string>& arguments)
    {
        Interrupted result;
        const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
        EXPECT_GE(terminal, 0);
        if (terminal < 0 || ::grantpt(terminal) != 0 || ::unlockpt(terminal) != 0)
            return result;
        const std::string screenName = ::ptsname(terminal);
        std::vector<std::string> words = {MONTALA_PROGRAM, "conform"};
        words.insert(words.end(), arguments.begin(), arguments.end());
        std::vector<char*> argv;
        for (std::string& word : words)
            argv.push_back(word.data());
        argv.push_back(nullptr);

        const pid_t child = ::fork();
        if (child == 0) {
            const int screen = ::open(screenName.c_str(), O_RDWR | O_NOCTTY);
            ::dup2(screen, STDOUT_FILENO);
            ::dup2(screen, STDERR_FILENO);
            // A test started in the background inherits SIGINT ignored; a
            // user's terminal does not.
            ::signal(SIGINT, SIG_DFL);
            ::execv(argv[0], argv.data());
            ::_exit(127);
        }
        char buffer[4096];
        for (;;) {
            const ssize_t count = ::read(terminal, buffer, sizeof buffer);
            if (count <= 0)
                break; // the program has ended and closed the terminal
            result.out.append(buffer, static_cast<size_t>(count));
            if (!result.signalSent && contains(result.out, stage + "\r\n")) {
                const int screen = ::open(screenName.c_str(), O_RDWR | O_NOCTTY);
                if (holdOutput) {
                    ::tcflow(screen, TCOOFF);
                    ::usleep(100000);
                }
                ::kill(child, SIGINT);
                result.signalSent = true;
                if (holdOutput)
                    ::tcflow(screen, TCOON);
                ::close(screen);
            }
        }
        ::waitpid(child, &result.status, 0);
        ::close(terminal);
        return result;
    }

    std::set<std::string> namesInFolder() const
    {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder))
            names.insert(entry.path().filename().string());
        return names;
    }
};

TEST_F(Interrupt, CtrlCDuringTheRunIsACancelWithNoSummaryAndNothingWritten)
{
    // The sample's dialogue tracks three hundred times over, so that the run
    // lasts long enough to stop the terminal inside it.
    nlohmann::json document = nlohmann::json::parse(readFile(session));
    for (nlohmann::json& track : document["tracks"]) {
        if (track["name"] != "DIALOGUE")
            continue;
        const nlohmann::json dialogue = track["tracks"];
        for (int copy = 0; copy < 300; ++copy)
            for (nlohmann::json added : dialogue) {
                added["name"] = added["name"].get<std::string>() + " " + std::to_string(copy);
                track["tracks"].push_back(added);
            }
    }
    const std::string many = pathOf("many.json");
    std::ofstream(many) << document.dump();

    const Interrupted run =
        interruptAt("== Conforming", true, {many, "--old", oldEdl, "--new", newEdl, "-o", pathOf("out.json")});
    ASSERT_TRUE(run.signalSent) << run.out;
    ASSERT_TRUE(WIFEXITED(run.status)) << "the program handles Ctrl-C itself: " << run.out;
    EXPECT_EQ(WEXITSTATUS(run.status), 1);
    // Inside the run as a rule; on a machine so busy that the terminal
    // stopped only after the run, at the saving stage.
    EXPECT_TRUE(contains(run.out, "cancelled; the host's undo took the project back, nothing was written") ||
                contains(run.out, "cancelled while saving; nothing was written"))
        << run.out;
    EXPECT_FALSE(contains(run.out, "Events applied")) << run.out;
    EXPECT_FALSE(contains(run.out, "Markers written")) << run.out;
    EXPECT_EQ(namesInFolder(), std::set<std::string>{"many.json"}) << "nothing written, no temporary file";
}

TEST_F(Interrupt, CtrlCWhileSavingLeavesTheOldFileWholeAndNoTemporary)
{
    // The session carries a large block of another plug-in's, so that
    // writing it takes long enough for the signal to come while it saves.
    nlohmann::json document = nlohmann::json::parse(readFile(session));
    document["attributes"]["Ballast"] = {{"storage", {{"Block", std::string(std::size_t{48} << 20, 'A')}}}};
    const std::string large = pathOf("large.json");
    std::ofstream(large) << document.dump();
    document = nlohmann::json();
    const std::string output = pathOf("out.json");
    std::ofstream(output) << "old text";

    const Interrupted run =
        interruptAt("== Saving", false, {large, "--old", oldEdl, "--new", newEdl, "-o", output});
    ASSERT_TRUE(run.signalSent) << run.out;
    // Stopped before the text was written (a cancel), or while the file was
    // written (the signal ends the program once the temporary file is gone).
    if (WIFEXITED(run.status)) {
        EXPECT_EQ(WEXITSTATUS(run.status), 1) << "Ctrl-C came too late to stop the save";
        EXPECT_TRUE(contains(run.out, "cancelled while saving; nothing was written")) << run.out;
    } else {
        ASSERT_TRUE(WIFSIGNALED(run.status));
        EXPECT_EQ(WTERMSIG(run.status), SIGINT);
    }
    EXPECT_EQ(readFile(output), "old text");
    EXPECT_EQ(namesInFolder(), (std::set<std::string>{"large.json", "out.json"}));
}

} // namespace
