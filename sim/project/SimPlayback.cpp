#include "sim/project/SimPlayback.h"

namespace montala::sim {

std::optional<SimPlayback::Source> SimPlayback::at(const SimObject& track, double time)
{
    std::optional<Source> heard;
    const auto consider = [&](const SimObject& event) {
        if (event.kind() != ObjectKind::AudioEvent && event.kind() != ObjectKind::VideoEvent)
            return;
        const double start = event.timelineStart();
        if (time < start || time >= event.timelineEnd())
            return;
        Source source;
        source.file = event.get().file;
        source.clipId = event.kind() == ObjectKind::VideoEvent ? event.get().clipId : 0;
        source.position = event.get().offset + (time - start);
        source.event = &event;
        heard = source;
    };
    for (const auto& child : track.children()) {
        if (child->kind() == ObjectKind::Part) {
            if (time >= child->get().start && time < child->get().end)
                for (const auto& inner : child->children())
                    consider(*inner);
        } else {
            consider(*child);
        }
    }
    return heard;
}

} // namespace montala::sim
