#include "app/Program.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace {

struct ProgramRun {
    int status;
    std::string out;
    std::string err;
};

ProgramRun run(std::vector<const char*> arguments)
{
    arguments.insert(arguments.begin(), "montala");
    std::ostringstream out, err;
    montala::app::CommandIo io{out, err};
    const int status = montala::app::runProgram(static_cast<int>(arguments.size()), arguments.data(), io);
    return {status, out.str(), err.str()};
}

} // namespace

TEST(Program, WithoutACommandPrintsTheHelpAndAnUnknownOneIsNamed)
{
    const ProgramRun bare = run({});
    EXPECT_EQ(bare.status, 0);
    EXPECT_NE(bare.out.find("inspect"), std::string::npos);
    EXPECT_NE(bare.out.find("generate"), std::string::npos);

    const ProgramRun unknown = run({"inpsect", "a.edl"});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_NE(unknown.err.find("unknown command \"inpsect\""), std::string::npos) << unknown.err;
    EXPECT_NE(unknown.err.find("inspect, generate, session"), std::string::npos) << unknown.err;
    EXPECT_EQ(unknown.out, "");

    const ProgramRun known = run({"inspect", "/nonexistent/a.edl", "--rate", "25"});
    EXPECT_EQ(known.status, 1) << "a known command runs and sets the status";
}
