#pragma once

#include "kelmar/services/IVideoFrame.h"
#include "sim/project/SimBase.h"

#include <cstdint>
#include <vector>

namespace montala::sim {

// One picture of the thumbnail service: a decoded frame of a file, or a
// made-up one for a clip without a readable file. In a made-up picture every
// pixel says where it comes from, so a test can check which frame of which
// clip it was given: blue and green hold the low and high byte of the frame
// position, red the low byte of the stream id, alpha is 255.
class SimVideoFrame : public SimBase, public Kelmar::IVideoFrame {
public:
    SimVideoFrame(std::int64_t streamId, std::int64_t position, int width, int height);
    // A decoded picture: width x height pixels, blue, green, red, alpha.
    SimVideoFrame(int width, int height, std::vector<std::uint8_t> pixels);

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult getSize(Kelmar::int32& width, Kelmar::int32& height) override;
    Kelmar::tresult copyPixels(Kelmar::uint8* buffer, Kelmar::int32 rowPitch) override;

private:
    std::int64_t streamId;
    std::int64_t position;
    int width;
    int height;
    std::vector<std::uint8_t> decoded; // empty for a made-up picture
};

} // namespace montala::sim
