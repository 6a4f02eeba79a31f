#include "sim/services/SimAlertService.h"

namespace montala::sim {

using namespace Kelmar;

namespace {

std::optional<std::u16string> text(const char16* value)
{
    if (!value)
        return std::nullopt;
    return std::u16string(value);
}

} // namespace

tresult SimAlertService::queryInterface(const FUID& iid, void** obj)
{
    if (answerInterface<IAlertService>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

int32 SimAlertService::show(const char16* message, const char16* title, const char16* firstButton,
                            const char16* secondButton)
{
    alerts.push_back(Alert{message ? message : u"", text(title), text(firstButton), text(secondButton)});
    if (face)
        return face(alerts.back());
    if (answers.empty())
        return kFirstButton;
    const int32 answer = answers.front();
    answers.pop_front();
    return answer;
}

} // namespace montala::sim
