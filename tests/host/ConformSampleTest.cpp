#include "HostRunFixture.h"

#include "core/events/EdlLoader.h"
#include "core/time/Timecode.h"
#include "sim/session/SessionFile.h"
#include "sim/project/SimPlayback.h"
#include "sim/edit/SimRangeEditor.h"

#include <fstream>
#include <sstream>

namespace montala::host::test {
namespace {

const std::string samples = MONTALA_SOURCE_DIR "/samples";

std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// The bundled sample sessions conformed from their Old and New cuts, as the
// command line does it, then saved and read back as the host keeps them.
class ConformSampleTest : public HostRunFixture {
protected:
    // Opens the reel's session, generates the Change EDL in its data model at
    // the project's rate and runs the conform.
    util::Result::Type conformReel(const std::string& reel)
    {
        startOn(readFile(samples + "/sessions/" + reel + ".json"));
        core::ScopedFramerateProvider provider(&active());
        core::EdlLoader loader({samples + "/edl/" + reel + "/old.edl", samples + "/edl/" + reel + "/new.edl"}, {});
        EXPECT_TRUE(loader.load(0, model().getOldList()).opened);
        EXPECT_TRUE(loader.load(1, model().getNewList()).opened);
        EXPECT_EQ(model().generateChangeEdl(), util::Result::Ok);
        return conform();
    }

    // Every automation point of the project's tracks, as (track, host time).
    std::vector<std::pair<std::string, double>> automationPoints()
    {
        std::vector<std::pair<std::string, double>> points;
        const auto walk = [&](const auto& self, const sim::SimObject& node) -> void {
            for (const auto& child : node.children()) {
                if (!child->isTrack())
                    continue;
                for (const auto& curve : child->automation())
                    for (const auto& point : curve->children())
                        points.emplace_back(Kelmar::String::utf16ToUtf8(child->get().name), point->get().start);
                self(self, *child);
            }
        };
        walk(walk, *hostProject);
        return points;
    }

    // The value of a track's first curve at a host time.
    double curveValue(const std::string& trackName, double hostTime)
    {
        const sim::SimObject& track = simTrack(trackName);
        EXPECT_FALSE(track.automation().empty()) << trackName;
        if (track.automation().empty())
            return -1.0;
        return sim::SimRangeEditor::valueAt(*track.automation().front(), hostTime).value_or(-1.0);
    }
};

TEST_F(ConformSampleTest, ConformedSamplesSaveAndReadBackUnchanged)
{
    for (const char* reel : {"short-film-25", "short-film-2997df"}) {
        SCOPED_TRACE(reel);
        ASSERT_EQ(conformReel(reel), util::Result::Ok);
        ASSERT_GT(montala->lastRun().eventsApplied, 0u);

        // Moving the new arrangement home copies a range that begins at
        // timecode 00:00:00:00, an hour before this project's start: nothing
        // of it may stay there.
        for (const auto& [track, time] : automationPoints())
            EXPECT_GE(time, 0.0) << track;

        const std::string text = saved(*hostProject);
        std::string error;
        Kelmar::IPtr<sim::SimProject> reread = sim::SessionFile::read(*host, text, "conformed.json", error);
        ASSERT_TRUE(reread) << error;
        EXPECT_EQ(saved(*reread), text);
        reread.reset();

        montala.reset();
        host->projectManager().closeProject(hostProject.get());
        hostProject.reset();
    }
}

TEST_F(ConformSampleTest, AutomationMovesWithItsSound)
{
    ASSERT_EQ(conformReel("short-film-25"), util::Result::Ok);
    // FX 1's Mute curve (stepped) is on from 01:00:11:23 to 01:00:16:23 and
    // from 01:00:30:16 to 01:00:35:16, off from there on. The first 56 s of
    // the reel keep their place; 01:01:30:00 of the New cut shows Old
    // 01:01:28:02, where the curve is off.
    const double start = hostProject->getProjectStart();
    EXPECT_EQ(curveValue("FX 1", at25(1, 0, 14) - start), 1.0);
    EXPECT_EQ(curveValue("FX 1", at25(1, 0, 20) - start), 0.0);
    EXPECT_EQ(curveValue("FX 1", at25(1, 0, 33) - start), 1.0);
    EXPECT_EQ(curveValue("FX 1", at25(1, 1, 30) - start), 0.0);
    // The door slam is heard where its Mute window is.
    EXPECT_EQ(heard("FX 1", at25(1, 0, 14)), "door_slam.wav@4.08");
}

TEST_F(ConformSampleTest, DropFrameSampleLandsWhereTheHostsTimecodeSays)
{
    ASSERT_EQ(conformReel("short-film-2997df"), util::Result::Ok);
    // The host runs the project at 30 x 1000/1001 frames a second; Montala
    // must read its timecode at that rate, or 01:00:00;00 lies 3.6 s early.
    EXPECT_TRUE(active().getFramerate().pulled);
    EXPECT_DOUBLE_EQ(active().getFramerate().exactRate * 1001.0, 30000.0);

    // Reckoned by hand, as frames of the day at 29.97 drop frame: the
    // project starts at 01:00:00;00, frame 107892, where the picture's
    // clip 1 begins. New 01:00:12;00 (frame 108252) lies in the moved
    // reaction shot, three frames after its start; it shows Old 01:01:04;25,
    // frame 109835. New 01:01:10;00 (frame 109990) lies past the minute in
    // the last stretch, 94 frames earlier than in the Old cut: frame 110084.
    const auto seconds = [](double frames) { return frames * 1001.0 / 30000.0; };
    const sim::SimObject& picture = simTrack("PICTURE");
    for (const auto& [newFrame, oldFrame] : {std::pair{108252, 109835}, std::pair{109990, 110084}}) {
        SCOPED_TRACE(newFrame);
        const auto shown = sim::SimPlayback::at(picture, seconds(newFrame - 107892 + 0.5));
        ASSERT_TRUE(shown);
        EXPECT_EQ(shown->clipId, 1);
        EXPECT_NEAR(shown->position, seconds(oldFrame - 107892 + 0.5), 1e-6);
    }
}

} // namespace
} // namespace montala::host::test
