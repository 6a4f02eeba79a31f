#include "AuditReading.h"

#include "core/model/DataModel.h"
#include "core/events/EdlLoader.h"
#include "core/fileio/CmxWriter.h"
#include "run/ConformJob.h"
#include "run/SyncAudit.h"
#include "sim/session/SessionFile.h"
#include "sim/services/SimHost.h"
#include "util/StringConverter.h"
#include "util/StringUtil.h"

#include "support/TempFolderTest.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

namespace montala::run {
namespace {

namespace fs = std::filesystem;

using test::describe;
const std::string session = test::sampleSession("short-film-2997df");
const std::string oldCut = test::sampleEdl("short-film-2997df", "old");
const std::string newCut = test::sampleEdl("short-film-2997df", "new");

// The 29.97 drop-frame sample on the whole road: conformed, saved, read
// back by the audit and checked frame by frame against both cuts.
class DropFrameSampleTest : public test::TempFolderTest {
protected:
    DropFrameSampleTest() : TempFolderTest("montala-df") {}

    // The audit of a saved conform, as `montala verify` makes it.
    AuditReport verify(const std::string& conformed)
    {
        AuditRequest request;
        request.oldSession = session;
        request.newSession = conformed;
        request.oldFiles = {oldCut};
        request.newFiles = {newCut};
        return auditSync(request);
    }

    util::StringConverter converter;
    util::ScopedStringConverter converterScope{converter};
};

TEST_F(DropFrameSampleTest, ConformedFromTheCutsOrFromAWrittenChangeEdlAndInSync)
{
    // The Change EDL as `montala generate --rate 29.97df -o` writes it: the
    // drop mode does not survive the file, and the conform reads it at the
    // project's rate.
    const fs::path change = folder / "change.edl";
    {
        core::FixedFramerateProvider provider(core::Framerate(30, true, 1));
        core::ScopedFramerateProvider scope(&provider);
        core::DataModel model;
        core::EdlLoader loader({oldCut, newCut}, {});
        ASSERT_TRUE(loader.load(0, model.getOldList()).opened);
        ASSERT_TRUE(loader.load(1, model.getNewList()).opened);
        ASSERT_EQ(model.generateChangeEdl(), util::Result::Ok);
        ASSERT_EQ(core::fileio::writeEdlFile(change.u16string(), model.getChangeList()), util::Result::Ok);
    }

    for (const bool fromChangeFile : {false, true}) {
        SCOPED_TRACE(fromChangeFile ? "--change" : "--old --new");
        ConformRequest request;
        request.sessionPath = session;
        if (fromChangeFile) {
            request.changeFiles = {change.string()};
        } else {
            request.oldFiles = {oldCut};
            request.newFiles = {newCut};
        }
        request.outputPath = (folder / "conformed.json").string();
        const ConformOutcome outcome = runConform(request, {});
        ASSERT_EQ(outcome.status, ConformOutcome::Status::Done) << outcome.message;
        EXPECT_EQ(outcome.rateName, "29.97df");

        const AuditReport report = verify(request.outputPath);
        ASSERT_TRUE(report.readable) << report.message;
        EXPECT_TRUE(report.inSync()) << describe(report);
        EXPECT_EQ(report.newCutFrames, 2360u);
        for (const TrackAudit& track : report.tracks) {
            if (!track.leftOut) {
                EXPECT_EQ(track.inSync, 2360u) << track.name;
            }
        }
    }
}

TEST_F(DropFrameSampleTest, AuditNamesTheFirstFrameOffAtDropFrame)
{
    // The session not conformed at all, audited against the re-cut: the
    // first New frame that differs is 01:00:11;27, where the moved reaction
    // shot begins. Reckoned by hand: New 01:00:11;27 is frame 108249 of the
    // day, 357 frames after the project start; it must show Old 01:01:04;22,
    // frame 109832, 1940 frames after it; both at the middle of the frame.
    const AuditReport report = verify(session);
    ASSERT_TRUE(report.readable) << report.message;
    EXPECT_EQ(report.rateName, "29.97df");
    const auto picture = std::find_if(report.tracks.begin(), report.tracks.end(),
                                      [](const TrackAudit& track) { return track.name == "PICTURE"; });
    ASSERT_NE(picture, report.tracks.end());
    ASSERT_FALSE(picture->spans.empty());
    const SyncSpan& first = picture->spans.front();
    EXPECT_EQ(first.first, "01:00:11;27");
    EXPECT_EQ(first.what, "picture");
    EXPECT_EQ(first.expected, "clip 1 @ 64.748 s"); // (1940 + 0.5) x 1001/30000
    EXPECT_EQ(first.found, "clip 1 @ 11.929 s");    // (357 + 0.5) x 1001/30000
}

} // namespace
} // namespace montala::run
