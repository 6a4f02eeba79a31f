#include "../SimFixture.h"

#include "sim/project/SimPlayback.h"
#include "sim/edit/SimRangeEditor.h"
#include "sim/services/SimUser.h"

namespace montala::sim::test {
namespace {

// 25 fps; a part 10-20 s holding two events joined at 14 s, and a stepped
// curve next to a linear one that ends its segment at 8 s.
constexpr const char* session = R"({"format": "montala-session", "version": 1, "frameRate": {"fps": 25},
  "start": 0, "end": 100,
  "tracks": [{"kind": "audio", "name": "FX",
    "automation": [
      {"name": "Mute", "curveType": 0, "points": [{"time": 0, "value": 0.0}, {"time": 10, "value": 1.0}]},
      {"name": "Volume", "curveType": 1, "points": [
        {"time": 0, "value": 0.0}, {"time": 8, "value": 0.8, "segmentEnd": true}, {"time": 12, "value": 0.2},
        {"time": 16, "value": 0.6}]}],
    "events": [{"kind": "part", "name": "doors", "start": 10, "end": 20, "events": [
      {"kind": "audio", "start": 1, "end": 4, "file": "open.wav", "offset": 0, "joinedToNext": true},
      {"kind": "audio", "start": 4, "end": 8, "file": "close.wav", "offset": 0.5}]}]}]})";

class SimRangeEditorTest : public SimFixture {};

TEST_F(SimRangeEditorTest, TheCurveHoldsStepsAndSegmentEndsAndIsLinearElsewhere)
{
    auto project = open(session);
    SimObject& fx = *project->findTrack(u"FX");
    const SimObject& mute = *fx.automation()[0];
    const SimObject& volume = *fx.automation()[1];
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(mute, 9.99), 0.0) << "stepped";
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(mute, 10.0), 1.0);
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(volume, 4.0), 0.4);
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(volume, 10.0), 0.8) << "after a segment end the value holds";
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(volume, 14.0), 0.4);
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(volume, 50.0), 0.6) << "after the last point";
    EXPECT_FALSE(SimRangeEditor::valueAt(*SimObject::makeAutomation(u"empty", 1), 1.0).has_value());
}

TEST_F(SimRangeEditorTest, DeletingThroughAPartCutsThePartAndTheEventsInIt)
{
    auto project = open(session);
    SimObject& fx = *project->findTrack(u"FX");
    Kelmar::IPtr<SimObject> part = fx.children()[0];
    Kelmar::IPtr<SimObject> open = part->children()[0];
    // 12.5 - 16 s: the first event keeps 11-12.5, the second 16-18.
    SimRangeEditor::deleteOnTrack(fx, 12.5, 16.0);

    ASSERT_EQ(fx.children().size(), 2u);
    EXPECT_EQ(fx.children()[0], part) << "the part itself is kept as the first piece";
    EXPECT_DOUBLE_EQ(part->get().end, 12.5);
    ASSERT_EQ(part->children().size(), 1u);
    EXPECT_EQ(part->children()[0], open) << "and so is the event inside it";
    EXPECT_EQ(open->getFlags() & Kelmar::IProjectObject::kLeftProject, 0);
    EXPECT_DOUBLE_EQ(part->children()[0]->timelineEnd(), 12.5);
    EXPECT_FALSE(part->children()[0]->get().joinedToNext) << "its partner is gone";

    const SimObject& rest = *fx.children()[1];
    EXPECT_DOUBLE_EQ(rest.get().start, 16.0);
    ASSERT_EQ(rest.children().size(), 1u);
    EXPECT_DOUBLE_EQ(rest.children()[0]->get().start, 0.0) << "relative to the new part's start";
    EXPECT_EQ(SimPlayback::at(fx, 16.0)->position, 2.5) << "close.wav plays from 0.5 + (16 - 14)";
    EXPECT_EQ(SimPlayback::at(fx, 12.0)->file, "open.wav");
    EXPECT_FALSE(SimPlayback::at(fx, 14.0).has_value());

    // No point lay inside the range, so the curve is left as it was.
    std::vector<double> times;
    for (const auto& point : fx.automation()[1]->children())
        times.push_back(point->get().start);
    EXPECT_EQ(times, (std::vector<double>{0.0, 8.0, 12.0, 16.0}));
}

TEST_F(SimRangeEditorTest, ACopyOfAPartTakesOnlyWhatLiesInTheRange)
{
    auto project = open(session);
    SimObject& fx = *project->findTrack(u"FX");
    const auto copy = SimRangeEditor::copyTrack(fx, 13.0, 15.0);
    ASSERT_EQ(copy.items.size(), 1u);
    const SimObject& part = *copy.items[0];
    EXPECT_DOUBLE_EQ(part.get().start, 0.0);
    EXPECT_DOUBLE_EQ(part.get().end, 2.0);
    ASSERT_EQ(part.children().size(), 2u);
    EXPECT_DOUBLE_EQ(part.children()[0]->get().offset, 2.0) << "open.wav from 13 s is 2 s into it";
    EXPECT_DOUBLE_EQ(part.children()[1]->get().offset, 0.5);

    SimRangeEditor::paste(copy, 50.0, 2.0);
    for (double t : {13.0, 14.0, 14.96})
        EXPECT_EQ(*SimPlayback::at(fx, t + 37.0), *SimPlayback::at(fx, t)) << t;
    EXPECT_FALSE(SimPlayback::at(fx, 52.0).has_value());
    // Both curves come along with their values at the edges: the stepped one
    // holds 1.0, the linear one runs 0.3 -> 0.5; outside the destination the
    // linear one holds its last value, 0.6, as before.
    const SimObject& mute = *fx.automation()[0];
    const SimObject& volume = *fx.automation()[1];
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(mute, 51.0), 1.0);
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(volume, 49.0), 0.6);
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(volume, 50.0), 0.3);
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(volume, 51.0), 0.4);
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(volume, 52.0), 0.6);
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(volume, 60.0), 0.6);
}

TEST_F(SimRangeEditorTest, ACopyEndingAtAPartsEndEndsTheChainInsideIt)
{
    // open.wav ends with its part at 14 s and is joined to the event after it.
    auto project = open(R"({"format": "montala-session", "version": 1, "frameRate": {"fps": 25},
      "start": 0, "end": 100, "tracks": [{"kind": "audio", "name": "FX", "events": [
        {"kind": "part", "name": "door", "start": 10, "end": 14, "events": [
          {"kind": "audio", "start": 0, "end": 4, "file": "open.wav", "offset": 0, "joinedToNext": true}]},
        {"kind": "audio", "start": 14, "end": 16, "file": "close.wav", "offset": 0}]}]})");
    SimObject& fx = *project->findTrack(u"FX");
    const auto copy = SimRangeEditor::copyTrack(fx, 10.0, 14.0);
    ASSERT_EQ(copy.items.size(), 1u);
    ASSERT_EQ(copy.items[0]->children().size(), 1u);
    EXPECT_FALSE(copy.items[0]->children()[0]->get().joinedToNext);
    EXPECT_TRUE(fx.children()[0]->children()[0]->get().joinedToNext) << "the original keeps its chain";
}

TEST_F(SimRangeEditorTest, TrimmingAPartKeepsWhatIsHeardAndTheEventsInside)
{
    auto project = open(session);
    SimObject& fx = *project->findTrack(u"FX");
    Kelmar::IPtr<SimObject> part = fx.children()[0];
    Kelmar::IPtr<SimObject> open = part->children()[0];
    Kelmar::IPtr<SimObject> close = part->children()[1];

    // The tail only: nothing inside reaches past 19 s, so nothing inside changes.
    SimUser user(*host);
    ASSERT_TRUE(user.trimEvent(*part, 10.0, 19.0));
    EXPECT_EQ(part->children(), (SimObject::List{open, close}));
    EXPECT_DOUBLE_EQ(open->get().start, 1.0);
    EXPECT_EQ(project->undoCount(), 1u);

    // The head, to 12 s: open.wav 11-14 is cut at the front, close.wav stays
    // at 14-18; each is heard where it was, from the same place in its file.
    const std::string at12 = heard(fx, 12.0);
    const std::string at15 = heard(fx, 15.0);
    ASSERT_TRUE(user.trimEvent(*part, 12.0, 19.0));
    EXPECT_EQ(heard(fx, 11.5), "silence");
    EXPECT_EQ(heard(fx, 12.0), at12);
    EXPECT_EQ(heard(fx, 15.0), at15);
    EXPECT_EQ(part->children(), (SimObject::List{open, close})) << "the same events, not copies";
    EXPECT_EQ(open->getFlags() & Kelmar::IProjectObject::kLeftProject, 0);
    EXPECT_DOUBLE_EQ(open->get().start, 0.0);
    EXPECT_DOUBLE_EQ(close->get().start, 2.0);

    // Undo gives back the part and its events as they were before the head trim.
    ASSERT_TRUE(user.undo());
    EXPECT_DOUBLE_EQ(part->get().start, 10.0);
    EXPECT_DOUBLE_EQ(close->get().start, 4.0);
    EXPECT_EQ(heard(fx, 11.5), "open.wav @ 0.500000");
}

} // namespace
} // namespace montala::sim::test
