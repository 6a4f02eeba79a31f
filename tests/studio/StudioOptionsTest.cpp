// The command line of montala-studio: a bare --new and --new with a file,
// the rate a new project needs, and the rows of --select.

#include "studio/StudioOptions.h"

#include <gtest/gtest.h>

namespace montala::studio {
namespace {

std::optional<StudioOptions> parse(std::vector<const char*> args, int& status, std::string& message)
{
    args.insert(args.begin(), "montala-studio");
    return parseStudioOptions(static_cast<int>(args.size()), args.data(), status, message);
}

TEST(StudioOptions, BareNewStartsAProjectAndNewWithAFileAddsAnEdl)
{
    int status = -1;
    std::string message;
    auto fresh = parse({"--new", "--rate", "25"}, status, message);
    ASSERT_TRUE(fresh) << message;
    EXPECT_TRUE(fresh->session.empty());
    EXPECT_EQ(fresh->rate, "25");
    EXPECT_TRUE(fresh->newFiles.empty());
    EXPECT_FALSE(fresh->scripted()) << "nothing to do but open the window";

    auto steps = parse({"film.json", "--old", "o.edl", "--new", "n1.edl", "--new", "n2.edl", "--generate",
                        "--select", "3,5-6", "--conform", "--save", "out.json", "--quit"},
                       status, message);
    ASSERT_TRUE(steps) << message;
    EXPECT_EQ(steps->session, "film.json");
    EXPECT_EQ(steps->oldFiles, std::vector<std::string>{"o.edl"});
    EXPECT_EQ(steps->newFiles, (std::vector<std::string>{"n1.edl", "n2.edl"}));
    EXPECT_EQ(steps->selectRows, (std::vector<int>{3, 5, 6}));
    EXPECT_TRUE(steps->generate && steps->conform && steps->quit);
    EXPECT_EQ(steps->saveTo, "out.json");
    EXPECT_TRUE(steps->scripted());

    auto overlay = parse({"film.json", "--set", "heal=none", "--load-new", "a.edl", "--load-new", "b.edl",
                          "--dst-offset", "-00:00:10:00", "--language", "de"},
                         status, message);
    ASSERT_TRUE(overlay) << message;
    EXPECT_EQ(overlay->overlayFiles[1], (std::vector<std::string>{"a.edl", "b.edl"}));
    EXPECT_EQ(overlay->settings, std::vector<std::string>{"heal=none"});
    EXPECT_EQ(overlay->language, "de");
    EXPECT_TRUE(overlay->scripted());
    std::string timecode;
    bool positive = true;
    ASSERT_TRUE(parseOffset(overlay->dstOffset, timecode, positive));
    EXPECT_EQ(timecode, "00:00:10:00");
    EXPECT_FALSE(positive);
}

TEST(StudioOptions, RefusesWhatCannotStartWithStatusTwoAndNamesTheArgument)
{
    int status = -1;
    std::string message;
    EXPECT_FALSE(parse({"--new"}, status, message));
    EXPECT_EQ(status, 2);
    EXPECT_NE(message.find("--rate"), std::string::npos) << message;

    EXPECT_FALSE(parse({"--rate", "26"}, status, message));
    EXPECT_NE(message.find("26"), std::string::npos) << message;

    EXPECT_FALSE(parse({"film.json", "--rate", "25"}, status, message));
    EXPECT_NE(message.find("film.json"), std::string::npos) << message;

    EXPECT_FALSE(parse({"film.json", "--select", "0-2"}, status, message));
    EXPECT_NE(message.find("0-2"), std::string::npos) << message;

    EXPECT_FALSE(parse({"film.json", "--dst-offset", "-10:00"}, status, message));
    EXPECT_NE(message.find("-10:00"), std::string::npos) << message;

    EXPECT_FALSE(parse({"film.json", "--language", "en"}, status, message));
    EXPECT_NE(message.find("us, de"), std::string::npos) << message;

    EXPECT_FALSE(parse({"film.json", "--bogus"}, status, message));
    EXPECT_EQ(status, 2);

    EXPECT_FALSE(parse({"--help"}, status, message));
    EXPECT_EQ(status, 0);
    EXPECT_NE(message.find("--snapshot"), std::string::npos);
}

TEST(StudioOptions, RowsAreCountedFromOneWithRangesAndRepeatsFolded)
{
    std::vector<int> rows;
    ASSERT_TRUE(parseRows("7,2-4,3", rows));
    EXPECT_EQ(rows, (std::vector<int>{2, 3, 4, 7}));
    ASSERT_TRUE(parseRows("1", rows));
    EXPECT_EQ(rows, std::vector<int>{1});
    for (const char* bad : {"", "0", "-1", "4-2", "1,", "a", "2-", "1-2-3", "3 "}) {
        SCOPED_TRACE(bad);
        rows = {9};
        EXPECT_FALSE(parseRows(bad, rows));
        EXPECT_EQ(rows, std::vector<int>{9}) << "a refused text leaves the rows";
    }
}

} // namespace
} // namespace montala::studio
