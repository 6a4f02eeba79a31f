#pragma once

#include "kelmar/services/IFileDialogService.h"
#include "sim/project/SimBase.h"

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace montala::sim {

// The file dialog. It keeps every call and answers with the results a test
// has queued; with none queued the user cancels.
class SimFileDialogService : public SimBase, public Kelmar::IFileDialogService {
public:
    struct Call {
        std::u16string title;
        std::vector<FileFilter> filters;
        std::u16string startPath;
        Kelmar::int32 flags = 0;
    };

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult runFileDialog(const Kelmar::char16* title, const FileFilter* filters, Kelmar::int32 filterCount,
                                  Kelmar::IPath* startPath, Kelmar::IObjectList* results, Kelmar::int32 flags) override;

    // The user picks these files (an empty list: picks nothing but confirms).
    void queueChoice(std::vector<std::u16string> paths) { answers.push_back({Kelmar::kResultOk, std::move(paths)}); }
    void queueCancel() { answers.push_back({Kelmar::kResultFalse, {}}); }
    // The host fails with this code.
    void queueFailure(Kelmar::tresult code) { answers.push_back({code, {}}); }
    // A program with a user gives the dialog a face: it is asked when nothing
    // is queued (a queued choice is a script's, made before the dialog
    // opened) and answers the files chosen, or nothing when the user
    // cancelled. The call is kept all the same.
    using Face = std::function<std::optional<std::vector<std::u16string>>(const Call&)>;
    void setFace(Face newFace) { face = std::move(newFace); }

    const std::vector<Call>& calls() const { return log; }

private:
    struct Answer {
        Kelmar::tresult result;
        std::vector<std::u16string> paths;
    };

    std::vector<Call> log;
    std::deque<Answer> answers;
    Face face;
};

} // namespace montala::sim
