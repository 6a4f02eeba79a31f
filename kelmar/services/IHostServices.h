#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// The context given to a plug-in: the one way to the host's services. Services
// that hand out new objects (an edit, a list, a store, a path, a marker or an
// automation point) make a new one for each call.
class IHostServices : public FUnknown {
public:
    virtual tresult getService(const FUID& iid, void** service) = 0;

    static constexpr FUID iid{"{EEC89683-80DB-4336-9177-273E138A763B}"};
};

} // namespace Kelmar
