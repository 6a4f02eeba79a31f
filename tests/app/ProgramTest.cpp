#include "app/CommandRunner.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using montala::test::CommandRun;
using montala::test::runMontala;

} // namespace

TEST(Program, WithoutACommandPrintsTheHelpAndAnUnknownOneIsNamed)
{
    const CommandRun bare = runMontala({});
    EXPECT_EQ(bare.status, 0);
    EXPECT_NE(bare.out.find("inspect"), std::string::npos);
    EXPECT_NE(bare.out.find("generate"), std::string::npos);

    const CommandRun unknown = runMontala({"inpsect", "a.edl"});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_NE(unknown.err.find("unknown command \"inpsect\""), std::string::npos) << unknown.err;
    EXPECT_NE(unknown.err.find("inspect, generate, session"), std::string::npos) << unknown.err;
    EXPECT_EQ(unknown.out, "");

    const CommandRun known = runMontala({"inspect", "/nonexistent/a.edl", "--rate", "25"});
    EXPECT_EQ(known.status, 1) << "a known command runs and sets the status";
}
