// The adapter's promises to the user seen from the outside, against the
// simulated host: what a damaged stored block tells the user when the
// project opens and what it leaves alone, and what the markers of a session
// keep when a cut carries them to their new place.

#include "HostRunFixture.h"

#include "core/model/Settings.h"
#include "core/serialize/SerializationTree.h"
#include "sim/session/Base64.h"
#include "sim/services/SimAlertService.h"

#include "kelmar/base/FVariant.h"
#include "kelmar/edit/IEditContext.h"
#include "kelmar/project/IStorage.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace montala::host::test {
namespace {

using util::Result;

class AdapterAuditTest : public HostRunFixture {
protected:
    // The small session whose project carries `block` as Montala's stored
    // data, beside the checksum `checksum`. DX was locked by a preview.
    static std::string sessionWithBlock(const std::vector<uint8_t>& block, int64_t checksum)
    {
        const std::string encoded = sim::Base64::encode(std::vector<unsigned char>(block.begin(), block.end()));
        std::string text = smallSession();
        const std::string from = R"("name": "Small",)";
        text.replace(text.find(from), from.size(),
                     R"("name": "Stored", "attributes": {"Mnts": )" + std::to_string(checksum)
                         + R"(, "Mont": {"storage": {"MontData": ")" + encoded + R"("}}},)");
        const std::string dx = R"("name": "DX",)";
        text.replace(text.find(dx), dx.size(), R"("name": "DX", "attributes": {"Montala:LockState": 1},)");
        return text;
    }

    static uint32_t checksumOf(const std::vector<uint8_t>& bytes)
    {
        core::serialize::SerializationTree tree;
        tree.assign(bytes.data(), bytes.size());
        return tree.computeChecksum();
    }

    // The stored block and checksum as the host's project holds them now.
    std::vector<uint8_t> blockInProject()
    {
        auto* object = static_cast<Kelmar::IProjectObject*>(hostProject.get());
        Kelmar::FVariant stored;
        if (object->getAttribute("Mont", stored) != Kelmar::kResultOk)
            return {};
        auto storage = Kelmar::queryInterface<Kelmar::IStorage>(stored.getObject());
        if (!storage)
            return {};
        std::vector<uint8_t> bytes(static_cast<size_t>(storage->getSize("MontData")));
        storage->read("MontData", bytes.data(), static_cast<Kelmar::int64>(bytes.size()));
        return bytes;
    }

    int64_t checksumInProject()
    {
        Kelmar::FVariant value;
        static_cast<Kelmar::IProjectObject*>(hostProject.get())->getAttribute("Mnts", value);
        return value.isInt() ? value.getInt() : -1;
    }
};

TEST_F(AdapterAuditTest, ADamagedBlockIsReportedWithItsMessageAndLeavesTheProjectAsItWas)
{
    // Without a block there is nothing to read and nothing to say.
    startOn(smallSession());
    EXPECT_TRUE(alerts().empty());
    EXPECT_TRUE(blockInProject().empty());
    montala.reset();
    host->projectManager().closeAll();

    // A model worth storing, spoilt in each of the ways a project file can be.
    std::vector<uint8_t> good;
    {
        core::DataModel stored;
        stored.setProperty(WorkArea::conformOffsetKey, core::Variant(86400.0));
        stored.getSettings().setCreateOverlapMarkers(false);
        core::serialize::SerializationTree tree;
        tree.writeObject(stored);
        good = tree.getBytes();
    }
    std::vector<uint8_t> shortened(good.begin(), good.begin() + static_cast<long>(good.size() / 2));
    std::vector<uint8_t> newer = good;
    newer[0] = 99; // the model's version comes first
    const std::vector<uint8_t> unsupported = {0, 0, 0, 0, 7};

    const std::string ignored = "An error occurred while loading the Montala data. The data will be ignored.";
    struct Case {
        const char* what;
        std::vector<uint8_t> block;
        int64_t checksum;
        std::string message;
    };
    const Case cases[] = {
        {"wrong checksum", good, checksumOf(good) ^ 0x10, ignored},
        {"cut short", shortened, checksumOf(shortened), ignored},
        {"newer version", newer, checksumOf(newer),
         "The project was created with a newer Montala version. The data cannot be loaded."},
        {"unsupported version", unsupported, checksumOf(unsupported),
         "The project was created with an unsupported Montala version. The data cannot be loaded."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        startOn(sessionWithBlock(c.block, c.checksum));

        // One message, the table's, with the host's own caption and button.
        const auto& shown = host->alerts().shown();
        ASSERT_EQ(shown.size(), 1u);
        EXPECT_EQ(Kelmar::String::utf16ToUtf8(shown[0].message), c.message);
        EXPECT_FALSE(shown[0].title.has_value());

        // The project stays open with an empty model and nothing of the
        // block taken: no offset, no settings, no tracks locked by it.
        ASSERT_EQ(montala->getActiveProject(), montala->findProject(hostProject.get()));
        EXPECT_FALSE(active().workArea().hasConformOffset());
        EXPECT_TRUE(model().getProperties().empty());
        EXPECT_TRUE(model().getSettings().getCreateOverlapMarkers());
        EXPECT_TRUE(active().getLockedTracks().empty());

        // The block and its checksum are where they were, as they were.
        EXPECT_EQ(blockInProject(), c.block);
        EXPECT_EQ(checksumInProject(), c.checksum);

        montala.reset();
        host->projectManager().closeAll();
        host->alerts().clear();
    }

    // The good block loads without a word, and the locked track is known again.
    startOn(sessionWithBlock(good, checksumOf(good)));
    EXPECT_TRUE(alerts().empty());
    EXPECT_DOUBLE_EQ(active().workArea().getConformOffset(), 86400.0);
    EXPECT_FALSE(model().getSettings().getCreateOverlapMarkers());
    EXPECT_EQ(active().getLockedTracks().size(), 1u);
}

TEST_F(AdapterAuditTest, AnEventExactlyHalfInARangeOfFramesBelongsToNeitherSide)
{
    // Frames of 1/25 s have no exact binary form: an event split in the
    // middle by a frame boundary comes out a few ulps more on one side. On
    // the home timeline and in the work area alike it belongs to neither.
    openProject(smallSession());
    project->workArea().computeConformOffset();
    const double workArea = project->workArea().getConformOffset() - project->getProjectStart();
    Track notes = track("Notes");
    Kelmar::IProjectEdit& run = beginEdit();
    struct Split {
        double base;  // host-relative
        int frame;    // the boundary
        int half;     // frames on each side
    };
    const Split splits[] = {{30.0, 9, 3}, {30.0, 13, 7}, {workArea, 240, 10}, {workArea, 251, 1}};
    for (const Split& split : splits) {
        const double boundary = split.base + split.frame / 25.0;
        project->ownTracks().writeMarker(run, &notes, "split", "", {3600.0 + split.base + (split.frame - split.half) / 25.0},
                                         {3600.0 + split.base + (split.frame + split.half) / 25.0}, 0);
        project->ownTracks().writeMarker(run, &notes, "point", "", {3600.0 + boundary}, {3600.0 + boundary}, 0);
        SCOPED_TRACE(boundary);
        auto named = [](const std::vector<TrackEvent>& events) {
            std::vector<std::string> names;
            for (const TrackEvent& event : events)
                names.push_back(event.getName());
            return names;
        };
        // A point on the boundary belongs to both sides.
        using Names = std::vector<std::string>;
        EXPECT_EQ(named(notes.getEventsInRange(boundary - 1.0, boundary)), Names{"point"});
        EXPECT_EQ(named(notes.getEventsInRange(boundary, boundary + 1.0)), Names{"point"});
        // One frame more on a side is a majority.
        EXPECT_EQ(named(notes.getEventsInRange(boundary - 1.0, boundary + 1 / 25.0)), (Names{"split", "point"}));
        for (const TrackEvent& event : notes.getEvents())
            if (event.getName() == "split" || event.getName() == "point")
                run.removeObject(Kelmar::owned(hostProject->getEditContext(notes.object().get())).get(),
                                 event.getObject());
    }
    endEdit();
}

TEST_F(AdapterAuditTest, MovingHomeOverARangeOfFramesRemovesWhatLiesOnItsEdges)
{
    // A restricted run moves home between two frames of the settings; the
    // old event on exactly those frames is the old arrangement and goes.
    std::string text = smallSession();
    const std::string notes = R"({"kind": "marker", "name": "Notes")";
    text.replace(text.find(notes), 0, R"({"kind": "audio", "name": "BG", "events": [
      {"kind": "audio", "name": "air", "start": "01:00:09:15", "end": "01:00:19:15", "file": "air.wav", "offset": 0}]},
    )");
    openProject(text);
    project->workArea().computeConformOffset();
    const double before = at25(1, 0, 9, 15);
    const double after = at25(1, 0, 19, 15);
    std::vector<Track> tracks{track("BG")};
    Kelmar::IProjectEdit& run = beginEdit();
    project->workArea().moveBack(run, {project->workArea().getConformOffset() + before}, {before}, after - before, tracks);
    endEdit();
    EXPECT_TRUE(track("BG").getEvents().empty());
}

TEST_F(AdapterAuditTest, MarkersCarriedByACutKeepTheirNamesReelsAndIds)
{
    // The user's markers on Notes carry a reel and an id, as Montala's own
    // markers do; a run moves them with their stretch of the timeline.
    std::string text = smallSession();
    const std::string hit = R"({"kind": "point", "name": "hit", "start": "01:00:12:00"})";
    text.replace(text.find(hit), hit.size(),
                 R"({"kind": "point", "name": "hit", "start": "01:00:12:00",
                     "attributes": {"User:STR_MAReel": "R7", "MontEventUserId": 4}})");
    openProject(text);
    project->workArea().computeConformOffset();
    project->getDataModel().getSettings().setMatchName(core::MatchName::ClipName);

    core::EventPtr event;
    {
        core::ScopedFramerateProvider provider(project.get());
        event = montala::test::makeEvent("REEL1", "01:00:10:00", "01:00:20:00", "01:00:00:00", "01:00:10:00");
    }
    event->setEventNumber(3);
    event->setClipName("A003C012");

    project->setCaching(true);
    Kelmar::IProjectEdit& run = beginEdit();
    project->ownTracks().createFolderAndMarkers(run, project->getDataModel().getSettings());
    ConformRun steps(*project, run);
    steps.applyCut(*steps.createCut(event));
    steps.complete();
    endEdit();
    project->setCaching(false);

    auto reelOf = [](const TrackEvent& marker) {
        Kelmar::FVariant reel;
        marker.getObject()->getAttribute("User:STR_MAReel", reel);
        return reel.getString8() ? std::string(reel.getString8()) : std::string("(none)");
    };

    // "hit" was at 12 s of the old cut, 2 s into the event's source.
    std::vector<TrackEvent> hits;
    for (const TrackEvent& marker : track("Notes").getEvents())
        if (marker.getName() == "hit")
            hits.push_back(marker);
    ASSERT_EQ(hits.size(), 1u) << "the old one went with the old arrangement";
    EXPECT_DOUBLE_EQ(hits[0].getStart(), 2.0);
    EXPECT_FALSE(hits[0].isRange());
    EXPECT_EQ(reelOf(hits[0]), "R7");
    int64_t id = 0;
    EXPECT_TRUE(hits[0].getUserId(id));
    EXPECT_EQ(id, 4);

    // With the clip name as the event's name, the destination marker reads
    // "Event: 3 - A003C012", without the blank a reel name is followed by,
    // and carries the reel all the same.
    std::vector<Track> markerTracks = project->getTracks("marker");
    auto found = std::find_if(markerTracks.begin(), markerTracks.end(),
                              [](Track& t) { return t.hasType(static_cast<int>(TrackType::Destination), -1); });
    ASSERT_NE(found, markerTracks.end());
    const std::vector<TrackEvent> written = found->getEvents();
    ASSERT_EQ(written.size(), 1u);
    EXPECT_EQ(written[0].getName(), "Event: 3 - A003C012");
    EXPECT_EQ(reelOf(written[0]), "REEL1");
    EXPECT_DOUBLE_EQ(written[0].getStart(), 0.0);
    EXPECT_DOUBLE_EQ(written[0].getEnd(), 10.0);
}

} // namespace
} // namespace montala::host::test
