#include "gui/FileDialog.h"

#include "core/model/DataModel.h"
#include "core/model/DataModelChangeScope.h"
#include "core/events/EdlLoader.h"
#include "core/model/PropertyKeys.h"
#include "core/model/Variant.h"
#include "gui/FileBrowserDialogBase.h"
#include "gui/LookAndFeel.h"
#include "gui/OverlayStyle.h"
#include "gui/Palette.h"
#include "gui/Texts.h"
#include "util/Result.h"

namespace montala::gui {

using core::EventList;
using core::Timecode;
using util::Result;

namespace {

constexpr int panelWidth = 640;
constexpr int panelHeight = 420;

std::string timecodeText(int frames)
{
    return Timecode(frames).toString();
}

// One file's line of the list: its name and where its usable events lie.
juce::String fileLine(const std::string& path, const EventList& list)
{
    const juce::String name = juce::File(juce::String::fromUTF8(path.c_str())).getFileName();
    juce::String line = name.paddedRight(' ', 24) + " ";
    for (EventList::RangeKind side : {EventList::Src, EventList::Dst}) {
        const core::TimecodeRange range = list.getRange(side);
        line += juce::String(range.start.toString()) + "  " + juce::String(range.end.toString()) + "  ";
    }
    return line.trimEnd();
}

} // namespace

FileDialog::FileDialog()
{
    styleLabel(heading, LookAndFeel::labelFont);
    heading.setJustificationType(juce::Justification::centred);
    addAndMakeVisible(heading);

    fileList.setMultiLine(true, false);
    fileList.setReadOnly(true);
    fileList.setScrollbarsShown(true);
    fileList.setCaretVisible(false);
    fileList.setFont(juce::Font(juce::Font::getDefaultMonospacedFontName(), 13.0f, juce::Font::plain));
    addAndMakeVisible(fileList);

    browseButton.setButtonText("...");
    browseButton.setTooltip(translated(u"Browse EDL Files"));
    browseButton.addListener(this);
    addAndMakeVisible(browseButton);

    static const char* const names[] = {"SRC In", "SRC Out", "DST In", "DST Out"};
    const juce::String captions[] = {translated(u"SRC IN"), translated(u"SRC OUT"), translated(u"DST IN"),
                                     translated(u"DST OUT")};
    for (size_t which = 0; which < rangeValues.size(); ++which) {
        rangeCaptions[which] = std::make_unique<juce::Label>(juce::String(names[which]) + " Label", captions[which]);
        styleLabel(*rangeCaptions[which]);
        addAndMakeVisible(*rangeCaptions[which]);
        rangeValues[which] = std::make_unique<juce::Label>(juce::String(names[which]) + " Value", "00:00:00:00");
        styleLabel(*rangeValues[which]);
        rangeValues[which]->setJustificationType(juce::Justification::centredRight);
        addAndMakeVisible(*rangeValues[which]);
    }
    srcOffsetCaption.setText(translated(u"SRC Offset"), juce::dontSendNotification);
    dstOffsetCaption.setText(translated(u"DST Offset"), juce::dontSendNotification);
    for (juce::Label* caption : {&srcOffsetCaption, &dstOffsetCaption}) {
        styleLabel(*caption);
        addAndMakeVisible(*caption);
    }
    srcOffset.setName("SRC Offset");
    dstOffset.setName("DST Offset");
    for (TcInput* offset : {&srcOffset, &dstOffset}) {
        offset->setSigned(true);
        offset->setTimecode(Timecode::zero(), true, false);
        offset->addListener(this);
        addAndMakeVisible(*offset);
    }

    okButton.setButtonText(translated(u"Ok"));
    cancelButton.setButtonText(translated(u"Cancel"));
    for (juce::Button* button : {&okButton, &cancelButton}) {
        button->addListener(this);
        addAndMakeVisible(*button);
    }
    Component::setVisible(false);
}

FileDialog::~FileDialog()
{
    srcOffset.removeListener(this);
    dstOffset.removeListener(this);
}

void FileDialog::setup(core::DataModel* model, const std::string& projectFolder)
{
    dataModel = model;
    juce::File folder;
    core::Variant stored;
    if (dataModel && dataModel->getProperty(core::PropertyKey::LastFolder, stored) == Result::Ok)
        folder = juce::File(juce::String::fromUTF8(stored.asText().c_str()));
    if (!folder.isDirectory() && juce::File::isAbsolutePath(juce::String::fromUTF8(projectFolder.c_str()))) {
        folder = juce::File(juce::String::fromUTF8(projectFolder.c_str()));
        // A project is named by its file; its folder is where its EDLs lie.
        if (folder.existsAsFile())
            folder = folder.getParentDirectory();
    }
    if (folder.isDirectory())
        lastFolder = folder;
    if (!dataModel)
        reset();
}

void FileDialog::openForOld()
{
    open(EventList::OldKind);
}

void FileDialog::openForNew()
{
    open(EventList::NewKind);
}

void FileDialog::openForChange()
{
    open(EventList::ChangeKind);
}

void FileDialog::open(int kind)
{
    listKind = kind;
    static const char16_t* const headings[] = {u"Add EDL to Old List", u"Add EDL to New List",
                                               u"Add EDL to Change EDL List"};
    heading.setText(translated(headings[kind]), juce::dontSendNotification);
    resized();
    setVisible(true);
}

void FileDialog::setVisible(bool shouldBeVisible)
{
    const bool change = listKind == EventList::ChangeKind;
    for (juce::Component* part : {static_cast<juce::Component*>(rangeCaptions[SrcIn].get()),
                                  static_cast<juce::Component*>(rangeCaptions[SrcOut].get()),
                                  static_cast<juce::Component*>(rangeValues[SrcIn].get()),
                                  static_cast<juce::Component*>(rangeValues[SrcOut].get()),
                                  static_cast<juce::Component*>(&srcOffsetCaption),
                                  static_cast<juce::Component*>(&srcOffset)})
        part->setVisible(change);
    Component::setVisible(shouldBeVisible);
    if (shouldBeVisible)
        toFront(true);
}

void FileDialog::buttonClicked(juce::Button* button)
{
    if (button == &browseButton)
        browse();
    else if (button == &okButton)
        accept();
    else if (button == &cancelButton)
        reset();
}

void FileDialog::browse()
{
    FileBrowserDialogBase* dialog = FileBrowserDialogBase::getInstance();
    if (!dataModel || !dialog)
        return;
    std::vector<std::string> chosen;
    if (!dialog->show(translatedUtf8(u"Add EDL"), lastFolder.getFullPathName().toStdString(), "edl",
                      translatedUtf8(u"Edit Decision List"), true, chosen)
        || chosen.empty())
        return;
    const juce::File folder = juce::File(juce::String::fromUTF8(chosen.front().c_str())).getParentDirectory();
    if (folder.isDirectory()) {
        lastFolder = folder;
        dataModel->setProperty(core::PropertyKey::LastFolder, core::Variant(folder.getFullPathName().toStdString()));
    }

    // Gathered apart, so that an "Abort" leaves the files of earlier browses
    // as they were and takes none of this one.
    std::map<std::string, std::unique_ptr<EventList>> gathered;
    for (const std::string& path : chosen)
        if (!read(path, gathered))
            return;
    for (auto& [path, list] : gathered)
        files[path] = std::move(list);
    showFiles();
}

bool FileDialog::read(const std::string& path, std::map<std::string, std::unique_ptr<EventList>>& gathered)
{
    core::EdlLoadOptions options;
    options.renameBRolls = dataModel->getSettings().getBRollRenaming();
    core::EdlLoader loader({path}, options);
    auto list = std::make_unique<EventList>(listKind);
    const core::EdlFileReport report = loader.load(0, *list);
    if (!report.opened) {
        askUser(u"An error occurred while loading the file.",
                report.fileName + ": " + core::fileio::describeOpenFailure(report.parse.openFailure), u"Ok");
        return true;
    }
    if (report.rateMismatch
        && askUser(u"Frame rate mismatch between current project and loaded EDL %s", report.fileName, u"Abort",
                   u"Continue")
               == AlertWindowBase::FirstButton)
        return false;
    if (report.timecodesOffRate
        && askUser(u"Some timecodes in the loaded EDL file %s do not match the current project frame rate.",
                   report.fileName, u"Abort", u"Continue")
               == AlertWindowBase::FirstButton)
        return false;
    if (report.noValidEntries) {
        askUser(u"The loaded EDL file %s does not contain valid entries.", report.fileName, u"Ok");
        return true;
    }
    if (listKind == EventList::ChangeKind) {
        // A Change EDL moves cuts; a dissolve or wipe has no place in it.
        EventList transitions(EventList::ChangeKind);
        for (const core::EventPtr& event : list->getEvents())
            if (event->getTransitionType() != core::EventBase::Cut)
                transitions.addEvent(event);
        list->removeEvents(transitions);
    }
    gathered[path] = std::move(list);
    return true;
}

void FileDialog::showFiles()
{
    juce::String text = juce::String(translatedUtf8(u"File")).paddedRight(' ', 24) + " ";
    for (const char16_t* column : {u"SRC IN", u"SRC OUT", u"DST IN", u"DST OUT"})
        text += translated(column).paddedRight(' ', 11) + "  ";
    text = text.trimEnd() + "\n";
    spans = {};
    for (const auto& [path, list] : files) {
        text += fileLine(path, *list) + "\n";
        if (!list->hasGoodEvent())
            continue;
        for (EventList::RangeKind side : {EventList::Src, EventList::Dst}) {
            const core::TimecodeRange range = list->getRange(side);
            Span& span = spans[side];
            const int in = range.start.toFrames();
            const int out = range.end.toFrames();
            span.in = span.known ? std::min(span.in, in) : in;
            span.out = span.known ? std::max(span.out, out) : out;
            span.known = true;
        }
    }
    fileList.setText(text, false);
    showSide(EventList::Src);
    showSide(EventList::Dst);
}

void FileDialog::timecodeChanged(TcInput* input)
{
    showSide(input == &srcOffset ? EventList::Src : EventList::Dst);
}

void FileDialog::showSide(EventList::RangeKind side)
{
    TcInput& offset = side == EventList::Src ? srcOffset : dstOffset;
    const Span& span = spans[side];
    int shift = offset.getTimecode().toFrames() * (offset.isPositive() ? 1 : -1);
    if (span.known) {
        const int last = Timecode::maximum().toFrames();
        if (span.in + shift < 0) {
            // The furthest the files can go back is to the start of the day.
            shift = -span.in;
            offset.setTimecode(Timecode(span.in), false, false);
        } else if (span.out + shift > last) {
            shift = last - span.out;
            offset.setTimecode(Timecode(shift), true, false);
        }
    }
    const int in = span.known ? span.in + shift : 0;
    const int out = span.known ? span.out + shift : 0;
    rangeValues[side == EventList::Src ? SrcIn : DstIn]->setText(timecodeText(in), juce::dontSendNotification);
    rangeValues[side == EventList::Src ? SrcOut : DstOut]->setText(timecodeText(out), juce::dontSendNotification);
}

void FileDialog::accept()
{
    if (dataModel && !files.empty()) {
        static const char* const titles[] = {"Load Old EDL", "Load New EDL", "Load Change EDL"};
        EventList& target = listKind == EventList::OldKind   ? dataModel->getOldList()
                            : listKind == EventList::NewKind ? dataModel->getNewList()
                                                             : dataModel->getChangeList();
        try {
            core::DataModelChangeScope scope(titles[listKind]);
            for (auto& [path, list] : files) {
                if (srcOffset.getTimecode() != Timecode::zero())
                    list->offsetSrc(srcOffset.getTimecode(), srcOffset.isPositive());
                if (dstOffset.getTimecode() != Timecode::zero())
                    list->offsetDst(dstOffset.getTimecode(), dstOffset.isPositive());
                target.append(*list);
            }
        } catch (Result::Type) {
            // An offset is kept inside the day as it is typed, so a shift
            // cannot fail here; should it, what was appended is one step.
        }
    }
    reset();
}

void FileDialog::reset()
{
    files.clear();
    spans = {};
    fileList.clear();
    for (TcInput* offset : {&srcOffset, &dstOffset})
        offset->setTimecode(Timecode::zero(), true, false);
    for (auto& value : rangeValues)
        value->setText("00:00:00:00", juce::dontSendNotification);
    setVisible(false);
}

juce::Rectangle<int> FileDialog::panelBounds() const
{
    return getLocalBounds().withSizeKeepingCentre(panelWidth, panelHeight);
}

void FileDialog::resized()
{
    const juce::Rectangle<int> panel = panelBounds();
    const int x = panel.getX();
    const int y = panel.getY();
    heading.setBounds(x + 10, y + 8, panelWidth - 20, 24);
    fileList.setBounds(x + 15, y + 52, panelWidth - 80, 200);
    browseButton.setBounds(x + panelWidth - 55, y + 52, 40, 24);

    // Two columns of ranges: SRC on the left, DST on the right; without the
    // SRC side (an Old or New EDL) the DST column takes the left.
    const int rowsY = y + 268;
    const bool withSource = listKind == EventList::ChangeKind;
    for (int column = 0; column < 2; ++column) {
        const int columnX = x + 15 + (withSource ? column : 0) * (panelWidth / 2);
        for (int row = 0; row < 2; ++row) {
            const int which = column * 2 + row;
            rangeCaptions[which]->setBounds(columnX, rowsY + row * 28, 110, 24);
            rangeValues[which]->setBounds(columnX + 120, rowsY + row * 28, 100, 24);
        }
        juce::Label& caption = column == 0 ? srcOffsetCaption : dstOffsetCaption;
        TcInput& offset = column == 0 ? srcOffset : dstOffset;
        caption.setBounds(columnX, rowsY + 62, 110, 24);
        offset.setBounds(columnX + 120, rowsY + 63, 100, 22);
    }
    okButton.setBounds(x + panelWidth - 200, y + panelHeight - 40, 85, 26);
    cancelButton.setBounds(x + panelWidth - 100, y + panelHeight - 40, 85, 26);
}

void FileDialog::paint(juce::Graphics& g)
{
    const juce::Rectangle<int> panel = panelBounds();
    paintOverlayPanel(g, panel);
    g.setColour(palette::outline);
    g.fillRect(panel.getX() + 10, panel.getY() + 38, panel.getWidth() - 20, 1);
    g.fillRect(panel.getX() + 10, panel.getY() + 260, panel.getWidth() - 20, 1);
}

} // namespace montala::gui
