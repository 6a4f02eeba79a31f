#include "studio/AlertFace.h"

#include "kelmar/base/String.h"

#include <juce_gui_basics/juce_gui_basics.h>

namespace montala::studio {

AlertTexts describeAlert(const sim::SimAlertService::Alert& alert)
{
    const auto utf8 = [](const std::optional<std::u16string>& text, const char* fallback) {
        return text && !text->empty() ? Kelmar::String::utf16ToUtf8(*text) : std::string(fallback);
    };
    AlertTexts texts;
    texts.title = utf8(alert.title, "Montala");
    texts.message = Kelmar::String::utf16ToUtf8(alert.message);
    texts.firstButton = utf8(alert.firstButton, "OK");
    texts.secondButton = utf8(alert.secondButton, "");
    return texts;
}

AlertFace::AlertFace(sim::SimAlertService& service, Ask ask) : service(service)
{
    if (!service.hasFace())
        for (const sim::SimAlertService::Alert& alert : service.unseen())
            ask(describeAlert(alert));
    service.setFace([ask = std::move(ask)](const sim::SimAlertService::Alert& alert) {
        return ask(describeAlert(alert));
    });
}

AlertFace::~AlertFace()
{
    service.setFace(nullptr);
}

Kelmar::int32 AlertFace::askInWindow(const AlertTexts& texts)
{
    auto options = juce::MessageBoxOptions()
                       .withIconType(juce::MessageBoxIconType::InfoIcon)
                       .withTitle(juce::String::fromUTF8(texts.title.c_str()))
                       .withMessage(juce::String::fromUTF8(texts.message.c_str()))
                       .withButton(juce::String::fromUTF8(texts.firstButton.c_str()));
    if (texts.secondButton.empty()) {
        juce::AlertWindow::show(options);
        return Kelmar::IAlertService::kFirstButton;
    }
    options = options.withButton(juce::String::fromUTF8(texts.secondButton.c_str()));
    // With two buttons JUCE answers 1 for the first and 0 for the second, and
    // 0 too when the box is closed with Escape: closing is the second choice.
    return juce::AlertWindow::show(options) == 1 ? Kelmar::IAlertService::kFirstButton
                                                 : Kelmar::IAlertService::kSecondButton;
}

AlertFace::Ask AlertFace::onConsole(std::ostream& out)
{
    return [&out](const AlertTexts& texts) {
        out << texts.title << ": " << texts.message << "\n";
        return Kelmar::IAlertService::kFirstButton;
    };
}

} // namespace montala::studio
