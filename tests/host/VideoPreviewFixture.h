#pragma once

#include "HostFixture.h"

#include "core/time/Timecode.h"
#include "host/video/VideoProvider.h"
#include "sim/services/SimClassFactory.h"
#include "sim/services/SimVideoService.h"

#include <chrono>
#include <thread>

namespace montala::host::test {

// A project at 25 fps from 01:00:00:00 whose pool holds the tests' clip of
// 25 numbered frames (frame n is red 10 n) twice: as "old.mkv" on the track
// "PICTURE" marked as the old cut (01:00:00:00 to 01:00:01:00), and as
// "new.mkv" for the new cut. "NEW PICTURE" is an empty video track.
class VideoPreviewFixture : public HostFixture {
protected:
    void SetUp() override
    {
        HostFixture::SetUp();
        const std::string clip = MONTALA_SOURCE_DIR "/tests/sim/fixtures/numbered-frames.mkv";
        openProject(R"({"format": "montala-session", "version": 1, "frameRate": {"fps": 25},
          "start": "01:00:00:00", "end": "01:10:00:00",
          "mediaPool": [{"id": 1, "kind": "video", "name": "old.mkv", "path": ")" + clip + R"(", "length": 1.0},
                        {"id": 2, "kind": "video", "name": "new.mkv", "path": ")" + clip + R"(", "length": 1.0}],
          "tracks": [{"kind": "video", "name": "PICTURE", "attributes": {"Montala:VideoType": 10},
                      "events": [{"kind": "video", "start": "01:00:00:00", "end": "01:00:01:00", "clip": 1}]},
                     {"kind": "video", "name": "NEW PICTURE"}]})");
        previousRate = core::Timecode::getFramerateProvider();
        core::Timecode::setFramerateProvider(project.get());
    }

    void TearDown() override
    {
        core::Timecode::setFramerateProvider(previousRate);
        HostFixture::TearDown();
    }

    static core::Timecode tc(const std::string& text) { return core::Timecode(text); }
    static double seconds(const std::string& text) { return tc(text).toSeconds(); }

    sim::SimVideoService& videos() { return host->classFactory().videos(); }

    // Polls until `done` or two seconds have passed.
    template <class Done>
    static bool pollUntil(VideoProvider& provider, Done done)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
        while (std::chrono::steady_clock::now() < end) {
            provider.poll();
            if (done())
                return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return false;
    }

    // The red of the picture's first pixel, or -1 while it shows a message.
    static int red(const core::VideoImage& image) { return image.isFrame() ? image.pixels[2] : -1; }

private:
    core::FramerateProvider* previousRate = nullptr;
};

} // namespace montala::host::test
