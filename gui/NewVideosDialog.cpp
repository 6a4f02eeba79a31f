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
        // Black on the light panel; the header cells of the track rows are dark.
        if (index != TrackName && index != OldVersion && index != NewVersion)
            texts[index].setColour(juce::Label::textColourId, juce::Colours::black);
        addAndMakeVisible(texts[index]);
    }
    texts[Title].setJustificationType(juce::Justification::centred);
    texts[OldVersion].setJustificationType(juce::Justification::centred);
    texts[NewVersion].setJustificationType(juce::Justification::centred);
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

// The panel, light grey over the greyed window, holds the track assignment
// on black near its top and the pool's videos below it:
//
//   +------------- New Video Track Configuration -------------+
//   | Video Track Assignment / hint                            |
//   | [Video Track Name          ][Old Edit ][New Edit ]       |  header cells
//   |  PICTURE                        [x]        [ ]           |
//   |  ------------------------------------------------------  |
//   |  NEW PICTURE                    [ ]        [x]           |
//   | Available Videos in Pool / hint                          |
//   | [ Name | Use as New Video | Start | Length ]             |
//   +----------------------------------------------------------+
namespace {

juce::Rectangle<int> trackArea(juce::Rectangle<int> panel)
{
    return {panel.getX() + 16, panel.getY() + 96, 860, 100};
}

// The header cells of the track rows: name, old cut, new cut.
std::array<juce::Rectangle<int>, 3> trackHeaderCells(juce::Rectangle<int> panel)
{
    const int y = trackArea(panel).getY() + 2;
    return {juce::Rectangle<int>(panel.getX() + 18, y, 567, 27), juce::Rectangle<int>(panel.getX() + 589, y, 138, 27),
            juce::Rectangle<int>(panel.getX() + 731, y, 143, 27)};
}

} // namespace

void NewVideosDialog::paint(juce::Graphics& g)
{
    const juce::Rectangle<int> panel = getPanelBounds();
    g.fillAll(juce::Colour(0x3A929395u));
    g.setColour(juce::Colour(0xFF929395u));
    g.fillRect(panel);
    g.setColour(juce::Colours::black);
    g.fillRect(trackArea(panel));
    g.setColour(juce::Colour(0xFF565D63u));
    for (const juce::Rectangle<int>& cell : trackHeaderCells(panel))
        g.fillRect(cell);
    // Between the two track rows.
    g.setColour(juce::Colour(0xFF8F8F8Fu));
    g.fillRect(panel.getX() + 24, panel.getY() + 162, 844, 1);
}

void NewVideosDialog::resized()
{
    const juce::Rectangle<int> panel = getPanelBounds();
    const int x = panel.getX() + 16;
    const int width = panel.getWidth() - 32;
    const int y = panel.getY();
    texts[Title].setBounds(panel.getX(), y + 4, panel.getWidth(), 24);
    texts[Assignment].setBounds(x, y + 34, width, 24);
    texts[AssignmentHint].setBounds(x, y + 62, width, 24);
    const auto cells = trackHeaderCells(panel);
    texts[TrackName].setBounds(cells[0].reduced(6, 0));
    texts[OldVersion].setBounds(cells[1]);
    texts[NewVersion].setBounds(cells[2]);
    for (size_t track = 0; track < 2; ++track) {
        const int rowY = cells[0].getBottom() + 4 + static_cast<int>(track) * 36;
        trackNames[track]->setBounds(cells[0].getX() + 6, rowY, cells[0].getWidth() - 12, 28);
        oldSelect[track]->setBounds(cells[1].getCentreX() - 12, rowY, 28, 28);
        newSelect[track]->setBounds(cells[2].getCentreX() - 12, rowY, 28, 28);
    }
    const int videosY = trackArea(panel).getBottom() + 12;
    texts[Available].setBounds(x, videosY, width, 24);
    texts[Hint].setBounds(x, videosY + 28, width, 24);
    videosTable.setBounds(x, videosY + 58, width, panel.getBottom() - 16 - (videosY + 58));
}

} // namespace montala::gui
