#include "studio/RunSummaryText.h"

#include "host/Track.h"
#include "util/Result.h"
#include "util/StringUtil.h"

#include <cstdio>

namespace montala::studio {

using util::Result;
using util::StringUtil;

namespace {

std::string translate(const std::u16string& english)
{
    return StringUtil::toUtf8(StringUtil::translate(english));
}

// The translated text with its "%s" filled in, one after the other.
std::string fill(const std::u16string& english, std::initializer_list<std::string> values)
{
    std::string text = translate(english);
    size_t from = 0;
    for (const std::string& value : values) {
        const size_t at = text.find("%s", from);
        if (at == std::string::npos)
            break;
        text.replace(at, 2, value);
        from = at + value.size();
    }
    return text;
}

} // namespace

std::string summaryTitle(const FinishedRun& run)
{
    return translate(run.summary.kind == host::RunSummary::Kind::Preview ? u"Preview" : u"Apply Montala");
}

std::string summaryText(const FinishedRun& run)
{
    const host::RunSummary& summary = run.summary;
    std::string text;
    if (summary.undone)
        text += translate(u"The run was cancelled; the host's undo took it back.") + "\n\n";
    else if (summary.result != Result::Ok)
        text += fill(u"The run stopped with %s.", {Result::name(summary.result)}) + "\n\n";

    text += fill(u"Project rate: %s", {run.rateName}) + "\n";
    text += fill(u"Change EDL: %s events", {std::to_string(run.changeEvents)}) + "\n";
    text += fill(u"Events applied: %s", {std::to_string(summary.eventsApplied)}) + "\n";

    std::string taking;
    for (const std::string& name : summary.tracksTakingPart)
        taking += " " + name + ";";
    text += fill(u"Tracks taking part (%s):", {std::to_string(summary.tracksTakingPart.size())}) + taking + "\n";

    std::string leftOut;
    for (const auto& track : summary.tracksLeftOut)
        leftOut += " " + track.name + " ("
                   + translate(track.reason == host::RunSummary::LeftOut::Locked ? u"locked" : u"not selected")
                   + ");";
    text += fill(u"Tracks left out (%s):", {std::to_string(summary.tracksLeftOut.size())}) + leftOut + "\n";

    std::string markers = std::to_string(summary.markerCount());
    for (const auto& [type, count] : summary.markersWritten)
        markers += ", " + translate(StringUtil::fromUtf8(host::trackTypeName(static_cast<int>(type)))) + " "
                   + std::to_string(count);
    text += fill(u"Markers written: %s", {markers}) + "\n";

    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%.3f", run.seconds);
    text += fill(u"Time taken: %s s", {seconds});
    return text;
}

} // namespace montala::studio
