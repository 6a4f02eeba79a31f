#include "host/AlertWindow.h"

#include "host/HostCalls.h"

#include "kelmar/services/IAlertService.h"
#include "kelmar/base/String.h"

#include <memory>

namespace montala::host {

using util::Result;

int AlertWindow::show(const std::string& message, const std::string& title, const std::string& button1,
                      const std::string& button2)
{
    auto alerts = getService<Kelmar::IAlertService>(services);
    const std::u16string wideMessage = Kelmar::String::utf8ToUtf16(message);
    const std::u16string wideTitle = Kelmar::String::utf8ToUtf16(title);
    const std::u16string wideFirst = Kelmar::String::utf8ToUtf16(button1);
    const std::u16string wideSecond = Kelmar::String::utf8ToUtf16(button2);
    // The host puts its own caption and buttons where it is given none.
    auto orNull = [](const std::u16string& text) { return text.empty() ? nullptr : text.c_str(); };
    return alerts->show(wideMessage.c_str(), orNull(wideTitle), orNull(wideFirst), orNull(wideSecond));
}

void AlertWindow::install(Kelmar::IHostServices* services)
{
    if (getInstance() != nullptr)
        throw Result::NotInitialized;
    AlertWindowBase::install(std::make_unique<AlertWindow>(services));
}

void AlertWindow::remove()
{
    AlertWindowBase::remove();
}

} // namespace montala::host
