#include "studio/Steps.h"

#include "core/DataModel.h"
#include "gui/MainGui.h"
#include "studio/Snapshot.h"
#include "studio/Studio.h"

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

} // namespace

void ViewWiring::wire(gui::MainGui& window, Studio& studio)
{
    window.setMontaler(&studio.host());
    // Joining the host's listeners hands the window the active project's model.
    window.setProject(&studio.host());
    // The host has no picture source yet: the display stays empty.
    window.setVideoProvider(nullptr);
    window.setSize(skinWidth, skinHeight);
}

void ViewWiring::unwire(gui::MainGui& window)
{
    window.setProject(nullptr);
    window.setMontaler(nullptr);
}

int runSteps(Studio& studio, gui::MainGui& window, const StudioOptions& options, std::ostream& out,
             std::ostream& err)
{
    try {
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
        }

        if (!options.saveTo.empty()) {
            std::string error;
            if (!studio.save(options.saveTo, error)) {
                err << error << "\n";
                return 1;
            }
            out << "Saved " << options.saveTo << "\n";
        }

        if (!options.snapshot.empty()) {
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
