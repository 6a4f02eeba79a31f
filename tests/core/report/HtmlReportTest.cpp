// The HTML report of the 25 fps sample opened in a real browser (headless
// Chromium): it must load with nothing in the console, run its script to the
// end, and need nothing from outside the file.

#include "support/ModelFixture.h"

#include "core/model/DataModel.h"
#include "core/report/ChangeReport.h"
#include "core/report/ReportWriters.h"
#include "util/StringUtil.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <unistd.h>

namespace montala::core::report {
namespace {

namespace fs = std::filesystem;

const char* const browser = "/usr/bin/chromium";

// What a shell command printed on standard output and error together.
std::string capture(const std::string& command)
{
    std::string output;
    if (FILE* pipe = ::popen((command + " 2>&1").c_str(), "r")) {
        std::array<char, 4096> buffer;
        while (size_t read = std::fread(buffer.data(), 1, buffer.size(), pipe))
            output.append(buffer.data(), read);
        ::pclose(pipe);
    }
    return output;
}

class HtmlReportTest : public test::ModelFixture {
protected:
    void SetUp() override
    {
        folder = fs::temp_directory_path() / ("montala-html-report-" + std::to_string(::getpid()));
        fs::create_directories(folder);
    }
    void TearDown() override { fs::remove_all(folder); }

    std::string sampleHtml()
    {
        const std::string reel = std::string(MONTALA_SOURCE_DIR) + "/samples/edl/short-film-25/";
        DataModel model;
        Framerate suggested;
        model.getOldList().loadEdl(util::StringUtil::fromUtf8(reel + "old.edl"), false, suggested, true, false);
        model.getNewList().loadEdl(util::StringUtil::fromUtf8(reel + "new.edl"), false, suggested, true, false);
        EXPECT_EQ(model.generateChangeEdl(), util::Result::Ok);
        std::ostringstream html;
        writeHtml(html, ChangeReportBuilder().build(model, provider.getFramerate()), "old.edl to new.edl");
        return html.str();
    }

    std::string chromium(const std::string& arguments)
    {
        return capture(std::string(browser) + " --headless --no-sandbox --disable-gpu --no-first-run " +
                       "--user-data-dir=" + (folder / "profile").string() +
                       " --enable-logging=stderr --v=0 " + arguments);
    }

    fs::path folder;
};

TEST_F(HtmlReportTest, SampleReportLoadsInABrowserWithoutConsoleMessages)
{
    const std::string html = sampleHtml();
    // Self-contained: no file, script or style fetched from elsewhere.
    EXPECT_EQ(html.find(" src="), std::string::npos);
    EXPECT_EQ(html.find("<link"), std::string::npos);
    EXPECT_EQ(html.find("@import"), std::string::npos);

    if (!fs::exists(browser))
        GTEST_SKIP() << "no " << browser << "; scripts/setup.sh installs it";
    const fs::path page = folder / "report.html";
    std::ofstream(page) << html;

    const std::string dom = chromium("--dump-dom file://" + page.string());
    // The page's script ran to its end and filled in the row count.
    EXPECT_NE(dom.find("data-ready=\"yes\""), std::string::npos) << dom.substr(0, 2000);
    EXPECT_NE(dom.find("82 of 82 rows shown"), std::string::npos);
    // Chromium logs every console message, error or not, as CONSOLE.
    EXPECT_EQ(dom.find("CONSOLE"), std::string::npos) << dom.substr(0, dom.find("<html"));

    const fs::path shot = folder / "report.png";
    chromium("--hide-scrollbars --window-size=1400,1100 --screenshot=" + shot.string() + " file://" +
             page.string());
    ASSERT_TRUE(fs::exists(shot));
    EXPECT_GT(fs::file_size(shot), 10000u);
}

} // namespace
} // namespace montala::core::report
