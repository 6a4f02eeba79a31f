#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>

namespace montala::sim {

// What every thumbnail client of one host shares: where the file of each
// pool clip lies, and a test's hold on the service. The pools write it on
// the main thread, the clients read it on their worker threads; every call
// takes the one lock.
class SimVideoService {
public:
    // The file of a stream (a pool clip's id); an empty path forgets it.
    void setFile(std::int64_t streamId, const std::string& path);
    std::string fileOf(std::int64_t streamId) const;

    // While held, every frame request waits inside the service, as a host
    // busy with other work would make it; release lets them all go on.
    void hold();
    void release();
    // Each frame request takes at least this long.
    void setDelay(std::chrono::milliseconds delay);
    // Frames asked for so far, and requests waiting in a hold right now.
    int framesServed() const;
    int waiting() const;

    // Called by a client for each frame: waits out a hold and the delay.
    void beforeFrame();

private:
    mutable std::mutex lock;
    std::condition_variable released;
    std::map<std::int64_t, std::string> files;
    bool held = false;
    std::chrono::milliseconds delay{0};
    int served = 0;
    int inHold = 0;
};

} // namespace montala::sim
