#pragma once

#include "kelmar/base/IPtr.h"
#include "kelmar/base/String.h"
#include "sim/session/SessionFile.h"
#include "sim/project/NodeHeap.h"
#include "sim/project/SimBase.h"
#include "sim/services/SimHost.h"
#include "sim/project/SimPlayback.h"
#include "sim/project/SimProject.h"
#include "sim/project/SimProjectManager.h"

#include <gtest/gtest.h>

#include <string>

namespace montala::sim::test {

// A host for one test. At the end every object the simulator made must be
// gone again: a reference that was not released shows here.
class SimFixture : public ::testing::Test {
protected:
    void TearDown() override
    {
        host->shutdown();
        host.reset();
        EXPECT_EQ(SimBase::liveObjects(), objectsBefore) << "objects of the simulator are still referenced";
        EXPECT_EQ(NodeHeap::blocksInUse(), blocksBefore) << "blocks of the simulator's nodes are still in use";
    }

    // A project read from session text, opened and active.
    Kelmar::IPtr<SimProject> open(const std::string& session)
    {
        std::string error;
        Kelmar::IPtr<SimProject> project = SessionFile::read(*host, session, "test.json", error);
        EXPECT_TRUE(project) << error;
        if (project)
            host->projectManager().openProject(project);
        return project;
    }

    std::string saved(SimProject& project) { return SessionFile::write(project); }

    // One of the host's services, or null when the host does not give it.
    template <class I>
    Kelmar::IPtr<I> service()
    {
        void* answer = nullptr;
        if (host->getService(I::iid, &answer) != Kelmar::kResultOk)
            return {};
        return Kelmar::owned(static_cast<I*>(answer));
    }

    // What `track` plays at `time`: "silence", or the file (or video clip)
    // and the place in it.
    static std::string heard(SimObject& track, double time)
    {
        const auto source = SimPlayback::at(track, time);
        if (!source)
            return "silence";
        return (source->clipId ? "clip " + std::to_string(source->clipId) : source->file) + " @ "
               + std::to_string(source->position);
    }

    static std::u16string u16(const std::string& text) { return Kelmar::String::utf8ToUtf16(text); }

    // 25 fps from 01:00:00:00: dialogue on two takes joined at 10 s, effects
    // with a volume curve, a marker track and the picture.
    static std::string smallSession()
    {
        return R"({
  "format": "montala-session", "version": 1, "name": "Small",
  "frameRate": {"fps": 25},
  "start": "01:00:00:00", "end": "01:01:00:00",
  "mediaPool": [{"id": 1, "kind": "video", "name": "old.mov", "path": "/media/old.mov", "length": 120}],
  "tracks": [
    {"kind": "audio", "name": "DX", "events": [
      {"kind": "audio", "name": "take 1", "start": "01:00:00:00", "end": "01:00:10:00", "file": "t1.wav", "offset": 0, "joinedToNext": true},
      {"kind": "audio", "name": "take 2", "start": "01:00:10:00", "end": "01:00:20:00", "file": "t2.wav", "offset": 5}]},
    {"kind": "audio", "name": "FX",
     "automation": [{"name": "Volume", "curveType": 1, "points": [
        {"time": "01:00:00:00", "value": 0.0}, {"time": "01:00:20:00", "value": 1.0}]}],
     "events": [{"kind": "audio", "name": "door", "start": "01:00:04:00", "end": "01:00:16:00", "file": "door.wav", "offset": 2}]},
    {"kind": "marker", "name": "Notes", "events": [
      {"kind": "point", "name": "hit", "start": "01:00:12:00"},
      {"kind": "range", "name": "scene", "start": "01:00:08:00", "end": "01:00:14:00"}]},
    {"kind": "video", "name": "Picture", "events": [
      {"kind": "video", "start": "01:00:00:00", "end": "01:00:30:00", "clip": 1, "offset": 0}]}
  ]
})";
    }

private:
    long objectsBefore = SimBase::liveObjects();
    std::size_t blocksBefore = NodeHeap::blocksInUse();

protected:
    Kelmar::IPtr<SimHost> host = SimHost::create();
};

} // namespace montala::sim::test
