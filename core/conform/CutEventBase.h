#pragma once

#include "core/conform/AudioInfo.h"

#include <string>

namespace montala::core {

// The plan for one Change event on one track: the piece [srcStart, srcEnd]
// of the old timeline goes to [dstStart, dstEnd] of the new one. Absolute
// seconds. The host's derived class knows the track and answers what lies
// on it; the plan itself is only numbers, which the snippet algorithm moves.
class CutEventBase {
public:
    CutEventBase() = default;
    CutEventBase(double srcStart, double srcEnd, double dstStart, double dstEnd)
        : srcStart(srcStart), srcEnd(srcEnd), dstStart(dstStart), dstEnd(dstEnd)
    {
    }
    virtual ~CutEventBase() = default;

    // What the track holds around a position of the old timeline. Asks the
    // host: may be slow, and a host failure is thrown as a Result::Type.
    virtual AudioInfo getAudioInfo(double position) = 0;
    virtual std::string getTrackName() = 0;
    virtual bool isAudioTrack() = 0;

    double getSrcStart() const { return srcStart; }
    double getSrcEnd() const { return srcEnd; }
    double getDstStart() const { return dstStart; }
    double getDstEnd() const { return dstEnd; }
    void setSrcStart(double value) { srcStart = value; }
    void setSrcEnd(double value) { srcEnd = value; }
    void setDstStart(double value) { dstStart = value; }
    void setDstEnd(double value) { dstEnd = value; }

protected:
    double srcStart = 0.0;
    double srcEnd = 0.0;
    double dstStart = 0.0;
    double dstEnd = 0.0;
};

} // namespace montala::core
