#pragma once

namespace montala::util {

// The one set of failure codes. A code travels either as a return value or
// thrown by value; it carries no message, since the text belongs to whoever
// catches it. The numbers are fixed: other parts of the system name them.
class Result {
public:
    enum Type {
        Ok = 0,
        NotSupported = 2,
        Cancelled = 3,
        NoInterface = 4,
        HostCallFailed = 5,
        NoProject = 6,
        NoTracks = 7,
        NoSelectedTracks = 8,
        EmptyChangeList = 10,
        FileNotOpened = 11,
        ChecksumMismatch = 12,
        BadStoredData = 13,
        StreamExhausted = 14,
        UnknownVersion = 15,
        NewerVersion = 16,
        InvalidArgument = 17,
        NotInitialized = 18,
        OutOfRange = 19,
        FramesAboveRate = 20,
    };

    Result() = delete;

    // The enumerator's name, for programs that report a code to a person.
    static const char* name(Type type);
};

} // namespace montala::util
