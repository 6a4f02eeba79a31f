#include "AuditReading.h"

#include "core/events/EdlLoader.h"
#include "run/ConformJob.h"
#include "run/SyncAudit.h"
#include "sim/session/SessionFile.h"
#include "sim/services/SimHost.h"
#include "util/StringConverter.h"

#include "support/TempFolderTest.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace montala::run {
namespace {

namespace fs = std::filesystem;

using test::describe;
using test::sampleEdl;
using test::sampleSession;

class ConformJobTest : public test::TempFolderTest {
protected:
    ConformJobTest() : TempFolderTest("montala-run") {}

    ConformRequest sampleRequest(const std::string& reel)
    {
        ConformRequest request;
        request.sessionPath = sampleSession(reel);
        request.oldFiles = {sampleEdl(reel, "old")};
        request.newFiles = {sampleEdl(reel, "new")};
        request.outputPath = (folder / "out.json").string();
        return request;
    }

    // Conforms and audits the result before it is saved.
    AuditReport conformAndAudit(const ConformRequest& request, ConformOutcome& outcome)
    {
        AuditReport report;
        ConformWatcher watcher;
        watcher.conformed = [&](sim::SimProject& after) {
            auto host = sim::SimHost::create();
            std::string error;
            auto before = sim::SessionFile::load(*host, request.sessionPath, error);
            ASSERT_TRUE(before) << error;
            const sim::SimFrameRate& simRate = before->frameRate();
            core::FixedFramerateProvider provider(
                core::Framerate(simRate.fps, simRate.pullDown, simRate.dropFrame ? 1 : 0));
            core::ScopedFramerateProvider scope(&provider);
            core::EventList oldCut(core::EventList::OldKind);
            core::EventList newCut(core::EventList::NewKind);
            core::EdlLoader loader({request.oldFiles[0], request.newFiles[0]}, request.load);
            loader.load(0, oldCut);
            loader.load(1, newCut);
            auditProjects(*before, after, oldCut, newCut, request.match, request.selectedTracksOnly, report);
            before.reset();
            host->shutdown();
        };
        outcome = runConform(request, watcher);
        return report;
    }

    util::StringConverter converter;
    util::ScopedStringConverter converterScope{converter};
};

TEST_F(ConformJobTest, SampleSessionComesOutInSyncWithItsNewCut)
{
    for (const char* reel : {"short-film-25"}) {
        SCOPED_TRACE(reel);
        ConformOutcome outcome;
        const AuditReport report = conformAndAudit(sampleRequest(reel), outcome);
        ASSERT_EQ(outcome.status, ConformOutcome::Status::Done) << outcome.message;
        EXPECT_TRUE(outcome.written);
        EXPECT_GT(outcome.summary.eventsApplied, 0u);
        EXPECT_TRUE(report.inSync()) << describe(report);
        size_t judged = 0;
        for (const TrackAudit& track : report.tracks)
            judged += track.inSync;
        EXPECT_GT(judged, 0u);
    }
}

TEST_F(ConformJobTest, CancelAndFailureWriteNothingAndLeaveTheInputAlone)
{
    ConformRequest request = sampleRequest("short-film-25");
    std::ifstream input(request.sessionPath, std::ios::binary);
    const std::string before((std::istreambuf_iterator<char>(input)), std::istreambuf_iterator<char>());

    // Cancelled half way through the run: the host's undo takes it back.
    ConformWatcher cancelling;
    cancelling.progress = [](const ProgressState& state) { return state.total > 0 && state.position * 2 >= state.total; };
    ConformOutcome cancelled = runConform(request, cancelling);
    EXPECT_EQ(cancelled.status, ConformOutcome::Status::Cancelled) << cancelled.message;
    EXPECT_EQ(cancelled.result, util::Result::Cancelled);
    EXPECT_TRUE(cancelled.summary.undone);
    EXPECT_FALSE(fs::exists(request.outputPath));

    // Asked from the first call on, while the window is still being set
    // up: the cancel is not lost when the window opens.
    ConformWatcher atOnce;
    atOnce.progress = [](const ProgressState&) { return true; };
    const ConformOutcome stopped = runConform(request, atOnce);
    EXPECT_EQ(stopped.status, ConformOutcome::Status::Cancelled) << stopped.message;
    EXPECT_TRUE(stopped.summary.undone);
    EXPECT_FALSE(fs::exists(request.outputPath));

    // A Ctrl-C before the run began.
    ConformWatcher early;
    early.cancelRequested = [] { return true; };
    EXPECT_EQ(runConform(request, early).status, ConformOutcome::Status::Cancelled);
    EXPECT_FALSE(fs::exists(request.outputPath));

    // An empty Change EDL: checkTracks refuses with the window's text.
    std::ofstream(folder / "empty.edl") << "TITLE: EMPTY\nFCM: NON-DROP FRAME\n";
    ConformRequest empty = request;
    empty.oldFiles.clear();
    empty.newFiles.clear();
    empty.changeFiles = {(folder / "empty.edl").string()};
    const ConformOutcome refused = runConform(empty, {});
    EXPECT_EQ(refused.status, ConformOutcome::Status::Failed);
    EXPECT_TRUE(refused.refusedByCheck);
    EXPECT_EQ(refused.result, util::Result::EmptyChangeList);
    EXPECT_EQ(refused.message, "No events in Change EDL.");
    EXPECT_FALSE(fs::exists(request.outputPath));

    // Unreadable inputs are bad input, named.
    ConformRequest missing = request;
    missing.newFiles = {(folder / "nowhere.edl").string()};
    const ConformOutcome unread = runConform(missing, {});
    EXPECT_EQ(unread.status, ConformOutcome::Status::BadInput);
    EXPECT_NE(unread.message.find("nowhere.edl"), std::string::npos);
    ConformRequest badRange = request;
    badRange.range = std::make_pair(std::string("01:00:00:30"), std::string("01:00:10:00"));
    EXPECT_EQ(runConform(badRange, {}).status, ConformOutcome::Status::BadInput);
    EXPECT_FALSE(fs::exists(request.outputPath));

    std::ifstream after(request.sessionPath, std::ios::binary);
    EXPECT_EQ(std::string((std::istreambuf_iterator<char>(after)), std::istreambuf_iterator<char>()), before);
}

TEST_F(ConformJobTest, RunSettingsReachTheRun)
{
    ConformRequest request = sampleRequest("short-film-25");
    for (const core::MarkerKindRow& row : core::markerKinds())
        request.noMarkers.insert(row.kind);
    const ConformOutcome quiet = runConform(request, {});
    ASSERT_EQ(quiet.status, ConformOutcome::Status::Done) << quiet.message;
    EXPECT_EQ(quiet.summary.markerCount(), 0u);

    // Only the selected tracks; the sample selects none.
    request.selectedTracksOnly = true;
    const ConformOutcome none = runConform(request, {});
    EXPECT_TRUE(none.refusedByCheck);
    EXPECT_EQ(none.result, util::Result::NoSelectedTracks);
}

} // namespace
} // namespace montala::run
