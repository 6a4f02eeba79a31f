#pragma once

#include "kelmar/base/FUnknown.h"
#include "kelmar/base/String.h"

namespace Kelmar {

// Translates the English texts of a module into the host's language.
class ITranslationService : public FUnknown {
public:
    // A text without an entry comes back as it is.
    virtual tresult translate(const String& text, String& translated) = 0;
    // Loads `resource` of the module as the table named `table`.
    virtual tresult loadTable(ModuleHandle module, const char8* resource, const char8* table) = 0;

    static constexpr FUID iid{"{43634416-41C1-4C3B-8559-3DE8AA53E652}"};
};

} // namespace Kelmar
