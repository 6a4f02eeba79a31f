#include "run/SyncAudit.h"

#include "core/events/EventList.h"
#include "core/time/FramerateNames.h"
#include "core/time/Timecode.h"
#include "core/time/Tolerances.h"
#include "host/Track.h"
#include "run/PlaybackTrace.h"
#include "sim/session/SessionFile.h"
#include "sim/services/SimHost.h"
#include "sim/edit/SimRangeEditor.h"

#include "kelmar/base/String.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <map>
#include <optional>
#include <tuple>
#include <unordered_map>

namespace montala::run {

namespace {

using sim::ObjectKind;
using sim::SimObject;

// Two positions in a source are the same within one sample at 384 kHz.
using core::positionTolerance;
// Two motion speeds are the same within this.
constexpr double speedTolerance = 0.01;
// Two automation values are the same within this.
constexpr double automationTolerance = 0.01;

// A shot of a cut, in frames at the project's rate. A dissolve or wipe is
// two shots: the frames under the transition and the clean rest.
struct Shot {
    std::string key;
    std::int64_t srcIn = 0;
    std::int64_t srcOut = 0;
    std::int64_t recIn = 0;
    std::int64_t recOut = 0;
    double speed = 1.0;
    // Of the frames under a transition: its type and length, and the shot it
    // leaves (key and source out of the line before it with its number).
    int transitionType = 0;
    int transitionDuration = 0;
    std::string outgoing;

    bool freeze() const { return std::fabs(speed) < speedTolerance; }

    // The source frame shown at record frame `rec`.
    double sourceAt(std::int64_t rec) const
    {
        const double ratio = static_cast<double>(srcOut - srcIn) / static_cast<double>(recOut - recIn);
        return static_cast<double>(srcIn) + static_cast<double>(rec - recIn) * ratio;
    }

    void setSpeed()
    {
        const std::int64_t record = recOut - recIn;
        speed = srcOut != srcIn ? static_cast<double>(srcOut - srcIn) / static_cast<double>(record > 0 ? record : 1)
                : record == 0 ? 1.0
                              : 0.0;
    }

    bool sameTransition(const Shot& other) const
    {
        return transitionType == other.transitionType && transitionDuration == other.transitionDuration &&
               outgoing == other.outgoing;
    }
};

std::vector<Shot> shotsOf(const core::EventList& list, core::MatchName match, const core::Framerate& rate)
{
    std::vector<Shot> shots;
    const core::EventBase* previous = nullptr;
    for (size_t index = 0; index < list.getSize(); ++index) {
        const core::EventBase& event = *list.getEvent(index);
        const core::EventBase* before = previous;
        previous = &event;
        const core::Timecode* times[] = {&event.getSrcIn(), &event.getSrcOut(), &event.getDstIn(), &event.getDstOut()};
        if (std::any_of(std::begin(times), std::end(times),
                        [&](const core::Timecode* time) { return !time->isInitialized() || !time->isValid(rate); }))
            continue;
        const auto keyOf = [&](const core::EventBase& of) {
            return match == core::MatchName::ClipName ? of.getClipName() : of.getRollName();
        };
        Shot shot;
        shot.key = keyOf(event);
        shot.srcIn = event.getSrcIn().toFrames(rate);
        shot.srcOut = event.getSrcOut().toFrames(rate);
        shot.recIn = event.getDstIn().toFrames(rate);
        shot.recOut = event.getDstOut().toFrames(rate);
        if (shot.recOut < shot.recIn || shot.srcOut < shot.srcIn || shot.key.empty())
            continue;
        shot.setSpeed();
        const int type = event.getTransitionType();
        if (type == 1 || type == 2) {
            // The frames under the transition: its length on the record
            // side, that length at the shot's speed on the source side.
            Shot under = shot;
            under.transitionType = type;
            under.transitionDuration = event.getTransitionDuration();
            if (before && before->getEventNumber() == event.getEventNumber() &&
                before->getSrcOut().isValid(rate))
                under.outgoing = keyOf(*before) + " " + std::to_string(before->getSrcOut().toFrames(rate));
            const auto length = static_cast<std::int64_t>(under.transitionDuration);
            const std::int64_t source =
                shot.speed == 0.0 ? 0
                                  : std::llround(static_cast<double>(length) / shot.speed);
            under.srcOut = std::min(shot.srcOut, shot.srcIn + source);
            under.recOut = std::min(shot.recOut, shot.recIn + length);
            under.setSpeed();
            if (under.recOut > under.recIn)
                shots.push_back(under);
            shot.srcIn = under.srcOut;
            shot.recIn = under.recOut;
            shot.setSpeed();
        }
        if (shot.recOut > shot.recIn)
            shots.push_back(shot);
    }
    return shots;
}

// What a frame of the New cut must play.
struct Expectation {
    enum Kind : std::uint8_t { NoPicture, NewPicture, NotJudged, Old };
    Kind kind = NoPicture;
    // The New shot shown here.
    const Shot* shot = nullptr;
    // Old record frames that showed the same source frame; usually one.
    std::vector<std::int64_t> oldFrames;
};

// Where frame `frame` of New shot `shown` lay in Old shot `old`, if the
// conform takes the one for the other there; `judged` turns false where the
// old shot shows the same picture in a way no sound follows frame by frame.
std::optional<std::int64_t> oldFrameOf(const Shot& shown, const Shot& old, std::int64_t frame, bool& judged)
{
    judged = true;
    if (shown.freeze() || old.freeze()) {
        // A freeze holds one source frame: the conform takes it frame by
        // frame from its first, as far as the shorter of the two reaches.
        const bool overlap = std::max(shown.srcIn, old.srcIn) < std::min(shown.srcOut, old.srcOut);
        const bool samePicture = overlap || (std::max(shown.srcIn, old.srcIn) <
                                             std::min(std::max(shown.srcOut, shown.srcIn + 1),
                                                      std::max(old.srcOut, old.srcIn + 1)));
        if (!samePicture)
            return std::nullopt;
        const std::int64_t step = frame - shown.recIn;
        judged = overlap && shown.freeze() && old.freeze() && step < old.recOut - old.recIn;
        if (!judged)
            return std::nullopt;
        return old.recIn + step;
    }
    const double source = shown.sourceAt(frame);
    const auto sourceFrame = static_cast<std::int64_t>(std::floor(source + 1e-9));
    if (sourceFrame < old.srcIn || sourceFrame >= old.srcOut)
        return std::nullopt;
    judged = std::fabs(old.speed - shown.speed) < speedTolerance && old.sameTransition(shown);
    if (!judged)
        return std::nullopt;
    // Same speed: the two cuts are one constant shift apart over the whole
    // shot, which keeps sound at any speed on its picture.
    const double oldRatio = static_cast<double>(old.srcOut - old.srcIn) / static_cast<double>(old.recOut - old.recIn);
    const double shift = (source - static_cast<double>(old.srcIn)) / oldRatio;
    const std::int64_t oldFrame = old.recIn + static_cast<std::int64_t>(std::llround(shift));
    if (oldFrame < old.recIn || oldFrame >= old.recOut)
        return std::nullopt;
    return oldFrame;
}

// The New cut frame by frame, from its first record frame: where the Old
// cut showed the same picture. Of New shots that overlap, the one that
// starts later is shown (the incoming side of a dissolve).
std::vector<Expectation> expectations(const std::vector<Shot>& oldShots, const std::vector<Shot>& newShots,
                                      std::int64_t first, std::int64_t last)
{
    std::unordered_map<std::string, std::vector<const Shot*>> byKey;
    for (const Shot& shot : oldShots)
        byKey[shot.key].push_back(&shot);

    std::vector<Expectation> frames(static_cast<size_t>(last - first));
    for (const Shot& shot : newShots)
        for (std::int64_t frame = shot.recIn; frame < shot.recOut; ++frame) {
            const Shot*& slot = frames[static_cast<size_t>(frame - first)].shot;
            if (!slot || slot->recIn <= shot.recIn)
                slot = &shot;
        }

    for (size_t index = 0; index < frames.size(); ++index) {
        Expectation& expected = frames[index];
        if (!expected.shot)
            continue;
        expected.kind = Expectation::NewPicture;
        const auto candidates = byKey.find(expected.shot->key);
        if (candidates == byKey.end())
            continue;
        const std::int64_t frame = first + static_cast<std::int64_t>(index);
        for (const Shot* old : candidates->second) {
            bool judged = true;
            const std::optional<std::int64_t> oldFrame = oldFrameOf(*expected.shot, *old, frame, judged);
            if (!judged && expected.kind == Expectation::NewPicture)
                expected.kind = Expectation::NotJudged;
            if (!oldFrame)
                continue;
            expected.kind = Expectation::Old;
            expected.oldFrames.push_back(*oldFrame);
        }
    }
    return frames;
}

std::string utf8(const std::u16string& text)
{
    return Kelmar::String::utf16ToUtf8(text);
}

// The kind of track Montala made for itself, none for the user's tracks.
std::optional<std::int64_t> montalaType(const SimObject& track)
{
    const auto type = track.attributes().find("Montala:MarkerType");
    if (track.kind() != ObjectKind::MarkerTrack || type == track.attributes().end())
        return std::nullopt;
    return type->second.isInt() ? type->second.getInt() : -1;
}

constexpr std::int64_t memosType = static_cast<std::int64_t>(host::TrackType::Memos);

// The new cut's picture, which Montala writes afresh after each run from the
// chosen new videos: it is not the old material carried to the new cut.
bool holdsTheNewPicture(const SimObject& track)
{
    const auto type = track.attributes().find("Montala:VideoType");
    return track.kind() == ObjectKind::VideoTrack && type != track.attributes().end() && type->second.isInt()
           && (type->second.getInt() & 0xFF) == static_cast<std::int64_t>(host::TrackType::NewVideo);
}

// Audio, video and the user's marker tracks. Of the tracks Montala writes its
// own reports on, the memos are the user's, and go with the picture like any
// marker.
bool audited(const SimObject& track)
{
    if (track.kind() == ObjectKind::MarkerTrack)
        return montalaType(track).value_or(memosType) == memosType;
    if (holdsTheNewPicture(track))
        return false;
    return track.kind() == ObjectKind::AudioTrack || track.kind() == ObjectKind::VideoTrack;
}

// Tracks by where they lie ("DIALOGUE/DX", a second of the same name "#2").
std::vector<std::pair<std::string, SimObject*>> tracksByPlace(sim::SimProject& project)
{
    std::vector<std::pair<std::string, SimObject*>> found;
    std::map<std::string, int> seen;
    const auto walk = [&](const auto& self, SimObject& node, const std::string& folder) -> void {
        for (const auto& child : node.children()) {
            if (!child->isTrack())
                continue;
            std::string place = folder + utf8(child->get().name);
            const int count = ++seen[std::string(sim::kindName(child->kind())) + ":" + place];
            if (count > 1)
                place += "#" + std::to_string(count);
            found.emplace_back(place, child.get());
            self(self, *child, place + "/");
        }
    };
    walk(walk, project, "");
    return found;
}

// The content of a track, its events, parts and automation, compared as the
// host holds it; toggles and attributes are no content.
bool sameContent(const SimObject& a, const SimObject& b)
{
    if (a.kind() != b.kind())
        return false;
    SimObject::Fields left = a.get();
    SimObject::Fields right = b.get();
    left.locked = right.locked = false;
    if (!(left == right) || a.children().size() != b.children().size() ||
        a.automation().size() != b.automation().size())
        return false;
    for (size_t index = 0; index < a.children().size(); ++index) {
        const SimObject& childA = *a.children()[index];
        if (childA.isTrack())
            continue; // a folder's tracks are audited on their own
        if (!sameContent(childA, *b.children()[index]))
            return false;
    }
    for (size_t index = 0; index < a.automation().size(); ++index)
        if (!sameContent(*a.automation()[index], *b.automation()[index]))
            return false;
    return true;
}

std::string describe(const std::optional<PlaybackTrace::Heard>& heard, int decimals = 3)
{
    if (!heard)
        return "silence";
    char position[48];
    std::snprintf(position, sizeof position, " @ %.*f s", decimals, heard->position);
    if (!heard->file.empty())
        return heard->file + position;
    return "clip " + std::to_string(heard->clipId) + position;
}

bool same(const std::optional<PlaybackTrace::Heard>& a, const std::optional<PlaybackTrace::Heard>& b)
{
    if (!a || !b)
        return !a && !b;
    return a->file == b->file && a->clipId == b->clipId && std::fabs(a->position - b->position) <= positionTolerance;
}

// The frame line before `frame`, host time.
double lineTime(sim::SimProject& project, std::int64_t frame)
{
    return project.frameRate().frameToSeconds(frame) - project.getProjectStart();
}

// The middle of a frame: clear of the edges, where a cut may lie a hair
// either side of the frame line.
double hostTime(sim::SimProject& project, std::int64_t frame)
{
    return lineTime(project, frame) + 0.5 / project.frameRate().exactRate();
}

// Where the New cut stops following the Old one frame by frame: cuts[i] is
// set when frame i does not follow frame i - 1 on the old timeline (or one
// of them is new picture and the other not). Both ends of the New cut are
// cuts too.
std::vector<bool> cutsOf(const std::vector<Expectation>& frames)
{
    std::vector<bool> cuts(frames.size() + 1, true);
    for (size_t index = 1; index < frames.size(); ++index) {
        const Expectation& previous = frames[index - 1];
        const Expectation& current = frames[index];
        bool follows = previous.kind == current.kind && current.kind != Expectation::Old &&
                       previous.shot == current.shot;
        if (previous.kind == Expectation::Old && current.kind == Expectation::Old)
            for (const std::int64_t oldFrame : current.oldFrames)
                follows = follows || std::find(previous.oldFrames.begin(), previous.oldFrames.end(), oldFrame - 1) !=
                                         previous.oldFrames.end();
        cuts[index] = !follows;
    }
    return cuts;
}

// What an overhang run may change within `window` frames of a cut: a short
// bit of a sound left out, or sound carried across the cut (see
// auditProjects in the header).
class OverhangAllowance {
public:
    OverhangAllowance(sim::SimProject& oldProject, const PlaybackTrace& oldTrace,
                      const std::vector<Expectation>& frames, const std::vector<bool>& cuts, std::int64_t window)
        : oldProject(oldProject), oldTrace(oldTrace), frames(frames), cuts(cuts), window(window)
    {
    }

    bool allows(size_t index, const std::optional<PlaybackTrace::Heard>& found) const
    {
        const auto frame = static_cast<std::int64_t>(index);
        const auto count = static_cast<std::int64_t>(frames.size());
        if (found) {
            // A cut at c lies between frames c - 1 and c: frames c - window
            // to c + window - 1 are near it.
            for (std::int64_t cut = std::max<std::int64_t>(0, frame - window + 1);
                 cut <= std::min(count, frame + window); ++cut)
                if (cuts[static_cast<size_t>(cut)] && carriedAcross(frame, frame >= cut ? cut - 1 : cut, found))
                    return true;
            return false;
        }
        // Silence: the piece this frame lies in may have lost a short bit at
        // its head or its tail.
        std::int64_t sinceCut = 0;
        while (sinceCut < window && !cuts[static_cast<size_t>(frame - sinceCut)])
            ++sinceCut;
        std::int64_t untilCut = 0;
        while (untilCut < window && !cuts[static_cast<size_t>(frame + untilCut + 1)])
            ++untilCut;
        return (sinceCut < window && shortBitLeftOut(frame, sinceCut, true)) ||
               (untilCut < window && shortBitLeftOut(frame, untilCut, false));
    }

private:
    std::optional<PlaybackTrace::Heard> oldSoundAt(std::int64_t oldFrame) const
    {
        return oldTrace.at(hostTime(oldProject, oldFrame));
    }

    // The shot across the cut, frame `across`, carried on to `frame`.
    bool carriedAcross(std::int64_t frame, std::int64_t across, const std::optional<PlaybackTrace::Heard>& found) const
    {
        if (across < 0 || across >= static_cast<std::int64_t>(frames.size()))
            return false;
        const Expectation& neighbour = frames[static_cast<size_t>(across)];
        if (neighbour.kind != Expectation::Old)
            return false;
        for (const std::int64_t oldFrame : neighbour.oldFrames)
            if (same(oldSoundAt(oldFrame + (frame - across)), found))
                return true;
        return false;
    }

    // No more than the window: a hair over it still counts, as frame counts
    // of seconds are never exact.
    bool isShort(double seconds) const
    {
        const double frameCount = seconds * oldProject.frameRate().exactRate();
        return frameCount > positionTolerance &&
               (frameCount < static_cast<double>(window) ||
                std::fabs(frameCount - static_cast<double>(window)) < positionTolerance);
    }

    // Silence `distance` frames from a cut, after it or before it: the
    // piece's edge on the old timeline lies across a sound, of any layer,
    // of which only a short bit lay on this side, and the frame in it.
    bool shortBitLeftOut(std::int64_t frame, std::int64_t distance, bool afterCut) const
    {
        const Expectation& expected = frames[static_cast<size_t>(frame)];
        if (expected.kind != Expectation::Old)
            return false;
        for (const std::int64_t oldFrame : expected.oldFrames) {
            const double edge = afterCut ? lineTime(oldProject, oldFrame - distance)
                                         : lineTime(oldProject, oldFrame + distance + 1);
            const double middle = hostTime(oldProject, oldFrame);
            for (const PlaybackTrace::Sound& sound : oldTrace.sounds()) {
                if (sound.start > edge + positionTolerance)
                    break;
                if (sound.end < edge - positionTolerance)
                    continue;
                if (afterCut ? sound.end > middle && isShort(sound.end - edge)
                             : sound.start < middle && isShort(edge - sound.start))
                    return true;
            }
        }
        return false;
    }

    sim::SimProject& oldProject;
    const PlaybackTrace& oldTrace;
    const std::vector<Expectation>& frames;
    const std::vector<bool>& cuts;
    std::int64_t window;
};

// The markers of a marker track that a frame holds: the points in it, with
// where in the frame they lie, and the ranges over its middle.
class MarkerReader {
public:
    explicit MarkerReader(const SimObject& track)
    {
        for (const auto& marker : track.children())
            if (marker->kind() == ObjectKind::PointMarker)
                points.push_back({marker->get().start, utf8(marker->get().name)});
            else if (marker->kind() == ObjectKind::RangeMarker)
                ranges.push_back({marker->get().start, marker->get().end, utf8(marker->get().name)});
        std::sort(points.begin(), points.end(), [](const Point& a, const Point& b) { return a.at < b.at; });
    }

    struct Mark {
        std::string name;
        bool range = false;
        double offset = 0.0; // of a point, after the frame line
    };

    std::vector<Mark> at(sim::SimProject& project, std::int64_t frame) const
    {
        const double line = lineTime(project, frame) - positionTolerance;
        const double next = lineTime(project, frame + 1) - positionTolerance;
        const double middle = hostTime(project, frame);
        std::vector<Mark> marks;
        auto point = std::lower_bound(points.begin(), points.end(), line,
                                      [](const Point& p, double time) { return p.at < time; });
        for (; point != points.end() && point->at < next; ++point)
            marks.push_back({point->name, false, std::max(0.0, point->at - line - positionTolerance)});
        for (const Range& range : ranges)
            if (range.start <= middle && middle < range.end)
                marks.push_back({range.name, true, 0.0});
        std::sort(marks.begin(), marks.end(), [](const Mark& a, const Mark& b) {
            return std::tie(a.range, a.name, a.offset) < std::tie(b.range, b.name, b.offset);
        });
        return marks;
    }

    static bool same(const std::vector<Mark>& a, const std::vector<Mark>& b)
    {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const Mark& x, const Mark& y) {
            return x.range == y.range && x.name == y.name && std::fabs(x.offset - y.offset) <= positionTolerance;
        });
    }

    static std::string describe(const std::vector<Mark>& marks)
    {
        if (marks.empty())
            return "no marker";
        std::string text;
        for (const Mark& mark : marks) {
            text += (text.empty() ? "" : ", ") + std::string(mark.range ? "range " : "") + "\"" + mark.name + "\"";
            if (mark.offset > positionTolerance) {
                char offset[32];
                std::snprintf(offset, sizeof offset, " +%.4f s", mark.offset);
                text += offset;
            }
        }
        return text;
    }

private:
    struct Point {
        double at;
        std::string name;
    };
    struct Range {
        double start;
        double end;
        std::string name;
    };
    std::vector<Point> points;
    std::vector<Range> ranges;
};

// Frames out of sync gathered into stretches: one open stretch for each thing
// judged, that goes on while the next frame is off too, in the same shot, and
// follows on the old timeline.
class SpanCollector {
public:
    SpanCollector(const sim::SimFrameRate& rate, const std::vector<Expectation>& frames, const std::vector<bool>& cuts,
                  std::int64_t first, std::vector<SyncSpan>& spans)
        : rate(rate), frames(frames), cuts(cuts), first(first), spans(spans)
    {
    }

    void add(const std::string& what, size_t index, const std::string& expected, const std::string& found)
    {
        const std::int64_t frame = first + static_cast<std::int64_t>(index);
        const auto open = last.find(what);
        if (open != last.end() && open->second.index + 1 == index && !cuts[index] &&
            frames[index].shot == frames[index - 1].shot) {
            SyncSpan& span = spans[open->second.span];
            span.last = rate.label(frame);
            ++span.frames;
            open->second.index = index;
            return;
        }
        SyncSpan span;
        span.what = what;
        span.first = span.last = rate.label(frame);
        span.frames = 1;
        if (const Shot* shot = frames[index].shot)
            span.source = shot->key + " " + rate.label(static_cast<std::int64_t>(std::floor(shot->sourceAt(frame) + 1e-9)));
        span.expected = expected;
        span.found = found;
        last[what] = {spans.size(), index};
        spans.push_back(std::move(span));
    }

private:
    struct Open {
        size_t span;
        size_t index;
    };
    const sim::SimFrameRate& rate;
    const std::vector<Expectation>& frames;
    const std::vector<bool>& cuts;
    std::int64_t first;
    std::vector<SyncSpan>& spans;
    std::map<std::string, Open> last;
};

std::string levelText(const std::optional<double>& value)
{
    if (!value)
        return "no automation";
    char text[32];
    std::snprintf(text, sizeof text, "%.3f", *value);
    return text;
}

// One track that took part, judged at every frame of the New cut.
class TrackJudge {
public:
    TrackJudge(sim::SimProject& oldProject, sim::SimProject& newProject, const SimObject& before,
               const SimObject& after, const std::vector<Expectation>& frames, std::int64_t first,
               const std::vector<bool>& cuts, TrackAudit& audit)
        : oldProject(oldProject), newProject(newProject), oldTrace(before), newTrace(after), frames(frames),
          audit(audit), spans(newProject.frameRate(), frames, cuts, first, audit.spans), first(first),
          soundName(before.kind() == ObjectKind::VideoTrack ? "picture" : "sound")
    {
        // Curves by name; one the conform lost reads as no automation.
        for (const auto& lane : before.automation()) {
            Curve curve{utf8(lane->get().name), lane.get(), nullptr};
            for (const auto& conformed : after.automation())
                if (utf8(conformed->get().name) == curve.name) {
                    curve.after = conformed.get();
                    break;
                }
            curves.push_back(std::move(curve));
        }
        if (before.kind() == ObjectKind::MarkerTrack) {
            oldMarkers.emplace(before);
            newMarkers.emplace(after);
        }
    }

    void judge(std::optional<std::uint32_t> overhangFrames, const std::vector<bool>& cuts)
    {
        std::optional<OverhangAllowance> overhang;
        if (overhangFrames)
            overhang.emplace(oldProject, oldTrace, frames, cuts, static_cast<std::int64_t>(*overhangFrames));
        for (size_t index = 0; index < frames.size(); ++index) {
            const Expectation& expected = frames[index];
            if (expected.kind == Expectation::NoPicture)
                continue;
            if (expected.kind == Expectation::NotJudged) {
                ++audit.notJudged;
                continue;
            }
            const std::int64_t frame = first + static_cast<std::int64_t>(index);
            const std::optional<PlaybackTrace::Heard> found = newTrace.at(hostTime(newProject, frame));
            if (expected.kind == Expectation::NewPicture) {
                if (!found)
                    ++audit.newPicture;
                else if (overhang && overhang->allows(index, found))
                    ++audit.changedAtCuts;
                else
                    outOfSync(index, std::nullopt, found);
                continue;
            }
            std::optional<PlaybackTrace::Heard> wanted;
            // The same picture shown twice in the Old cut: either sound will do.
            bool inSync = false;
            for (const std::int64_t oldFrame : expected.oldFrames) {
                wanted = oldTrace.at(hostTime(oldProject, oldFrame));
                inSync = inSync || same(wanted, found);
            }
            if (inSync) {
                ++audit.inSync;
            } else if (overhang && overhang->allows(index, found)) {
                // Sound that came across a cut brings its own automation.
                ++audit.changedAtCuts;
                continue;
            } else {
                outOfSync(index, oldTrace.at(hostTime(oldProject, expected.oldFrames.front())), found);
            }
            judgeAutomation(index, frame);
            judgeMarkers(index, frame);
        }
    }

private:
    void outOfSync(size_t index, const std::optional<PlaybackTrace::Heard>& wanted,
                   const std::optional<PlaybackTrace::Heard>& found)
    {
        ++audit.outOfSync;
        // Sound a hair off in the same file: enough decimals to see by how much.
        const int decimals = wanted && found && describe(wanted) == describe(found) ? 6 : 3;
        spans.add(soundName, index, describe(wanted, decimals), describe(found, decimals));
    }

    void judgeAutomation(size_t index, std::int64_t frame)
    {
        bool off = false;
        const double now = hostTime(newProject, frame);
        for (const Curve& curve : curves) {
            std::optional<double> found;
            if (curve.after)
                found = sim::SimRangeEditor::valueAt(*curve.after, now);
            bool same = false;
            for (const std::int64_t oldFrame : frames[index].oldFrames) {
                const std::optional<double> wanted =
                    sim::SimRangeEditor::valueAt(*curve.before, hostTime(oldProject, oldFrame));
                same = same || (wanted.has_value() == found.has_value() &&
                                std::fabs(wanted.value_or(0.0) - found.value_or(0.0)) <= automationTolerance);
            }
            if (same)
                continue;
            off = true;
            const double oldTime = hostTime(oldProject, frames[index].oldFrames.front());
            spans.add(curve.name, index, levelText(sim::SimRangeEditor::valueAt(*curve.before, oldTime)),
                      levelText(found));
        }
        audit.automationOff += off ? 1 : 0;
    }

    void judgeMarkers(size_t index, std::int64_t frame)
    {
        if (!oldMarkers)
            return;
        const std::vector<MarkerReader::Mark> found = newMarkers->at(newProject, frame);
        for (const std::int64_t oldFrame : frames[index].oldFrames)
            if (MarkerReader::same(oldMarkers->at(oldProject, oldFrame), found))
                return;
        ++audit.markersOff;
        spans.add("markers", index, MarkerReader::describe(oldMarkers->at(oldProject, frames[index].oldFrames.front())),
                  MarkerReader::describe(found));
    }

    struct Curve {
        std::string name;
        // Read as the host reads them.
        const SimObject* before;
        const SimObject* after;
    };

    sim::SimProject& oldProject;
    sim::SimProject& newProject;
    const PlaybackTrace oldTrace;
    const PlaybackTrace newTrace;
    const std::vector<Expectation>& frames;
    TrackAudit& audit;
    SpanCollector spans;
    std::int64_t first;
    std::string soundName;
    std::vector<Curve> curves;
    std::optional<MarkerReader> oldMarkers;
    std::optional<MarkerReader> newMarkers;
};

// The stretches of the New cut that the Old cut never showed.
std::vector<SyncSpan> newPictureSpans(const sim::SimFrameRate& rate, const std::vector<Expectation>& frames,
                                      const std::vector<bool>& cuts, std::int64_t first)
{
    std::vector<SyncSpan> spans;
    SpanCollector collector(rate, frames, cuts, first, spans);
    for (size_t index = 0; index < frames.size(); ++index)
        if (frames[index].kind == Expectation::NewPicture)
            collector.add("picture", index, "silence", "");
    return spans;
}

} // namespace

void auditProjects(sim::SimProject& before, sim::SimProject& after, const core::EventList& oldCut,
                   const core::EventList& newCut, core::MatchName match, bool selectedTracksOnly, AuditReport& report,
                   std::optional<std::uint32_t> overhangFrames)
{
    const sim::SimFrameRate& simRate = before.frameRate();
    report.rate = core::Framerate(simRate.fps, simRate.pullDown, simRate.dropFrame ? 1 : 0);
    report.rateName = core::rateName(report.rate);
    report.tracks.clear();
    report.readable = false;

    const std::vector<Shot> oldShots = shotsOf(oldCut, match, report.rate);
    const std::vector<Shot> newShots = shotsOf(newCut, match, report.rate);
    if (newShots.empty()) {
        report.message = "the New cut holds no shot that can be audited";
        return;
    }
    std::int64_t first = newShots.front().recIn;
    std::int64_t last = newShots.front().recOut;
    for (const Shot& shot : newShots) {
        first = std::min(first, shot.recIn);
        last = std::max(last, shot.recOut);
    }
    const std::vector<Expectation> frames = expectations(oldShots, newShots, first, last);
    const std::vector<bool> cuts = cutsOf(frames);
    report.newCutFrames = static_cast<size_t>(std::count_if(
        frames.begin(), frames.end(), [](const Expectation& frame) { return frame.kind != Expectation::NoPicture; }));
    report.newPicture = newPictureSpans(after.frameRate(), frames, cuts, first);

    const auto conformed = tracksByPlace(after);
    const std::map<std::string, SimObject*> conformedByPlace(conformed.begin(), conformed.end());
    for (const auto& [place, track] : tracksByPlace(before)) {
        if (!audited(*track))
            continue;
        TrackAudit audit;
        audit.name = place;
        audit.kind = track->kind() == ObjectKind::AudioTrack   ? "audio"
                     : track->kind() == ObjectKind::VideoTrack ? "video"
                                                               : "marker";
        // A run gathers Montala's tracks, the memos too, in a folder of its
        // own: they are found again by their kind.
        const auto byPlace = conformedByPlace.find(place);
        SimObject* counterpart = byPlace == conformedByPlace.end() ? nullptr : byPlace->second;
        if (const auto type = montalaType(*track)) {
            const auto sameType = std::find_if(conformed.begin(), conformed.end(),
                                               [&type](const auto& entry) { return montalaType(*entry.second) == type; });
            counterpart = sameType == conformed.end() ? nullptr : sameType->second;
        }
        if (!counterpart || counterpart->kind() != track->kind()) {
            audit.missing = true;
        } else if (track->get().locked || (selectedTracksOnly && !track->selectedFlag())) {
            audit.leftOut = true;
            audit.leftOutReason = track->get().locked ? "locked" : "not selected";
            audit.untouched = sameContent(*track, *counterpart);
        } else {
            TrackJudge(before, after, *track, *counterpart, frames, first, cuts, audit)
                .judge(overhangFrames, cuts);
        }
        report.tracks.push_back(audit);
    }
    report.readable = true;
}

bool AuditReport::inSync() const
{
    return readable && std::all_of(tracks.begin(), tracks.end(), [](const TrackAudit& track) { return track.ok(); });
}

AuditReport auditSync(const AuditRequest& request, const std::function<void(const core::EdlFileReport&)>& loaded)
{
    AuditReport report;
    Kelmar::IPtr<sim::SimHost> host = sim::SimHost::create();
    // The projects go before the host shuts down.
    const auto audit = [&] {
        std::string error;
        Kelmar::IPtr<sim::SimProject> before = sim::SessionFile::load(*host, request.oldSession, error);
        if (!before) {
            report.message = error;
            return;
        }
        Kelmar::IPtr<sim::SimProject> after = sim::SessionFile::load(*host, request.newSession, error);
        if (!after) {
            report.message = error;
            return;
        }
        const sim::SimFrameRate& simRate = before->frameRate();
        core::FixedFramerateProvider provider(core::Framerate(simRate.fps, simRate.pullDown, simRate.dropFrame ? 1 : 0));
        core::ScopedFramerateProvider providerScope(&provider);
        std::vector<std::string> all = request.oldFiles;
        all.insert(all.end(), request.newFiles.begin(), request.newFiles.end());
        core::EdlLoader loader(all, request.load);
        core::EventList oldCut(core::EventList::OldKind);
        core::EventList newCut(core::EventList::NewKind);
        std::string unread;
        for (size_t index = 0; index < all.size(); ++index) {
            report.loads.push_back(loader.load(index, index < request.oldFiles.size() ? oldCut : newCut));
            if (loaded)
                loaded(report.loads.back());
            if (!report.loads.back().opened)
                unread += (unread.empty() ? "" : ", ") + all[index];
        }
        if (!unread.empty()) {
            report.message = "not every EDL could be read (" + unread + ")";
            return;
        }
        auditProjects(*before, *after, oldCut, newCut, request.match, request.selectedTracksOnly, report,
                      request.overhangFrames);
    };
    audit();
    host->shutdown();
    return report;
}

} // namespace montala::run
