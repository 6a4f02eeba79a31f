#include "sim/services/SimVideoService.h"

#include <thread>

namespace montala::sim {

void SimVideoService::setFile(std::int64_t streamId, const std::string& path)
{
    std::lock_guard guard(lock);
    if (path.empty())
        files.erase(streamId);
    else
        files[streamId] = path;
}

std::string SimVideoService::fileOf(std::int64_t streamId) const
{
    std::lock_guard guard(lock);
    const auto found = files.find(streamId);
    return found == files.end() ? std::string() : found->second;
}

void SimVideoService::hold()
{
    std::lock_guard guard(lock);
    held = true;
}

void SimVideoService::release()
{
    {
        std::lock_guard guard(lock);
        held = false;
    }
    released.notify_all();
}

void SimVideoService::setDelay(std::chrono::milliseconds value)
{
    std::lock_guard guard(lock);
    delay = value;
}

int SimVideoService::framesServed() const
{
    std::lock_guard guard(lock);
    return served;
}

int SimVideoService::waiting() const
{
    std::lock_guard guard(lock);
    return inHold;
}

void SimVideoService::beforeFrame()
{
    std::chrono::milliseconds wait;
    {
        std::unique_lock guard(lock);
        ++served;
        ++inHold;
        released.wait(guard, [this] { return !held; });
        --inHold;
        wait = delay;
    }
    if (wait.count() > 0)
        std::this_thread::sleep_for(wait);
}

} // namespace montala::sim
