#pragma once

#include "HostFixture.h"
#include "support/ModelFixture.h"

#include "core/model/DataModel.h"
#include "core/serialize/SerializationTree.h"
#include "host/Host.h"
#include "host/Project.h"

#include "kelmar/base/String.h"
#include "sim/services/SimActionManager.h"
#include "sim/services/SimAlertService.h"
#include "sim/services/SimFailures.h"
#include "sim/services/SimProgressService.h"

#include <algorithm>
#include <string>
#include <vector>

namespace montala::host::test {

// Montala's Host brought up over a simulated host, as the plug-in and the
// command line do. The Host goes before the simulator shuts down.
class HostRunFixture : public HostFixture {
protected:
    void TearDown() override
    {
        montala.reset();
        HostFixture::TearDown();
    }

    // Opens the session, then brings the Host up on it.
    Host& startOn(const std::string& session)
    {
        hostProject = open(session);
        montala = Kelmar::owned(new Host(host.get()));
        return *montala;
    }

    Project& active()
    {
        EXPECT_NE(montala->getActiveProject(), nullptr);
        return *montala->getActiveProject();
    }

    core::DataModel& model() { return active().getDataModel(); }

    // Appends a Change event (timecodes at the project's rate).
    void addChange(int number, const char* srcIn, const char* srcOut, const char* dstIn, const char* dstOut)
    {
        core::ScopedFramerateProvider provider(&active());
        core::EventPtr made = montala::test::makeEvent("R" + std::to_string(number), srcIn, srcOut, dstIn, dstOut);
        made->setEventNumber(number);
        model().getChangeList().addEvent(made);
    }

    // The two halves of the small session's first 20 seconds change places.
    void swapHalves()
    {
        addChange(1, "01:00:10:00", "01:00:20:00", "01:00:00:00", "01:00:10:00");
        addChange(2, "01:00:00:00", "01:00:10:00", "01:00:10:00", "01:00:20:00");
    }

    // What a program does: ask, then give the host's idle calls until the
    // run is over.
    util::Result::Type conform()
    {
        const util::Result::Type asked = montala->startConform();
        if (asked != util::Result::Ok)
            return asked;
        runIdle();
        return montala->lastRun().result;
    }

    void runIdle()
    {
        for (int turn = 0; turn < 10 && montala->isRunPending(); ++turn)
            host->runIdle();
    }

    // The small session with Montala's Memos track, on which the user wrote
    // "louder" at 01:00:13:00 of the old cut.
    static std::string sessionWithMemo()
    {
        std::string text = smallSession();
        const std::string notes = R"({"kind": "marker", "name": "Notes")";
        text.replace(text.find(notes), 0, R"({"kind": "marker", "name": "Memos", "attributes": {"Montala:MarkerType": 7},
      "events": [{"kind": "point", "name": "louder", "start": "01:00:13:00"}]},
    )");
        return text;
    }

    // Where the markers called `name` on a track start, host times in order.
    std::vector<double> markerStarts(const std::string& trackName, const std::string& name)
    {
        std::vector<double> starts;
        for (const TrackEvent& marker : track(trackName).getEvents())
            if (marker.getName() == name)
                starts.push_back(marker.getStart());
        std::sort(starts.begin(), starts.end());
        return starts;
    }

    // Automation points at or after a host time, on all tracks.
    size_t pointsFrom(double hostTime)
    {
        size_t count = 0;
        for (sim::SimObject* track : hostProject->allTracks())
            for (const auto& curve : track->automation())
                for (const auto& point : curve->children())
                    count += point->get().start >= hostTime ? 1 : 0;
        return count;
    }

    std::vector<uint8_t> storedModel()
    {
        core::serialize::SerializationTree tree;
        tree.writeObject(model());
        return tree.getBytes();
    }

    bool undo() { return host->actionManager().invoke("Edit", "Undo") == Kelmar::kResultOk; }
    bool redo() { return host->actionManager().invoke("Edit", "Redo") == Kelmar::kResultOk; }
    std::string undoTitle() { return Kelmar::String::utf16ToUtf8(hostProject->undoTitle()); }

    std::vector<std::string> alerts()
    {
        std::vector<std::string> texts;
        for (const auto& alert : host->alerts().shown())
            texts.push_back(Kelmar::String::utf16ToUtf8(alert.message));
        return texts;
    }

    Kelmar::IPtr<Host> montala;
};

} // namespace montala::host::test
