#include "studio/FileDialogFace.h"

#include "kelmar/base/String.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <algorithm>
#include <cctype>
#include <cstring>

namespace montala::studio {

FileDialogRequest describeFileDialog(const sim::SimFileDialogService::Call& call)
{
    FileDialogRequest request;
    request.title = Kelmar::String::utf16ToUtf8(call.title);
    request.startPath = Kelmar::String::utf16ToUtf8(call.startPath);
    request.multiple = (call.flags & Kelmar::IFileDialogService::kAllowMultiple) != 0;
    request.save = (call.flags & Kelmar::IFileDialogService::kSaveFile) != 0;
    // Editors' files come as "CUT.EDL" as often as "cut.edl", and the file
    // systems here tell them apart: both spellings are offered.
    std::vector<std::string> patterns;
    for (const auto& filter : call.filters) {
        const std::string extension(filter.extension, strnlen(filter.extension, sizeof filter.extension));
        if (extension.empty())
            continue;
        if (request.extension.empty())
            request.extension = extension;
        std::string lower = extension;
        std::string upper = extension;
        for (size_t index = 0; index < extension.size(); ++index) {
            lower[index] = static_cast<char>(std::tolower(static_cast<unsigned char>(extension[index])));
            upper[index] = static_cast<char>(std::toupper(static_cast<unsigned char>(extension[index])));
        }
        for (const std::string& spelling : {lower, upper})
            if (std::find(patterns.begin(), patterns.end(), "*." + spelling) == patterns.end())
                patterns.push_back("*." + spelling);
    }
    for (const std::string& pattern : patterns) {
        if (!request.wildcard.empty())
            request.wildcard += ';';
        request.wildcard += pattern;
    }
    if (request.wildcard.empty())
        request.wildcard = "*";
    return request;
}

FileDialogFace::FileDialogFace(sim::SimFileDialogService& service, Ask ask) : service(service)
{
    service.setFace([ask = std::move(ask)](const sim::SimFileDialogService::Call& call)
                        -> std::optional<std::vector<std::u16string>> {
        const std::optional<std::vector<std::string>> chosen = ask(describeFileDialog(call));
        if (!chosen)
            return std::nullopt;
        std::vector<std::u16string> paths;
        for (const std::string& path : *chosen)
            paths.push_back(Kelmar::String::utf8ToUtf16(path));
        return paths;
    });
}

FileDialogFace::~FileDialogFace()
{
    service.setFace(nullptr);
}

std::optional<std::vector<std::string>> FileDialogFace::askInWindow(const FileDialogRequest& request)
{
    const juce::String start = juce::String::fromUTF8(request.startPath.c_str());
    const juce::File startFile = start.isNotEmpty() && juce::File::isAbsolutePath(start)
                                     ? juce::File(start)
                                     : juce::File::getSpecialLocation(juce::File::userHomeDirectory);
    // JUCE's own chooser rather than the desktop's: it looks the same on
    // every desktop, and a desktop without one (a bare X server) has it too.
    juce::FileChooser chooser(juce::String::fromUTF8(request.title.c_str()), startFile,
                              juce::String::fromUTF8(request.wildcard.c_str()), false);
    if (request.save) {
        if (!chooser.browseForFileToSave(true))
            return std::nullopt;
        juce::File file = chooser.getResult();
        // A name typed without its extension gets the filter's, and a file
        // of that name is replaced only when the user agrees, as the chooser
        // asks for the name as typed.
        if (!request.extension.empty() && file.getFileExtension().isEmpty()) {
            file = file.withFileExtension(juce::String::fromUTF8(request.extension.c_str()));
            if (file.exists()
                && !juce::AlertWindow::showOkCancelBox(juce::MessageBoxIconType::WarningIcon, "Montala",
                                                       file.getFileName() + " exists. Replace it?", "Replace",
                                                       "Cancel", nullptr, nullptr))
                return std::nullopt;
        }
        return std::vector<std::string>{file.getFullPathName().toStdString()};
    }
    const bool chosen = request.multiple ? chooser.browseForMultipleFilesToOpen() : chooser.browseForFileToOpen();
    if (!chosen)
        return std::nullopt;
    std::vector<std::string> paths;
    for (const juce::File& file : chooser.getResults())
        paths.push_back(file.getFullPathName().toStdString());
    return paths;
}

} // namespace montala::studio
