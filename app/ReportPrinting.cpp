#include "app/ReportPrinting.h"

#include "core/report/ReportWriters.h"

#include <sstream>

namespace montala::app {

void printReportDigest(std::ostream& out, const core::DataModel& model, const core::Framerate& rate)
{
    printReportDigest(out, core::report::ChangeReportBuilder().build(model, rate));
}

void printReportDigest(std::ostream& out, const core::report::ChangeReport& report)
{
    out << "\n" << report.summary() << "\n";
    for (const core::report::Suggestion& suggestion : report.suggestions)
        out << "Suggestion: " << suggestion.text << "\n";
    if (!report.needsSound.empty()) {
        out << "Needs sound (" << report.needsSound.size() << "):\n";
        core::report::writeNeedsSoundText(out, report);
    }
}

nlohmann::json reportDigestJson(const core::DataModel& model, const core::Framerate& rate)
{
    return reportDigestJson(core::report::ChangeReportBuilder().build(model, rate));
}

nlohmann::json reportDigestJson(const core::report::ChangeReport& report)
{
    std::ostringstream spans;
    core::report::writeNeedsSoundJson(spans, report, "");
    nlohmann::json suggestions = nlohmann::json::array();
    for (const core::report::Suggestion& suggestion : report.suggestions)
        suggestions.push_back({{"text", suggestion.text}, {"option", suggestion.option}});
    return {{"summary", report.summary()},
            {"needsSound", nlohmann::json::parse(spans.str())},
            {"suggestions", suggestions}};
}

} // namespace montala::app
