#include "app/LoadReporting.h"

#include "app/EventPrinting.h"
#include "core/time/FramerateNames.h"
#include "core/time/Timecode.h"
#include "util/Result.h"
#include "util/StringUtil.h"

namespace montala::app {

using core::EdlFileReport;
using core::fileio::LineAction;
using core::fileio::LineNote;
using util::StringUtil;

namespace {

// A system message with the file name in place of its "%s".
std::string message(const char16_t* text, const std::string& fileName)
{
    return StringUtil::replaceAll(StringUtil::toUtf8(StringUtil::translate(text)), "%s", fileName);
}

const char* actionName(LineAction action)
{
    switch (action) {
    case LineAction::Dropped: return "dropped";
    case LineAction::Changed: return "changed";
    case LineAction::Converted: break;
    }
    return "converted";
}

// A file that is no EDL at all would fill the screen; the JSON form has
// every line.
constexpr size_t printedLineNotes = 20;

} // namespace

std::optional<core::Framerate> chooseProjectRate(const std::string& rateOption, core::EdlLoader& loader,
                                                 std::ostream& err)
{
    if (!rateOption.empty())
        return core::parseRateName(rateOption);
    const core::RateSuggestion suggestion = loader.suggestProjectRate();
    if (suggestion.path.empty()) {
        err << "montala: no file could be read to suggest a frame rate; name one with --rate\n";
        return std::nullopt;
    }
    if (!suggestion.rate) {
        err << "montala: " << suggestion.path << " suggests no frame rate; name one with --rate (one of ";
        for (size_t i = 0; i < core::rateNames().size(); ++i)
            err << (i == 0 ? "" : ", ") << core::rateNames()[i];
        err << ")\n";
        return std::nullopt;
    }
    if (suggestion.dropModeAssumed)
        err << "montala: " << suggestion.path << " has no FCM line; assuming non-drop frame\n";
    err << "montala: no --rate given; using " << core::rateName(*suggestion.rate) << ", the rate suggested by "
        << suggestion.path << "\n";
    return suggestion.rate;
}

void printLoadReport(const EdlFileReport& report, std::ostream& out, std::ostream& err)
{
    if (!report.opened) {
        err << "montala: " << StringUtil::toUtf8(StringUtil::translate(u"An error occurred while loading the file."))
            << " " << report.path << " (" << core::fileio::describeOpenFailure(report.parse.openFailure) << ")\n";
        return;
    }
    const std::string& name = report.fileName;
    out << name << ": suggests " << core::describeSuggestedRate(report.suggestedRate) << "\n";
    const auto& lines = report.parse.lines;
    for (size_t i = 0; i < lines.size() && i < printedLineNotes; ++i) {
        err << "montala: " << name << " line " << lines[i].line << ": "
            << core::fileio::describeLineIssue(lines[i].issue) << "\n";
    }
    if (lines.size() > printedLineNotes)
        err << "montala: " << name << ": " << lines.size() - printedLineNotes
            << " more lines dropped or changed (--json lists them all)\n";
    if (report.rateMismatch)
        err << "montala: " << message(u"Frame rate mismatch between current project and loaded EDL %s", name) << " ("
            << name << " suggests " << core::describeSuggestedRate(report.suggestedRate) << ", the project runs at "
            << core::rateName(core::Timecode::currentFramerate()) << ")\n";
    if (report.timecodesOffRate)
        err << "montala: "
            << message(u"Some timecodes in the loaded EDL file %s do not match the current project frame rate.", name)
            << "\n";
    if (report.noValidEntries)
        err << "montala: " << message(u"The loaded EDL file %s does not contain valid entries.", name) << "\n";
    if (report.audioEvents > 0)
        err << "montala: " << name << ": " << report.audioEvents
            << " audio-only events are not used; --accept-audio reads them\n";
}

nlohmann::json loadReportToJson(const EdlFileReport& report, const char* list)
{
    nlohmann::json json = {{"path", report.path}};
    if (list != nullptr)
        json["list"] = list;
    json["opened"] = report.opened;
    if (!report.opened)
        json["error"] = core::fileio::describeOpenFailure(report.parse.openFailure);
    json["suggestedRate"] = framerateToJson(report.suggestedRate);
    json["events"] = report.events;
    nlohmann::json lines = nlohmann::json::array();
    for (const LineNote& note : report.parse.lines) {
        lines.push_back({{"line", note.line},
                         {"action", actionName(core::fileio::actionOf(note.issue))},
                         {"reason", core::fileio::describeLineIssue(note.issue)}});
    }
    json["lines"] = lines;
    return json;
}

} // namespace montala::app
