#include "sim/services/SimVideoDecoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

#include <dlfcn.h>

#include <cmath>

namespace montala::sim {

namespace {

// The FFmpeg functions the decoder calls, by library.
#define MONTALA_FFMPEG_FUNCTIONS(X)                                                                                     \
    X(avutil, av_log_set_level)                                                                                        \
    X(avutil, av_frame_alloc)                                                                                          \
    X(avutil, av_frame_free)                                                                                           \
    X(avutil, av_frame_unref)                                                                                          \
    X(avcodec, av_packet_alloc)                                                                                        \
    X(avcodec, av_packet_free)                                                                                         \
    X(avcodec, av_packet_unref)                                                                                        \
    X(avcodec, avcodec_alloc_context3)                                                                                 \
    X(avcodec, avcodec_flush_buffers)                                                                                  \
    X(avcodec, avcodec_free_context)                                                                                   \
    X(avcodec, avcodec_open2)                                                                                          \
    X(avcodec, avcodec_parameters_to_context)                                                                          \
    X(avcodec, avcodec_receive_frame)                                                                                  \
    X(avcodec, avcodec_send_packet)                                                                                    \
    X(avformat, av_find_best_stream)                                                                                   \
    X(avformat, av_read_frame)                                                                                         \
    X(avformat, av_seek_frame)                                                                                         \
    X(avformat, avformat_close_input)                                                                                  \
    X(avformat, avformat_find_stream_info)                                                                             \
    X(avformat, avformat_open_input)                                                                                   \
    X(swscale, sws_freeContext)                                                                                        \
    X(swscale, sws_getCachedContext)                                                                                   \
    X(swscale, sws_scale)

// FFmpeg, opened when the first clip is: linked in, it and the hundred
// libraries behind it were mapped and relocated at every start of every
// program, some 25 ms each, though only a program that shows pictures uses
// it. The libraries stay open until the process ends.
struct Ffmpeg {
#define MONTALA_FFMPEG_POINTER(library, name) decltype(&::name) name = nullptr;
    MONTALA_FFMPEG_FUNCTIONS(MONTALA_FFMPEG_POINTER)
#undef MONTALA_FFMPEG_POINTER
    bool loaded = false;

    Ffmpeg()
    {
        void* const avutil = dlopen(MONTALA_AVUTIL_SONAME, RTLD_NOW | RTLD_LOCAL);
        void* const swscale = dlopen(MONTALA_SWSCALE_SONAME, RTLD_NOW | RTLD_LOCAL);
        void* const avcodec = dlopen(MONTALA_AVCODEC_SONAME, RTLD_NOW | RTLD_LOCAL);
        void* const avformat = dlopen(MONTALA_AVFORMAT_SONAME, RTLD_NOW | RTLD_LOCAL);
        if (!avutil || !swscale || !avcodec || !avformat)
            return;
        loaded = true;
#define MONTALA_FFMPEG_LOOKUP(library, name)                                                                            \
    name = reinterpret_cast<decltype(name)>(dlsym(library, #name));                                                     \
    loaded = loaded && name != nullptr;
        MONTALA_FFMPEG_FUNCTIONS(MONTALA_FFMPEG_LOOKUP)
#undef MONTALA_FFMPEG_LOOKUP
        // A file that is no video is an answer here, not news for the console.
        if (loaded)
            av_log_set_level(AV_LOG_FATAL);
    }
};

const Ffmpeg& ffmpeg()
{
    static const Ffmpeg libraries;
    return libraries;
}

} // namespace

SimVideoDecoder::~SimVideoDecoder()
{
    close();
}

void SimVideoDecoder::close()
{
    if (!format)
        return;
    ffmpeg().sws_freeContext(scaler);
    scaler = nullptr;
    ffmpeg().av_packet_free(&packet);
    ffmpeg().av_frame_free(&frame);
    ffmpeg().avcodec_free_context(&codec);
    ffmpeg().avformat_close_input(&format);
    stream = -1;
    decoded = -1;
}

bool SimVideoDecoder::open(const std::string& path)
{
    close();
    if (!ffmpeg().loaded)
        return false;
    if (ffmpeg().avformat_open_input(&format, path.c_str(), nullptr, nullptr) < 0)
        return false;
    const AVCodec* decoder = nullptr;
    if (ffmpeg().avformat_find_stream_info(format, nullptr) < 0
        || (stream = ffmpeg().av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0)) < 0 || !decoder) {
        close();
        return false;
    }
    AVStream* video = format->streams[stream];
    codec = ffmpeg().avcodec_alloc_context3(decoder);
    frame = ffmpeg().av_frame_alloc();
    packet = ffmpeg().av_packet_alloc();
    if (!codec || !frame || !packet || ffmpeg().avcodec_parameters_to_context(codec, video->codecpar) < 0
        || ffmpeg().avcodec_open2(codec, decoder, nullptr) < 0) {
        close();
        return false;
    }
    const AVRational fps = video->avg_frame_rate.num > 0 ? video->avg_frame_rate : video->r_frame_rate;
    rate = fps.num > 0 && fps.den > 0 ? av_q2d(fps) : 0.0;
    firstPts = video->start_time != AV_NOPTS_VALUE ? video->start_time : 0;
    if (video->nb_frames > 0)
        frames = video->nb_frames;
    else if (video->duration > 0 && rate > 0)
        frames = std::llround(video->duration * av_q2d(video->time_base) * rate);
    else if (format->duration > 0 && rate > 0)
        frames = std::llround(format->duration / double(AV_TIME_BASE) * rate);
    return rate > 0;
}

bool SimVideoDecoder::nextFrame()
{
    for (;;) {
        const int answer = ffmpeg().avcodec_receive_frame(codec, frame);
        if (answer == 0)
            return true;
        if (answer != AVERROR(EAGAIN))
            return false;
        int read = ffmpeg().av_read_frame(format, packet);
        while (read >= 0 && packet->stream_index != stream) {
            ffmpeg().av_packet_unref(packet);
            read = ffmpeg().av_read_frame(format, packet);
        }
        // At the end the decoder is drained of what it still holds.
        const int sent = ffmpeg().avcodec_send_packet(codec, read >= 0 ? packet : nullptr);
        ffmpeg().av_packet_unref(packet);
        if (sent < 0 && sent != AVERROR_EOF)
            return false;
    }
}

bool SimVideoDecoder::decode(std::int64_t position, int width, int height, std::vector<std::uint8_t>& pixels)
{
    if (!isOpen() || position < 0 || width <= 0 || height <= 0 || (frames > 0 && position >= frames))
        return false;
    const AVRational base = format->streams[stream]->time_base;
    const auto ptsOf = [&](std::int64_t number) {
        return firstPts + std::llround(number / rate / av_q2d(base));
    };
    const std::int64_t target = ptsOf(position);
    // A frame a little ahead is reached by decoding on; anything else seeks
    // back to the key frame before it.
    if (decoded < 0 || position <= decoded || position > decoded + 50) {
        if (ffmpeg().av_seek_frame(format, stream, target, AVSEEK_FLAG_BACKWARD) < 0)
            return false;
        ffmpeg().avcodec_flush_buffers(codec);
        decoded = -1;
    }
    // Half a frame of slack for files whose stamps are rounded.
    const std::int64_t slack = std::llround(0.5 / rate / av_q2d(base));
    for (;;) {
        if (!nextFrame()) {
            decoded = -1;
            return false;
        }
        const std::int64_t pts = frame->best_effort_timestamp != AV_NOPTS_VALUE ? frame->best_effort_timestamp : frame->pts;
        if (pts == AV_NOPTS_VALUE || pts + slack >= target)
            break;
        ffmpeg().av_frame_unref(frame);
    }
    scaler = ffmpeg().sws_getCachedContext(scaler, frame->width, frame->height, static_cast<AVPixelFormat>(frame->format),
                                  width, height, AV_PIX_FMT_BGRA, SWS_BILINEAR, nullptr, nullptr, nullptr);
    if (!scaler) {
        ffmpeg().av_frame_unref(frame);
        return false;
    }
    pixels.resize(static_cast<size_t>(width) * height * 4);
    uint8_t* planes[4] = {pixels.data(), nullptr, nullptr, nullptr};
    int pitches[4] = {width * 4, 0, 0, 0};
    ffmpeg().sws_scale(scaler, frame->data, frame->linesize, 0, frame->height, planes, pitches);
    ffmpeg().av_frame_unref(frame);
    decoded = position;
    return true;
}

} // namespace montala::sim
