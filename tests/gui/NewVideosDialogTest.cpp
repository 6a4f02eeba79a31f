// The new videos overlay against a pool and a track list of its own: the
// toggles of the table write the video list at once, the table shows the
// pool as it is when the overlay opens, and the track rows set the marks.

#include "gui/NewVideosDialog.h"

#include "support/ModelFixture.h"

#include <gtest/gtest.h>

#include <set>

namespace montala::gui {
namespace {

using test::tc;

class Pool : public core::MediaPoolInterface {
public:
    struct Clip {
        std::string name;
        double length;
    };
    std::vector<Clip> clips;
    std::set<Listener*> listeners;

    int getClipCount() override { return static_cast<int>(clips.size()); }
    std::string getClipPath(int index) override { return "/media/" + clips.at(index).name; }
    std::string getClipName(int index) override { return clips.at(index).name; }
    std::string getClipFileName(int index) override { return clips.at(index).name; }
    int64_t getClipId(int index) override { return index + 1; }
    double getClipLength(int index) override { return clips.at(index).length; }
    void addListener(Listener* listener) override { listeners.insert(listener); }
    void removeListener(Listener* listener) override { listeners.erase(listener); }
};

class Tracks : public VideoTrackHandlerBase {
public:
    std::vector<std::string> names;
    std::vector<std::set<int>> marks;
    std::set<Listener*> listeners;

    std::string getTrackName(int index) override { return names.at(index); }
    int getTrackCount() override { return static_cast<int>(names.size()); }
    void setTrackRole(int index, int role) override
    {
        if (role <= NewPicture)
            marks.at(index).insert(role);
        else
            marks.at(index).erase(role - 2);
        for (Listener* listener : listeners)
            listener->tracksChanged();
    }
    bool hasTrackRole(int index, int role) override { return marks.at(index).count(role) != 0; }
    void addListener(Listener* listener) override { listeners.insert(listener); }
    void removeListener(Listener* listener) override { listeners.erase(listener); }
};

class NewVideosDialogTest : public test::ModelFixture {
protected:
    NewVideosDialogTest()
    {
        pool.clips = {{"reel_b.mov", 20.0}, {"reel_a.mov", 10.0}};
        dialog.setBounds(0, 0, 1300, 750);
        dialog.setMediaPool(&pool);
        dialog.setVideoList(&list);
        dialog.setProjectStart(3600.0);
    }

    static void click(juce::Button& button)
    {
        button.triggerClick();
        juce::MessageManager::getInstance()->runDispatchLoopUntil(5);
    }

    juce::ToggleButton& useToggle(int row)
    {
        auto* toggle = dynamic_cast<juce::ToggleButton*>(
            dialog.getTable().getCellComponent(VideoListTableModel::UseColumn, row));
        EXPECT_NE(toggle, nullptr);
        return *toggle;
    }

    std::vector<std::string> names() const
    {
        std::vector<std::string> result;
        for (const auto& row : dialog.getModel()->getRows())
            result.push_back(row.name + (row.inUse ? " in use" : ""));
        return result;
    }

    Pool pool;
    core::VideoList list;
    Tracks trackList;
    NewVideosDialog dialog;
};

TEST_F(NewVideosDialogTest, ChoosingPoolVideosAsTheNewCutFillsTheVideoListAtTheirStart)
{
    dialog.setVisible(true);
    ASSERT_EQ(names(), (std::vector<std::string>{"reel_a.mov", "reel_b.mov"}));
    click(useToggle(1));
    ASSERT_EQ(list.getSize(), 1u);
    EXPECT_EQ(list.getEntry(0).getFileName(), "reel_b.mov");
    EXPECT_EQ(list.getEntry(0).getStart(), tc("01:00:00:00")) << "a new video starts with the project";
    EXPECT_EQ(list.getEntry(0).getLength(), tc("00:00:20:00"));

    dialog.getModel()->setStart(1, tc("01:00:10:00"));
    EXPECT_EQ(list.getEntry(0).getStart(), tc("01:00:10:00"));
    click(useToggle(1));
    EXPECT_EQ(list.getSize(), 0u) << "off takes it out again";
}

TEST_F(NewVideosDialogTest, SortingKeepsTheSelectedVideoAndReopeningShowsThePoolAsItIsNow)
{
    dialog.setVisible(true);
    click(useToggle(0));
    dialog.getTable().selectRow(0);
    dialog.getTable().getHeader().setSortColumnId(VideoListTableModel::LengthColumn, false);
    juce::MessageManager::getInstance()->runDispatchLoopUntil(5);
    EXPECT_EQ(names(), (std::vector<std::string>{"reel_b.mov", "reel_a.mov in use"}));
    EXPECT_EQ(dialog.getTable().getSelectedRow(), 1) << "the selection follows reel_a.mov";

    dialog.setVisible(false);
    pool.clips.push_back({"reel_c.mov", 5.0});
    dialog.setVisible(true);
    EXPECT_EQ(names(), (std::vector<std::string>{"reel_a.mov in use", "reel_b.mov", "reel_c.mov"}));
}

TEST_F(NewVideosDialogTest, TheTrackRowsSetTheMarksAndBothTracksCanHoldTheOldCut)
{
    dialog.setTrackHandler(&trackList);
    EXPECT_EQ(dialog.trackName(0).getText(), "No track available.");
    EXPECT_FALSE(dialog.trackToggle(0, false).isEnabled());

    trackList.names = {"PICTURE", "PICTURE 2"};
    trackList.marks.resize(2);
    dialog.tracksChanged();
    EXPECT_EQ(dialog.trackName(1).getText(), "PICTURE 2");
    click(dialog.trackToggle(0, false));
    click(dialog.trackToggle(1, false));
    EXPECT_TRUE(trackList.hasTrackRole(0, VideoTrackHandlerBase::OldPicture));
    EXPECT_TRUE(trackList.hasTrackRole(1, VideoTrackHandlerBase::OldPicture));
    click(dialog.trackToggle(1, true));
    click(dialog.trackToggle(0, false));
    EXPECT_FALSE(trackList.hasTrackRole(0, VideoTrackHandlerBase::OldPicture));
    EXPECT_TRUE(dialog.trackToggle(1, true).getToggleState());
    dialog.setTrackHandler(nullptr);
}

} // namespace
} // namespace montala::gui
