#include "core/report/ChangeReport.h"

#include "core/events/HealedEvent.h"
#include "core/generation/SourceIntervalIndex.h"
#include "core/time/Timecode.h"
#include "core/events/VfxNameFilter.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <unordered_map>

namespace montala::core::report {

namespace {

struct FateNames {
    const char* name;
    const char* label;
};

// In the order of the enumeration.
const FateNames fateNames[fateCount] = {
    {"unchanged", "unchanged"},
    {"moved", "moved"},
    {"trimmed", "trimmed"},
    {"extended", "extended into handles"},
    {"split", "split"},
    {"deleted", "deleted"},
    {"inserted", "inserted"},
    {"speed-changed", "speed changed"},
    {"frozen", "frozen"},
    {"transition-changed", "dissolve or wipe changed"},
    {"vfx-version", "VFX version changed"},
    {"replaced-take", "replaced by another take"},
    {"unmatched", "not matched"},
};

const char* const gapReasonNames[] = {"new-material", "handles",       "transition-changed",
                                      "speed-changed", "frozen",       "vfx-pattern",
                                      "unmatched-name", "flawed-event", "not-carried"};

// A half-open range of frames on one timeline.
struct Range {
    int in = 0;
    int out = 0;
    int length() const { return out - in; }
};

int overlapLength(const Range& a, const Range& b)
{
    return std::max(0, std::min(a.out, b.out) - std::max(a.in, b.in));
}

// The frame count of a timecode, or nothing when it does not fit the rate.
std::optional<int> framesOf(const Timecode& tc, const Framerate& rate)
{
    if (!tc.isInitialized() || tc.getFrames() >= rate.fps || !tc.isValid(rate))
        return std::nullopt;
    return tc.toFrames(rate);
}

// One EDL event with picture: its record range and its source range.
struct Shot {
    const EventBase* event = nullptr;
    Range record;
    Range source; // at least one frame, so a freeze of one source frame still overlaps it
    bool flawless = false;
    bool freeze = false; // at most one source frame held over more record frames
    std::string key;     // the match key under the rule and the VFX patterns
};

std::vector<Shot> shotsOf(const EventList& list, const Framerate& rate)
{
    std::vector<Shot> shots;
    shots.reserve(list.getSize());
    for (const EventPtr& event : list.getEvents()) {
        const auto dstIn = framesOf(event->getDstIn(), rate);
        const auto dstOut = framesOf(event->getDstOut(), rate);
        if (!dstIn || !dstOut || *dstOut <= *dstIn)
            continue; // no picture: the outgoing line of a dissolve, or a broken event
        Shot shot;
        shot.event = event.get();
        shot.record = {*dstIn, *dstOut};
        const auto srcIn = framesOf(event->getSrcIn(), rate);
        const auto srcOut = framesOf(event->getSrcOut(), rate);
        if (srcIn && srcOut && *srcOut >= *srcIn)
            shot.source = {*srcIn, std::max(*srcOut, *srcIn + 1)};
        shot.flawless = event->isFlawless() && srcIn && srcOut;
        shot.freeze = event->hasMotionSpeed(0.0) || (srcIn && srcOut && *srcOut - *srcIn <= 1 && shot.record.length() > 1);
        shots.push_back(std::move(shot));
    }
    // Record order; equal starts keep list order.
    std::stable_sort(shots.begin(), shots.end(),
                     [](const Shot& a, const Shot& b) { return a.record.in < b.record.in; });
    return shots;
}

// A Change event as this report reads it: one stretch moved as a whole, and
// the parts of a healed event for naming what carries a frame.
struct Carrier {
    int number = 0;
    Range src;
    Range dst;
    std::vector<std::pair<int, Range>> parts; // part number and DST range, in DST order
    int offset() const { return dst.in - src.in; }
};

std::vector<Carrier> carriersOf(const EventList& change, const Framerate& rate)
{
    std::vector<Carrier> carriers;
    for (const EventPtr& event : change.getEvents()) {
        const auto srcIn = framesOf(event->getSrcIn(), rate);
        const auto srcOut = framesOf(event->getSrcOut(), rate);
        const auto dstIn = framesOf(event->getDstIn(), rate);
        const auto dstOut = framesOf(event->getDstOut(), rate);
        if (!srcIn || !srcOut || !dstIn || !dstOut || *dstOut <= *dstIn)
            continue;
        Carrier carrier;
        carrier.number = event->getEventNumber();
        carrier.src = {*srcIn, *srcOut};
        carrier.dst = {*dstIn, *dstOut};
        if (const auto* healed = dynamic_cast<const HealedEvent*>(event.get())) {
            const EventList& parts = healed->getHealedEvents();
            for (size_t index = 0; index < parts.getSize(); ++index) {
                const auto in = framesOf(parts.getEvent(index)->getDstIn(), rate);
                const auto out = framesOf(parts.getEvent(index)->getDstOut(), rate);
                if (in && out && *out > *in)
                    carrier.parts.emplace_back(static_cast<int>(index) + 1, Range{*in, *out});
            }
            std::stable_sort(carrier.parts.begin(), carrier.parts.end(),
                             [](const auto& a, const auto& b) { return a.second.in < b.second.in; });
        }
        carriers.push_back(std::move(carrier));
    }
    std::stable_sort(carriers.begin(), carriers.end(),
                     [](const Carrier& a, const Carrier& b) { return a.dst.in < b.dst.in; });
    return carriers;
}

// The ranges merged into a sorted union.
std::vector<Range> unite(std::vector<Range> ranges)
{
    std::sort(ranges.begin(), ranges.end(), [](const Range& a, const Range& b) { return a.in < b.in; });
    std::vector<Range> merged;
    for (const Range& range : ranges) {
        if (!merged.empty() && range.in <= merged.back().out)
            merged.back().out = std::max(merged.back().out, range.out);
        else
            merged.push_back(range);
    }
    return merged;
}

int measure(const std::vector<Range>& united)
{
    int total = 0;
    for (const Range& range : united)
        total += range.length();
    return total;
}

// Frames of a sorted union that fall inside another sorted union.
int measureWithin(const std::vector<Range>& a, const std::vector<Range>& b)
{
    int total = 0;
    size_t j = 0;
    for (const Range& range : a) {
        while (j < b.size() && b[j].out <= range.in)
            ++j;
        for (size_t k = j; k < b.size() && b[k].in < range.out; ++k)
            total += overlapLength(range, b[k]);
    }
    return total;
}

// Names cut into runs of digits and runs of other characters.
std::vector<std::string> tokens(const std::string& name)
{
    std::vector<std::string> parts;
    for (char c : name) {
        const bool digit = c >= '0' && c <= '9';
        if (parts.empty() || digit != (parts.back()[0] >= '0' && parts.back()[0] <= '9'))
            parts.emplace_back();
        parts.back() += c;
    }
    return parts;
}

// The name once for each run of digits in it, with that run replaced by
// '#': two names one version number apart share one of these.
//   SH010V01 -> SH#V01, SH010V#
std::vector<std::string> numberVariants(const std::string& name)
{
    std::vector<std::string> variants;
    for (size_t at = 0; at < name.size();) {
        if (name[at] < '0' || name[at] > '9') {
            ++at;
            continue;
        }
        size_t end = at;
        while (end < name.size() && name[end] >= '0' && name[end] <= '9')
            ++end;
        variants.push_back(name.substr(0, at) + "#" + name.substr(end));
        at = end;
    }
    return variants;
}

// Where two names differ in exactly one number and nowhere else: the index
// of that token, or nothing.
std::optional<size_t> oneNumberApart(const std::vector<std::string>& a, const std::vector<std::string>& b)
{
    if (a.size() != b.size())
        return std::nullopt;
    std::optional<size_t> found;
    for (size_t index = 0; index < a.size(); ++index) {
        if (a[index] == b[index])
            continue;
        if (found || a[index][0] < '0' || a[index][0] > '9')
            return std::nullopt;
        found = index;
    }
    return found;
}

std::string join(const std::vector<std::string>& parts, size_t from, size_t to)
{
    std::string text;
    for (size_t index = from; index < to; ++index)
        text += parts[index];
    return text;
}

// Filters of one --vfx pattern each, made once a pattern: making one
// compiles a regular expression, and a long reel asks for the same few
// patterns over and over.
class PatternFilters {
public:
    // Null when the pattern rule does not take the texts.
    const VfxNameFilter* of(const std::string& prefix, const std::string& postfix)
    {
        auto [found, added] = filters.try_emplace({prefix, postfix});
        if (added) {
            try {
                auto filter = std::make_unique<VfxNameFilter>();
                filter->setPatterns({{prefix, postfix}});
                found->second = std::move(filter);
            } catch (...) {
                // A character the pattern rule does not take.
            }
        }
        return found->second.get();
    }

private:
    std::map<std::pair<std::string, std::string>, std::unique_ptr<VfxNameFilter>> filters;
};

// The --vfx pattern under which both names are one shot: the text around
// the version number, with the prefix's digits as wildcards where that
// still works, so that the other shots of the same naming match too.
std::optional<std::string> vfxPatternFor(const std::string& oldName, const std::string& newName,
                                         PatternFilters& filters)
{
    const std::vector<std::string> a = tokens(oldName);
    const std::vector<std::string> b = tokens(newName);
    const std::optional<size_t> at = oneNumberApart(a, b);
    if (!at)
        return std::nullopt;
    const std::string prefix = join(a, 0, *at);
    const std::string postfix = join(a, *at + 1, a.size());
    std::string general = prefix;
    std::replace_if(general.begin(), general.end(), [](char c) { return c >= '0' && c <= '9'; }, '*');
    for (const std::string& candidate : {general, prefix}) {
        const VfxNameFilter* filter = filters.of(candidate, postfix);
        if (!filter)
            continue;
        try {
            if (filter->normalize(oldName) == filter->normalize(newName))
                return candidate + ":" + postfix;
        } catch (...) {
            // A prefix longer than a name it is tried on: no suggestion.
        }
    }
    return std::nullopt;
}

// "Old 044": an event as the EDL numbers it.
std::string eventName(const char* cut, int number)
{
    char text[24];
    std::snprintf(text, sizeof text, "%s %03d", cut, number);
    return text;
}

std::string oldEventName(int number)
{
    return eventName("Old", number);
}

std::string transitionText(const EventBase& event)
{
    static const char* const names[] = {"cut", "dissolve", "wipe"};
    const int type = event.getTransitionType();
    const std::string name = type >= 0 && type <= 2 ? names[type] : "transition";
    return type == 0 ? name : name + " " + std::to_string(event.getTransitionDuration());
}

std::string percent(double speed)
{
    char text[32];
    std::snprintf(text, sizeof text, "%g %%", std::round(speed * 1000.0) / 10.0);
    return text;
}

// Keys of one name rule over the events of both cuts.
class Names {
public:
    Names(MatchName rule, const std::vector<VfxPatternEntry>& rows) : rule(rule)
    {
        std::vector<std::pair<std::string, std::string>> pairs;
        for (const VfxPatternEntry& row : rows)
            if (row.isInUse())
                pairs.emplace_back(row.prefix, row.postfix);
        try {
            filter.setPatterns(pairs);
        } catch (...) {
            // Generation refuses such rows itself; here they only cost the
            // VFX keys.
            filter.setPatterns({});
        }
    }

    const std::string& byRule(const EventBase& e) const
    {
        return rule == MatchName::ClipName ? e.getClipName() : e.getRollName();
    }
    const std::string& other(const EventBase& e) const
    {
        return rule == MatchName::ClipName ? e.getRollName() : e.getClipName();
    }
    const char* otherWord() const { return rule == MatchName::ClipName ? "roll" : "clip name"; }
    const char* ruleWord() const { return rule == MatchName::ClipName ? "clip name" : "roll"; }

    std::string key(const EventBase& e) const
    {
        if (filter.isEmpty())
            return byRule(e);
        try {
            return filter.normalize(byRule(e));
        } catch (const std::out_of_range&) {
            return byRule(e);
        }
    }

private:
    MatchName rule;
    VfxNameFilter filter;
};

// Ranges grouped by a text, queried by overlap.
class GroupedIndex {
public:
    void add(const std::string& group, const Range& range, size_t id)
    {
        // try_emplace makes no node for a group already known.
        const auto found = groups.try_emplace(group, static_cast<uint32_t>(groups.size())).first;
        index.add(found->second, range.in, range.out, static_cast<uint32_t>(id));
    }
    void build() { index.build(); }
    // Ids in ascending order, so that answers do not depend on the tree.
    std::vector<uint32_t> find(const std::string& group, const Range& range) const
    {
        std::vector<uint32_t> ids;
        find(group, range, ids);
        return ids;
    }
    // The same into ids, whose room a loop keeps from one call to the next.
    void find(const std::string& group, const Range& range, std::vector<uint32_t>& ids) const
    {
        ids.clear();
        const auto found = groups.find(group);
        if (found != groups.end())
            index.findOverlapping(found->second, range.in, range.out, ids);
        std::sort(ids.begin(), ids.end());
    }

private:
    std::unordered_map<std::string, uint32_t> groups;
    SourceIntervalIndex index;
};

// What the Old cut holds of an uncovered New shot's picture.
struct OldCounterpart {
    GapReason reason = GapReason::NewMaterial;
    int old = -1;                  // index into the Old shots
    std::vector<uint32_t> sameKey; // same key, same speed and transition
};

class Builder {
public:
    Builder(const EventList& oldList, const EventList& newList, const EventList& changeList,
            const ReportOptions& options, const Framerate& rate)
        : names(options.matchName, options.vfxPatterns), rate(rate), olds(shotsOf(oldList, rate)),
          news(shotsOf(newList, rate)), carriers(carriersOf(changeList, rate))
    {
        for (std::vector<Shot>* shots : {&olds, &news})
            for (Shot& shot : *shots)
                shot.key = names.key(*shot.event);
        for (size_t index = 0; index < olds.size(); ++index) {
            const Shot& old = olds[index];
            oldByRecord.add("", old.record, index);
            if (old.source.length() > 0)
                oldByKey.add(old.key, old.source, index);
            if (!old.flawless)
                continue;
            for (const std::string& variant : numberVariants(names.byRule(*old.event)))
                oldByVersion.add(variant, old.source, index);
            if (!names.other(*old.event).empty())
                oldByOther.add(names.other(*old.event), old.source, index);
        }
        for (size_t index = 0; index < carriers.size(); ++index)
            carrierByDst.add("", carriers[index].dst, index);
        for (GroupedIndex* index : {&oldByRecord, &oldByKey, &oldByVersion, &oldByOther, &carrierByDst})
            index->build();
        feeds.resize(olds.size());
        referenced.assign(olds.size(), false);
    }

    ChangeReport build()
    {
        report.rate = rate;
        std::vector<Range> newPicture;
        std::vector<Range> oldPicture;
        std::vector<Range> carried;
        std::vector<Range> carriedOld;
        for (const Shot& shot : news)
            newPicture.push_back(shot.record);
        for (const Shot& shot : olds)
            oldPicture.push_back(shot.record);
        for (const Carrier& carrier : carriers) {
            carried.push_back(carrier.dst);
            carriedOld.push_back(carrier.src);
        }
        const std::vector<Range> newUnion = unite(newPicture);
        const std::vector<Range> oldUnion = unite(oldPicture);
        const std::vector<Range> oldCarried = unite(carriedOld);
        report.newFrames = measure(newUnion);
        report.coveredFrames = measureWithin(newUnion, unite(carried));
        report.oldFrames = measure(oldUnion);
        report.droppedFrames = report.oldFrames - measureWithin(oldUnion, oldCarried);

        traceNewShots();
        report.rows.reserve(news.size() + olds.size());
        for (size_t index = 0; index < news.size(); ++index)
            decideFate(index);
        findReplacedTakes(oldCarried);
        for (size_t index = 0; index < olds.size(); ++index)
            if (gone[index])
                addGoneRow(index);
        findOverlaps();
        suggest();
        for (const NeedsSound& span : report.needsSound)
            report.needsSoundFrames += span.out - span.in;
        return std::move(report);
    }

private:
    // What a New shot got: the Change events over it and the Old shots
    // they came from.
    struct Trace {
        std::vector<Range> covered; // New frames, sorted, not overlapping
        std::vector<ChangeRef> refs;
        int offset = 0;
        int old = -1;        // the Old shot most of it came from
        bool traced = false; // some of it came from an Old shot of its key and source
        Range oldSource; // the source the same-key Old shots showed, together
        std::vector<size_t> spans; // into report.needsSound
        OldCounterpart counterpart;
    };

    void traceNewShots()
    {
        traces.resize(news.size());
        int claimed = news.empty() ? 0 : news.front().record.in;
        for (size_t index = 0; index < news.size(); ++index) {
            const Shot& shot = news[index];
            Trace& trace = traces[index];
            // Old shot -> frames, same key first; a shot has a few at most.
            fromOld.clear();
            const auto scoreOf = [this](int old) -> int& {
                for (auto& entry : fromOld)
                    if (entry.first == old)
                        return entry.second;
                return fromOld.emplace_back(old, 0).second;
            };
            pieces.clear();
            carrierByDst.find("", shot.record, carrierIds);
            for (uint32_t id : carrierIds) {
                const Carrier& carrier = carriers[id];
                const Range piece{std::max(shot.record.in, carrier.dst.in), std::min(shot.record.out, carrier.dst.out)};
                pieces.push_back(piece);
                addRefs(carrier, piece, trace.refs);
                const Range oldPiece{carrier.src.in + piece.in - carrier.dst.in,
                                     carrier.src.in + piece.out - carrier.dst.in};
                oldByRecord.find("", oldPiece, oldIds);
                for (uint32_t old : oldIds) {
                    const int frames = overlapLength(oldPiece, olds[old].record);
                    // The shot the picture came from has its key and its
                    // source; others merely share its Old record frames.
                    const int score = frames + (isOrigin(olds[old], shot) ? originBonus : 0) +
                                      (olds[old].key == shot.key ? 1 << 23 : 0);
                    int& best = scoreOf(static_cast<int>(old));
                    if (score > best)
                        best = score;
                    if (trace.old < 0 || score > scoreOf(trace.old)) {
                        trace.old = static_cast<int>(old);
                        trace.offset = carrier.offset();
                    }
                }
                if (trace.old < 0 && pieces.size() == 1)
                    trace.offset = carrier.offset();
            }
            trace.covered = unite(pieces);
            for (const auto& [old, score] : fromOld) {
                if (score < originBonus)
                    continue;
                trace.traced = true;
                feeds[old].push_back(index);
                const Range source = olds[old].source;
                trace.oldSource = trace.oldSource.length() == 0
                                      ? source
                                      : Range{std::min(trace.oldSource.in, source.in), std::max(trace.oldSource.out, source.out)};
            }
            // The frames no Change event covers and no earlier New shot
            // claimed.
            int from = std::max(shot.record.in, claimed);
            holes.clear();
            for (const Range& covered : trace.covered) {
                if (covered.in > from)
                    holes.push_back({from, std::min(covered.in, shot.record.out)});
                from = std::max(from, covered.out);
            }
            if (from < shot.record.out)
                holes.push_back({from, shot.record.out});
            claimed = std::max(claimed, shot.record.out);
            // Frames an earlier shot claimed still say what this one is.
            if (!holes.empty() || !trace.traced || measure(trace.covered) < shot.record.length())
                trace.counterpart = lookUp(shot);
            for (const Range& hole : holes)
                if (hole.length() > 0)
                    addSpan(index, hole);
        }
    }

    static constexpr int originBonus = 1 << 24;

    static bool isOrigin(const Shot& old, const Shot& shot)
    {
        return old.key == shot.key && overlapLength(old.source, shot.source) > 0;
    }

    void addRefs(const Carrier& carrier, const Range& piece, std::vector<ChangeRef>& refs) const
    {
        const auto add = [&refs](ChangeRef ref) {
            if (std::find(refs.begin(), refs.end(), ref) == refs.end())
                refs.push_back(ref);
        };
        auto part = std::lower_bound(carrier.parts.begin(), carrier.parts.end(), piece.in,
                                     [](const auto& p, int frame) { return p.second.out <= frame; });
        bool any = false;
        for (; part != carrier.parts.end() && part->second.in < piece.out; ++part) {
            add({carrier.number, part->first});
            any = true;
        }
        if (!any)
            add({carrier.number, 0});
    }

    // Looks the New shot's picture up in the Old cut: under its own key,
    // under a name one version number apart, under its other name.
    OldCounterpart lookUp(const Shot& shot) const
    {
        OldCounterpart found;
        // Of several Old uses of the source, the one nearest in place.
        const auto nearer = [&](int current, uint32_t id) {
            return current < 0 || std::abs(olds[id].record.in - shot.record.in) <
                                      std::abs(olds[current].record.in - shot.record.in)
                       ? static_cast<int>(id)
                       : current;
        };
        const std::vector<uint32_t> sameKey = oldByKey.find(shot.key, shot.source);
        if (!shot.flawless) {
            found.reason = GapReason::FlawedEvent;
            for (uint32_t id : sameKey)
                found.old = nearer(found.old, id);
            return found;
        }
        const EventBase& event = *shot.event;
        int otherSpeed = -1;
        int otherTransition = -1;
        int flawed = -1;
        for (uint32_t id : sameKey) {
            const EventBase& old = *olds[id].event;
            if (!olds[id].flawless)
                flawed = nearer(flawed, id);
            else if (!old.hasMotionSpeed(event.getMotionSpeed()))
                otherSpeed = nearer(otherSpeed, id);
            else if (old.getTransitionType() != event.getTransitionType() ||
                     old.getTransitionDuration() != event.getTransitionDuration())
                otherTransition = nearer(otherTransition, id);
            else
                found.sameKey.push_back(id);
        }
        if (!found.sameKey.empty()) {
            found.reason = GapReason::NotCarried;
            for (uint32_t id : found.sameKey)
                found.old = nearer(found.old, id);
        } else if (otherTransition >= 0) {
            found.reason = GapReason::TransitionChanged;
            found.old = otherTransition;
        } else if (otherSpeed >= 0) {
            found.reason = shot.freeze ? GapReason::Frozen : GapReason::SpeedChanged;
            found.old = otherSpeed;
        } else if (flawed >= 0) {
            found.reason = GapReason::FlawedEvent;
            found.old = flawed;
        } else {
            for (const std::string& variant : numberVariants(names.byRule(event))) {
                for (uint32_t id : oldByVersion.find(variant, shot.source)) {
                    const EventBase& old = *olds[id].event;
                    if (old.hasMotionSpeed(event.getMotionSpeed()) && names.byRule(old) != names.byRule(event)) {
                        found.reason = GapReason::VfxPattern;
                        found.old = static_cast<int>(id);
                        return found;
                    }
                }
            }
            if (!names.other(event).empty()) {
                for (uint32_t id : oldByOther.find(names.other(event), shot.source)) {
                    if (olds[id].event->hasMotionSpeed(event.getMotionSpeed())) {
                        found.reason = GapReason::UnmatchedName;
                        found.old = static_cast<int>(id);
                        return found;
                    }
                }
            }
        }
        return found;
    }

    void addSpan(size_t index, const Range& hole)
    {
        const Shot& shot = news[index];
        const EventBase& event = *shot.event;
        Trace& trace = traces[index];
        NeedsSound span;
        span.in = hole.in;
        span.out = hole.out;
        span.newEvent = event.getEventNumber();
        span.reason = trace.counterpart.reason;
        if (span.reason == GapReason::NotCarried) {
            // Source beyond every Old shot that showed it is handles.
            const double speed = event.getMotionSpeed();
            const int srcIn = shot.source.in + static_cast<int>(std::lround((hole.in - shot.record.in) * speed));
            const int srcOut = shot.source.in + static_cast<int>(std::lround((hole.out - shot.record.in) * speed));
            const Range source{srcIn, std::max(srcOut, srcIn + 1)};
            bool shown = false;
            for (uint32_t id : trace.counterpart.sameKey)
                shown = shown || overlapLength(source, olds[id].source) > 0;
            if (!shown)
                span.reason = GapReason::Handles;
        }
        const EventBase* old = trace.counterpart.old >= 0 ? olds[trace.counterpart.old].event : nullptr;
        const std::string oldName = old ? oldEventName(old->getEventNumber()) : std::string();
        switch (span.reason) {
        case GapReason::NewMaterial:
            span.why = "new material: not in the Old cut";
            break;
        case GapReason::Handles:
            span.why = "extended into handles the Old cut did not show";
            break;
        case GapReason::TransitionChanged:
            span.why = transitionText(*old) + " in the Old cut, " + transitionText(event) +
                       " now: the mixed frames are not matched";
            break;
        case GapReason::SpeedChanged:
            span.why = "speed " + percent(old->getMotionSpeed()) + " in the Old cut (" + oldName + "), " +
                       percent(event.getMotionSpeed()) + " now: only equal speeds are matched";
            break;
        case GapReason::Frozen:
            span.why = "a freeze of a frame that the Old cut runs at " + percent(old->getMotionSpeed()) + " (" +
                       oldName + ")";
            break;
        case GapReason::VfxPattern:
            span.why = "VFX version " + names.byRule(*old) + " to " + names.byRule(event) +
                       ": no --vfx pattern makes them one shot";
            break;
        case GapReason::UnmatchedName:
            span.why = std::string("the Old cut has this picture under ") + names.ruleWord() + " " +
                       names.byRule(*old) + " (" + oldName + ")";
            break;
        case GapReason::FlawedEvent: {
            const EventBase& flawed = shot.flawless ? *old : event;
            std::string state = flawed.getStateText();
            if (const size_t newline = state.find('\n'); newline != std::string::npos)
                state.resize(newline);
            span.why = std::string(shot.flawless ? "the Old event (" + oldName + ")" : "the New event") +
                       " has errors and is not matched" + (state.empty() ? "" : ": " + state);
            break;
        }
        case GapReason::NotCarried:
            span.why = "the Old cut has this picture (" + oldName +
                       "), but no Change event carries it: a source used twice, or an edited Change EDL";
            break;
        }
        trace.spans.push_back(report.needsSound.size());
        report.needsSound.push_back(std::move(span));
    }

    bool hasSpan(const Trace& trace, GapReason reason) const
    {
        for (size_t span : trace.spans)
            if (report.needsSound[span].reason == reason)
                return true;
        return false;
    }

    void decideFate(size_t index)
    {
        const Shot& shot = news[index];
        const EventBase& event = *shot.event;
        const Trace& trace = traces[index];
        ShotRow row;
        row.hasNew = true;
        row.newEvent = event.getEventNumber();
        row.roll = event.getRollName();
        row.clip = event.getClipName();
        row.newIn = shot.record.in;
        row.newOut = shot.record.out;
        row.carriedBy = std::move(traces[index].refs); // the trace's last use
        int old = trace.old;
        // Frames carried only for another shot laid over this one say
        // nothing of it.
        if (!trace.traced) {
            old = trace.counterpart.old;
            switch (trace.counterpart.reason) {
            case GapReason::NewMaterial:
                row.fate = Fate::Inserted;
                break;
            case GapReason::TransitionChanged:
                row.fate = Fate::TransitionChanged;
                break;
            case GapReason::SpeedChanged:
                row.fate = Fate::SpeedChanged;
                break;
            case GapReason::Frozen:
                row.fate = Fate::Frozen;
                break;
            case GapReason::VfxPattern:
                row.fate = Fate::VfxVersion;
                break;
            default:
                row.fate = Fate::Unmatched;
                break;
            }
            if (old >= 0) {
                // Where the Old cut showed the first frame of this picture.
                const Shot& from = olds[old];
                const double speed = from.event->getMotionSpeed();
                const int into = speed > 0.0 ? static_cast<int>(std::lround((shot.source.in - from.source.in) / speed)) : 0;
                row.hasOffset = true;
                row.offset = shot.record.in - (from.record.in + std::clamp(into, 0, from.record.length() - 1));
                referenced[old] = true;
            }
        } else {
            row.hasOffset = true;
            row.offset = trace.offset;
            const EventBase* from = old >= 0 ? olds[old].event : nullptr;
            const int head = shot.source.in - trace.oldSource.in;
            const int tail = trace.oldSource.out - shot.source.out;
            if (hasSpan(trace, GapReason::TransitionChanged))
                row.fate = Fate::TransitionChanged;
            else if (from && olds[old].key == shot.key && names.byRule(*from) != names.byRule(event))
                row.fate = Fate::VfxVersion;
            else if (old >= 0 && feeds[old].size() > 1)
                row.fate = Fate::Split;
            else if (trace.oldSource.length() > 0 && (head < 0 || tail < 0 || hasSpan(trace, GapReason::Handles)))
                row.fate = Fate::Extended;
            else if (trace.oldSource.length() > 0 && (head > 0 || tail > 0))
                row.fate = Fate::Trimmed;
            else
                row.fate = row.offset == 0 ? Fate::Unchanged : Fate::Moved;
            if (row.fate == Fate::Trimmed || row.fate == Fate::Extended)
                row.detail = trimText(head, tail);
        }
        if (old >= 0) {
            const Shot& from = olds[old];
            row.hasOld = true;
            row.oldEvent = from.event->getEventNumber();
            row.oldRoll = from.event->getRollName();
            row.oldClip = from.event->getClipName();
            row.oldIn = from.record.in;
            row.oldOut = from.record.out;
        }
        describe(row, shot, trace, old);
        rowOfNew.push_back(report.rows.size());
        report.rows.push_back(std::move(row));
    }

    static std::string trimText(int head, int tail)
    {
        std::vector<std::string> parts;
        if (head > 0)
            parts.push_back(std::to_string(head) + " off the head");
        if (head < 0)
            parts.push_back(std::to_string(-head) + " more at the head");
        if (tail > 0)
            parts.push_back(std::to_string(tail) + " off the tail");
        if (tail < 0)
            parts.push_back(std::to_string(-tail) + " more at the tail");
        std::string text;
        for (const std::string& part : parts)
            text += (text.empty() ? "" : ", ") + part;
        return text;
    }

    void describe(ShotRow& row, const Shot& shot, const Trace& trace, int oldIndex) const
    {
        const EventBase& event = *shot.event;
        const EventBase* old = oldIndex >= 0 ? olds[oldIndex].event : nullptr;
        if (!old && row.fate != Fate::Unmatched)
            return;
        switch (row.fate) {
        case Fate::Split:
            row.detail = "one of " + std::to_string(feeds[trace.old].size()) + " places of " +
                         oldEventName(row.oldEvent);
            break;
        case Fate::SpeedChanged:
            row.detail = percent(old->getMotionSpeed()) + " to " + percent(event.getMotionSpeed());
            break;
        case Fate::Frozen:
            row.detail = "a frame of " + oldEventName(row.oldEvent) + " held for " +
                         std::to_string(shot.record.length()) + " frames";
            break;
        case Fate::TransitionChanged:
            if (trace.counterpart.old >= 0)
                row.detail = transitionText(*olds[trace.counterpart.old].event) + " to " + transitionText(event);
            break;
        case Fate::VfxVersion:
            row.detail = names.byRule(*old) + " to " + names.byRule(event);
            break;
        case Fate::Unmatched:
            if (!trace.spans.empty())
                row.detail = report.needsSound[trace.spans.front()].why;
            break;
        default:
            break;
        }
    }

    // An inserted New shot that stands where a gone Old shot stood, under a
    // clip name one number apart (a take number), is that shot's
    // replacement.
    void findReplacedTakes(const std::vector<Range>& oldCarried)
    {
        gone.assign(olds.size(), false);
        for (size_t index = 0; index < olds.size(); ++index) {
            const Range& record = olds[index].record;
            auto at = std::upper_bound(oldCarried.begin(), oldCarried.end(), record.in,
                                       [](int frame, const Range& r) { return frame < r.out; });
            gone[index] = feeds[index].empty() && !referenced[index] && (at == oldCarried.end() || at->in >= record.out);
        }
        for (size_t index = 0; index < news.size(); ++index) {
            ShotRow& row = report.rows[rowOfNew[index]];
            if (row.fate != Fate::Inserted || row.clip.empty())
                continue;
            const std::vector<std::string> clip = tokens(row.clip);
            // The Old frames just before and just after this shot's place.
            for (const auto& [newFrame, edge] : {std::pair{row.newIn - 1, 1}, std::pair{row.newOut, 0}}) {
                std::optional<int> oldFrame;
                for (uint32_t id : carrierByDst.find("", {newFrame, newFrame + 1}))
                    oldFrame = carriers[id].src.in + newFrame - carriers[id].dst.in + edge;
                if (!oldFrame)
                    continue;
                for (uint32_t id : oldByRecord.find("", {*oldFrame - 1, *oldFrame + 1})) {
                    const Shot& old = olds[id];
                    const int boundary = edge == 1 ? old.record.in : old.record.out;
                    if (!gone[id] || boundary != *oldFrame || old.event->getClipName().empty() ||
                        !oneNumberApart(tokens(old.event->getClipName()), clip))
                        continue;
                    gone[id] = false;
                    row.fate = Fate::ReplacedTake;
                    row.detail = row.clip + " in place of " + old.event->getClipName();
                    row.hasOld = true;
                    row.oldEvent = old.event->getEventNumber();
                    row.oldRoll = old.event->getRollName();
                    row.oldClip = old.event->getClipName();
                    row.oldIn = old.record.in;
                    row.oldOut = old.record.out;
                    break;
                }
                if (row.fate == Fate::ReplacedTake)
                    break;
            }
        }
    }

    void addGoneRow(size_t index)
    {
        const Shot& shot = olds[index];
        ShotRow row;
        row.fate = Fate::Deleted;
        row.hasOld = true;
        row.oldEvent = shot.event->getEventNumber();
        row.roll = row.oldRoll = shot.event->getRollName();
        row.clip = row.oldClip = shot.event->getClipName();
        row.oldIn = shot.record.in;
        row.oldOut = shot.record.out;
        report.rows.push_back(std::move(row));
    }

    void findOverlaps()
    {
        for (size_t i = 0; i < carriers.size(); ++i) {
            for (size_t j = i + 1; j < carriers.size() && carriers[j].dst.in < carriers[i].dst.out; ++j) {
                const Range& a = carriers[i].dst;
                const Range& b = carriers[j].dst;
                report.overlaps.push_back({b.in, std::min(a.out, b.out), carriers[i].number, carriers[j].number});
            }
        }
    }

    void suggest()
    {
        std::vector<std::string> patterns;
        PatternFilters filters;
        // Renamed rolls: Old name -> New name, and how many shots matched
        // only by the other name.
        std::vector<std::pair<std::pair<std::string, std::string>, int>> renamed;
        for (size_t index = 0; index < news.size(); ++index) {
            const Trace& trace = traces[index];
            if (trace.counterpart.old < 0 || trace.spans.empty())
                continue;
            const EventBase& event = *news[index].event;
            const EventBase& old = *olds[trace.counterpart.old].event;
            if (trace.counterpart.reason == GapReason::VfxPattern) {
                const std::optional<std::string> pattern = vfxPatternFor(names.byRule(old), names.byRule(event), filters);
                if (!pattern || std::find(patterns.begin(), patterns.end(), *pattern) != patterns.end())
                    continue;
                patterns.push_back(*pattern);
                report.suggestions.push_back(
                    {eventName("New", event.getEventNumber()) + " " + names.byRule(event) +
                         " is likely a new version of " + oldEventName(old.getEventNumber()) + " " +
                         names.byRule(old) + " (same source from " + event.getSrcIn().toString() + "); --vfx " +
                         *pattern + " would match it and carry its " +
                         std::to_string(news[index].record.length()) + " frames of sound",
                     "--vfx " + *pattern});
            } else if (trace.counterpart.reason == GapReason::UnmatchedName) {
                const auto names_ = std::make_pair(names.byRule(old), names.byRule(event));
                auto found = std::find_if(renamed.begin(), renamed.end(), [&](const auto& r) { return r.first == names_; });
                if (found == renamed.end())
                    renamed.push_back({names_, 1});
                else
                    ++found->second;
            }
        }
        for (const auto& [pair, matched] : renamed) {
            int shotsOfNewName = 0;
            for (const Shot& shot : news)
                shotsOfNewName += names.byRule(*shot.event) == pair.second ? 1 : 0;
            if (matched != shotsOfNewName)
                continue;
            const std::string other = names.otherWord() == std::string("clip name") ? "clip" : "roll";
            report.suggestions.push_back({std::string(names.ruleWord()) + " " + pair.first + " of the Old cut is " +
                                              pair.second + " in the New cut: its " + std::to_string(matched) +
                                              " shots all match by " + names.otherWord() + "; --match " + other +
                                              " would match them",
                                          "--match " + other});
        }
    }

    Names names;
    Framerate rate;
    std::vector<Shot> olds;
    std::vector<Shot> news;
    std::vector<Carrier> carriers;
    GroupedIndex oldByRecord;
    GroupedIndex oldByKey;
    GroupedIndex oldByVersion; // by each numberVariants of the name
    GroupedIndex oldByOther;
    GroupedIndex carrierByDst;
    std::vector<Trace> traces;
    std::vector<std::vector<size_t>> feeds; // Old shot -> the New shots its picture went to
    std::vector<bool> referenced;           // Old shot named by a New shot that has no sound of it
    std::vector<size_t> rowOfNew;
    // Scratch of one New shot's trace, kept to spare allocations.
    std::vector<std::pair<int, int>> fromOld;
    std::vector<uint32_t> carrierIds;
    std::vector<uint32_t> oldIds;
    std::vector<Range> pieces;
    std::vector<Range> holes;
    std::vector<bool> gone;
    ChangeReport report;
};

} // namespace

const char* fateName(Fate fate)
{
    return fateNames[static_cast<int>(fate)].name;
}

const char* fateLabel(Fate fate)
{
    return fateNames[static_cast<int>(fate)].label;
}

const char* gapReasonName(GapReason reason)
{
    return gapReasonNames[static_cast<int>(reason)];
}

int ChangeReport::count(Fate fate) const
{
    return static_cast<int>(std::count_if(rows.begin(), rows.end(), [fate](const ShotRow& r) { return r.fate == fate; }));
}

std::string ChangeReport::timecode(int frames) const
{
    Timecode tc;
    tc.fromFrames(std::clamp(frames, 0, rate.maxFrames), rate);
    // hh:mm:ss:ff as Timecode::toString writes it, without a printf for
    // each of the many thousand a long report holds.
    std::string text = "00:00:00:00";
    const int fields[4] = {tc.getHours(), tc.getMinutes(), tc.getSeconds(), tc.getFrames()};
    for (int index = 0; index < 4; ++index) {
        text[index * 3] = static_cast<char>('0' + fields[index] / 10 % 10);
        text[index * 3 + 1] = static_cast<char>('0' + fields[index] % 10);
    }
    return text;
}

std::string ChangeReport::signedTimecode(int frames) const
{
    return (frames < 0 ? "-" : "+") + timecode(std::abs(frames));
}

std::string ChangeReport::summary() const
{
    int newShots = 0;
    for (const ShotRow& row : rows)
        newShots += row.hasNew ? 1 : 0;
    std::string text = std::to_string(newShots) + (newShots == 1 ? " New shot" : " New shots");
    std::string counts;
    for (int index = 0; index < fateCount; ++index) {
        const Fate fate = static_cast<Fate>(index);
        if (fate == Fate::Deleted)
            continue;
        int n = 0;
        for (const ShotRow& row : rows)
            n += row.hasNew && row.fate == fate ? 1 : 0;
        if (n > 0)
            counts += (counts.empty() ? ": " : ", ") + std::to_string(n) + " " + fateLabel(fate);
    }
    text += counts;
    const int deleted = count(Fate::Deleted);
    text += "; " + std::to_string(deleted) + (deleted == 1 ? " Old shot" : " Old shots") + " deleted. ";
    text += "The Change EDL carries " + timecode(coveredFrames) + " (" + std::to_string(coveredFrames) +
            " frames) of the New cut's " + timecode(newFrames) + "; ";
    if (needsSound.empty())
        text += "no stretch needs sound";
    else
        text += timecode(needsSoundFrames) + " (" + std::to_string(needsSoundFrames) + " frames) in " +
                std::to_string(needsSound.size()) + (needsSound.size() == 1 ? " stretch needs" : " stretches need") +
                " sound";
    text += ". " + timecode(droppedFrames) + " (" + std::to_string(droppedFrames) + " frames) of the Old cut's " +
            timecode(oldFrames) + " is dropped.";
    if (!overlaps.empty())
        text += " " + std::to_string(overlaps.size()) +
                (overlaps.size() == 1 ? " overlap" : " overlaps") + " of Change events on the New timeline.";
    return text;
}

ChangeReport ChangeReportBuilder::build(const EventList& oldList, const EventList& newList,
                                        const EventList& changeList, const ReportOptions& options,
                                        const Framerate& rate) const
{
    return Builder(oldList, newList, changeList, options, rate).build();
}

ChangeReport ChangeReportBuilder::build(const DataModel& model, const Framerate& rate) const
{
    ReportOptions options;
    options.matchName = model.getSettings().getMatchName();
    options.vfxPatterns = model.getSettings().getVfxPatterns();
    return build(model.getOldList(), model.getNewList(), model.getChangeList(), options, rate);
}

} // namespace montala::core::report
