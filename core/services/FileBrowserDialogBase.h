#pragma once

#include "core/services/ProcessInstance.h"

#include <string>
#include <vector>

namespace montala::core {

// The file dialog, as the window uses it; one for the process, installed by
// whoever hosts Montala, like AlertWindowBase.
class FileBrowserDialogBase : public ProcessInstance<FileBrowserDialogBase> {
public:
    virtual ~FileBrowserDialogBase() = default;

    // Asks the user for one file, or several with `multiple`. `extension`
    // ("edl", without the dot) and its `description` ("Edit Decision List")
    // make the one filter offered; an empty extension offers all files.
    // Texts and paths are UTF-8. The chosen paths are appended to `results`;
    // answers false when the user cancelled, and then adds nothing.
    virtual bool show(const std::string& title, const std::string& startPath, const std::string& extension,
                      const std::string& description, bool multiple, std::vector<std::string>& results) = 0;
    // Asks for one file to write: a name that does not exist yet may be
    // typed, and one that does is replaced only when the user agrees. A
    // dialog without a save form of its own asks as for a file to open.
    virtual bool showForSaving(const std::string& title, const std::string& startPath, const std::string& extension,
                               const std::string& description, std::vector<std::string>& results)
    {
        return show(title, startPath, extension, description, false, results);
    }
};

} // namespace montala::core
