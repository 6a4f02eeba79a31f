#pragma once

// Random re-cuts and sessions that fit them, for the property test of the
// conform and for the benchmarks of the whole run.
//
// An Old cut is a row of shots, each from its own stretch of a roll with at
// least `handle` frames of unused source on either side, so that no source
// frame is shown by two Old shots and a New shot can be extended into its
// handles without reaching another shot's picture:
//
//   roll A001:  ..handle..[ shot 3 ]..handle..   ..handle..[ shot 7 ]..handle..
//
// The New cut is the Old one after a few picture edits (scenes moved, shots
// trimmed, deleted, inserted from a roll the Old cut never used, extended
// into their handles, used twice; with effects also speed changes, freezes
// and dissolves). Both record timelines start at 01:00:00:00 and run without
// gaps, as the editors' EDLs do; a New cut in several reels starts each on
// the next hour:
//
//   New reel 1:  01:00:00:00 [ shots 1..k ]
//   New reel 2:  02:00:00:00 [ shots k+1..n ]     nothing in between
//
// The session lies on the Old cut's timeline (project start 01:00:00:00, so
// a host-relative time of 0 is the first Old frame). Every time written is
// seconds after the project start.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace montala::test {

class RandomRecut {
public:
    struct Shot {
        std::string roll;
        std::int64_t srcIn = 0; // frames of timecode at the cut's rate
        std::int64_t srcOut = 0;
        // The source the shot may be extended into, [lowest, highest).
        std::int64_t lowest = 0;
        std::int64_t highest = 0;
        // Frames on the record side: the source's at normal speed, half of
        // them at double speed, twice at half speed, over 100 for a freeze.
        std::int64_t record = 0;
        // Frames of the dissolve from the shot before; 0 for a cut.
        std::int64_t dissolve = 0;
        int id = 0;
        std::int64_t length() const { return record; }
        bool normal() const { return record == srcOut - srcIn; }
    };

    // What is made: the size of the reel and of the session.
    struct Shape {
        int fps = 25;
        int shots = 20;
        int audioTracks = 4;
        // Picture edits made to the Old cut; shuffled makes every shot a
        // Change event of its own instead.
        int edits = 4;
        bool shuffled = false;
        // Plain sessions (one event per shot and track, on frame lines) for
        // the benchmarks; otherwise layers, parts, joined events, automation,
        // markers and a locked track with edges between frames.
        bool plain = false;
        // The rate is fps x 1000/1001 (23.976, 29.97), counted in drop frame
        // timecode with dropFrame (fps 30 or 60).
        bool pullDown = false;
        bool dropFrame = false;
        // Speed changes, freezes and dissolves, in both cuts.
        bool effects = false;
        // The New cut in this many reels.
        int newReels = 1;
        // Automation steps (two points at one time) on the Old cut's shot
        // edges, on a ramp and on a stepped mute.
        bool edgeSteps = false;
        // Volume automation on every n-th audio track (a point every 0.5 to
        // 6 s), plain or not; 0 keeps it on the first dialogue track of a
        // session that is not plain, as a mix usually starts.
        int automatedEvery = 0;
    };

    static constexpr std::int64_t handle = 100;

    RandomRecut(std::uint64_t seed, Shape shape) : shape(shape), random(seed)
    {
        makeOldCut();
        if (shape.shuffled)
            shuffle();
        else
            for (int edit = 0; edit < shape.edits; ++edit)
                editNewCut();
    }

    const Shape& getShape() const { return shape; }
    const std::vector<Shot>& oldCut() const { return oldShots; }
    const std::vector<Shot>& newCut() const { return newShots; }
    std::int64_t oldLength() const { return totalLength(oldShots); }

    // The New reels: their shots, and where each begins, in frames after
    // 01:00:00:00.
    struct Reel {
        std::vector<Shot> shots;
        std::int64_t start = 0;
        std::int64_t end() const { return start + totalLength(shots); }
    };
    std::vector<Reel> newReels() const
    {
        std::vector<Reel> reels;
        const auto count = static_cast<size_t>(std::max(1, shape.newReels));
        for (size_t index = 0; index < count; ++index) {
            Reel reel;
            reel.start = hourFrame(static_cast<int>(index) + 1) - hourFrame(1);
            reel.shots.assign(newShots.begin() + static_cast<std::ptrdiff_t>(newShots.size() * index / count),
                              newShots.begin() + static_cast<std::ptrdiff_t>(newShots.size() * (index + 1) / count));
            reels.push_back(reel);
        }
        return reels;
    }

    // The cut as CMX 3600 text, split into files of at most 999 events; one
    // reel after the other.
    std::vector<std::string> oldEdls() const { return edls(oldShots, "RANDOM OLD", 0); }
    std::vector<std::string> newEdls() const
    {
        std::vector<std::string> files;
        for (const Reel& reel : newReels()) {
            const std::vector<std::string> texts = edls(reel.shots, "RANDOM NEW", reel.start);
            files.insert(files.end(), texts.begin(), texts.end());
        }
        return files;
    }

    // Seconds of a count of frames at the rate.
    double seconds(std::int64_t frames) const
    {
        return static_cast<double>(frames) * (shape.pullDown ? 1001.0 : 1000.0) / (shape.fps * 1000.0);
    }

    // The session on the Old cut. The last audio track is locked in a
    // random session; `lockedTrack` names it.
    std::string session()
    {
        const double cutEnd = seconds(oldLength());
        std::ostringstream json;
        json << R"({"format": "montala-session", "version": 1, "name": "Random re-cut",)"
             << R"( "frameRate": {"fps": )" << shape.fps << (shape.pullDown ? R"(, "pullDown": true)" : "")
             << (shape.dropFrame ? R"(, "dropFrame": true)" : "") << R"(}, "start": ")" << timecode(hourFrame(1))
             << R"(", "end": )"
             << number(seconds(std::max(oldLength(), newReels().back().end())) + 60.0) << ",\n"
             << R"( "mediaPool": [{"id": 1, "kind": "video", "name": "old.mov", "path": "/media/old.mov", "length": )"
             << number(cutEnd + 60.0) << "}],\n"
             << R"( "tracks": [{"kind": "video", "name": "PICTURE", "events": [{"kind": "video", "start": 0, "end": )"
             << number(cutEnd) << R"(, "clip": 1, "offset": 0.0}]})";
        for (int track = 0; track < shape.audioTracks; ++track) {
            const bool locked = !shape.plain && track == shape.audioTracks - 1;
            json << ",\n  ";
            if (shape.plain)
                plainTrack(json, track);
            else if (locked)
                json << R"({"kind": "audio", "name": ")" << lockedTrack << R"(", "locked": true, "events": [)"
                     << audioEvent("guide", 0.0, cutEnd, "guide.wav", 0.0, false) << "]}";
            else if (track % 2 == 0)
                dialogueTrack(json, track);
            else
                effectsTrack(json, track);
        }
        if (!shape.plain)
            markerTrack(json);
        json << "\n ]}\n";
        return json.str();
    }

    static constexpr const char* lockedTrack = "GUIDE";

    static void write(const std::string& path, const std::string& text)
    {
        std::ofstream file(path, std::ios::binary);
        file << text;
    }

    // The timecode of a frame count; drop frame skips the first labels of
    // each minute but every tenth.
    std::string timecode(std::int64_t frames) const
    {
        const std::int64_t fps = shape.fps;
        if (shape.dropFrame) {
            const std::int64_t drop = fps / 15;
            const std::int64_t perMinute = fps * 60 - drop;
            const std::int64_t perTenMinutes = fps * 600 - 9 * drop;
            const std::int64_t tens = frames / perTenMinutes;
            const std::int64_t rest = frames % perTenMinutes;
            frames += 9 * drop * tens + (rest > drop ? drop * ((rest - drop) / perMinute) : 0);
        }
        char text[64];
        std::snprintf(text, sizeof text, "%02lld:%02lld:%02lld%c%02lld", static_cast<long long>(frames / (3600 * fps)),
                      static_cast<long long>(frames / (60 * fps) % 60), static_cast<long long>(frames / fps % 60),
                      shape.dropFrame ? ';' : ':', static_cast<long long>(frames % fps));
        return text;
    }

    // The frame count of hh:00:00:00.
    std::int64_t hourFrame(int hours) const
    {
        return hours * (3600LL * shape.fps - (shape.dropFrame ? 54LL * shape.fps / 15 : 0));
    }

private:
    std::int64_t pick(std::int64_t low, std::int64_t high) // [low, high]
    {
        return low + static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(high - low + 1));
    }
    bool chance(int percent) { return pick(0, 99) < percent; }

    static std::int64_t totalLength(const std::vector<Shot>& shots)
    {
        std::int64_t total = 0;
        for (const Shot& shot : shots)
            total += shot.length();
        return total;
    }

    // A roll's next unused stretch of source, handles included.
    Shot freshShot(const std::string& roll, std::int64_t& nextFree, std::int64_t length)
    {
        Shot shot;
        shot.roll = roll;
        shot.lowest = nextFree;
        shot.srcIn = nextFree + handle;
        shot.srcOut = shot.srcIn + length;
        shot.record = length;
        shot.highest = shot.srcOut + handle;
        shot.id = nextId++;
        nextFree = shot.highest + pick(0, 50);
        return shot;
    }

    void makeOldCut()
    {
        // About 50 shots to a roll, each roll an hour of source of its own.
        const int rolls = std::max(2, shape.shots / 50 + 1);
        for (int roll = 0; roll < rolls; ++roll) {
            char name[16];
            std::snprintf(name, sizeof name, "%c%03d", roll % 2 == 0 ? 'A' : 'B', roll + 1);
            rollNames.push_back(name);
            nextFree.push_back((10 + roll % 12) * 3600LL * shape.fps);
        }
        insertFree = 23 * 3600LL * shape.fps;
        for (int index = 0; index < shape.shots; ++index) {
            const size_t roll = static_cast<size_t>(pick(0, rolls - 1));
            oldShots.push_back(freshShot(rollNames[roll], nextFree[roll], pick(30, 150)));
            if (shape.effects) {
                Shot& shot = oldShots.back();
                if (chance(10))
                    changeSpeed(shot);
                else if (chance(5))
                    freeze(shot);
                if (index > 0 && chance(15))
                    dissolve(shot);
            }
        }
        newShots = oldShots;
    }

    // Double or half speed, over the same source.
    void changeSpeed(Shot& shot)
    {
        if (chance(50)) {
            shot.record = (shot.srcOut - shot.srcIn) / 2;
            shot.srcOut = shot.srcIn + 2 * shot.record;
        } else {
            shot.record = 2 * (shot.srcOut - shot.srcIn);
        }
        shot.dissolve = std::min(shot.dissolve, shot.record - 1);
    }

    // One source frame held for more than 100 frames: a motion speed under
    // 0.01.
    void freeze(Shot& shot)
    {
        shot.srcOut = shot.srcIn + 1;
        shot.record = pick(101, 180);
    }

    void dissolve(Shot& shot) { shot.dissolve = chance(25) ? 0 : pick(4, std::min<std::int64_t>(30, shot.record - 1)); }

    // Every shot somewhere else, so that no two neighbours stay neighbours
    // and each is one Change event.
    void shuffle()
    {
        std::vector<Shot> order = newShots;
        for (size_t index = order.size(); index > 1; --index)
            std::swap(order[index - 1], order[static_cast<size_t>(pick(0, static_cast<std::int64_t>(index) - 1))]);
        for (size_t index = 1; index < order.size(); ++index)
            if (order[index].id == order[index - 1].id + 1 && index + 1 < order.size())
                std::swap(order[index], order[index + 1]);
        newShots = order;
    }

    void editNewCut()
    {
        const auto size = static_cast<std::int64_t>(newShots.size());
        const auto at = [&](std::int64_t index) { return newShots.begin() + index; };
        switch (pick(0, shape.effects ? 8 : 5)) {
        case 0: { // a scene moved
            const std::int64_t first = pick(0, size - 1);
            const std::int64_t last = std::min(size, first + pick(1, 4));
            std::vector<Shot> scene(at(first), at(last));
            newShots.erase(at(first), at(last));
            const std::int64_t to = pick(0, static_cast<std::int64_t>(newShots.size()));
            newShots.insert(at(to), scene.begin(), scene.end());
            break;
        }
        case 1: { // a trim at the head, the tail or both
            Shot& shot = newShots[static_cast<size_t>(pick(0, size - 1))];
            const std::int64_t spare = shot.length() - 10;
            if (spare > 2 && shot.normal()) {
                shot.srcIn += pick(0, spare / 2);
                shot.srcOut -= pick(chance(50) ? 1 : 0, spare / 2);
                fitRecord(shot);
            }
            break;
        }
        case 2: // a shot deleted
            if (size > 3)
                newShots.erase(at(pick(0, size - 1)));
            break;
        case 3: { // a shot from a roll the Old cut never used
            Shot inserted = freshShot("C001", insertFree, pick(20, 80));
            newShots.insert(at(pick(0, size)), inserted);
            break;
        }
        case 4: { // extended into its handles
            Shot& shot = newShots[static_cast<size_t>(pick(0, size - 1))];
            if (!shot.normal())
                break;
            if (chance(50))
                shot.srcIn = std::max(shot.lowest, shot.srcIn - pick(1, 40));
            else
                shot.srcOut = std::min(shot.highest, shot.srcOut + pick(1, 40));
            fitRecord(shot);
            break;
        }
        case 5: { // a shot used a second time, in part
            Shot again = newShots[static_cast<size_t>(pick(0, size - 1))];
            if (again.length() > 20 && again.normal()) {
                again.srcOut = again.srcIn + pick(10, again.length());
                fitRecord(again);
            }
            newShots.insert(at(pick(0, size)), again);
            break;
        }
        case 6: { // another speed
            Shot& shot = newShots[static_cast<size_t>(pick(0, size - 1))];
            if (shot.normal() && shot.length() >= 20)
                changeSpeed(shot);
            break;
        }
        case 7: // a freeze, or one of another length
            freeze(newShots[static_cast<size_t>(pick(0, size - 1))]);
            break;
        case 8: // a dissolve put in, taken out or of another length
            dissolve(newShots[static_cast<size_t>(pick(0, size - 1))]);
            break;
        }
        if (!newShots.empty())
            newShots.front().dissolve = 0; // nothing to dissolve from
    }

    // A normal shot's record after its source changed.
    static void fitRecord(Shot& shot)
    {
        shot.record = shot.srcOut - shot.srcIn;
        shot.dissolve = std::min(shot.dissolve, shot.record - 1);
    }

    // A dissolve is two lines of one number: the outgoing shot's source out,
    // held for no time, then the incoming shot with the transition's length.
    std::vector<std::string> edls(const std::vector<Shot>& shots, const std::string& title, std::int64_t start) const
    {
        std::vector<std::string> files;
        std::int64_t record = hourFrame(1) + start;
        for (size_t first = 0; first < shots.size(); first += 999) {
            std::ostringstream text;
            text << "TITLE: " << title << " " << (first / 999 + 1)
                 << (shape.dropFrame ? "\nFCM: DROP FRAME\n\n" : "\nFCM: NON-DROP FRAME\n\n");
            for (size_t index = first; index < std::min(shots.size(), first + 999); ++index) {
                const Shot& shot = shots[index];
                const int number = static_cast<int>(index - first + 1);
                char line[256];
                if (shot.dissolve > 0 && index > first) {
                    const Shot& outgoing = shots[index - 1];
                    std::snprintf(line, sizeof line, "%03d  %-8s V     C        %s %s %s %s\n", number,
                                  outgoing.roll.c_str(), timecode(outgoing.srcOut).c_str(),
                                  timecode(outgoing.srcOut).c_str(), timecode(record).c_str(),
                                  timecode(record).c_str());
                    text << line;
                    std::snprintf(line, sizeof line, "%03d  %-8s V     D    %03d %s %s %s %s\n", number,
                                  shot.roll.c_str(), static_cast<int>(shot.dissolve), timecode(shot.srcIn).c_str(),
                                  timecode(shot.srcOut).c_str(), timecode(record).c_str(),
                                  timecode(record + shot.length()).c_str());
                } else {
                    std::snprintf(line, sizeof line, "%03d  %-8s V     C        %s %s %s %s\n", number,
                                  shot.roll.c_str(), timecode(shot.srcIn).c_str(), timecode(shot.srcOut).c_str(),
                                  timecode(record).c_str(), timecode(record + shot.length()).c_str());
                }
                text << line;
                text << "* FROM CLIP NAME: " << shot.roll << "_S" << shot.id << ".mov\n";
                record += shot.length();
            }
            files.push_back(text.str());
        }
        return files;
    }

    static std::string number(double value)
    {
        char text[32];
        std::snprintf(text, sizeof text, "%.17g", value);
        std::string result = text;
        if (result.find_first_of(".e") == std::string::npos)
            result += ".0";
        return result;
    }

    static std::string audioEvent(const std::string& name, double start, double end, const std::string& file,
                                  double offset, bool joined)
    {
        return R"({"kind": "audio", "name": ")" + name + R"(", "start": )" + number(start) + R"(, "end": )" +
               number(end) + R"(, "file": ")" + file + R"(", "offset": )" + number(offset) +
               (joined ? R"(, "joinedToNext": true})" : "}");
    }

    // A time on or near a frame line: a quarter of the edges fall inside a
    // frame, where the sound of two shots meets within one picture frame.
    // Never in the middle of one: the audit listens there, and an edge a
    // rounding away from it would be heard on either side by chance.
    double edge(std::int64_t frame)
    {
        const double onLine = seconds(frame);
        return chance(25) ? onLine + seconds(1) * (chance(50) ? 0.25 : 0.75) : onLine;
    }

    // Sync sound: an event per shot (most shots), reaching a little into
    // the neighbours; a few pairs cut together and joined.
    void dialogueTrack(std::ostringstream& json, int track)
    {
        json << R"({"kind": "audio", "name": "DX )" << track << R"(", "events": [)";
        std::int64_t record = 0;
        std::vector<std::string> events;
        for (size_t index = 0; index < oldShots.size(); ++index) {
            const Shot& shot = oldShots[index];
            const std::int64_t next = record + shot.length();
            if (chance(80)) {
                const std::string file = shot.roll + "_S" + std::to_string(shot.id) + ".wav";
                const double sourceAt = 5.0 + seconds(shot.srcIn % (3600LL * shape.fps)) - seconds(record);
                const double start = std::max(0.0, edge(record - pick(0, 8)));
                const double end = edge(next + pick(0, 8));
                if (chance(20) && end - start > 1.0) {
                    // Cut in two and joined, as an editor splits a take.
                    const double middle = seconds(record + shot.length() / 2);
                    events.push_back(audioEvent("take", start, middle, file, sourceAt + start, true));
                    events.push_back(audioEvent("take", middle, end, file, sourceAt + middle, false));
                } else {
                    events.push_back(audioEvent("take", start, end, file, sourceAt + start, false));
                }
            }
            record = next;
        }
        join(json, events);
        json << "]";
        if (automated(track))
            automation(json);
        json << "}";
    }

    bool automated(int track) const
    {
        return shape.automatedEvery > 0 ? track % shape.automatedEvery == 0 : !shape.plain && track == 0;
    }

    // Effects: events anywhere on the cut, in layers over each other, and
    // parts holding a few of them.
    void effectsTrack(std::ostringstream& json, int track)
    {
        json << R"({"kind": "audio", "name": "FX )" << track << R"(", "events": [)";
        const std::int64_t length = oldLength();
        std::vector<std::string> events;
        const int count = static_cast<int>(std::max<std::int64_t>(2, length / (shape.fps * 4)));
        for (int index = 0; index < count; ++index) {
            const std::int64_t from = pick(0, length - 1);
            const std::int64_t to = std::min(length + shape.fps * 2, from + pick(shape.fps / 5, shape.fps * 8));
            const double start = edge(from);
            const double end = std::max(start + 0.02, edge(to));
            const std::string file = "fx" + std::to_string(pick(1, 30)) + ".wav";
            if (chance(20) && end - start > 1.0) {
                std::string part = R"({"kind": "part", "name": "group", "start": )" + number(start) +
                                   R"(, "end": )" + number(end) + R"(, "events": [)";
                // Whole frames from the part's start, which keeps the inner
                // edges off the middle of a frame as the part's own are.
                const double span = end - start;
                const std::int64_t frames = static_cast<std::int64_t>(span * shape.fps);
                const std::int64_t split = pick(frames / 5, frames * 4 / 5);
                part += audioEvent("in part", 0.0, seconds(split), file, 1.0, false) + ", " +
                        audioEvent("in part", seconds(split / 2), span, "fx-over.wav", 2.0, false) + "]}";
                events.push_back(part);
            } else {
                events.push_back(audioEvent("fx", start, end, file, static_cast<double>(pick(0, 400)) / 8.0, false));
            }
        }
        join(json, events);
        json << "]";
        if (automated(track))
            automation(json);
        json << "}";
    }

    // A Volume ramp through random points; with edge steps it jumps on a
    // third of the Old cut's shot edges, and a stepped Mute turns on and off
    // on others.
    void automation(std::ostringstream& json)
    {
        const std::int64_t length = oldLength();
        std::vector<std::int64_t> edges;
        if (shape.edgeSteps)
            for (std::int64_t record = 0; const Shot& shot : oldShots)
                if ((record += shot.length()) < length)
                    edges.push_back(record);
        // Points in time order: a frame, a value; a step is two at one frame.
        std::vector<std::pair<std::int64_t, int>> volume;
        std::int64_t frame = pick(0, shape.fps);
        size_t edge = 0;
        while (frame < length) {
            for (; edge < edges.size() && edges[edge] <= frame; ++edge)
                if (edges[edge] != frame && chance(33) && !volume.empty()) {
                    volume.emplace_back(edges[edge], volume.back().second);
                    volume.emplace_back(edges[edge], static_cast<int>(pick(0, 100)));
                }
            if (edge == 0 || edges[edge - 1] != frame)
                volume.emplace_back(frame, static_cast<int>(pick(0, 100)));
            frame += pick(shape.fps / 2, shape.fps * 6);
        }
        json << R"(, "automation": [)" << lane("Volume", 1, volume);
        if (shape.edgeSteps) {
            std::vector<std::pair<std::int64_t, int>> mute{{0, 0}};
            for (const std::int64_t at : edges)
                if (chance(25)) {
                    mute.emplace_back(at, mute.back().second);
                    mute.emplace_back(at, 100 - mute.back().second);
                }
            json << ", " << lane("Mute", 0, mute);
        }
        json << "]";
    }

    std::string lane(const char* name, int curveType, const std::vector<std::pair<std::int64_t, int>>& points) const
    {
        std::string text = std::string(R"({"name": ")") + name + R"(", "curveType": )" + std::to_string(curveType) +
                           R"(, "points": [)";
        for (size_t index = 0; index < points.size(); ++index)
            text += (index ? ", " : "") + std::string(R"({"time": )") + number(seconds(points[index].first)) +
                    R"(, "value": )" + number(points[index].second / 100.0) + "}";
        return text + "]}";
    }

    // The editor's notes: points on frame lines, some of them on cuts, and
    // a few ranges.
    void markerTrack(std::ostringstream& json)
    {
        json << ",\n  " << R"({"kind": "marker", "name": "NOTES", "events": [)";
        const std::int64_t length = oldLength();
        std::vector<std::string> markers;
        std::int64_t record = 0;
        for (const Shot& shot : oldShots) {
            if (chance(20))
                markers.push_back(R"({"kind": "point", "name": "cut )" + std::to_string(shot.id) + R"(", "start": )" +
                                  number(seconds(record)) + "}");
            if (chance(20))
                markers.push_back(R"({"kind": "point", "name": "note )" + std::to_string(shot.id) +
                                  R"(", "start": )" + number(seconds(record + pick(0, shot.length() - 1))) + "}");
            record += shot.length();
        }
        for (int index = 0; index < 3; ++index) {
            const std::int64_t from = pick(0, length - 1);
            markers.push_back(R"({"kind": "range", "name": "scene )" + std::to_string(index) + R"(", "start": )" +
                              number(seconds(from)) + R"(, "end": )" +
                              number(seconds(std::min(length, from + pick(10, 200)))) + "}");
        }
        join(json, markers);
        json << "]}";
        // The memos Montala keeps for the user, on a track of its own kind.
        json << ",\n  " << R"({"kind": "marker", "name": "Memos", "attributes": {"Montala:MarkerType": 7}, "events": [)";
        markers.clear();
        for (int index = 0; index < 3; ++index)
            markers.push_back(R"({"kind": "point", "name": "memo )" + std::to_string(index) + R"(", "start": )" +
                              number(seconds(pick(0, length - 1))) + "}");
        join(json, markers);
        json << "]}";
    }

    void plainTrack(std::ostringstream& json, int track)
    {
        json << R"({"kind": "audio", "name": "A)" << track << R"(", "events": [)";
        std::int64_t record = 0;
        std::vector<std::string> events;
        for (const Shot& shot : oldShots) {
            const double sourceAt = seconds(shot.srcIn % (3600LL * shape.fps));
            events.push_back(audioEvent("take", seconds(record), seconds(record + shot.length()),
                                        shot.roll + "_" + std::to_string(track) + ".wav", sourceAt, false));
            record += shot.length();
        }
        join(json, events);
        json << "]";
        if (automated(track))
            automation(json);
        json << "}";
    }

    static void join(std::ostringstream& json, const std::vector<std::string>& items)
    {
        for (size_t index = 0; index < items.size(); ++index)
            json << (index ? ",\n    " : "\n    ") << items[index];
    }

    Shape shape;
    std::mt19937_64 random;
    std::vector<Shot> oldShots;
    std::vector<Shot> newShots;
    std::vector<std::string> rollNames;
    std::vector<std::int64_t> nextFree;
    std::int64_t insertFree = 0;
    int nextId = 1;
};

} // namespace montala::test
