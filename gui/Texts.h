#pragma once

#include "gui/AlertWindowBase.h"
#include "util/StringUtil.h"

#include <juce_core/juce_core.h>

#include <string>

namespace montala::gui {

// An English text of the window in the user's language, for JUCE.
inline juce::String translated(const std::u16string& english)
{
    return juce::String::fromUTF8(util::StringUtil::toUtf8(util::StringUtil::translate(english)).c_str());
}

// The same, as UTF-8 for the message box and the file dialog.
inline std::string translatedUtf8(const std::u16string& english)
{
    return util::StringUtil::toUtf8(util::StringUtil::translate(english));
}

// The process's message box with a translated text whose "%s" names a file
// (a text without one gets the name on a line of its own), and its buttons; answers the button chosen, or the first one when no
// message box is installed (nobody can be asked, so the safe choice holds).
inline int askUser(const std::u16string& english, const std::string& fileName, const std::u16string& firstButton,
                   const std::u16string& secondButton = {})
{
    AlertWindowBase* alert = AlertWindowBase::getInstance();
    if (!alert)
        return AlertWindowBase::FirstButton;
    std::string message = translatedUtf8(english);
    const size_t placeholder = message.find("%s");
    if (placeholder != std::string::npos)
        message.replace(placeholder, 2, fileName);
    else if (!fileName.empty())
        message += "\n" + fileName;
    return alert->show(message, {}, firstButton.empty() ? std::string() : translatedUtf8(firstButton),
                       secondButton.empty() ? std::string() : translatedUtf8(secondButton));
}

} // namespace montala::gui
