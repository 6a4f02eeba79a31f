// The window's change report: written beside the session, and refused with
// the step that is missing while there is nothing to report.

#include "core/events/EventList.h"
#include "studio/ChangeReportPage.h"
#include "studio/Studio.h"

#include "support/TempFolderTest.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace montala::studio {
namespace {

const std::string samples = std::string(MONTALA_SOURCE_DIR) + "/samples";

class ChangeReportPageTest : public test::TempFolderTest {
protected:
    ChangeReportPageTest() : TempFolderTest("montala-report-page-test") {}
    juce::ScopedJuceInitialiser_GUI juce;
};

TEST_F(ChangeReportPageTest, WritesThePageBesideTheSessionOnceThereIsAChangeEdl)
{
    Studio studio(MONTALA_SOURCE_DIR "/resources");
    std::string error;
    EXPECT_EQ(writeChangeReportPage(studio, error), "");
    EXPECT_EQ(error, "Open a session first.");

    const std::string session = pathOf("reel.json");
    std::filesystem::copy_file(samples + "/sessions/short-film-25.json", session);
    ASSERT_TRUE(studio.openSession(session, error)) << error;
    ASSERT_TRUE(studio.addEdl(core::EventList::OldKind, samples + "/edl/short-film-25/old.edl").opened);
    ASSERT_TRUE(studio.addEdl(core::EventList::NewKind, samples + "/edl/short-film-25/new.edl").opened);
    EXPECT_EQ(writeChangeReportPage(studio, error), "");
    EXPECT_EQ(error, "Generate the Change EDL first: the report tells what it carries.");

    ASSERT_EQ(studio.generate(), util::Result::Ok);
    const std::string page = writeChangeReportPage(studio, error);
    EXPECT_EQ(page, pathOf("reel-change-report.html")) << error;
    std::ostringstream html;
    html << std::ifstream(page).rdbuf();
    EXPECT_NE(html.str().find("Try <code>--vfx SH***V:</code>"), std::string::npos);
    EXPECT_NE(html.str().find("<svg"), std::string::npos);
}

} // namespace
} // namespace montala::studio
