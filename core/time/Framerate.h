#pragma once

namespace montala::core {

// How timecode maps to frames and seconds: the nominal frames per second
// (where the frames field wraps), the exact rate used for seconds, and the
// drop mode. Every rate is the triple (fps, pulled, dropMode).
struct Framerate {
    // 1000/1001: bytes 09 2E 6C F1 D0 F7 EF 3F, low byte first.
    static constexpr double pullFactor = 0.999000999000999;

    int fps = 0;             // 0: not known
    double exactRate = 0.0;  // fps, or fps * pullFactor when pulled
    int dropMode = -1;       // -1 not known, 0 non-drop, 1 drop frame
    bool pulled = false;
    int maxFrames = 0;       // frame count of 23:59:59 and the last frame

    Framerate() = default;
    // Throws Result::NotSupported for drop frame at a nominal rate other than 30.
    Framerate(int fps, int dropMode);
    Framerate(int fps, bool pulled, int dropMode);

    void set(int fps, int dropMode);
    void set(int fps, bool pulled, int dropMode);
    void computeMaxFrames();

    bool isUndefined() const { return fps == 0 || dropMode == -1; }
    int getFps() const { return fps; }
    double getExactRate() const { return exactRate; }
    int getDropMode() const { return dropMode; }
    bool isPulled() const { return pulled; }
    int getMaxFrames() const { return maxFrames; }

    bool operator==(const Framerate& other) const
    {
        return fps == other.fps && pulled == other.pulled && dropMode == other.dropMode;
    }
    bool operator!=(const Framerate& other) const { return !(*this == other); }
};

// The one process-wide source of the current project's rate.
class FramerateProvider {
public:
    virtual ~FramerateProvider() = default;
    virtual Framerate getFramerate() = 0;
};

// A provider that answers one fixed rate: the project rate of a program or
// test that runs the model without a host.
class FixedFramerateProvider : public FramerateProvider {
public:
    explicit FixedFramerateProvider(Framerate rate) : rate(rate) {}
    Framerate getFramerate() override { return rate; }
    void setFramerate(Framerate newRate) { rate = newRate; }

private:
    Framerate rate;
};

// Installs a provider for the lifetime of the scope and puts the previous
// one back, so an operation on another rate cannot leak its provider.
class ScopedFramerateProvider {
public:
    explicit ScopedFramerateProvider(FramerateProvider* provider);
    ~ScopedFramerateProvider();
    ScopedFramerateProvider(const ScopedFramerateProvider&) = delete;
    ScopedFramerateProvider& operator=(const ScopedFramerateProvider&) = delete;

private:
    FramerateProvider* previous;
};

} // namespace montala::core
