// Project against the simulated host: rate, offset, tracks, locators and the
// stored block. Scenarios run at 25 fps from 01:00:00:00.

#include "HostFixture.h"
#include "support/ModelFixture.h"

#include "core/model/Settings.h"
#include "core/serialize/SerializationTree.h"
#include "sim/session/Base64.h"
#include "sim/project/SimProject.h"

#include "kelmar/base/FVariant.h"

#include <gtest/gtest.h>

namespace montala::host::test {
namespace {

using util::Result;

class ProjectTest : public HostFixture {
protected:
    // A session whose project object carries the given stored block and
    // checksum.
    static std::string sessionWithBlock(const std::vector<uint8_t>& block, int64_t checksum)
    {
        const std::string encoded = sim::Base64::encode(std::vector<unsigned char>(block.begin(), block.end()));
        return R"({"format": "montala-session", "version": 1, "name": "Stored",
  "frameRate": {"fps": 25}, "start": "01:00:00:00", "end": "01:01:00:00",
  "attributes": {"Mnts": )" + std::to_string(checksum) + R"(, "Mont": {"storage": {"MontData": ")" + encoded + R"("}}},
  "tracks": [{"kind": "audio", "name": "DX", "attributes": {"Montala:LockState": 1}}]})";
    }

    static uint32_t checksumOf(const std::vector<uint8_t>& bytes)
    {
        core::serialize::SerializationTree tree;
        tree.assign(bytes.data(), bytes.size());
        return tree.computeChecksum();
    }

    int64_t projectInteger(const char* name)
    {
        Kelmar::FVariant value;
        static_cast<Kelmar::IProjectObject*>(hostProject.get())->getAttribute(name, value);
        return value.getInt();
    }

    // The code `load` throws, Ok when it throws nothing.
    Result::Type loadCode()
    {
        try {
            project->load();
        } catch (Result::Type code) {
            return code;
        }
        return Result::Ok;
    }

    std::vector<uint8_t> storedModel()
    {
        core::serialize::SerializationTree tree;
        tree.writeObject(project->getDataModel());
        return tree.getBytes();
    }
};

TEST_F(ProjectTest, RateDayLengthOffsetAndEditRange)
{
    openProject(smallSession());
    EXPECT_EQ(project->getFramerate().fps, 25);
    EXPECT_EQ(project->getFramerate().dropMode, 0);
    EXPECT_DOUBLE_EQ(WorkArea::dayLength(), 86400.0);
    EXPECT_DOUBLE_EQ(project->getProjectStart(), at25(1, 0, 0));
    EXPECT_DOUBLE_EQ(project->getProjectEnd(), at25(1, 1, 0));

    // Material ends at 01:00:30:00: the work area begins at the next whole day.
    EXPECT_FALSE(project->workArea().hasConformOffset());
    double start = -1.0, end = -1.0;
    EXPECT_EQ(montala::test::thrownCode([&] { project->workArea().getEditRange(start, end); }), Result::NotInitialized);
    project->workArea().computeConformOffset();
    EXPECT_DOUBLE_EQ(project->workArea().getConformOffset(), 86400.0);

    project->workArea().getEditRange(start, end);
    EXPECT_EQ(start, 0.0);
    EXPECT_EQ(end, 86400.0);
    project->getDataModel().getSettings().setRestrictRange(true);
    project->getDataModel().getSettings().setRestrictedRange(at25(1, 0, 5), at25(1, 0, 15));
    project->workArea().getEditRange(start, end);
    EXPECT_EQ(start, at25(1, 0, 5));
    EXPECT_EQ(end, at25(1, 0, 15));

    project->workArea().clearConformOffset();
    EXPECT_FALSE(project->workArea().hasConformOffset());

    // A pulled rate makes a day of timecode 1.001 times as long.
    hostProject->setFrameRate(sim::SimFrameRate{30, true, false});
    project->updateFramerate();
    EXPECT_TRUE(project->getFramerate().pulled);
    EXPECT_NEAR(WorkArea::dayLength(), 86486.4, 1e-6);
    hostProject->setFrameRate(sim::SimFrameRate{25, false, false});
    project->updateFramerate();
    EXPECT_DOUBLE_EQ(WorkArea::dayLength(), 86400.0);
}

TEST_F(ProjectTest, TracksInTreeOrderWithoutFoldersAndRulers)
{
    openProject(R"({"format": "montala-session", "version": 1, "frameRate": {"fps": 25},
  "start": "01:00:00:00", "end": "01:01:00:00",
  "tracks": [
    {"kind": "ruler", "name": "Ruler"},
    {"kind": "folder", "name": "Group", "tracks": [
      {"kind": "audio", "name": "A"}, {"kind": "marker", "name": "M"}]},
    {"kind": "video", "name": "V"}]})");

    std::vector<std::string> names;
    for (Track& track : project->getTracks())
        names.push_back(track.getName());
    EXPECT_EQ(names, (std::vector<std::string>{"A", "M", "V"}));
    ASSERT_EQ(project->getTracks("marker").size(), 1u);
    EXPECT_EQ(project->getTracks("marker")[0].getName(), "M");
    EXPECT_EQ(project->tracks().trackList().size(), 5u);

    // With caching on, a track that leaves the project is still listed
    // until the cache is rebuilt; a track wrapper notices through its flags.
    project->setCaching(true);
    Track audio = project->getTracks()[0];
    EXPECT_TRUE(audio.isValid());
    project->setCaching(false);
    EXPECT_TRUE(project->tracks().containsTrack(audio));
    EXPECT_FALSE(project->tracks().containsTrack(Track()));
}

TEST_F(ProjectTest, LocatorsAbsoluteMoveBothBackByATenth)
{
    openProject(smallSession());
    project->setLocators(at25(1, 0, 10), at25(1, 0, 20), true);
    double left = 0.0, right = 0.0;
    project->getLocators(left, right);
    EXPECT_DOUBLE_EQ(left, 9.0);
    EXPECT_DOUBLE_EQ(right, 19.0);
    project->setLocators(2.0, 4.0, false);
    project->getLocators(left, right);
    EXPECT_DOUBLE_EQ(left, 2.0);
    EXPECT_DOUBLE_EQ(right, 4.0);
}

TEST_F(ProjectTest, SavedBlockComesBackThroughTheSessionFile)
{
    openProject(smallSession());
    project->getDataModel().getSettings().setCreateOverlapMarkers(false);
    project->workArea().computeConformOffset();
    project->save();
    const std::vector<uint8_t> before = storedModel();
    const std::string text = saved(*hostProject);

    project.reset();
    host->projectManager().closeProject(hostProject.get());
    hostProject = open(text);
    project = std::make_unique<Project>(hostProject.get(), host.get());
    EXPECT_EQ(loadCode(), Result::Ok);
    EXPECT_EQ(storedModel(), before);
    EXPECT_DOUBLE_EQ(project->workArea().getConformOffset(), 86400.0);
}

TEST_F(ProjectTest, BadBlocksLeaveTheModelEmptyAndTheProjectUnchanged)
{
    // A model worth storing, to spoil in several ways.
    std::vector<uint8_t> good;
    {
        core::DataModel model;
        model.setProperty(WorkArea::conformOffsetKey, core::Variant(86400.0));
        core::serialize::SerializationTree tree;
        tree.writeObject(model);
        good = tree.getBytes();
    }
    std::vector<uint8_t> shortened(good.begin(), good.begin() + static_cast<long>(good.size() / 2));
    std::vector<uint8_t> newer = good;
    newer[0] = 99; // the model's version comes first
    std::vector<uint8_t> unsupported = {0, 0, 0, 0, 7}; // an old release's form, unreadable
    std::vector<uint8_t> trailing = good;
    trailing.push_back(0);

    struct Case {
        const char* what;
        std::vector<uint8_t> block;
        int64_t checksum;
        Result::Type code;
        const char16_t* message;
    };
    const char16_t* ignored = u"An error occurred while loading the Montala data. The data will be ignored.";
    const Case cases[] = {
        {"wrong checksum", good, checksumOf(good) + 1, Result::ChecksumMismatch, ignored},
        {"cut short", shortened, checksumOf(shortened), Result::StreamExhausted, ignored},
        {"newer version", newer, checksumOf(newer), Result::NewerVersion,
         u"The project was created with a newer Montala version. The data cannot be loaded."},
        {"unsupported version", unsupported, checksumOf(unsupported), Result::UnknownVersion,
         u"The project was created with an unsupported Montala version. The data cannot be loaded."},
        {"bytes after the model", trailing, checksumOf(trailing), Result::BadStoredData, ignored},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        openProject(sessionWithBlock(c.block, c.checksum));
        const Result::Type code = loadCode();
        EXPECT_EQ(code, c.code);
        EXPECT_EQ(Project::loadFailureMessage(code), c.message);
        EXPECT_FALSE(project->workArea().hasConformOffset());
        EXPECT_TRUE(project->getDataModel().getProperties().empty());
        EXPECT_TRUE(project->getLockedTracks().empty());
        EXPECT_EQ(projectInteger("Mnts"), c.checksum);
        // Saved untouched, the project keeps the block it could not read.
        const std::string before = saved(*hostProject);
        project->save();
        EXPECT_EQ(saved(*hostProject), before);
        project.reset();
        host->projectManager().closeProject(hostProject.get());
    }

    // Once the user has put lists into the model, they are what is saved.
    openProject(sessionWithBlock(newer, checksumOf(newer)));
    EXPECT_EQ(loadCode(), Result::NewerVersion);
    project->getDataModel().getOldList().addEvent(core::EventBase::create(0));
    project->save();
    EXPECT_NE(projectInteger("Mnts"), checksumOf(newer));
    project.reset();
    host->projectManager().closeProject(hostProject.get());

    // The good block loads, and the track the preview had locked is known again.
    openProject(sessionWithBlock(good, checksumOf(good)));
    EXPECT_EQ(loadCode(), Result::Ok);
    EXPECT_DOUBLE_EQ(project->workArea().getConformOffset(), 86400.0);
    EXPECT_EQ(project->getLockedTracks().size(), 1u);
}

TEST_F(ProjectTest, ProjectWithoutStoredDataLoadsNothingAndSaysNothing)
{
    openProject(smallSession());
    EXPECT_EQ(loadCode(), Result::Ok);
    EXPECT_TRUE(project->getDataModel().getProperties().empty());
    EXPECT_EQ(Project::saveFailureMessage(), u"An error occurred while saving the Montala data.");
}

} // namespace
} // namespace montala::host::test
