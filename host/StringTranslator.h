#pragma once

#include "util/StringConverter.h"

#include <set>
#include <string>

namespace Kelmar {
class IHostServices;
} // namespace Kelmar

namespace montala::host {

// The converter that StringUtil goes through while a host is there: the two
// conversions of StringConverter, and translation by the host's translation
// service. The key of a translation is the English text itself, matched
// exactly; a text the table does not know, or any text while the host offers
// no translation service, comes back as it is, so English is always the
// fallback. The language is the host's: Montala keeps no choice of its own.
//
// Used on the host's main thread only.
class StringTranslator : public util::StringConverter {
public:
    // `services` is not owned and may be null (then nothing is translated).
    explicit StringTranslator(Kelmar::IHostServices* services);

    std::u16string translate(const std::u16string& text) override;

    // The same for the titles of edit groups, which the host takes as plain
    // zero-terminated text. The result stays valid as long as this
    // translator, whatever is translated later, so a title may be handed on
    // without a copy. Null gives null.
    const char16_t* translate(const char16_t* text);

private:
    Kelmar::IHostServices* services;
    // Every title handed out by the pointer form; the elements of a set never
    // move, so their text stays put. Titles are few and fixed, so this stays
    // small.
    std::set<std::u16string> titles;
};

} // namespace montala::host
