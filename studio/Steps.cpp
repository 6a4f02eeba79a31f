#include "studio/Steps.h"

#include "core/model/DataModel.h"
#include "gui/MainGui.h"
#include "host/video/VideoProvider.h"
#include "studio/SettingStep.h"
#include "studio/Snapshot.h"
#include "studio/Studio.h"

#include "kelmar/base/String.h"
#include "platform/FileIdentity.h"
#include "platform/SafeFileWriter.h"
#include "sim/services/SimFileDialogService.h"

#include <algorithm>

namespace montala::studio {

using util::Result;

namespace {

// The host opens the view at the size of its template in skin.xml.
constexpr int skinWidth = 1300;
constexpr int skinHeight = 750;

bool addEdls(Studio& studio, int listKind, const std::vector<std::string>& files, std::ostream& out,
             std::ostream& err)
{
    for (const std::string& file : files) {
        const core::EdlFileReport report = studio.addEdl(listKind, file);
        if (!report.opened) {
            err << file << ": could not be read (" << Result::name(report.result) << ")\n";
            return false;
        }
        out << (listKind == core::EventList::OldKind ? "Old" : "New") << " EDL " << file << ": " << report.events
            << " events" << (report.rateMismatch ? ", its rate differs from the project's" : "") << "\n";
    }
    return true;
}

// The files of one list through the Add EDLs overlay, as a user adds them:
// the list's "+" button, one browse for all files (answered for the host's
// file dialog before it opens), the offsets typed, "Ok".
bool loadThroughOverlay(Studio& studio, gui::MainGui& window, const StudioOptions& options, int listKind,
                        std::ostream& out, std::ostream& err)
{
    const std::vector<std::string>& files = options.overlayFiles[listKind];
    if (files.empty())
        return true;
    const auto table = static_cast<gui::MainGui::Table>(listKind);
    window.buttonClicked(&window.getLoadButton(table));
    gui::FileDialog& overlay = window.getFileDialog();
    if (!overlay.isVisible()) {
        err << "the Add EDLs overlay did not open: no project is open\n";
        return false;
    }
    std::vector<std::u16string> chosen;
    for (const std::string& file : files)
        chosen.push_back(Kelmar::String::utf8ToUtf16(file));
    studio.simHost().fileDialogs().queueChoice(chosen);
    overlay.browse();
    if (overlay.getFileCount() == 0) {
        // The messages of the overlay have said why.
        err << "the Add EDLs overlay took none of the files\n";
        overlay.buttonClicked(&overlay.getCancelButton());
        return false;
    }
    for (const auto& [text, input] : {std::pair<const std::string&, gui::TcInput&>{options.srcOffset, overlay.getSrcOffset()},
                                      std::pair<const std::string&, gui::TcInput&>{options.dstOffset, overlay.getDstOffset()}}) {
        std::string timecode;
        bool positive = true;
        if (!text.empty() && parseOffset(text, timecode, positive))
            input.setTimecode(core::Timecode(timecode), positive, true);
    }
    const std::string range = overlay.getRangeText(gui::FileDialog::DstIn).toStdString() + " - "
                              + overlay.getRangeText(gui::FileDialog::DstOut).toStdString();
    const size_t taken = overlay.getFileCount();
    const bool lastLoad = std::none_of(std::begin(options.overlayFiles) + listKind + 1, std::end(options.overlayFiles),
                                       [](const std::vector<std::string>& later) { return !later.empty(); });
    if (options.show == "add-edls" && lastLoad) {
        out << "Add EDLs overlay left open with " << taken << " files\n";
        return true;
    }
    overlay.buttonClicked(&overlay.getOkButton());
    static const char* const names[] = {"Old", "New", "Change"};
    out << names[listKind] << " EDL: " << taken << (taken == 1 ? " file" : " files") << " through the overlay, DST "
        << range << "\n";
    return true;
}

// Ticks each named pool video as the new cut's in the video settings
// overlay, as a user does; it starts where the project starts.
bool chooseNewVideos(gui::MainGui& window, const std::vector<std::string>& names, std::ostream& out,
                     std::ostream& err)
{
    gui::NewVideosDialog& dialog = window.getNewVideosDialog();
    window.buttonClicked(&window.getVideoSettingsButton());
    const gui::VideoListTableModel* model = dialog.getModel();
    for (const std::string& name : names) {
        const auto& rows = model ? model->getRows() : std::vector<gui::VideoListTableModel::Row>();
        const auto row = std::find_if(rows.begin(), rows.end(), [&](const auto& each) { return each.name == name; });
        if (row == rows.end()) {
            err << "--new-video " << name << ": the project's pool has no such video\n";
            return false;
        }
        const std::string start = row->start.toString();
        if (auto* use = dynamic_cast<juce::Button*>(dialog.getTable().getCellComponent(
                gui::VideoListTableModel::UseColumn, static_cast<int>(row - rows.begin()))))
            use->setToggleState(true, juce::sendNotification);
        out << "New video " << name << " from " << start << "\n";
    }
    dialog.setVisible(false);
    return true;
}

} // namespace

void ViewWiring::wire(gui::MainGui& window, Studio& studio)
{
    window.setMontaler(&studio.host());
    // Joining the host's listeners hands the window the active project's model.
    window.setProject(&studio.host());
    window.setVideoProvider(studio.host().getVideoProvider());
    window.setSize(skinWidth, skinHeight);
}

void ViewWiring::unwire(gui::MainGui& window)
{
    window.setProject(nullptr);
    window.setMontaler(nullptr);
}

// Where --save would write is checked before the first step, so that a
// run does not end in a file that cannot be written, or in one written over
// an EDL it read.
static bool saveTargetUsable(const StudioOptions& options, std::ostream& err)
{
    if (options.saveTo.empty())
        return true;
    std::vector<std::string> inputs = options.oldFiles;
    inputs.insert(inputs.end(), options.newFiles.begin(), options.newFiles.end());
    for (const std::vector<std::string>& files : options.overlayFiles)
        inputs.insert(inputs.end(), files.begin(), files.end());
    for (const std::string& input : inputs) {
        if (platform::isSameFile(options.saveTo, input)) {
            err << "montala-studio: --save " << options.saveTo << ": is the EDL " << input
                << ", an input of the run; nothing was done\n";
            return false;
        }
    }
    const platform::SafeFileWriter::Outcome checked = platform::SafeFileWriter::check(options.saveTo);
    if (!checked.ok()) {
        err << "montala-studio: cannot save to " << checked.message() << "; nothing was done\n";
        return false;
    }
    return true;
}

int runSteps(Studio& studio, gui::MainGui& window, const StudioOptions& options, std::ostream& out,
             std::ostream& err)
{
    if (!saveTargetUsable(options, err))
        return 2;
    try {
        for (const std::string& assignment : options.settings) {
            std::string error;
            if (!changeSetting(window, assignment, error)) {
                err << error << "\n";
                return 1;
            }
            out << "Set " << assignment << "\n";
        }
        if (!options.newVideos.empty() && !chooseNewVideos(window, options.newVideos, out, err))
            return 1;
        for (int listKind : {core::EventList::OldKind, core::EventList::NewKind, core::EventList::ChangeKind})
            if (!loadThroughOverlay(studio, window, options, listKind, out, err))
                return 1;

        if (!addEdls(studio, core::EventList::OldKind, options.oldFiles, out, err)
            || !addEdls(studio, core::EventList::NewKind, options.newFiles, out, err))
            return 1;

        if (options.generate) {
            window.buttonClicked(&window.getGenerateButton());
            const core::DataModel* model = studio.model();
            const size_t events = model ? model->getChangeList().getSize() : 0;
            if (events == 0) {
                err << "Generate made no Change EDL";
                if (model && model->lastGenerationFailure().code != Result::Ok)
                    err << " (" << Result::name(model->lastGenerationFailure().code) << ")";
                err << "\n";
                return 1;
            }
            out << "Change EDL: " << events << " events\n";
        }

        if (!options.selectRows.empty()) {
            juce::TableListBox& table = window.getTable(gui::MainGui::ChangeTable);
            const int rows = table.getNumRows();
            juce::SparseSet<int> selection;
            for (int row : options.selectRows) {
                if (row > rows) {
                    err << "--select: the Change table has " << rows << " rows, not " << row << "\n";
                    return 1;
                }
                selection.addRange({row - 1, row});
            }
            table.setSelectedRows(selection, juce::sendNotification);
        }

        if (options.conform) {
            window.runMontala();
            if (!studio.isRunPending()) {
                // The window has said why (no tracks, no events).
                err << "the conform did not start\n";
                return 1;
            }
            for (int turn = 0; turn < 100 && studio.isRunPending(); ++turn)
                studio.idle();
            const host::RunSummary& run = studio.host().lastRun();
            if (run.result != Result::Ok) {
                err << "the conform ended with " << Result::name(run.result)
                    << (run.undone ? "; the host's undo took it back" : "") << "\n";
                return 1;
            }
            out << "Conformed: " << run.eventsApplied << " Change events on " << run.tracksTakingPart.size()
                << " tracks\n";
            if (const std::optional<FinishedRun> finished = studio.takeFinishedRun())
                out << summaryText(*finished) << "\n";
        }

        if (!options.saveTo.empty()) {
            std::string error;
            if (!studio.save(options.saveTo, error)) {
                err << error << "\n";
                return 1;
            }
            out << "Saved " << options.saveTo << "\n";
        }

        if (options.show == "settings") {
            window.buttonClicked(&window.getSettingsButton());
        } else if (options.show == "videos") {
            window.buttonClicked(&window.getVideoSettingsButton());
        } else if (options.show == "edit") {
            gui::EventTableModel* model = window.getTableModel(gui::MainGui::ChangeTable);
            juce::TableListBox& table = window.getTable(gui::MainGui::ChangeTable);
            if (!model || table.getNumSelectedRows() == 0) {
                err << "--show edit: select a Change row with --select\n";
                return 1;
            }
            const int row = table.getSelectedRow(0);
            const juce::Rectangle<int> cell = table.getCellPosition(2, row, true);
            const juce::Point<float> at = window.getLocalPoint(&table, cell.getCentre()).toFloat();
            window.editRequested(model->getSelectedEvents().getEvent(0), model,
                                 juce::MouseEvent(juce::Desktop::getInstance().getMainMouseSource(), at, {},
                                                  juce::MouseInputSource::defaultPressure, 0.0f, 0.0f, 0.0f, 0.0f,
                                                  &window, &window, juce::Time::getCurrentTime(), at,
                                                  juce::Time::getCurrentTime(), 1, false));
        }

        if (!options.snapshot.empty()) {
            // The video pictures come from worker threads and reach the
            // window through the host's idle calls.
            const auto pictures = studio.host().getVideoProvider();
            for (int turn = 0; turn < 250 && pictures && pictures->isWaiting(); ++turn) {
                studio.idle();
                juce::Thread::sleep(20);
            }
            std::string error;
            if (!writeSnapshot(window, options.snapshot, error)) {
                err << error << "\n";
                return 1;
            }
            out << "Snapshot " << options.snapshot << "\n";
        }
    } catch (Result::Type code) {
        err << "failed: " << Result::name(code) << "\n";
        return 1;
    }
    return 0;
}

} // namespace montala::studio
