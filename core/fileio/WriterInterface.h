#pragma once

#include "util/Result.h"

#include <string>

namespace montala::core {
class EventList;
}

namespace montala::core::fileio {

// Writes an event list as an EDL file. Failures are returned, never thrown:
// a full disk or a bad folder is part of the normal run of work.
class WriterInterface {
public:
    virtual ~WriterInterface() = default;
    virtual util::Result::Type write(const std::u16string& path, const EventList& list) = 0;
};

} // namespace montala::core::fileio
