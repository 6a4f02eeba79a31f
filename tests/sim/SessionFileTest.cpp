#include "SimFixture.h"

#include "sim/SimMediaPool.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include <unistd.h>

namespace montala::sim::test {
namespace {

namespace fs = std::filesystem;

class SessionFileTest : public SimFixture {
protected:
    // The error of reading `text`; fails the test if it reads.
    std::string errorOf(const std::string& text)
    {
        const long before = SimBase::liveObjects();
        std::string error;
        auto project = SessionFile::read(*host, text, "film.json", error);
        EXPECT_FALSE(project) << "read although it should not";
        EXPECT_EQ(SimBase::liveObjects(), before) << "a failed read keeps nothing";
        return error;
    }

    static std::string minimal(const std::string& tracks)
    {
        return R"({"format": "montala-session", "version": 1, "frameRate": {"fps": 25},
                   "start": "01:00:00:00", "end": "01:01:00:00",
                   "mediaPool": [{"id": 1, "kind": "video", "name": "a.mov", "path": "/a.mov", "length": 60}],
                   "tracks": [)"
               + tracks + "]}";
    }

    fs::path folder = fs::temp_directory_path() / ("montala-session-test-" + std::to_string(::getpid()));
    void SetUp() override { fs::create_directories(folder); }
    void TearDown() override
    {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
        SimFixture::TearDown();
    }
};

TEST_F(SessionFileTest, WritingWhatWasReadGivesTheSameTextEveryTime)
{
    auto project = open(smallSession());
    const std::string once = saved(*project);
    std::string error;
    auto again = SessionFile::read(*host, once, "again.json", error);
    ASSERT_TRUE(again) << error;
    EXPECT_EQ(SessionFile::write(*again), once);

    // Frame-exact times are written as timecode, the others as seconds.
    EXPECT_NE(once.find(R"("start": "01:00:10:00", "end": "01:00:20:00", "file": "t2.wav", "offset": 5.0)"),
              std::string::npos)
        << once;
    project->findTrack(u"DX")->children()[0]->setEnd(nullptr, 9.99, 0);
    EXPECT_NE(saved(*project).find(R"("end": 9.99)"), std::string::npos);
}

TEST_F(SessionFileTest, DropFrameTimecodeSkipsTheDroppedLabels)
{
    auto project = open(R"({"format": "montala-session", "version": 1,
      "frameRate": {"fps": 30, "pullDown": true, "dropFrame": true},
      "start": "01:00:00;00", "end": "01:01:30;00",
      "tracks": [{"kind": "marker", "name": "M", "events": [
        {"kind": "range", "start": "01:00:59;29", "end": "01:01:00;02"}]}]})");
    ASSERT_TRUE(project);
    const SimObject& marker = *project->findTrack(u"M")->children()[0];
    // 01:00:59;29 and 01:01:00;02 are neighbouring frames.
    EXPECT_NEAR((marker.get().end - marker.get().start) * 30000.0 / 1001.0, 1.0, 1e-9);
    EXPECT_NEAR(project->getProjectStart(), 107892 * 1001.0 / 30000.0, 1e-9);
    EXPECT_NE(saved(*project).find(R"("start": "01:00:59;29", "end": "01:01:00;02")"), std::string::npos);

    const std::string error = errorOf(R"({"format": "montala-session", "version": 1,
      "frameRate": {"fps": 30, "pullDown": true, "dropFrame": true}, "start": "01:00:00;00", "end": "01:01:00;01"})");
    EXPECT_EQ(error, "film.json: /end: \"01:01:00;01\" is no timecode at 29.97 fps drop frame");
}

TEST_F(SessionFileTest, ErrorsNameThePlaceInTheFile)
{
    EXPECT_EQ(errorOf("{\n  \"format\": \"montala-session\",\n  \"version\": 1,,\n}"),
              "film.json: line 3, column 16: not JSON: syntax error while parsing object key - unexpected ','; "
              "expected string literal");
    EXPECT_EQ(errorOf(R"({"format": "montala-session", "version": 1, "frameRate": {"fps": 25}, "end": 10})"),
              "film.json: /: \"start\" is missing");
    EXPECT_EQ(errorOf(minimal(R"({"kind": "audio", "events": [
                {"kind": "audio", "start": "01:00:05:00", "end": "01:00:04:00", "file": "a.wav"}]})")),
              "film.json: /tracks/0/events/0: the event ends before it starts");
    EXPECT_EQ(errorOf(minimal(R"({"kind": "midi"})")),
              "film.json: /tracks/0/kind: \"midi\" is no track kind (audio, video, marker, folder, ruler)");
    EXPECT_EQ(errorOf(minimal(R"({"kind": "folder", "tracks": [{"kind": "video", "events": [
                {"kind": "video", "start": 0, "end": 5, "clip": 2}]}]})")),
              "film.json: /tracks/0/tracks/0/events/0/clip: clip 2 is not in the media pool");
    EXPECT_EQ(errorOf(minimal(R"({"kind": "marker", "events": [{"kind": "audio", "start": 1, "end": 2, "file": "x"}]})")),
              "film.json: /tracks/0/events/0/kind: a marker track cannot hold an event of kind \"audio\"");
    EXPECT_EQ(errorOf(minimal(R"({"kind": "audio", "nmae": "DX"})")),
              "film.json: /tracks/0/nmae: is not a known field");
    EXPECT_EQ(errorOf(minimal(R"({"kind": "audio", "automation": [{"curveType": 1, "points": [
                {"time": 5, "value": 1}, {"time": 4, "value": 0}]}]})")),
              "film.json: /tracks/0/automation/0/points/1: the points are not in time order");
    EXPECT_EQ(errorOf(minimal(R"({"kind": "audio", "events": [{"kind": "part", "start": 0, "end": 2, "events": [
                {"kind": "audio", "start": 1, "end": 3, "file": "x.wav"}]}]})")),
              "film.json: /tracks/0/events/0/events/0: the event lies outside its part");
    EXPECT_EQ(errorOf(minimal(R"({"kind": "audio", "events": [{"kind": "audio", "start": "00:59:59:24", "end": 2, "file": "x"}]})")),
              "film.json: /tracks/0/events/0/start: lies before the project start");
    EXPECT_EQ(errorOf(minimal(R"({"kind": "audio", "attributes": {"Mont": {"storage": {"MontData": "abc"}}}})")),
              "film.json: /tracks/0/attributes/Mont/storage/MontData: is not base64");
    EXPECT_EQ(errorOf(R"({"format": "montala-session", "version": 2})"),
              "film.json: /version: version 2 is not known; this reader knows version 1");
}

TEST_F(SessionFileTest, SavingSwapsTheNewFileInAndAFailedSaveLeavesTheOldOne)
{
    auto project = open(smallSession());
    const fs::path path = folder / "film.json";
    std::string error;
    ASSERT_TRUE(SessionFile::save(*project, path.string(), error)) << error;
    auto loaded = SessionFile::load(*host, path.string(), error);
    ASSERT_TRUE(loaded) << error;
    EXPECT_EQ(saved(*loaded), saved(*project));
    EXPECT_EQ(loaded->documentPath(), u16(path.string()));

    // The temporary cannot be made (a folder is in its way): the save fails
    // and the file keeps what it had.
    project->findTrack(u"DX")->setName(nullptr, u"changed", 0);
    fs::create_directory(folder / "film.json.saving");
    EXPECT_FALSE(SessionFile::save(*project, path.string(), error));
    EXPECT_NE(error.find("film.json.saving: cannot be created"), std::string::npos) << error;
    std::ifstream file(path);
    std::stringstream content;
    content << file.rdbuf();
    EXPECT_EQ(content.str(), saved(*loaded));

    // A target that cannot be replaced (a folder) fails after writing, and
    // the temporary is taken away again.
    fs::remove(folder / "film.json.saving");
    fs::create_directory(folder / "taken.json");
    fs::create_directory(folder / "taken.json" / "inside");
    EXPECT_FALSE(SessionFile::save(*project, (folder / "taken.json").string(), error));
    EXPECT_NE(error.find("taken.json: cannot be replaced"), std::string::npos) << error;
    EXPECT_FALSE(fs::exists(folder / "taken.json.saving"));
}

TEST_F(SessionFileTest, TheSampleSessionsLoadAndFitTheirPictureCuts)
{
    for (const char* name : {"short-film-25", "short-film-2997df"}) {
        const std::string path = std::string(MONTALA_SOURCE_DIR) + "/samples/sessions/" + name + ".json";
        std::string error;
        auto project = SessionFile::load(*host, path, error);
        ASSERT_TRUE(project) << error;
        EXPECT_GE(project->allTracks().size(), 6u) << name;
        EXPECT_EQ(project->mediaPool().clips().empty(), false) << name;
        EXPECT_EQ(SessionFile::write(*project), SessionFile::write(*SessionFile::read(*host, SessionFile::write(*project), name, error)))
            << name;
    }
}

} // namespace
} // namespace montala::sim::test
