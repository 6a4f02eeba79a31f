#include "sim/services/SimFileDialogService.h"

#include "kelmar/base/IObjectList.h"
#include "kelmar/base/IPtr.h"
#include "sim/project/SimPath.h"

namespace montala::sim {

using namespace Kelmar;

tresult SimFileDialogService::queryInterface(const FUID& iid, void** obj)
{
    if (answerInterface<IFileDialogService>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

tresult SimFileDialogService::runFileDialog(const char16* title, const FileFilter* filters, int32 filterCount,
                                            IPath* startPath, IObjectList* results, int32 flags)
{
    if (!results || filterCount < 0 || (filterCount > 0 && !filters))
        return kInvalidArgument;
    Call call;
    call.title = title ? title : u"";
    call.filters.assign(filters, filters + filterCount);
    if (auto* path = dynamic_cast<SimPath*>(startPath))
        call.startPath = path->value();
    call.flags = flags;
    log.push_back(std::move(call));
    if (face && answers.empty()) {
        std::optional<std::vector<std::u16string>> chosen = face(log.back());
        if (!chosen)
            return kResultFalse;
        answers.push_front({kResultOk, std::move(*chosen)});
    }

    if (answers.empty())
        return kResultFalse;
    Answer answer = std::move(answers.front());
    answers.pop_front();
    if (answer.result != kResultOk)
        return answer.result;
    // Without the flag for several files the dialog lets the user pick one.
    if (!(flags & kAllowMultiple) && answer.paths.size() > 1)
        answer.paths.resize(1);
    for (const auto& path : answer.paths) {
        auto item = owned(new SimPath(path));
        results->add(static_cast<IPath*>(item.get()));
    }
    return kResultOk;
}

} // namespace montala::sim
