#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <stdexcept>
#include <utility>
#include <vector>

namespace montala::core {

// The automation points next to the position, (t1, y1) before it and
// (t2, y2) after it. With a point on one side only, the other side
// repeats its value at the position itself.
struct AudioAutomationSpan {
    double t1 = 0.0;
    double y1 = 0.0;
    double t2 = 0.0;
    double y2 = 0.0;
};

// The spans by the index of their automation track on the audio track,
// in the order of the indices, read like a map. The driver asks a track
// several times for each piece of a cut, and a track has a curve or two:
// the first few spans live in the object itself, so that an answer
// costs no allocation; a track with more keeps them in a list.
class AudioAutomation {
public:
    using value_type = std::pair<int, AudioAutomationSpan>;
    using iterator = value_type*;
    using const_iterator = const value_type*;

    // The span of that index, a new empty one if there was none.
    AudioAutomationSpan& operator[](int index)
    {
        const iterator found = std::lower_bound(begin(), end(), index, before);
        if (found != end() && found->first == index)
            return found->second;
        const std::size_t at = static_cast<std::size_t>(found - begin());
        if (spilled.empty() && used < kept.size()) {
            std::move_backward(kept.begin() + at, kept.begin() + used, kept.begin() + used + 1);
            kept[at] = {index, {}};
            ++used;
            return kept[at].second;
        }
        if (spilled.empty())
            spilled.assign(kept.begin(), kept.begin() + used);
        spilled.insert(spilled.begin() + static_cast<std::ptrdiff_t>(at), {index, {}});
        used = spilled.size();
        return spilled[at].second;
    }
    const_iterator find(int index) const
    {
        const const_iterator found = std::lower_bound(begin(), end(), index, before);
        return found != end() && found->first == index ? found : end();
    }
    std::size_t count(int index) const { return find(index) != end() ? 1 : 0; }
    // As a map's at: std::out_of_range when there is none.
    const AudioAutomationSpan& at(int index) const
    {
        const const_iterator found = find(index);
        if (found == end())
            throw std::out_of_range("no automation span of that index");
        return found->second;
    }
    std::size_t size() const { return used; }
    bool empty() const { return used == 0; }

    iterator begin() { return spilled.empty() ? kept.data() : spilled.data(); }
    iterator end() { return begin() + used; }
    const_iterator begin() const { return spilled.empty() ? kept.data() : spilled.data(); }
    const_iterator end() const { return begin() + used; }

private:
    static bool before(const value_type& entry, int index) { return entry.first < index; }

    std::array<value_type, 4> kept;
    std::vector<value_type> spilled;
    std::size_t used = 0;
};

// What a track holds around one position of the old timeline: the audio
// event under it and its neighbours, and the automation on both sides.
struct AudioInfo {
    // Absolute seconds. Start equal to end means there is nothing.
    struct Range {
        double start = 0.0;
        double end = 0.0;

        bool isEmpty() const { return start == end; }
        double length() const { return end - start; }
    };

    using AutomationSpan = AudioAutomationSpan;
    using Automation = AudioAutomation;

    Range at;
    Range before;
    Range after;
    Automation automation;
};

} // namespace montala::core
