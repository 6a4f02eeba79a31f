#include "studio/ChangeReportPage.h"

#include "core/report/ChangeReport.h"
#include "core/report/ReportWriters.h"
#include "host/Project.h"
#include "platform/SafeFileWriter.h"
#include "studio/Studio.h"

#include <filesystem>
#include <sstream>

namespace montala::studio {

std::string writeChangeReportPage(Studio& studio, std::string& error)
{
    const core::DataModel* model = studio.model();
    host::Project* project = studio.project() ? studio.host().getActiveProject() : nullptr;
    if (!model || !project) {
        error = "Open a session first.";
        return {};
    }
    if (model->getOldList().getSize() == 0 || model->getNewList().getSize() == 0) {
        error = "Add the Old and the New EDL first.";
        return {};
    }
    if (model->getChangeList().getSize() == 0) {
        error = "Generate the Change EDL first: the report tells what it carries.";
        return {};
    }
    namespace fs = std::filesystem;
    const fs::path session = studio.sessionPath();
    const fs::path page = session.empty()
                              ? fs::temp_directory_path() / "montala-change-report.html"
                              : session.parent_path() / (session.stem().string() + "-change-report.html");
    std::ostringstream html;
    const core::Framerate rate = project->getFramerate();
    core::report::writeHtml(html, core::report::ChangeReportBuilder().build(*model, rate),
                            session.empty() ? std::string("Untitled") : session.filename().string());
    const platform::SafeFileWriter::Outcome written = platform::SafeFileWriter::write(page, html.str());
    if (!written.ok()) {
        error = "The change report could not be written: " + written.message();
        return {};
    }
    return page.string();
}

} // namespace montala::studio
