#include "run/PlaybackTrace.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace montala::run {

using sim::ObjectKind;

PlaybackTrace::PlaybackTrace(const sim::SimObject& track)
{
    std::vector<Stretch> layers;
    const auto layer = [&](const sim::SimObject& event, double from, double to) {
        if (event.kind() != ObjectKind::AudioEvent && event.kind() != ObjectKind::VideoEvent)
            return;
        const double eventStart = event.timelineStart();
        Stretch stretch;
        stretch.start = std::max(from, eventStart);
        stretch.end = std::min(to, event.timelineEnd());
        stretch.file = event.get().file;
        stretch.clipId = event.kind() == ObjectKind::VideoEvent ? event.get().clipId : 0;
        stretch.positionAtStart = event.get().offset + (stretch.start - eventStart);
        layers.push_back(std::move(stretch));
    };
    constexpr double always = 1e300;
    for (const auto& child : track.children()) {
        if (child->kind() == ObjectKind::Part) {
            for (const auto& inner : child->children())
                layer(*inner, child->get().start, child->get().end);
        } else {
            layer(*child, -always, always);
        }
    }
    list = core::heardStretches(layers);

    // Events in a part lie where they lie, whatever the part's range; a
    // joined event goes on in the one that begins where it ends.
    struct Placed {
        double start;
        double end;
        bool joined;
    };
    std::vector<Placed> placed;
    const auto place = [&](const sim::SimObject& event) {
        if (event.kind() == ObjectKind::AudioEvent)
            placed.push_back({event.timelineStart(), event.timelineEnd(), event.get().joinedToNext});
    };
    for (const auto& child : track.children()) {
        if (child->kind() == ObjectKind::Part)
            for (const auto& inner : child->children())
                place(*inner);
        else
            place(*child);
    }
    std::stable_sort(placed.begin(), placed.end(), [](const Placed& a, const Placed& b) { return a.start < b.start; });
    constexpr double joinTolerance = 1e-9;
    for (size_t index = 0; index < placed.size(); ++index) {
        Sound sound{placed[index].start, placed[index].end};
        for (size_t next = index; placed[next].joined && next + 1 < placed.size() &&
                                  std::fabs(placed[next + 1].start - placed[next].end) <= joinTolerance;
             ++next)
            sound.end = placed[next + 1].end;
        soundList.push_back(sound);
    }
}

std::optional<PlaybackTrace::Heard> PlaybackTrace::at(double time) const
{
    auto after = std::upper_bound(list.begin(), list.end(), time,
                                  [](double value, const Stretch& stretch) { return value < stretch.start; });
    if (after == list.begin())
        return std::nullopt;
    const Stretch& stretch = *std::prev(after);
    if (time >= stretch.end)
        return std::nullopt;
    return Heard{stretch.file, stretch.clipId, stretch.positionAtStart + (time - stretch.start)};
}

} // namespace montala::run
