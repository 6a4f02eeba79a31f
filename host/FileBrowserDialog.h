#pragma once

#include "core/services/FileBrowserDialogBase.h"

#include "kelmar/services/IFileDialogService.h"
#include "kelmar/services/IHostServices.h"

#include <string>
#include <vector>

namespace montala::host {

// The host's file dialog behind FileBrowserDialogBase.
class FileBrowserDialog : public core::FileBrowserDialogBase {
public:
    // Borrowed: the services outlive the installed instance.
    explicit FileBrowserDialog(Kelmar::IHostServices* services) : services(services) {}

    // NoInterface when the host lacks the dialog, a path or a list;
    // NotInitialized when the dialog answers neither chosen nor cancelled;
    // HostCallFailed when a chosen path cannot be read. On any failure
    // `results` is left as it was.
    bool show(const std::string& title, const std::string& startPath, const std::string& extension,
              const std::string& description, bool multiple, std::vector<std::string>& results) override;
    // The same, with the host's flag for a file to write.
    bool showForSaving(const std::string& title, const std::string& startPath, const std::string& extension,
                       const std::string& description, std::vector<std::string>& results) override;

    // The host's record of one filter: the extension and its description,
    // each cut to its field and terminated. A cut never splits a character.
    static Kelmar::IFileDialogService::FileFilter makeFilter(const std::string& extension,
                                                             const std::string& description);

    // Makes the host's dialog the one of the process; NotInitialized when one
    // is installed already.
    static void install(Kelmar::IHostServices* services);
    static void remove();

private:
    bool run(const std::string& title, const std::string& startPath, const std::string& extension,
             const std::string& description, Kelmar::int32 flags, std::vector<std::string>& results);

    Kelmar::IHostServices* services = nullptr;
};

} // namespace montala::host
