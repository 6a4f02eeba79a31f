// montala report on the sample reel: each form readable by what it is for,
// and an output path that would destroy an input refused.

#include "CommandRunner.h"
#include "support/TempFolderTest.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

namespace montala::test {
namespace {

class ReportCommandTest : public TempFolderTest {
protected:
    ReportCommandTest() : TempFolderTest("montala-report") {}

    static CommandRun report(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), {"report", "--old", shortFilm::oldEdl, "--new", shortFilm::newEdl});
        return runMontala(arguments);
    }
};

TEST_F(ReportCommandTest, WritesEachFormOfTheSampleReelsReport)
{
    const CommandRun text = report({});
    ASSERT_EQ(text.status, 0) << text.err;
    EXPECT_TRUE(contains(text.out, "81 New shots: 11 unchanged, 64 moved, 1 trimmed,"));
    EXPECT_TRUE(contains(text.out, "01:01:22:09-01:01:25:02     68 frames  New 019: new material: not in the Old cut"));
    EXPECT_TRUE(contains(text.out, "trimmed                   012  012  B002      -00:00:00:12  -12     118     98      2       "
                                   "12 off the head, 8 off the tail"));

    const CommandRun csv = report({"--format", "csv"});
    ASSERT_EQ(csv.status, 0) << csv.err;
    EXPECT_EQ(std::count(csv.out.begin(), csv.out.end(), '\n'), 1 + 82);
    EXPECT_TRUE(contains(csv.out, "\nVFX version changed,SH010V01 to SH010V02,044,054,SH010V02,VFX_SH010_v002.mov,"));

    const CommandRun json = report({"--format", "json", "--vfx", "SH***V:"});
    ASSERT_EQ(json.status, 0) << json.err;
    const nlohmann::json document = nlohmann::json::parse(json.out);
    EXPECT_EQ(document["counts"]["vfx-version"], 1);
    EXPECT_EQ(document["needsSound"].size(), 4u);
    EXPECT_EQ(document["frames"]["needsSound"], 68 + 50 + 96 + 50);
    EXPECT_TRUE(document["suggestions"].empty());

    const std::string page = pathOf("report.html");
    const CommandRun html = report({"--format", "html", "-o", page});
    ASSERT_EQ(html.status, 0) << html.err;
    EXPECT_TRUE(contains(html.out, "Wrote " + page));
    EXPECT_TRUE(contains(readFile(page), "<svg"));
}

TEST_F(ReportCommandTest, RefusesToWriteOverAnEdlItRead)
{
    const std::string copy = pathOf("new.edl");
    std::filesystem::copy_file(shortFilm::newEdl, copy);
    const CommandRun run = runMontala({"report", "--old", shortFilm::oldEdl, "--new", copy, "-o", copy});
    EXPECT_EQ(run.status, 2);
    EXPECT_TRUE(contains(run.err, "names an EDL that was read; nothing written"));
    EXPECT_EQ(readFile(copy), readFile(shortFilm::newEdl));
    EXPECT_EQ(runMontala({"report", "--old", shortFilm::oldEdl, "--new", copy, "--format", "pdf"}).status, 2);
}

TEST_F(ReportCommandTest, GenerateAndConformEndWithTheSummaryAndWhatNeedsSound)
{
    const std::vector<std::string> cuts = {"--old", shortFilm::oldEdl, "--new", shortFilm::newEdl};
    const std::string summary = "81 New shots: 11 unchanged, 64 moved,";
    const std::string freeze = "01:03:27:02-01:03:29:02     50 frames  New 048: a freeze of a frame";

    std::vector<std::string> generate = {"generate"};
    generate.insert(generate.end(), cuts.begin(), cuts.end());
    const CommandRun generated = runMontala(generate);
    ASSERT_EQ(generated.status, 0) << generated.err;
    EXPECT_LT(generated.out.find("Healed Event"), generated.out.find(summary));
    EXPECT_TRUE(contains(generated.out, "Needs sound (5):\n"));
    EXPECT_TRUE(contains(generated.out, freeze));
    generate.push_back("--json");
    const nlohmann::json document = nlohmann::json::parse(runMontala(generate).out);
    EXPECT_EQ(document["report"]["needsSound"].size(), 5u);
    EXPECT_EQ(document["report"]["needsSound"][1]["reason"], "frozen");
    EXPECT_EQ(document["report"]["suggestions"][0]["option"], "--vfx SH***V:");

    std::vector<std::string> conform = {"conform", shortFilm::session, "-o", pathOf("out.json")};
    conform.insert(conform.end(), cuts.begin(), cuts.end());
    const CommandRun conformed = runMontala(conform);
    ASSERT_EQ(conformed.status, 0) << conformed.err;
    EXPECT_LT(conformed.out.find("Wrote "), conformed.out.find(summary));
    EXPECT_TRUE(contains(conformed.out, freeze));
    conform.push_back("--json");
    EXPECT_EQ(nlohmann::json::parse(runMontala(conform).out)["report"]["needsSound"].size(), 5u);
}

} // namespace
} // namespace montala::test
