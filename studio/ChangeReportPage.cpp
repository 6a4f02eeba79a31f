#include "studio/ChangeReportPage.h"

#include "platform/SafeFileWriter.h"
#include "studio/Studio.h"

#include <filesystem>

namespace montala::studio {

std::string writeChangeReportPage(Studio& studio, std::string& error)
{
    namespace fs = std::filesystem;
    const fs::path session = studio.sessionPath();
    std::string html;
    if (!studio.changeReportHtml(session.empty() ? std::string("Untitled") : session.filename().string(), html,
                                 error))
        return {};
    const fs::path page = session.empty()
                              ? fs::temp_directory_path() / "montala-change-report.html"
                              : session.parent_path() / (session.stem().string() + "-change-report.html");
    const platform::SafeFileWriter::Outcome written = platform::SafeFileWriter::write(page, html);
    if (!written.ok()) {
        error = "The change report could not be written: " + written.message();
        return {};
    }
    return page.string();
}

} // namespace montala::studio
