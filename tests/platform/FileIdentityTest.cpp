#include "platform/FileIdentity.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <unistd.h>

namespace montala::platform {
namespace {

namespace fs = std::filesystem;

TEST(FileIdentity, SameFileHoweverThePathIsSpelled)
{
    const fs::path folder = fs::temp_directory_path() / ("montala-identity-" + std::to_string(::getpid()));
    fs::remove_all(folder);
    fs::create_directories(folder / "sub");
    std::ofstream(folder / "a.edl") << "a";
    std::ofstream(folder / "b.edl") << "a";
    fs::create_symlink(folder / "a.edl", folder / "link.edl");
    fs::create_hard_link(folder / "a.edl", folder / "hard.edl");

    EXPECT_TRUE(isSameFile(folder / "a.edl", folder / "sub" / ".." / "a.edl"));
    EXPECT_TRUE(isSameFile(folder / "a.edl", folder / "link.edl"));
    EXPECT_TRUE(isSameFile(folder / "hard.edl", folder / "a.edl"));
    // Same text, another file.
    EXPECT_FALSE(isSameFile(folder / "a.edl", folder / "b.edl"));
    // A missing file is nobody's twin, not even its own.
    EXPECT_FALSE(isSameFile(folder / "gone.edl", folder / "gone.edl"));
    EXPECT_FALSE(FileIdentity::of(""));
    fs::remove_all(folder);
}

} // namespace
} // namespace montala::platform
