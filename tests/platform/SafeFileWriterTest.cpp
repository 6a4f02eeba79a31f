#include "platform/SafeFileWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace montala::platform {
namespace {

namespace fs = std::filesystem;
using Error = SafeFileWriter::Error;

class SafeFileWriterTest : public ::testing::Test {
protected:
    SafeFileWriterTest()
    {
        folder = fs::temp_directory_path()
                 / ("montala-safe-" + std::to_string(::getpid()) + "-"
                    + ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(folder);
        fs::create_directories(folder);
    }
    ~SafeFileWriterTest() override
    {
        std::error_code ignored;
        fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, ignored);
        fs::remove_all(folder, ignored);
    }

    static std::string contentOf(const fs::path& path)
    {
        std::ifstream file(path, std::ios::binary);
        std::stringstream content;
        content << file.rdbuf();
        return content.str();
    }

    void put(const fs::path& path, const std::string& text) { std::ofstream(path, std::ios::binary) << text; }

    std::vector<std::string> namesInFolder() const
    {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    static mode_t modeOf(const fs::path& path)
    {
        struct stat status {};
        EXPECT_EQ(0, ::stat(path.c_str(), &status));
        return status.st_mode & 07777;
    }

    fs::path folder;
};

TEST_F(SafeFileWriterTest, NewFilesFollowTheUmaskAndOldOnesAreReplacedWhole)
{
    const mode_t mask = ::umask(022);
    ::umask(mask);
    const fs::path path = folder / "film.edl";
    ASSERT_TRUE(SafeFileWriter::write(path, "first\n").ok());
    EXPECT_EQ("first\n", contentOf(path));
    EXPECT_EQ(0666 & ~mask, modeOf(path));

    put(path, std::string(5000, 'x'));
    const SafeFileWriter::Outcome outcome = SafeFileWriter::write(path, "second\n");
    ASSERT_TRUE(outcome.ok()) << outcome.message();
    EXPECT_EQ("second\n", contentOf(path));
    EXPECT_EQ(std::vector<std::string>{"film.edl"}, namesInFolder()) << "no temporary file stays";

    // A relative path in the working folder has no folder part.
    const fs::path before = fs::current_path();
    fs::current_path(folder);
    EXPECT_TRUE(SafeFileWriter::write("here.edl", "here\n").ok());
    fs::current_path(before);
    EXPECT_EQ("here\n", contentOf(folder / "here.edl"));
}

TEST_F(SafeFileWriterTest, ATextMadeInPiecesIsWrittenWholeOrNotAtAll)
{
    const fs::path path = folder / "film.json";
    put(path, "old\n");
    const auto pieces = [](bool finish) {
        return [finish](const SafeFileWriter::Put& write) {
            write("{\n");
            write(std::string(3, 'x'));
            write("\n}\n");
            return finish;
        };
    };
    const SafeFileWriter::Outcome stopped = SafeFileWriter::write(path, pieces(false));
    EXPECT_EQ(Error::Stopped, stopped.error);
    EXPECT_EQ("old\n", contentOf(path));
    EXPECT_EQ(std::vector<std::string>{"film.json"}, namesInFolder()) << "no temporary file stays";

    ASSERT_TRUE(SafeFileWriter::write(path, pieces(true)).ok());
    EXPECT_EQ("{\nxxx\n}\n", contentOf(path));
}

TEST_F(SafeFileWriterTest, ExistingFilesKeepTheirMode)
{
    for (const mode_t mode : {mode_t(0600), mode_t(0640), mode_t(0755), mode_t(0604)}) {
        SCOPED_TRACE(mode);
        const fs::path path = folder / "kept.edl";
        put(path, "old");
        ASSERT_EQ(0, ::chmod(path.c_str(), mode));
        ASSERT_TRUE(SafeFileWriter::write(path, "new").ok());
        EXPECT_EQ(mode, modeOf(path));
        EXPECT_EQ("new", contentOf(path));
    }
}

TEST_F(SafeFileWriterTest, WritesThroughSymbolicLinksWhichStayLinks)
{
    fs::create_directory(folder / "real");
    put(folder / "real" / "film.edl", "old");
    ::chmod((folder / "real" / "film.edl").c_str(), 0640);
    // A chain of two links, the first one relative to its own folder.
    fs::create_symlink(folder / "real" / "film.edl", folder / "absolute.edl");
    fs::create_symlink("absolute.edl", folder / "relative.edl");

    const SafeFileWriter::Outcome outcome = SafeFileWriter::write(folder / "relative.edl", "new");
    ASSERT_TRUE(outcome.ok()) << outcome.message();
    EXPECT_EQ(folder / "real" / "film.edl", outcome.target);
    EXPECT_TRUE(fs::is_symlink(folder / "relative.edl"));
    EXPECT_TRUE(fs::is_symlink(folder / "absolute.edl"));
    EXPECT_EQ("new", contentOf(folder / "real" / "film.edl"));
    EXPECT_EQ(0640u, modeOf(folder / "real" / "film.edl"));
    EXPECT_EQ((std::vector<std::string>{"film.edl"}), [&] {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder / "real"))
            names.push_back(entry.path().filename().string());
        return names;
    }());

    // A dangling link makes its target, and stays a link.
    fs::create_symlink("later.edl", folder / "dangling.edl");
    ASSERT_TRUE(SafeFileWriter::write(folder / "dangling.edl", "made").ok());
    EXPECT_TRUE(fs::is_symlink(folder / "dangling.edl"));
    EXPECT_EQ("made", contentOf(folder / "later.edl"));

    // Links that lead round in a loop are refused.
    fs::create_symlink("loop-b", folder / "loop-a");
    fs::create_symlink("loop-a", folder / "loop-b");
    EXPECT_EQ(Error::LinkLoop, SafeFileWriter::write(folder / "loop-a", "x").error);
}

TEST_F(SafeFileWriterTest, ReadOnlyFilesAreRefusedEvenForRoot)
{
    // Root passes access(W_OK) for any file; the mode bits still say no.
    const fs::path path = folder / "locked.edl";
    put(path, "keep me");
    ::chmod(path.c_str(), 0444);
    const SafeFileWriter::Outcome outcome = SafeFileWriter::write(path, "lost");
    EXPECT_EQ(Error::ReadOnly, outcome.error);
    EXPECT_EQ(path.string() + ": is read-only (mode 444); it is left as it is", outcome.message());
    EXPECT_EQ("keep me", contentOf(path));
    EXPECT_EQ(0444u, modeOf(path));
    // The check alone says the same and makes nothing.
    EXPECT_EQ(Error::ReadOnly, SafeFileWriter::check(path).error);
    EXPECT_TRUE(SafeFileWriter::check(folder / "new.edl").ok());

    // Through a link the message names the link and its target.
    fs::create_symlink(path, folder / "link.edl");
    const SafeFileWriter::Outcome linked = SafeFileWriter::write(folder / "link.edl", "lost");
    EXPECT_EQ(Error::ReadOnly, linked.error);
    EXPECT_NE(std::string::npos, linked.message().find("link.edl: is read-only (the link's target " + path.string()))
        << linked.message();
    EXPECT_EQ((std::vector<std::string>{"link.edl", "locked.edl"}), namesInFolder());
}

TEST_F(SafeFileWriterTest, OnlyRegularFilesOrNewPathsAreWritten)
{
    // As root, a rename over /dev/null would turn the device into a file.
    const SafeFileWriter::Outcome device = SafeFileWriter::write("/dev/null", "x");
    EXPECT_EQ(Error::NotRegularFile, device.error);
    EXPECT_EQ("/dev/null: is a device; only a regular file or a new path can be written", device.message());
    struct stat status {};
    ASSERT_EQ(0, ::stat("/dev/null", &status));
    EXPECT_TRUE(S_ISCHR(status.st_mode));

    fs::create_symlink("/dev/null", folder / "null.edl");
    EXPECT_EQ(Error::NotRegularFile, SafeFileWriter::write(folder / "null.edl", "x").error);
    EXPECT_TRUE(fs::is_symlink(folder / "null.edl"));

    ASSERT_EQ(0, ::mkfifo((folder / "pipe.edl").c_str(), 0666));
    EXPECT_EQ(Error::NotRegularFile, SafeFileWriter::write(folder / "pipe.edl", "x").error);
    EXPECT_TRUE(fs::is_fifo(folder / "pipe.edl"));

    fs::create_directories(folder / "taken.edl" / "inside");
    EXPECT_EQ(Error::NotRegularFile, SafeFileWriter::write(folder / "taken.edl", "x").error);
    EXPECT_EQ(Error::NotRegularFile, SafeFileWriter::write(folder / "taken.edl" / "", "x").error);
    EXPECT_TRUE(fs::is_directory(folder / "taken.edl" / "inside"));

    EXPECT_EQ(Error::NoFolder, SafeFileWriter::write(folder / "missing" / "a.edl", "x").error);
    put(folder / "plain", "");
    EXPECT_EQ(Error::NoFolder, SafeFileWriter::write(folder / "plain" / "a.edl", "x").error);
    EXPECT_EQ((std::vector<std::string>{"null.edl", "pipe.edl", "plain", "taken.edl"}), namesInFolder());
}

TEST_F(SafeFileWriterTest, AFailedWriteKeepsTheOldFileAndLeavesNoTemporary)
{
    const fs::path path = folder / "film.edl";
    put(path, "old text");

    // A file size limit fails the write as a full disk would, instead of
    // ending the program with SIGXFSZ (whose default this process keeps).
    struct rlimit saved {};
    ASSERT_EQ(0, ::getrlimit(RLIMIT_FSIZE, &saved));
    const auto previousHandler = std::signal(SIGXFSZ, SIG_DFL);
    struct rlimit small = saved;
    small.rlim_cur = 1024;
    ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &small));
    const SafeFileWriter::Outcome outcome = SafeFileWriter::write(path, std::string(100000, 'n'));
    ::setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, previousHandler);

    EXPECT_EQ(Error::CannotWrite, outcome.error);
    EXPECT_NE(std::string::npos, outcome.message().find("film.edl: cannot be written: ")) << outcome.message();
    EXPECT_EQ("old text", contentOf(path));
    EXPECT_EQ(std::vector<std::string>{"film.edl"}, namesInFolder());

    // A folder the user may not write to (root may, so this half is for
    // everyone else).
    if (::geteuid() != 0) {
        fs::create_directory(folder / "closed");
        ::chmod((folder / "closed").c_str(), 0555);
        const SafeFileWriter::Outcome closed = SafeFileWriter::write(folder / "closed" / "a.edl", "x");
        EXPECT_EQ(Error::CannotCreate, closed.error);
        EXPECT_NE(std::string::npos, closed.message().find("cannot create a file in the folder")) << closed.message();
        ::chmod((folder / "closed").c_str(), 0755);
    }
}

TEST_F(SafeFileWriterTest, ATerminatedWriteLeavesNoTemporary)
{
    // A child writes a large file and is sent SIGTERM by its own watcher as
    // soon as the temporary file shows: it must end by the signal, with the
    // temporary file gone and the old file as it was.
    const fs::path path = folder / "film.json";
    put(path, "old text");
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        std::thread watcher([this] {
            for (int turn = 0; turn < 20000; ++turn) {
                for (const auto& entry : fs::directory_iterator(folder))
                    if (entry.path().extension() == ".saving")
                        ::kill(::getpid(), SIGTERM);
                ::usleep(500);
            }
        });
        watcher.detach();
        SafeFileWriter::write(path, std::string(std::size_t{400} << 20, 'n'));
        ::_exit(0);
    }
    int status = 0;
    ASSERT_EQ(child, ::waitpid(child, &status, 0));
    if (WIFEXITED(status))
        GTEST_SKIP() << "the write ended before the signal came";
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(SIGTERM, WTERMSIG(status));
    EXPECT_EQ(std::vector<std::string>{"film.json"}, namesInFolder());
    EXPECT_EQ("old text", contentOf(path));
}

} // namespace
} // namespace montala::platform
