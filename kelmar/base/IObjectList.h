#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// A list of objects. From IHostServices::getService: a new, empty list.
class IObjectList : public FUnknown {
public:
    virtual int32 getCount() = 0;
    virtual FUnknown* getAt(int32 index) = 0;
    // The list keeps a reference.
    virtual tresult add(FUnknown* object) = 0;

    static constexpr FUID iid{"{8E8562D8-67F5-4576-8175-61CFC2B134E3}"};
};

} // namespace Kelmar
