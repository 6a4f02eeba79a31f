#pragma once

#include "kelmar/services/IHostServices.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

namespace montala::host {

// A worker thread that asks the host's thumbnail service for one frame at a
// time. The service may be slow or block for a while, so the message thread
// never calls it: it hands a request over when the thread is idle, and
// takes the result when one is done.
//
//   message thread:  request() ---------------------> takeResult()
//   worker:                 openStream, getFrame ... done
//
// A thread that cannot make the service ("VideoThumbnailFactory" of
// category "Video") never asks for a frame.
class ImageProviderThread {
public:
    static constexpr const char* threadName = "ThumbnailProvider";
    // How long the destructor waits for a frame still being made.
    static constexpr int stopLimitMs = 2000;

    // Borrowed: the services outlive the thread object.
    explicit ImageProviderThread(Kelmar::IHostServices* context);
    ImageProviderThread(const ImageProviderThread&) = delete;
    ImageProviderThread& operator=(const ImageProviderThread&) = delete;
    // Returns by the time stopBy gave (stopLimitMs from now without one)
    // even while the service blocks: a thread still inside the service is
    // left to end on its own, and lets go of the service when it does.
    ~ImageProviderThread();

    // Tells the thread to end after the frame it is on. Several threads told
    // at once share one wait when they go.
    void stopBy(std::chrono::steady_clock::time_point deadline);

    bool hasFactory() const;
    // On a request, or holding a frame not yet taken.
    bool isWorking() const;
    // Hands a request to the thread; false while it is busy with another.
    bool request(int width, int height, int64_t stream, int64_t position);

    struct Result {
        bool valid = false;
        int width = 0;
        int height = 0;
        std::vector<uint8_t> pixels; // blue, green, red, alpha
    };
    // The frame made since the last call, if one was; false when none is done.
    bool takeResult(Result& result);

private:
    struct State;
    static void run(std::shared_ptr<State> state);

    std::shared_ptr<State> state;
    std::thread worker;
    std::chrono::steady_clock::time_point deadline;
};

} // namespace montala::host
