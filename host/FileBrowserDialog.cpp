#include "host/FileBrowserDialog.h"

#include "host/HostCalls.h"

#include "kelmar/base/IObjectList.h"
#include "kelmar/base/IPath.h"
#include "kelmar/base/IPtr.h"
#include "kelmar/base/String.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace montala::host {

using util::Result;

namespace {

// Bytes the host may write for one chosen path, terminator included.
constexpr int pathBufferBytes = 2050;

// Copies UTF-8 text into a fixed field: at most size - 1 bytes, ending on a
// whole character, then zeros.
template <std::size_t size>
void copyField(char (&field)[size], const std::string& text)
{
    std::size_t length = std::min(text.size(), size - 1);
    // Back off over continuation bytes (10xxxxxx) so that no character is cut.
    if (length < text.size())
        while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
            --length;
    std::memset(field, 0, size);
    std::memcpy(field, text.data(), length);
}

} // namespace

Kelmar::IFileDialogService::FileFilter FileBrowserDialog::makeFilter(const std::string& extension,
                                                                     const std::string& description)
{
    Kelmar::IFileDialogService::FileFilter filter;
    filter.reserved = 0;
    copyField(filter.extension, extension);
    copyField(filter.description, description);
    return filter;
}

bool FileBrowserDialog::show(const std::string& title, const std::string& startPath, const std::string& extension,
                             const std::string& description, bool multiple, std::vector<std::string>& results)
{
    return run(title, startPath, extension, description, multiple ? Kelmar::IFileDialogService::kAllowMultiple : 0,
               results);
}

bool FileBrowserDialog::showForSaving(const std::string& title, const std::string& startPath,
                                      const std::string& extension, const std::string& description,
                                      std::vector<std::string>& results)
{
    return run(title, startPath, extension, description, Kelmar::IFileDialogService::kSaveFile, results);
}

bool FileBrowserDialog::run(const std::string& title, const std::string& startPath, const std::string& extension,
                            const std::string& description, Kelmar::int32 flags, std::vector<std::string>& results)
{
    Kelmar::IFileDialogService::FileFilter filter;
    const int filterCount = extension.empty() ? 0 : 1;
    if (filterCount != 0)
        filter = makeFilter(extension, description);

    auto dialog = getService<Kelmar::IFileDialogService>(services);
    auto start = getService<Kelmar::IPath>(services);
    auto chosen = getService<Kelmar::IObjectList>(services);

    const std::u16string wideTitle = Kelmar::String::utf8ToUtf16(title);
    check(start->setText(Kelmar::String::utf8ToUtf16(startPath).c_str(), 0));
    const Kelmar::tresult answer = dialog->runFileDialog(wideTitle.c_str(), filterCount != 0 ? &filter : nullptr,
                                                         filterCount, start.get(), chosen.get(), flags);
    if (answer == Kelmar::kResultFalse)
        return false;
    if (answer != Kelmar::kResultOk)
        throw Result::NotInitialized;

    std::vector<std::string> paths;
    for (Kelmar::int32 index = 0; index < chosen->getCount(); ++index) {
        auto entry = Kelmar::owned(chosen->getAt(index));
        auto path = queryRequired<Kelmar::IPath>(entry.get());
        std::vector<Kelmar::char16> buffer(pathBufferBytes / sizeof(Kelmar::char16), 0);
        check(path->getText(buffer.data(), pathBufferBytes));
        buffer.back() = 0;
        paths.push_back(Kelmar::String::utf16ToUtf8(buffer.data()));
    }
    results.insert(results.end(), paths.begin(), paths.end());
    return true;
}

void FileBrowserDialog::install(Kelmar::IHostServices* services)
{
    if (getInstance() != nullptr)
        throw Result::NotInitialized;
    FileBrowserDialogBase::install(std::make_unique<FileBrowserDialog>(services));
}

void FileBrowserDialog::remove()
{
    FileBrowserDialogBase::remove();
}

} // namespace montala::host
