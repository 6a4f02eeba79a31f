#include "gui/NewVideosDialog.h"

#include "gui/OverlayStyle.h"
#include "gui/Texts.h"
#include "util/Result.h"

namespace montala::gui {

namespace {

enum Text { Title, Available, Hint, Assignment, AssignmentHint, TrackName, OldVersion, NewVersion };

} // namespace

NewVideosDialog::NewVideosDialog()
{
    const char16_t* captions[] = {
        u"New Video Track Configuration",
        u"Available Videos in Pool",
        u"Select the video file(s) for the new edit version. This ensures a correct result of the video preview.",
        u"Video Track Assignment",
        u"Specify which video track contains the old/new edit version.",
        u"Video Track Name",
        u"Old Edit Version",
        u"New Edit Version"};
    for (size_t index = 0; index < texts.size(); ++index) {
        styleLabel(texts[index], index == Title || index == Available || index == Assignment ? LookAndFeel::titleFont
                                                                                                : LookAndFeel::regularFont);
        texts[index].setText(translated(captions[index]), juce::dontSendNotification);
        addAndMakeVisible(texts[index]);
    }
    auto& header = videosTable.getHeader();
    for (int column : {VideoListTableModel::NameColumn, VideoListTableModel::UseColumn,
                       VideoListTableModel::StartColumn, VideoListTableModel::LengthColumn})
        header.addColumn(VideoListTableModel::columnName(column), column, column == 1 ? 420 : 140, 40, -1,
                         juce::TableHeaderComponent::visible | juce::TableHeaderComponent::sortable);
    header.setStretchToFitActive(true);
    videosTable.setRowHeight(22);
    videosTable.setMultipleSelectionEnabled(true);
    addAndMakeVisible(videosTable);
    for (size_t track = 0; track < trackNames.size(); ++track) {
        trackNames[track] = std::make_unique<juce::Label>();
        styleLabel(*trackNames[track]);
        addAndMakeVisible(*trackNames[track]);
        for (juce::ToggleButton* toggle : {oldSelect[track], newSelect[track]}) {
            toggle->addListener(this);
            addAndMakeVisible(*toggle);
        }
    }
    tracksChanged();
    Component::setVisible(false);
}

NewVideosDialog::~NewVideosDialog()
{
    setTrackHandler(nullptr);
    videosTable.setModel(nullptr);
}

void NewVideosDialog::setMediaPool(core::MediaPoolInterface* newPool)
{
    pool = newPool;
    if (isVisible())
        setVisible(true);
}

void NewVideosDialog::setVideoList(core::VideoList* list)
{
    videoList = list;
    if (isVisible())
        setVisible(true);
}

void NewVideosDialog::setProjectStart(double seconds)
{
    projectStart = seconds;
    if (model)
        model->setProjectStart(seconds);
}

void NewVideosDialog::setTrackHandler(VideoTrackHandlerBase* handler)
{
    if (trackHandler)
        trackHandler->removeListener(this);
    trackHandler = handler;
    if (trackHandler)
        trackHandler->addListener(this);
    tracksChanged();
}

void NewVideosDialog::reload()
{
    if (model)
        model->rebuild();
}

void NewVideosDialog::setVisible(bool shouldBeVisible)
{
    videosTable.setModel(nullptr);
    model.reset();
    if (shouldBeVisible && pool && videoList) {
        model = std::make_shared<VideoListTableModel>(videosTable, *pool, *videoList);
        model->setProjectStart(projectStart);
        videosTable.setModel(model.get());
    }
    videosTable.updateContent();
    tracksChanged();
    Component::setVisible(shouldBeVisible);
    if (shouldBeVisible)
        toFront(false);
}

void NewVideosDialog::tracksChanged()
{
    int count = 0;
    try {
        count = trackHandler ? trackHandler->getTrackCount() : 0;
    } catch (util::Result::Type) {
    }
    for (int track = 0; track < 2; ++track) {
        const bool present = track < count;
        juce::String name = translated(u"No track available.");
        bool isOld = false;
        bool isNew = false;
        if (present) {
            try {
                name = juce::String::fromUTF8(trackHandler->getTrackName(track).c_str());
                isOld = trackHandler->hasTrackRole(track, VideoTrackHandlerBase::OldPicture);
                isNew = trackHandler->hasTrackRole(track, VideoTrackHandlerBase::NewPicture);
            } catch (util::Result::Type) {
            }
        }
        trackNames[static_cast<size_t>(track)]->setText(name, juce::dontSendNotification);
        oldSelect[static_cast<size_t>(track)]->setToggleState(isOld, juce::dontSendNotification);
        newSelect[static_cast<size_t>(track)]->setToggleState(isNew, juce::dontSendNotification);
        oldSelect[static_cast<size_t>(track)]->setEnabled(present);
        newSelect[static_cast<size_t>(track)]->setEnabled(present);
    }
}

void NewVideosDialog::buttonClicked(juce::Button* button)
{
    if (!trackHandler)
        return;
    for (int track = 0; track < 2; ++track) {
        const bool on = button->getToggleState();
        try {
            if (button == oldSelect[static_cast<size_t>(track)])
                trackHandler->setTrackRole(track, on ? VideoTrackHandlerBase::OldPicture
                                                     : VideoTrackHandlerBase::NotOldPicture);
            else if (button == newSelect[static_cast<size_t>(track)])
                trackHandler->setTrackRole(track, on ? VideoTrackHandlerBase::NewPicture
                                                     : VideoTrackHandlerBase::NotNewPicture);
        } catch (util::Result::Type) {
            // The host said why; the toggles show the marks as they are.
            tracksChanged();
        }
    }
}

juce::Rectangle<int> NewVideosDialog::getPanelBounds() const
{
    return {getWidth() - 1096, getHeight() - 630, 892, 591};
}

void NewVideosDialog::mouseDown(const juce::MouseEvent& event)
{
    if (!getPanelBounds().contains(event.getPosition()))
        setVisible(false);
}

void NewVideosDialog::paint(juce::Graphics& g)
{
    paintOverlayPanel(g, getPanelBounds());
    const juce::Rectangle<int> panel = getPanelBounds();
    g.setColour(palette::strip);
    g.fillRect(panel.getX() + 1, panel.getY() + 28, panel.getWidth() - 2, 35);
    g.setColour(juce::Colour(0xFF8F8F8Fu));
    g.fillRect(panel.getX() + 24, panel.getBottom() - 190, panel.getWidth() - 48, 1);
}

void NewVideosDialog::resized()
{
    const juce::Rectangle<int> panel = getPanelBounds();
    const int x = panel.getX() + 16;
    const int width = panel.getWidth() - 32;
    int y = panel.getY();
    texts[Title].setBounds(panel.getX(), y + 4, panel.getWidth(), 24);
    texts[Title].setJustificationType(juce::Justification::centred);
    texts[Available].setBounds(x, y + 32, width, 28);
    texts[Hint].setBounds(x, y + 66, width, 24);
    videosTable.setBounds(x, y + 96, width, panel.getHeight() - 300);
    y = panel.getBottom() - 180;
    texts[Assignment].setBounds(x, y, width, 24);
    texts[AssignmentHint].setBounds(x, y + 26, width, 24);
    texts[TrackName].setBounds(x, y + 60, 400, 24);
    texts[OldVersion].setBounds(x + 420, y + 60, 200, 24);
    texts[NewVersion].setBounds(x + 640, y + 60, 200, 24);
    for (size_t track = 0; track < 2; ++track) {
        const int rowY = y + 90 + static_cast<int>(track) * 30;
        trackNames[track]->setBounds(x, rowY, 400, 24);
        oldSelect[track]->setBounds(x + 460, rowY, 28, 24);
        newSelect[track]->setBounds(x + 680, rowY, 28, 24);
    }
}

} // namespace montala::gui
