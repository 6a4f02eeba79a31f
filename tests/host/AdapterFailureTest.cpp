// The project adapter when the host fails it, against the simulated host: a
// refused call is HostCallFailed, a withheld interface NoInterface, and what
// a failing run did inside its undo group is taken back whole by the host's
// undo. The small session runs at 25 fps from 01:00:00:00.

#include "HostFixture.h"
#include "support/ModelFixture.h"

#include "sim/services/SimFailures.h"
#include "sim/services/SimUser.h"

#include "kelmar/base/IObjectList.h"
#include "kelmar/edit/IRangeEdit.h"
#include "kelmar/project/IRangeMarker.h"
#include "kelmar/project/IStorage.h"

#include <gtest/gtest.h>

namespace montala::host::test {
namespace {

using util::Result;

class AdapterFailureTest : public HostFixture {
protected:
    core::EventPtr event(const char* srcIn, const char* srcOut, const char* dstIn, const char* dstOut)
    {
        core::ScopedFramerateProvider provider(project.get());
        return montala::test::makeEvent("REEL1", srcIn, srcOut, dstIn, dstOut);
    }

    // A run that fails part way: whatever it did is in the open group, which
    // the caller closes as an incomplete edit and the user can undo.
    template <class Run>
    Result::Type failingRun(Run run)
    {
        Kelmar::IProjectEdit& group = beginEdit();
        const Result::Type code = montala::test::thrownCode([&] { run(group); });
        endEdit();
        return code;
    }

    bool hasProjectAttribute(const char* name)
    {
        return static_cast<Kelmar::IProjectObject*>(hostProject.get())->hasAttribute(name) == Kelmar::kResultOk;
    }
};

TEST_F(AdapterFailureTest, AFailedRunIsUndoneWhole)
{
    openProject(smallSession());
    project->workArea().computeConformOffset();
    const std::string before = saved(*hostProject);

    // Each way a run's host calls can fail, at a point where some of its
    // work is already done.
    struct Case {
        const char* call;
        int nth;
    };
    const Case cases[] = {
        {"copyRangeOnTracks", 2}, // the second take's copy
        {"deleteRange", 1},       // moving home: the copy is in, the work area not yet closed
        {"addObject", 3},         // a marker track of the folder
        {"addObject", 10},        // the second destination marker
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.call);
        host->failures().failCall(c.call, c.nth);
        const Result::Type code = failingRun([&](Kelmar::IProjectEdit& run) {
            project->setCaching(true);
            project->ownTracks().createFolderAndMarkers(run, project->getDataModel().getSettings());
            ConformRun steps(*project, run);
            steps.applyCut(*steps.createCut(event("01:00:10:00", "01:00:20:00", "01:00:00:00", "01:00:10:00")));
            steps.applyCut(*steps.createCut(event("01:00:00:00", "01:00:10:00", "01:00:10:00", "01:00:20:00")));
            steps.complete();
        });
        project->setCaching(false);
        host->failures().clear();
        EXPECT_EQ(code, Result::HostCallFailed);
        ASSERT_TRUE(sim::SimUser(*host).undo());
        EXPECT_EQ(saved(*hostProject), before);
    }
}

TEST_F(AdapterFailureTest, WithheldInterfacesAreNoInterface)
{
    openProject(smallSession());
    project->workArea().computeConformOffset();
    Kelmar::IProjectEdit& run = beginEdit();
    Track notes = track("Notes");

    host->failures().withhold(Kelmar::IRangeEdit::iid);
    EXPECT_EQ(montala::test::thrownCode([&] { project->workArea().finishRange(run, 0.0, 10.0, project->getTracks()); }),
              Result::NoInterface);
    ConformRun steps(*project, run);
    EXPECT_EQ(montala::test::thrownCode([&] {
                  steps.applyCut(*steps.createCut(event("01:00:10:00", "01:00:20:00", "01:00:00:00", "01:00:10:00")));
              }),
              Result::NoInterface);
    host->failures().clear();

    host->failures().withhold(Kelmar::IObjectList::iid);
    std::vector<Track> tracks{track("DX")};
    EXPECT_EQ(montala::test::thrownCode([&] { project->workArea().moveBack(run, {86400.0}, {0.0}, 86400.0, tracks); }),
              Result::NoInterface);
    host->failures().clear();

    host->failures().withhold(Kelmar::IRangeMarker::iid);
    EXPECT_EQ(montala::test::thrownCode([&] { project->ownTracks().writeMarker(run, &notes, "n", "", {3630.0}, {3640.0}, 0); }),
              Result::NoInterface);
    host->failures().clear();
    endEdit();
    // Nothing was written where the calls were refused.
    EXPECT_EQ(notes.getEvents().size(), 2u);
}

TEST_F(AdapterFailureTest, RefusedLocksAndMarkersAreHostCallFailed)
{
    openProject(smallSession());
    Track notes = track("Notes");
    Kelmar::IProjectEdit& run = beginEdit();
    host->failures().failCall("addObject");
    EXPECT_EQ(montala::test::thrownCode([&] { project->ownTracks().writeMarker(run, &notes, "n", "", {3630.0}, {3640.0}, 0); }),
              Result::HostCallFailed);
    endEdit();
    EXPECT_EQ(notes.getEvents().size(), 2u);

    project->setPreviewLocks(TakingPart(*project, project->getDataModel().getSettings()).usersTracks());
    host->failures().failCall("setToggle");
    EXPECT_EQ(montala::test::thrownCode([&] { project->setTracksLocked(true); }), Result::HostCallFailed);
    // The lock that was refused is not claimed either: the track is open
    // and carries no mark that would lock it again on the next load.
    EXPECT_FALSE(track("DX").isLocked());
    EXPECT_FALSE(track("DX").hasLockState());
}

TEST_F(AdapterFailureTest, AFailedSaveLeavesNoBlockWithoutItsChecksum)
{
    // Each failing call of a save, in the order the save makes them.
    const char* calls[] = {"write", "setAttribute", "setAttribute"};
    for (int i = 0; i < 3; ++i) {
        SCOPED_TRACE(i);
        openProject(smallSession());
        project->workArea().computeConformOffset();
        host->failures().failCall(calls[i], i == 2 ? 2 : 1);
        EXPECT_EQ(montala::test::thrownCode([&] { project->save(); }), Result::HostCallFailed);
        host->failures().clear();

        // The project says nothing rather than something half: a reload
        // finds no block, and no message is due.
        EXPECT_FALSE(hasProjectAttribute("Mont"));
        EXPECT_FALSE(hasProjectAttribute("Mnts"));
        Project reloaded(hostProject.get(), host.get());
        EXPECT_EQ(montala::test::thrownCode([&] { reloaded.load(); }), Result::Ok);
        EXPECT_FALSE(reloaded.workArea().hasConformOffset());
        project.reset();
        host->projectManager().closeProject(hostProject.get());
    }
}

} // namespace
} // namespace montala::host::test
