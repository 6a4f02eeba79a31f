#include "../Recorder.h"
#include "../SimFixture.h"

#include "sim/project/SimMediaPool.h"

#include <algorithm>
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
    EXPECT_EQ(error, "film.json: line 2: /end: \"01:01:00;01\" is no timecode at 29.97 fps drop frame");
}

TEST_F(SessionFileTest, ErrorsNameThePlaceInTheFile)
{
    EXPECT_EQ(errorOf("{\n  \"format\": \"montala-session\",\n  \"version\": 1,,\n}"),
              "film.json: line 3, column 16: not JSON: syntax error while parsing object key - unexpected ','; "
              "expected string literal");
    EXPECT_EQ(errorOf(R"({"format": "montala-session", "version": 1, "frameRate": {"fps": 25}, "end": 10})"),
              "film.json: line 1: /: \"start\" is missing");
    EXPECT_EQ(errorOf(minimal(R"({"kind": "audio", "events": [
                {"kind": "audio", "start": "01:00:05:00", "end": "01:00:04:00", "file": "a.wav"}]})")),
              "film.json: line 5: /tracks/0/events/0: the event ends before it starts");
    EXPECT_EQ(errorOf(minimal(R"({"kind": "midi"})")),
              "film.json: line 4: /tracks/0/kind: \"midi\" is no track kind (audio, video, marker, folder, ruler)");
    EXPECT_EQ(errorOf(minimal(R"({"kind": "folder", "tracks": [{"kind": "video", "events": [
                {"kind": "video", "start": 0, "end": 5, "clip": 2}]}]})")),
              "film.json: line 5: /tracks/0/tracks/0/events/0/clip: clip 2 is not in the media pool");
    EXPECT_EQ(errorOf(R"({"format": "montala-session", "version": 1, "frameRate": {"fps": 25}, "start": 0, "end": 10,
      "mediaPool": [{"id": 2147483648, "kind": "video", "name": "a.mov", "path": "/a.mov", "length": 10}]})"),
              "film.json: line 2: /mediaPool/0/id: must be at most 2147483647");
    EXPECT_EQ(errorOf(minimal(R"({"kind": "marker", "events": [{"kind": "audio", "start": 1, "end": 2, "file": "x"}]})")),
              "film.json: line 4: /tracks/0/events/0/kind: a marker track cannot hold an event of kind \"audio\"");
    EXPECT_EQ(errorOf(minimal(R"({"kind": "audio", "nmae": "DX"})")),
              "film.json: line 4: /tracks/0/nmae: is not a known field");
    EXPECT_EQ(errorOf(minimal(R"({"kind": "audio", "automation": [{"curveType": 1, "points": [
                {"time": 5, "value": 1}, {"time": 4, "value": 0}]}]})")),
              "film.json: line 5: /tracks/0/automation/0/points/1: the points are not in time order");
    EXPECT_EQ(errorOf(minimal(R"({"kind": "audio", "events": [{"kind": "part", "start": 0, "end": 2, "events": [
                {"kind": "audio", "start": 1, "end": 3, "file": "x.wav"}]}]})")),
              "film.json: line 5: /tracks/0/events/0/events/0: the event lies outside its part");
    EXPECT_EQ(errorOf(minimal(R"({"kind": "audio", "events": [{"kind": "audio", "start": "00:59:59:24", "end": 2, "file": "x"}]})")),
              "film.json: line 4: /tracks/0/events/0/start: lies before the project start");
    EXPECT_EQ(errorOf(minimal(R"({"kind": "audio", "attributes": {"Mont": {"storage": {"MontData": "abc"}}}})")),
              "film.json: line 4: /tracks/0/attributes/Mont/storage/MontData: is not base64");
    EXPECT_EQ(errorOf(R"({"format": "montala-session", "version": 2})"),
              "film.json: line 1: /version: version 2 is not known; this reader knows version 1");
}

TEST_F(SessionFileTest, SavingIsSafeAndAFailedSaveLeavesTheOldFile)
{
    auto project = open(smallSession());
    const fs::path path = folder / "film.json";
    std::string error;
    ASSERT_TRUE(SessionFile::save(*project, path.string(), error)) << error;
    auto loaded = SessionFile::load(*host, path.string(), error);
    ASSERT_TRUE(loaded) << error;
    EXPECT_EQ(saved(*loaded), saved(*project));
    EXPECT_EQ(loaded->documentPath(), u16(path.string()));
    const std::string before = saved(*loaded);

    // A read-only file is refused with a message naming it, and kept.
    project->findTrack(u"DX")->setName(nullptr, u"changed", 0);
    fs::permissions(path, fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    EXPECT_FALSE(SessionFile::save(*project, path.string(), error));
    EXPECT_EQ(path.string() + ": is read-only (mode 444); it is left as it is", error);
    std::ifstream file(path);
    std::stringstream content;
    content << file.rdbuf();
    EXPECT_EQ(content.str(), before);

    // A link is saved through, and a folder in the way is refused; no
    // temporary file is left in either case.
    fs::permissions(path, fs::perms::owner_write, fs::perm_options::add);
    fs::create_symlink(path, folder / "link.json");
    ASSERT_TRUE(SessionFile::save(*project, (folder / "link.json").string(), error)) << error;
    EXPECT_TRUE(fs::is_symlink(folder / "link.json"));
    EXPECT_NE(std::string::npos, saved(*SessionFile::load(*host, path.string(), error)).find("\"changed\""));
    fs::create_directories(folder / "taken.json" / "inside");
    EXPECT_FALSE(SessionFile::save(*project, (folder / "taken.json").string(), error));
    EXPECT_NE(error.find("taken.json: is a folder"), std::string::npos) << error;
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    EXPECT_EQ((std::vector<std::string>{"film.json", "link.json", "taken.json"}), names);

    // Reading says why a file cannot be read.
    EXPECT_FALSE(SessionFile::load(*host, (folder / "gone.json").string(), error));
    EXPECT_EQ((folder / "gone.json").string() + ": does not exist", error);
    EXPECT_FALSE(SessionFile::load(*host, (folder / "taken.json").string(), error));
    EXPECT_EQ((folder / "taken.json").string() + ": is a folder, not a file", error);
}

TEST_F(SessionFileTest, SavingAnOpenProjectTellsItsStorageNotificationsFirst)
{
    auto project = open(smallSession());
    auto recorder = Kelmar::owned(new Recorder);
    project->addStorageNotification(recorder.get());
    // What a plug-in stores while the project is saved must be in the file.
    recorder->onSaving = [](Kelmar::IProject* saving) {
        Kelmar::FVariant checksum;
        checksum.setInt(1234);
        dynamic_cast<SimProject*>(saving)->setAttribute("Mnts", checksum, 0);
    };
    const fs::path path = folder / "film.json";
    std::string error;
    ASSERT_TRUE(SessionFile::save(*project, path.string(), error)) << error;
    EXPECT_EQ(std::vector<std::string>{"saving Small"}, recorder->heard);
    auto loaded = SessionFile::load(*host, path.string(), error);
    ASSERT_TRUE(loaded) << error;
    EXPECT_NE(std::string::npos, saved(*loaded).find("\"attributes\": {\"Mnts\": 1234}")) << saved(*loaded);
    project->removeStorageNotification(recorder.get());

    // A project that is not open has nobody to tell.
    auto closed = SessionFile::read(*host, smallSession(), "closed.json", error);
    closed->addStorageNotification(recorder.get());
    ASSERT_TRUE(SessionFile::save(*closed, (folder / "closed.json").string(), error)) << error;
    EXPECT_EQ(1u, recorder->heard.size());
    closed->removeStorageNotification(recorder.get());
}

TEST_F(SessionFileTest, ValuesTheReaderCannotKeepExactlyAreRefusedWithFileLineAndPlace)
{
    const auto withEnd = [](const std::string& end) {
        return "{\"format\": \"montala-session\", \"version\": 1, \"frameRate\": {\"fps\": 25},\n"
               "\"start\": 0,\n\"end\": " + end + "}";
    };
    EXPECT_EQ(errorOf(withEnd("1e400")), "film.json: line 3: /end: 1e400 is out of range");
    EXPECT_EQ(errorOf(withEnd("-1e400")), "film.json: line 3: /end: -1e400 is out of range");
    EXPECT_EQ(errorOf(withEnd("1e-400")), "film.json: line 3: /end: 1e-400 is too small to be held; it would be read as 0");
    // A time that no timecode label of a written session could hold.
    EXPECT_EQ(errorOf(withEnd("3600000")), "film.json: line 3: /end: 3600000 lies 1,000 hours or more from midnight, "
                                           "past the last timecode a session can hold (999 hours)");
    EXPECT_EQ(errorOf(minimal(R"({"kind": "audio", "events": [
                 {"kind": "audio", "start": 1e17, "end": 2e17, "file": "a.wav"}]})")),
              "film.json: line 5: /tracks/0/events/0/start: 1e+17 lies 1,000 hours or more from midnight, past the "
              "last timecode a session can hold (999 hours)");
    EXPECT_EQ(errorOf(minimal(R"({"kind": "audio", "attributes": {"n": 18446744073709551615}})")),
              "film.json: line 4: /tracks/0/attributes/n: 18446744073709551615 is out of range (whole numbers go up to "
              "9223372036854775807)");
    EXPECT_EQ(errorOf(minimal(R"({"kind": "audio", "attributes": {"n": -99999999999999999999}})")),
              "film.json: line 4: /tracks/0/attributes/n: -99999999999999999999 is out of range (whole numbers go up "
              "to 9223372036854775807)");
    // 0e5 and 0.0 are zero as written.
    EXPECT_TRUE(open(minimal(R"({"kind": "audio", "attributes": {"a": 0e5, "b": -0.0}})")));

    // A NUL would cut a host text short.
    EXPECT_EQ(errorOf(minimal(R"({"kind": "audio", "name": "D\u0000X"})")),
              "film.json: line 4: /tracks/0/name: holds a NUL character (\\u0000), which a text of the host cannot "
              "hold");
    EXPECT_EQ(errorOf(minimal(R"({"kind": "audio", "attributes": {"s": "a\u0000b"}})")),
              "film.json: line 4: /tracks/0/attributes/s: holds a NUL character (\\u0000), which a text of the host "
              "cannot hold");
    EXPECT_EQ(errorOf(minimal(R"({"kind": "audio", "attributes": {"a\u0000b": 1}})")),
              "film.json: line 4: /tracks/0/attributes/a\\u0000b: a field name holds a NUL character (\\u0000)");
    // Of a key given twice the library would keep only the last.
    EXPECT_EQ(errorOf(minimal(R"({"kind": "audio", "name": "A", "name": "B"})")),
              "film.json: line 4: /tracks/0/name: is given twice in one object");
}

TEST_F(SessionFileTest, DeepNestingIsRefusedWithAMessageNotACrash)
{
    // Folders within folders, n deep, an audio track at the bottom.
    const auto nested = [](int n) {
        std::string tracks = R"({"kind": "audio"})";
        for (int i = 0; i < n; ++i)
            tracks = R"({"kind": "folder", "tracks": [)" + tracks + "]}";
        return tracks;
    };
    auto project = open(minimal(nested(64)));
    ASSERT_TRUE(project);
    EXPECT_EQ(65u, project->allTracks().size());
    const std::string again = saved(*project);
    std::string error;
    EXPECT_TRUE(SessionFile::read(*host, again, "again.json", error)) << error;

    std::string deepest = "/tracks/0";
    for (int i = 0; i < 64; ++i)
        deepest += "/tracks/0";
    EXPECT_EQ(errorOf(minimal(nested(65))),
              "film.json: line 4: " + deepest + ": folders are nested more than 64 deep");
    // Deep enough to overflow the stack of a recursive reader.
    const std::string tooDeep = errorOf(minimal(nested(8000)));
    EXPECT_EQ(0u, tooDeep.rfind("film.json: line 4: /tracks/0/tracks/0/", 0)) << tooDeep.substr(0, 200);
    EXPECT_NE(std::string::npos, tooDeep.find(": is nested more than 256 levels deep"));
    EXPECT_NE(std::string::npos, errorOf(std::string(100000, '[') + std::string(100000, ']'))
                                     .find("film.json: line 1: /0/0/0/0"));
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
