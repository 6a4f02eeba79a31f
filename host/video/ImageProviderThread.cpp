#include "host/video/ImageProviderThread.h"

#include "kelmar/base/IClassFactory.h"
#include "kelmar/base/IPtr.h"
#include "kelmar/services/IVideoFrame.h"
#include "kelmar/services/IVideoThumbnailFactory.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

#include <pthread.h>

namespace montala::host {

// All that the worker touches, shared so that a worker left inside the
// service outlives the object that made it. The lock is never held across a
// call of the service.
struct ImageProviderThread::State {
    std::mutex lock;
    std::condition_variable wake;
    std::condition_variable ended;
    Kelmar::IPtr<Kelmar::IVideoThumbnailFactory> factory;
    bool signalled = false;
    bool busy = false;
    bool done = false;
    bool quit = false;
    bool finished = false;
    bool abandoned = false;
    int width = 0;
    int height = 0;
    int64_t stream = 0;
    int64_t position = 0;
    Result result;
};

ImageProviderThread::ImageProviderThread(Kelmar::IHostServices* context) : state(std::make_shared<State>())
{
    Kelmar::IPtr<Kelmar::IClassFactory> classes;
    if (context && context->getService(Kelmar::IClassFactory::iid, classes.putVoid()) == Kelmar::kResultOk && classes)
        classes->createInstance("Video", "VideoThumbnailFactory", Kelmar::IVideoThumbnailFactory::iid,
                                state->factory.putVoid());
    worker = std::thread(run, state);
}

ImageProviderThread::~ImageProviderThread()
{
    std::unique_lock guard(state->lock);
    if (!state->quit) {
        guard.unlock();
        stopBy(std::chrono::steady_clock::now() + std::chrono::milliseconds(stopLimitMs));
        guard.lock();
    }
    const bool stopped = state->ended.wait_until(guard, deadline, [this] { return state->finished; });
    state->abandoned = !stopped;
    guard.unlock();
    if (stopped) {
        worker.join();
        if (state->factory)
            state->factory->unregisterClient();
        state->factory.reset();
    } else {
        worker.detach();
    }
}

void ImageProviderThread::stopBy(std::chrono::steady_clock::time_point until)
{
    std::lock_guard guard(state->lock);
    state->quit = true;
    state->wake.notify_all();
    deadline = until;
}

bool ImageProviderThread::hasFactory() const
{
    std::lock_guard guard(state->lock);
    return state->factory != nullptr;
}

bool ImageProviderThread::isWorking() const
{
    std::lock_guard guard(state->lock);
    return state->signalled || state->busy || state->done;
}

bool ImageProviderThread::request(int width, int height, int64_t stream, int64_t position)
{
    std::lock_guard guard(state->lock);
    if (state->busy || state->signalled || !state->factory)
        return false;
    state->width = width;
    state->height = height;
    state->stream = stream;
    state->position = position;
    state->signalled = true;
    state->wake.notify_all();
    return true;
}

bool ImageProviderThread::takeResult(Result& result)
{
    std::lock_guard guard(state->lock);
    if (!state->done)
        return false;
    state->done = false;
    result = std::move(state->result);
    state->result = Result();
    return true;
}

void ImageProviderThread::run(std::shared_ptr<State> state)
{
    // The system keeps 15 characters of a thread's name.
    pthread_setname_np(pthread_self(), std::string(threadName).substr(0, 15).c_str());
    std::unique_lock guard(state->lock);
    for (;;) {
        state->wake.wait(guard, [&] { return state->signalled || state->quit; });
        if (state->quit)
            break;
        state->signalled = false;
        state->busy = true;
        const int width = state->width;
        const int height = state->height;
        const int64_t stream = state->stream;
        const int64_t position = state->position;
        Kelmar::IVideoThumbnailFactory* factory = state->factory.get();
        guard.unlock();

        Result made;
        if (factory->openStream(stream, position, width, height) == Kelmar::kResultOk) {
            if (auto frame = Kelmar::owned(factory->getFrame(stream, position))) {
                Kelmar::int32 w = -1, h = -1;
                if (frame->getSize(w, h) == Kelmar::kResultOk && w >= 0 && h >= 0) {
                    made.pixels.resize(static_cast<size_t>(w) * h * 4);
                    made.valid = frame->copyPixels(made.pixels.data(), w * 4) == Kelmar::kResultOk;
                    made.width = w;
                    made.height = h;
                }
            }
        }

        guard.lock();
        state->busy = false;
        state->done = true;
        state->result = std::move(made);
        if (state->quit)
            break;
    }
    state->finished = true;
    state->ended.notify_all();
    // A thread left to end on its own lets go of the service itself.
    if (state->abandoned) {
        Kelmar::IPtr<Kelmar::IVideoThumbnailFactory> factory = std::move(state->factory);
        guard.unlock();
        if (factory)
            factory->unregisterClient();
    }
}

} // namespace montala::host
