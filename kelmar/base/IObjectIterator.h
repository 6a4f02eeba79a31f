#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IProjectObject;

// Walks a list of project objects, e.g. the children of an object. It sees the
// list as it was when it was handed out.
class IObjectIterator : public FUnknown {
public:
    // The next object, or null at the end.
    virtual IProjectObject* next() = 0;
    virtual bool atEnd() = 0;
    virtual int32 getCount() = 0;

    static constexpr FUID iid{"{EA70D4B2-9E61-4D58-8461-CD57099CCECF}"};
};

} // namespace Kelmar
