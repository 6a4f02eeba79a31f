#pragma once

#include "sim/services/SimFileDialogService.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace montala::studio {

// One call of the host's file dialog as a chooser is asked: the title, the
// folder or file to start in, JUCE's wildcard ("*.edl;*.EDL", "*" without a
// filter), whether several files may be chosen, and whether one is to be
// written (a new name may be typed; an existing file is replaced only when
// the user agrees).
struct FileDialogRequest {
    std::string title;
    std::string startPath;
    std::string wildcard;
    bool multiple = false;
    bool save = false;
    // The extension a typed name without one is given ("edl"); empty
    // without a filter.
    std::string extension;
};

FileDialogRequest describeFileDialog(const sim::SimFileDialogService::Call& call);

// The host's file dialog with a face: a JUCE file chooser, or, for runs
// without a user, a dialog that is cancelled at once. Taken off the service
// when it goes.
class FileDialogFace {
public:
    // The chosen files (UTF-8 paths), or nothing when the user cancelled.
    using Ask = std::function<std::optional<std::vector<std::string>>(const FileDialogRequest&)>;

    FileDialogFace(sim::SimFileDialogService& service, Ask ask);
    ~FileDialogFace();
    FileDialogFace(const FileDialogFace&) = delete;
    FileDialogFace& operator=(const FileDialogFace&) = delete;

    // A modal JUCE file chooser, to open or to save as asked.
    static std::optional<std::vector<std::string>> askInWindow(const FileDialogRequest& request);
    static std::optional<std::vector<std::string>> cancelled(const FileDialogRequest&) { return std::nullopt; }

private:
    sim::SimFileDialogService& service;
};

} // namespace montala::studio
