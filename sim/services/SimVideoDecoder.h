#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVPacket;
struct SwsContext;

namespace montala::sim {

// One video file opened with FFmpeg, asked for single frames by number.
// Not thread-safe: each thumbnail client keeps its own.
class SimVideoDecoder {
public:
    SimVideoDecoder() = default;
    SimVideoDecoder(const SimVideoDecoder&) = delete;
    SimVideoDecoder& operator=(const SimVideoDecoder&) = delete;
    ~SimVideoDecoder();

    // False when the file is missing, holds no video stream or has no
    // decoder; the object then stays closed.
    bool open(const std::string& path);
    bool isOpen() const { return format != nullptr; }
    // Frames of the file at its own rate; 0 when that is not known.
    std::int64_t frameCount() const { return frames; }

    // The frame `position` (counted from the file's first frame), scaled to
    // width x height, as 32-bit pixels blue, green, red, alpha, rows packed.
    // False past the end or when decoding fails.
    bool decode(std::int64_t position, int width, int height, std::vector<std::uint8_t>& pixels);

private:
    void close();
    // Reads packets until a frame comes out of the decoder; false at the end.
    bool nextFrame();

    AVFormatContext* format = nullptr;
    AVCodecContext* codec = nullptr;
    AVFrame* frame = nullptr;
    AVPacket* packet = nullptr;
    SwsContext* scaler = nullptr;
    int stream = -1;
    double rate = 0.0; // frames per second
    std::int64_t frames = 0;
    std::int64_t firstPts = 0;
    // The frame last decoded, so that the next one on is read without a seek.
    std::int64_t decoded = -1;
};

} // namespace montala::sim
