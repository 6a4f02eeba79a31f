#include "sim/session/SessionSummary.h"

#include "kelmar/base/String.h"
#include "sim/project/SimMediaPool.h"
#include "sim/project/SimProject.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

namespace montala::sim {

namespace {

std::string timeText(const SimFrameRate& rate, double absoluteSeconds)
{
    if (const auto frame = rate.exactFrame(absoluteSeconds))
        return rate.label(*frame);
    char text[32];
    std::snprintf(text, sizeof text, "%.6f s", absoluteSeconds);
    return text;
}

void count(SessionSummary& summary, const SimObject& track, int depth)
{
    SessionSummary::TrackLine line;
    line.depth = depth;
    line.name = Kelmar::String::utf16ToUtf8(track.get().name);
    line.kind = kindName(track.kind());
    line.locked = track.get().locked;
    switch (track.kind()) {
    case ObjectKind::AudioTrack: ++summary.audioTracks; break;
    case ObjectKind::VideoTrack: ++summary.videoTracks; break;
    case ObjectKind::MarkerTrack: ++summary.markerTracks; break;
    case ObjectKind::Folder: ++summary.folders; break;
    default: ++summary.rulers; break;
    }
    if (track.kind() != ObjectKind::Folder) {
        for (const auto& child : track.children()) {
            switch (child->kind()) {
            case ObjectKind::AudioEvent: ++line.events; ++summary.audioEvents; break;
            case ObjectKind::VideoEvent: ++line.events; ++summary.videoEvents; break;
            case ObjectKind::Part:
                ++line.parts;
                ++summary.parts;
                line.events += static_cast<int>(child->children().size());
                summary.audioEvents += static_cast<int>(child->children().size());
                break;
            default: ++line.markers; ++summary.markers; break;
            }
        }
        for (const auto& automationTrack : track.automation()) {
            ++summary.automationTracks;
            line.automationPoints += static_cast<int>(automationTrack->children().size());
        }
        summary.automationPoints += line.automationPoints;
    }
    summary.tracks.push_back(line);
    if (track.kind() == ObjectKind::Folder)
        for (const auto& child : track.children())
            count(summary, *child, depth + 1);
}

} // namespace

SessionSummary SessionSummary::of(SimProject& project)
{
    SessionSummary summary;
    summary.name = Kelmar::String::utf16ToUtf8(project.get().name);
    const SimFrameRate& rate = project.frameRate();
    summary.rate = rate.describe();
    const double start = project.getProjectStart();
    summary.start = timeText(rate, start);
    summary.end = timeText(rate, start + project.length());
    summary.length = timeText(rate, project.length());
    for (const auto& child : project.children())
        count(summary, *child, 0);
    summary.clips = static_cast<int>(project.mediaPool().clips().size());
    return summary;
}

std::string SessionSummary::describe() const
{
    std::ostringstream text;
    text << "Project: " << name << "\n";
    text << "Frame rate: " << rate << "\n";
    text << "Range: " << start << " - " << end << " (length " << length << ")\n";
    text << "Tracks: " << tracks.size() << " (audio " << audioTracks << ", video " << videoTracks << ", marker "
         << markerTracks << ", folder " << folders << ", ruler " << rulers << ")\n";
    text << "Events: " << audioEvents + videoEvents << " (audio " << audioEvents << ", video " << videoEvents
         << "), in " << parts << " part" << (parts == 1 ? "" : "s") << "\n";
    text << "Markers: " << markers << "\n";
    text << "Automation points: " << automationPoints << " on " << automationTracks << " automation track"
         << (automationTracks == 1 ? "" : "s") << "\n";
    text << "Media pool: " << clips << " clip" << (clips == 1 ? "" : "s") << "\n";
    std::size_t width = 5;
    for (const TrackLine& line : tracks)
        width = std::max(width, line.name.size() + 2 * static_cast<std::size_t>(line.depth));
    text << "\n";
    char row[512];
    std::snprintf(row, sizeof row, "  %-*s  %-7s %7s %8s %11s\n", static_cast<int>(width), "Track", "Kind", "Events",
                  "Markers", "Automation");
    text << row;
    for (const TrackLine& line : tracks) {
        const std::string name = std::string(2 * static_cast<std::size_t>(line.depth), ' ') + line.name;
        std::snprintf(row, sizeof row, "  %-*s  %-7s %7d %8d %11d%s\n", static_cast<int>(width), name.c_str(),
                      line.kind.c_str(), line.events, line.markers, line.automationPoints,
                      line.locked ? "  locked" : "");
        text << row;
    }
    return text.str();
}

} // namespace montala::sim
