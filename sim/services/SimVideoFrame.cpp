#include "sim/services/SimVideoFrame.h"

#include <cstring>

namespace montala::sim {

using namespace Kelmar;

SimVideoFrame::SimVideoFrame(std::int64_t streamId, std::int64_t position, int width, int height)
    : streamId(streamId), position(position), width(width), height(height)
{
}

SimVideoFrame::SimVideoFrame(int width, int height, std::vector<std::uint8_t> pixels)
    : streamId(0), position(0), width(width), height(height), decoded(std::move(pixels))
{
}

tresult SimVideoFrame::queryInterface(const FUID& iid, void** obj)
{
    if (answerInterface<IVideoFrame>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

tresult SimVideoFrame::getSize(int32& w, int32& h)
{
    w = width;
    h = height;
    return kResultOk;
}

tresult SimVideoFrame::copyPixels(uint8* buffer, int32 rowPitch)
{
    if (!buffer || rowPitch < width * 4)
        return kInvalidArgument;
    if (!decoded.empty()) {
        for (int y = 0; y < height; ++y)
            std::memcpy(buffer + static_cast<std::ptrdiff_t>(y) * rowPitch,
                        decoded.data() + static_cast<std::ptrdiff_t>(y) * width * 4, static_cast<size_t>(width) * 4);
        return kResultOk;
    }
    for (int y = 0; y < height; ++y) {
        uint8* row = buffer + static_cast<std::ptrdiff_t>(y) * rowPitch;
        for (int x = 0; x < width; ++x) {
            row[x * 4 + 0] = static_cast<uint8>(position & 0xFF);
            row[x * 4 + 1] = static_cast<uint8>((position >> 8) & 0xFF);
            row[x * 4 + 2] = static_cast<uint8>(streamId & 0xFF);
            row[x * 4 + 3] = 255;
        }
    }
    return kResultOk;
}

} // namespace montala::sim
