#include "core/conform/HeardStretches.h"

#include <iterator>
#include <map>

namespace montala::core {

namespace {

// Stretches by start while they are painted; each is kept whole until a
// later event covers part of it.
using Canvas = std::map<double, MediaStretch>;

// Cuts the stretch that runs across `time` in two, so that `time` is a key
// or falls in a gap.
void split(Canvas& canvas, double time)
{
    auto after = canvas.upper_bound(time);
    if (after == canvas.begin())
        return;
    MediaStretch& stretch = std::prev(after)->second;
    if (stretch.start >= time || stretch.end <= time)
        return;
    MediaStretch right = stretch;
    right.start = time;
    right.positionAtStart = stretch.positionAtStart + (time - stretch.start);
    stretch.end = time;
    canvas.emplace(time, right);
}

} // namespace

std::vector<MediaStretch> heardStretches(const std::vector<MediaStretch>& layers)
{
    Canvas canvas;
    for (const MediaStretch& layer : layers) {
        if (!(layer.start < layer.end))
            continue;
        split(canvas, layer.start);
        split(canvas, layer.end);
        canvas.erase(canvas.lower_bound(layer.start), canvas.lower_bound(layer.end));
        canvas.emplace(layer.start, layer);
    }
    std::vector<MediaStretch> heard;
    heard.reserve(canvas.size());
    for (auto& entry : canvas)
        heard.push_back(std::move(entry.second));
    return heard;
}

} // namespace montala::core
