#pragma once

#include "kelmar/services/IVideoFrame.h"
#include "sim/project/SimBase.h"

#include <cstdint>

namespace montala::sim {

// A made-up picture: every pixel says where it comes from, so a test can
// check which frame of which clip it was given. Blue and green hold the low
// and high byte of the frame position, red the low byte of the stream id,
// alpha is 255.
class SimVideoFrame : public SimBase, public Kelmar::IVideoFrame {
public:
    SimVideoFrame(std::int64_t streamId, std::int64_t position, int width, int height);

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult getSize(Kelmar::int32& width, Kelmar::int32& height) override;
    Kelmar::tresult copyPixels(Kelmar::uint8* buffer, Kelmar::int32 rowPitch) override;

private:
    std::int64_t streamId;
    std::int64_t position;
    int width;
    int height;
};

} // namespace montala::sim
