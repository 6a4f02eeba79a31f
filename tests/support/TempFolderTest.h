#pragma once

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <string>
#include <system_error>

namespace montala::test {

// A test with a folder of its own for the files it writes, empty at the
// start and taken away, with all in it, at the end. The process id and the
// test's name are in the folder's name, so that neither a test program run
// beside this one nor a test that failed before finds its files there.
class TempFolderTest : public ::testing::Test {
protected:
    explicit TempFolderTest(const std::string& prefix)
    {
        folder = std::filesystem::temp_directory_path() /
                 (prefix + "-" + std::to_string(::getpid()) + "-" +
                  ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::remove_all(folder);
        std::filesystem::create_directories(folder);
    }
    ~TempFolderTest() override
    {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

    // A path in the folder, as the commands take it.
    std::string pathOf(const std::string& name) const { return (folder / name).string(); }

    std::filesystem::path folder;
};

} // namespace montala::test
