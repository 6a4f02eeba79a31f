#pragma once

#include "core/model/ChangeContext.h"
#include "core/events/EventList.h"
#include "core/events/EventListIndex.h"
#include "gui/EventTableModel.h"
#include "gui/EventTimeLineView.h"
#include "gui/FileDialog.h"
#include "gui/FlashTextButton.h"
#include "gui/LookAndFeel.h"
#include "gui/NewVideosDialog.h"
#include "gui/SettingsDialog.h"
#include "gui/TcEditDialog.h"
#include "gui/VideoDisplay.h"
#include "gui/VideoProviderBase.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <array>
#include <cstdint>
#include <memory>

namespace montala::core {
class DataModel;
class MontalerBase;
} // namespace montala::core

namespace montala::gui {

// Montala's one window: the Old and New tables side by side, the Change
// table below with the timeline of the cut, the counters and the buttons.
//
//   +--------- Old EDL ---------+ +--------- New EDL ---------+
//   | [+]                   [x] | | [+]                   [x] |
//   | table                     | | table                     |
//   | Total  Selected  Invalid  | | Total  Selected  Invalid  |
//   +--------[Generate]---------+ +---------------------------+
//   +------------- Change EDL ---------------------+  video
//   | [+][s] [x]        [Preview][SRC][DST]        |  display
//   | table                                        |  [IN][OUT]
//   | Total  Selected  Invalid                     |
//   |----------------------------------------------|
//   | timeline: Source / Destination               |
//   +----------------------------------------------+
//   [settings]                          [Start Montala]
//
// The window holds no conform logic: every action is a call into the data
// model or into the conform driver, and it redraws only when the model's
// notifier tells it that something changed. While no data model is set it
// is disabled and every action is ignored.
class MainGui : public juce::Component,
                public juce::ComponentListener,
                public core::ChangeContextListenerInterface,
                public EventTableModel::Listener,
                public juce::Button::Listener {
public:
    static constexpr int defaultWidth = 1300;
    static constexpr int defaultHeight = 750;

    // The three tables, by the kind of their list.
    enum Table { OldTable = 0, NewTable = 1, ChangeTable = 2 };
    // The three counters of each table.
    enum Counter { TotalCounter = 0, SelectedCounter = 1, InvalidCounter = 2 };

    MainGui();
    ~MainGui() override;

    // Not owned; may be null.
    void setMontaler(core::MontalerBase* driver);
    // Leaves the old notifier and listens to the new one, which answers with
    // the data model of the active project. Without a notifier the window
    // empties and disables itself.
    void setProject(core::ChangeContextNotificationBase* notifier);
    void setVideoProvider(std::shared_ptr<VideoProviderBase> provider);

    void paint(juce::Graphics& g) override;
    bool keyPressed(const juce::KeyPress& key) override;
    void resized() override;

    void componentVisibilityChanged(juce::Component& component) override;
    void changed(const core::ChangeContext& context) override;

    void selectionChanged(EventTableModel* model) override;
    void sortChanged(EventTableModel* model) override;
    void editRequested(std::shared_ptr<core::EventBase> event, EventTableModel* model,
                       const juce::MouseEvent& mouseEvent) override;

    void buttonClicked(juce::Button* button) override;

    // Applies the selected stretch of the Change table to the project for
    // listening, or ends the preview when nothing is selected. Does nothing
    // unless preview is on.
    void runPreview();
    // Starts the conform, after checking that tracks take part.
    void runMontala();

    // The parts, for the program that hosts the window and for tests.
    core::DataModel* getDataModel() const { return dataModel; }
    juce::TableListBox& getTable(Table table) { return *tables[table]; }
    EventTableModel* getTableModel(Table table) const { return models[table].get(); }
    EventTimeLineView& getTimeline() { return timelineView; }
    juce::Label& getCounter(Table table, Counter counter) { return *counterValues[table][counter]; }
    FlashTextButton& getPreviewButton() { return previewButton; }
    juce::TextButton& getSourceToggle() { return sourceToggle; }
    juce::TextButton& getDestinationToggle() { return destinationToggle; }
    juce::TextButton& getGenerateButton() { return generateButton; }
    juce::TextButton& getMontalaButton() { return montalaButton; }
    juce::Button& getClearButton(Table table) { return *clearButtons[table]; }
    juce::Button& getSaveButton() { return saveChangeButton; }
    juce::Button& getLoadButton(Table table) { return *loadButtons[table]; }
    juce::Button& getSettingsButton() { return settingsButton; }
    SettingsDialog& getSettingsDialog() { return settingsDialog; }
    FileDialog& getFileDialog() { return fileDialog; }
    TcEditDialog& getEditDialog() { return tcEditDialog; }
    VideoDisplay& getVideoDisplay() { return videodisplay; }
    NewVideosDialog& getNewVideosDialog() { return newVideosDialog; }
    juce::Button& getVideoSettingsButton() { return m_showNewVideosDialogButton; }
    juce::TextButton& getVideoInToggle() { return m_videoLeftToggle; }
    juce::TextButton& getVideoOutToggle() { return m_videoRightToggle; }

private:
    struct TableKeys {
        int32_t sortColumn;
        int32_t sortFlag;
        int32_t selectedRows;
    };
    static TableKeys keysOf(Table table);

    core::EventList* listOf(Table table) const;
    Table tableOf(const EventTableModel* model) const;

    void dataModelChanged(core::DataModel* model);
    void takeNewDataModel(core::DataModel* model);
    void dropDataModel();
    void listChanged(Table table);
    void previewStateChanged();

    void rebuildModel(Table table);
    void restoreSelection(Table table);
    void highlightRelated();
    // Appends the Old (or New) events that a Change event came from: those
    // its SRC (or DST) range overlaps by more than one sample at 384 kHz.
    void collectRelated(const core::EventPtr& changeEvent, bool onOldList, core::EventList& related);
    void clearRelatedMarks();
    void updateCounters();
    void updateListCounters(Table table);
    void updateVideoDisplay(bool show);

    void generate();
    void clear(Table table);
    void save();
    void previewToggled();
    void previewSideChosen();
    // The preview button off and its two side toggles disabled, without
    // telling anybody.
    void showPreviewOff();

    void layoutCounterRow(Table table, int x, int y);

    core::MontalerBase* montaler = nullptr;
    core::ChangeContextNotificationBase* projectNotifier = nullptr;
    core::DataModel* dataModel = nullptr;
    std::array<std::shared_ptr<EventTableModel>, 3> models;
    // The Old and New lists by record time, kept from one selection change
    // to the next and dropped whenever their list changes. The data model
    // builds such an index for every event it is asked about, which for a
    // long list is slower than a frame, and a selection of all rows would
    // build one per row.
    std::unique_ptr<core::EventListIndex> oldIndex;
    std::unique_ptr<core::EventListIndex> newIndex;
    LookAndFeel lookAndFeel;
    std::shared_ptr<VideoProviderBase> videoProvider;
    juce::File saveFolder;
    std::unique_ptr<juce::TooltipWindow> tooltipWindow;
    bool previewStartedOnce = false;

    juce::ImageButton loadOldButton{"Load Old Edl Button"};
    juce::ImageButton loadNewButton{"Load New Edl Button"};
    juce::ImageButton loadChangeButton{"Load Change Edl Button"};
    juce::ImageButton clearOldButton{"Clear Old Edl Button"};
    juce::ImageButton clearNewButton{"Clear New Edl Button"};
    juce::ImageButton clearChangeButton{"Clear Change Edl Button"};
    juce::TextButton generateButton{"Generate Button"};
    juce::ImageButton saveChangeButton{"Save Change Edl Button"};
    juce::ImageButton settingsButton{"Settings Button"};
    juce::TextButton montalaButton{"Montala Button"};
    FlashTextButton previewButton{"new component"};
    juce::TextButton sourceToggle{"Source Toggle"};
    juce::TextButton destinationToggle{"Destination Toggle"};
    juce::ImageButton m_showNewVideosDialogButton{"m_showNewVideosDialogButton"};
    juce::TextButton m_videoLeftToggle{"m_videoLeftToggle"};
    juce::TextButton m_videoRightToggle{"m_videoRightToggle"};
    juce::TableListBox oldTable{"Old Table List Box"};
    juce::TableListBox newTable{"New Table List Box"};
    juce::TableListBox changeTable{"Change Table List Box"};
    EventTimeLineView timelineView;
    VideoDisplay videodisplay;
    std::array<juce::TableListBox*, 3> tables{&oldTable, &newTable, &changeTable};
    std::array<juce::Button*, 3> loadButtons{&loadOldButton, &loadNewButton, &loadChangeButton};
    std::array<juce::Button*, 3> clearButtons{&clearOldButton, &clearNewButton, &clearChangeButton};
    // Captions and values of the counters: Total, Selected, Invalid per table.
    std::array<std::array<std::unique_ptr<juce::Label>, 3>, 3> counterCaptions;
    std::array<std::array<std::unique_ptr<juce::Label>, 3>, 3> counterValues;
    // The overlays come last, so that they lie above everything else.
    SettingsDialog settingsDialog;
    NewVideosDialog newVideosDialog;
    FileDialog fileDialog;
    TcEditDialog tcEditDialog;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR(MainGui)
};

} // namespace montala::gui
