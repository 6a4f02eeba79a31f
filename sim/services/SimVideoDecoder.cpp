#include "sim/services/SimVideoDecoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

#include <cmath>

namespace montala::sim {

SimVideoDecoder::~SimVideoDecoder()
{
    close();
}

void SimVideoDecoder::close()
{
    sws_freeContext(scaler);
    scaler = nullptr;
    av_packet_free(&packet);
    av_frame_free(&frame);
    avcodec_free_context(&codec);
    avformat_close_input(&format);
    stream = -1;
    decoded = -1;
}

bool SimVideoDecoder::open(const std::string& path)
{
    // A file that is no video is an answer here, not news for the console.
    static const bool quiet = [] {
        av_log_set_level(AV_LOG_FATAL);
        return true;
    }();
    (void)quiet;
    close();
    if (avformat_open_input(&format, path.c_str(), nullptr, nullptr) < 0)
        return false;
    const AVCodec* decoder = nullptr;
    if (avformat_find_stream_info(format, nullptr) < 0
        || (stream = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0)) < 0 || !decoder) {
        close();
        return false;
    }
    AVStream* video = format->streams[stream];
    codec = avcodec_alloc_context3(decoder);
    frame = av_frame_alloc();
    packet = av_packet_alloc();
    if (!codec || !frame || !packet || avcodec_parameters_to_context(codec, video->codecpar) < 0
        || avcodec_open2(codec, decoder, nullptr) < 0) {
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
        const int answer = avcodec_receive_frame(codec, frame);
        if (answer == 0)
            return true;
        if (answer != AVERROR(EAGAIN))
            return false;
        int read = av_read_frame(format, packet);
        while (read >= 0 && packet->stream_index != stream) {
            av_packet_unref(packet);
            read = av_read_frame(format, packet);
        }
        // At the end the decoder is drained of what it still holds.
        const int sent = avcodec_send_packet(codec, read >= 0 ? packet : nullptr);
        av_packet_unref(packet);
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
        if (av_seek_frame(format, stream, target, AVSEEK_FLAG_BACKWARD) < 0)
            return false;
        avcodec_flush_buffers(codec);
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
        av_frame_unref(frame);
    }
    scaler = sws_getCachedContext(scaler, frame->width, frame->height, static_cast<AVPixelFormat>(frame->format),
                                  width, height, AV_PIX_FMT_BGRA, SWS_BILINEAR, nullptr, nullptr, nullptr);
    if (!scaler) {
        av_frame_unref(frame);
        return false;
    }
    pixels.resize(static_cast<size_t>(width) * height * 4);
    uint8_t* planes[4] = {pixels.data(), nullptr, nullptr, nullptr};
    int pitches[4] = {width * 4, 0, 0, 0};
    sws_scale(scaler, frame->data, frame->linesize, 0, frame->height, planes, pitches);
    av_frame_unref(frame);
    decoded = position;
    return true;
}

} // namespace montala::sim
