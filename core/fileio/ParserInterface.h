#pragma once

#include "core/time/Framerate.h"
#include "util/Result.h"

#include <string>

namespace montala::core {
class EventList;
}

namespace montala::core::fileio {

// Reads one EDL file into events and tells the rate the file suggests.
class ParserInterface {
public:
    virtual ~ParserInterface() = default;
    virtual util::Result::Type parse(const std::u16string& path, EventList& list, Framerate& framerate,
                                     bool acceptAudio) = 0;
};

} // namespace montala::core::fileio
