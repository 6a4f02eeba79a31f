#include "support/ModelFixture.h"

#include "core/events/EventList.h"
#include "core/fileio/CmxParser.h"
#include "util/Result.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace montala::core;
using montala::test::ModelFixture;
using montala::test::tc;
using montala::util::Result;

namespace {

class EdlCorpusTest : public ModelFixture {
protected:
    Result::Type load(const std::string& relative, EventList& list, Framerate& rate)
    {
        const std::string path = std::string(MONTALA_CORPUS_DIR) + "/" + relative;
        return fileio::parseEdlFile(converter.fromUtf8(path), list, rate, false);
    }
};

} // namespace

TEST_F(EdlCorpusTest, EveryFileOfOthersLoads)
{
    const std::filesystem::path corpus(MONTALA_CORPUS_DIR);
    ASSERT_TRUE(std::filesystem::is_directory(corpus)) << corpus;
    int files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(corpus)) {
        if (!entry.is_regular_file() || entry.path().extension() == ".md")
            continue;
        EventList list(EventList::ChangeKind);
        Framerate rate;
        EXPECT_EQ(fileio::parseEdlFile(converter.fromUtf8(entry.path().string()), list, rate, false), Result::Ok)
            << entry.path();
        for (const EventPtr& event : list.getEvents())
            EXPECT_EQ(event->getEdlFile(), entry.path().filename().string());
        ++files;
    }
    EXPECT_GE(files, 50);
}

TEST_F(EdlCorpusTest, AvidDissolveFileReadsAsFourEvents)
{
    EventList list(EventList::ChangeKind);
    Framerate rate;
    ASSERT_EQ(load("otio-cmx3600-adapter/dissolve_test.edl", list, rate), Result::Ok);
    ASSERT_EQ(list.getSize(), 4u);
    EXPECT_EQ(list.getEvent(0)->getClipName(), "clip_A");
    EXPECT_EQ(list.getEvent(1)->getClipName(), "clip_A");
    EXPECT_EQ(list.getEvent(2)->getClipName(), "clip_B");
    EXPECT_EQ(list.getEvent(2)->getTransitionDuration(), 10);
    EXPECT_EQ(list.getEvent(2)->getSrcIn(), tc("01:00:08:08"));
    EXPECT_EQ(list.getEvent(3)->getClipName(), "clip_B");
    EXPECT_EQ(rate, Framerate(24, 0)) << "no frame above 20: read as 24 fps";
}

TEST_F(EdlCorpusTest, LongFeatureReelsKeepEveryEvent)
{
    EventList list(EventList::ChangeKind);
    Framerate rate;
    ASSERT_EQ(load("pycmx/INS4_R1_010417.edl", list, rate), Result::Ok);
    EXPECT_EQ(list.getSize(), 287u);
    EXPECT_EQ(list.getEvent(0)->getRollName(), "FKI_LEADER_HEAD_1920X1080.MOV");
    EXPECT_EQ(list.getEvent(3)->getClipName(), "V1A-6A");
    EXPECT_EQ(list.getEvent(3)->getSrcIn(), tc("19:26:32:20"));
    EXPECT_EQ(list.getEvent(3)->getDstOut(), tc("01:00:51:23"));
    EXPECT_EQ(rate.getDropMode(), 0);

    ASSERT_EQ(load("pycmx/STP R1 v082517.edl", list, rate), Result::Ok);
    EXPECT_EQ(list.getSize(), 250u);
}

TEST_F(EdlCorpusTest, DropFrameFileWithSixtyFrameTimecodesIsFlaggedNotRefused)
{
    EventList list(EventList::ChangeKind);
    Framerate rate;
    ASSERT_EQ(load("edl-genius/cmx3600_5994.edl", list, rate), Result::Ok);
    EXPECT_EQ(list.getSize(), 9u);
    EXPECT_EQ(rate, Framerate(30, 1));
    EXPECT_GT(list.countInvalidTimecodes(), 0);
    EXPECT_EQ(list.getEvent(0)->getClipName(), "ACC112 WARBIRDS.NEW.01");
}

TEST_F(EdlCorpusTest, AudioEventsAreMarkedAndWipesRead)
{
    EventList list(EventList::ChangeKind);
    Framerate rate;
    ASSERT_EQ(load("python-edl/test_24.edl", list, rate), Result::Ok);
    ASSERT_EQ(list.getSize(), 11u);
    EXPECT_TRUE(list.getEvent(1)->hasState(EventState::NotVideoEvent));
    EXPECT_EQ(list.getEvent(6)->getTransitionType(), EventBase::Wipe);
    EXPECT_EQ(list.getEvent(6)->getTransitionDuration(), 25);
    EXPECT_EQ(list.getEvent(6)->getRollName(), "BL");
}
