#include "util/Result.h"

namespace montala::util {

const char* Result::name(Type type)
{
    switch (type) {
    case Ok: return "Ok";
    case NotSupported: return "NotSupported";
    case Cancelled: return "Cancelled";
    case NoInterface: return "NoInterface";
    case HostCallFailed: return "HostCallFailed";
    case NoProject: return "NoProject";
    case NoTracks: return "NoTracks";
    case NoSelectedTracks: return "NoSelectedTracks";
    case EmptyChangeList: return "EmptyChangeList";
    case FileNotOpened: return "FileNotOpened";
    case ChecksumMismatch: return "ChecksumMismatch";
    case BadStoredData: return "BadStoredData";
    case StreamExhausted: return "StreamExhausted";
    case UnknownVersion: return "UnknownVersion";
    case NewerVersion: return "NewerVersion";
    case InvalidArgument: return "InvalidArgument";
    case NotInitialized: return "NotInitialized";
    case OutOfRange: return "OutOfRange";
    case FramesAboveRate: return "FramesAboveRate";
    }
    return "Unknown";
}

} // namespace montala::util
