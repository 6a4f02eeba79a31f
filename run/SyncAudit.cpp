#include "run/SyncAudit.h"

#include "core/EventList.h"
#include "core/FramerateNames.h"
#include "core/Timecode.h"
#include "run/PlaybackTrace.h"
#include "sim/SessionFile.h"
#include "sim/SimHost.h"

#include "kelmar/String.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <map>
#include <optional>
#include <unordered_map>

namespace montala::run {

namespace {

using sim::ObjectKind;
using sim::SimObject;

// Two positions in a source are the same within one sample at 384 kHz.
constexpr double positionTolerance = 2.6041666666666666e-6;
// Two motion speeds are the same within this.
constexpr double speedTolerance = 0.01;

// A shot of a cut, in frames at the project's rate.
struct Shot {
    std::string key;
    std::int64_t srcIn = 0;
    std::int64_t srcOut = 0;
    std::int64_t recIn = 0;
    std::int64_t recOut = 0;
    double speed = 1.0;
    int transitionType = 0;
    int transitionDuration = 0;

    // The source frame shown at record frame `rec`.
    double sourceAt(std::int64_t rec) const
    {
        const double ratio = static_cast<double>(srcOut - srcIn) / static_cast<double>(recOut - recIn);
        return static_cast<double>(srcIn) + static_cast<double>(rec - recIn) * ratio;
    }
};

std::vector<Shot> shotsOf(const core::EventList& list, core::MatchName match, const core::Framerate& rate)
{
    std::vector<Shot> shots;
    for (size_t index = 0; index < list.getSize(); ++index) {
        const core::EventBase& event = *list.getEvent(index);
        const core::Timecode* times[] = {&event.getSrcIn(), &event.getSrcOut(), &event.getDstIn(), &event.getDstOut()};
        if (std::any_of(std::begin(times), std::end(times),
                        [&](const core::Timecode* time) { return !time->isInitialized() || !time->isValid(rate); }))
            continue;
        Shot shot;
        shot.key = match == core::MatchName::ClipName ? event.getClipName() : event.getRollName();
        shot.srcIn = event.getSrcIn().toFrames(rate);
        shot.srcOut = event.getSrcOut().toFrames(rate);
        shot.recIn = event.getDstIn().toFrames(rate);
        shot.recOut = event.getDstOut().toFrames(rate);
        shot.speed = event.getMotionSpeed();
        shot.transitionType = event.getTransitionType();
        shot.transitionDuration = event.getTransitionDuration();
        if (shot.recOut <= shot.recIn || shot.srcOut < shot.srcIn || shot.key.empty())
            continue;
        shots.push_back(shot);
    }
    return shots;
}

// What a frame of the New cut must play.
struct Expectation {
    enum Kind : std::uint8_t { NewPicture, NotJudged, Old };
    Kind kind = NewPicture;
    // Old record frames that showed the same source frame; usually one.
    std::vector<std::int64_t> oldFrames;
};

// The New cut frame by frame, from its first record frame: where the Old
// cut showed the same picture. Of New shots that overlap, the one that
// starts later is shown (the incoming side of a dissolve).
std::vector<Expectation> expectations(const std::vector<Shot>& oldShots, const std::vector<Shot>& newShots,
                                      std::int64_t first, std::int64_t last)
{
    std::unordered_map<std::string, std::vector<const Shot*>> byKey;
    for (const Shot& shot : oldShots)
        byKey[shot.key].push_back(&shot);

    std::vector<const Shot*> shown(static_cast<size_t>(last - first), nullptr);
    for (const Shot& shot : newShots)
        for (std::int64_t frame = shot.recIn; frame < shot.recOut; ++frame) {
            const Shot*& slot = shown[static_cast<size_t>(frame - first)];
            if (!slot || slot->recIn <= shot.recIn)
                slot = &shot;
        }

    std::vector<Expectation> frames(shown.size());
    for (size_t index = 0; index < shown.size(); ++index) {
        const Shot* shot = shown[index];
        if (!shot)
            continue;
        const auto candidates = byKey.find(shot->key);
        if (candidates == byKey.end())
            continue;
        const std::int64_t frame = first + static_cast<std::int64_t>(index);
        const double source = shot->sourceAt(frame);
        Expectation& expected = frames[index];
        for (const Shot* old : candidates->second) {
            const std::int64_t sourceFrame = static_cast<std::int64_t>(std::floor(source + 1e-9));
            const bool covers = sourceFrame >= old->srcIn && sourceFrame < std::max(old->srcOut, old->srcIn + 1);
            if (!covers)
                continue;
            const bool alike = std::fabs(old->speed - shot->speed) <= speedTolerance &&
                               old->transitionType == shot->transitionType &&
                               old->transitionDuration == shot->transitionDuration;
            if (!alike) {
                if (expected.kind == Expectation::NewPicture)
                    expected.kind = Expectation::NotJudged;
                continue;
            }
            // Same speed: the two cuts are one constant shift apart over the
            // whole shot, which keeps sound at any speed on its picture.
            const double oldRatio = old->recOut > old->recIn ? static_cast<double>(old->srcOut - old->srcIn) /
                                                                   static_cast<double>(old->recOut - old->recIn)
                                                             : 1.0;
            const double shift = oldRatio > 0.0 ? (source - static_cast<double>(old->srcIn)) / oldRatio
                                                : static_cast<double>(frame - shot->recIn);
            const std::int64_t oldFrame = old->recIn + static_cast<std::int64_t>(std::llround(shift));
            if (oldFrame < old->recIn || oldFrame >= old->recOut)
                continue;
            expected.kind = Expectation::Old;
            expected.oldFrames.push_back(oldFrame);
        }
    }
    return frames;
}

std::string utf8(const std::u16string& text)
{
    return Kelmar::String::utf16ToUtf8(text);
}

bool audited(const SimObject& track)
{
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

std::string describe(const std::optional<PlaybackTrace::Heard>& heard)
{
    if (!heard)
        return "silence";
    char position[48];
    std::snprintf(position, sizeof position, " @ %.6f s", heard->position);
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

// The middle of a frame: clear of the edges, where a cut may lie a hair
// either side of the frame line.
double hostTime(sim::SimProject& project, std::int64_t frame)
{
    const sim::SimFrameRate& rate = project.frameRate();
    return rate.frameToSeconds(frame) + 0.5 / rate.exactRate() - project.getProjectStart();
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
        bool follows = previous.kind == current.kind && current.kind != Expectation::Old;
        if (previous.kind == Expectation::Old && current.kind == Expectation::Old)
            for (const std::int64_t oldFrame : current.oldFrames)
                follows = follows || std::find(previous.oldFrames.begin(), previous.oldFrames.end(), oldFrame - 1) !=
                                         previous.oldFrames.end();
        cuts[index] = !follows;
    }
    return cuts;
}

// What an overhang run may change within `window` frames of a cut: a short
// bit of an event left out, or sound carried across the cut (see
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
        // A cut at c lies between frames c - 1 and c: frames c - window to
        // c + window - 1 are near it.
        for (std::int64_t cut = std::max<std::int64_t>(0, frame - window + 1);
             cut <= std::min(count, frame + window); ++cut) {
            if (!cuts[static_cast<size_t>(cut)])
                continue;
            const bool afterCut = frame >= cut;
            if (found ? carriedAcross(frame, afterCut ? cut - 1 : cut, found)
                      : shortBitLeftOut(frame, cut, afterCut))
                return true;
        }
        return false;
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

    // Silence where the old session played a bit of an event that does not
    // reach past the window, on the old timeline, away from the cut.
    bool shortBitLeftOut(std::int64_t frame, std::int64_t cut, bool afterCut) const
    {
        const Expectation& expected = frames[static_cast<size_t>(frame)];
        if (expected.kind != Expectation::Old)
            return false;
        const std::int64_t step = afterCut ? 1 : -1;
        // Frames from `frame` to the window's far side.
        const std::int64_t room = afterCut ? cut + window - 1 - frame : frame - (cut - window);
        for (const std::int64_t oldFrame : expected.oldFrames) {
            const std::optional<PlaybackTrace::Heard> wanted = oldSoundAt(oldFrame);
            if (!wanted)
                continue;
            const double from = hostTime(oldProject, oldFrame);
            for (std::int64_t k = 1; k <= room + 1; ++k) {
                const std::int64_t next = oldFrame + step * k;
                const std::optional<PlaybackTrace::Heard> heard = oldSoundAt(next);
                const bool goesOn = heard && heard->file == wanted->file && heard->clipId == wanted->clipId &&
                                    std::fabs(heard->position - wanted->position -
                                              (hostTime(oldProject, next) - from)) <= positionTolerance;
                if (!goesOn)
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

void compareTrack(sim::SimProject& oldProject, sim::SimProject& newProject, const SimObject& before,
                  const SimObject& after, const std::vector<Expectation>& frames, std::int64_t first,
                  const std::vector<bool>& cuts, std::optional<std::uint32_t> overhangFrames, TrackAudit& audit)
{
    const PlaybackTrace oldTrace(before);
    const PlaybackTrace newTrace(after);
    std::optional<OverhangAllowance> overhang;
    if (overhangFrames)
        overhang.emplace(oldProject, oldTrace, frames, cuts, static_cast<std::int64_t>(*overhangFrames));
    for (size_t index = 0; index < frames.size(); ++index) {
        const Expectation& expected = frames[index];
        const std::int64_t frame = first + static_cast<std::int64_t>(index);
        if (expected.kind == Expectation::NotJudged) {
            ++audit.notJudged;
            continue;
        }
        const std::optional<PlaybackTrace::Heard> found = newTrace.at(hostTime(newProject, frame));
        std::optional<PlaybackTrace::Heard> wanted;
        bool inSync = false;
        if (expected.kind == Expectation::NewPicture) {
            ++audit.newPicture;
            inSync = !found;
        } else {
            // The same picture shown twice in the Old cut: either sound will do.
            for (const std::int64_t oldFrame : expected.oldFrames) {
                wanted = oldTrace.at(hostTime(oldProject, oldFrame));
                if (same(wanted, found)) {
                    inSync = true;
                    break;
                }
            }
            if (!inSync)
                wanted = oldTrace.at(hostTime(oldProject, expected.oldFrames.front()));
        }
        if (inSync) {
            if (expected.kind == Expectation::Old)
                ++audit.inSync;
            continue;
        }
        if (overhang && overhang->allows(index, found)) {
            ++audit.changedAtCuts;
            continue;
        }
        ++audit.outOfSync;
        if (audit.firstMismatches.size() < keptMismatches)
            audit.firstMismatches.push_back({newProject.frameRate().label(frame), describe(wanted), describe(found)});
    }
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
    report.newCutFrames = static_cast<size_t>(last - first);
    const std::vector<Expectation> frames = expectations(oldShots, newShots, first, last);
    const std::vector<bool> cuts = cutsOf(frames);

    const auto conformed = tracksByPlace(after);
    const std::map<std::string, SimObject*> conformedByPlace(conformed.begin(), conformed.end());
    for (const auto& [place, track] : tracksByPlace(before)) {
        if (!audited(*track))
            continue;
        TrackAudit audit;
        audit.name = place;
        audit.kind = track->kind() == ObjectKind::AudioTrack ? "audio" : "video";
        const auto counterpart = conformedByPlace.find(place);
        if (counterpart == conformedByPlace.end() || counterpart->second->kind() != track->kind()) {
            audit.missing = true;
        } else if (track->get().locked || (selectedTracksOnly && !track->selectedFlag())) {
            audit.leftOut = true;
            audit.leftOutReason = track->get().locked ? "locked" : "not selected";
            audit.untouched = sameContent(*track, *counterpart->second);
        } else {
            compareTrack(before, after, *track, *counterpart->second, frames, first, cuts, overhangFrames, audit);
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
