#include "platform/FileReader.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <sys/stat.h>
#include <unistd.h>

namespace montala::platform {
namespace {

namespace fs = std::filesystem;

TEST(FileReader, ReadsEveryByteOrSaysWhyNot)
{
    const fs::path folder = fs::temp_directory_path() / ("montala-reader-" + std::to_string(::getpid()));
    fs::remove_all(folder);
    fs::create_directories(folder);
    const std::string bytes("a\0b\r\n\xff", 6);
    std::ofstream(folder / "a.json", std::ios::binary) << bytes;

    std::string content = "stale";
    EXPECT_TRUE(FileReader::read(folder / "a.json", content).ok);
    EXPECT_EQ(bytes, content);

    FileReader::Outcome missing = FileReader::read(folder / "gone.json", content);
    EXPECT_FALSE(missing.ok);
    EXPECT_EQ((folder / "gone.json").string() + ": does not exist", missing.message(folder / "gone.json"));
    EXPECT_TRUE(content.empty());

    EXPECT_EQ("is a folder, not a file", FileReader::read(folder, content).reason);

    if (::geteuid() != 0) {
        ::chmod((folder / "a.json").c_str(), 0);
        EXPECT_EQ("cannot be opened: permission denied", FileReader::read(folder / "a.json", content).reason);
    }
    fs::remove_all(folder);
}

} // namespace
} // namespace montala::platform
