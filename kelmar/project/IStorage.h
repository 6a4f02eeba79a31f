#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// Named binary blocks. From IHostServices::getService: a new, empty store.
class IStorage : public FUnknown {
public:
    virtual tresult write(const char8* name, const void* data, int64 size, int32 flags) = 0;
    // Reads the first `size` bytes; kResultFalse when there is no such block or it is shorter.
    virtual tresult read(const char8* name, void* buffer, int64 size) = 0;
    // 0 when there is no such block.
    virtual int64 getSize(const char8* name) = 0;

    static constexpr FUID iid{"{FA1E32F9-CA6D-46F5-A982-F956B1191B58}"};
};

} // namespace Kelmar
