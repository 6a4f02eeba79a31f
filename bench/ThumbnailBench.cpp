// One frame of the video preview as the simulated host's thumbnail service
// gives it: a picture of 888 x 500 decoded from a local file at a random
// place, as the display asks when the user selects another Change event.
// It must stay under 50 ms, so that stepping through events feels at once.

#include "kelmar/base/IPtr.h"
#include "kelmar/services/IVideoFrame.h"
#include "sim/services/SimThumbnailFactory.h"
#include "sim/services/SimVideoService.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

using namespace montala;

namespace {

void decodeAtRandomPosition(benchmark::State& state)
{
    auto service = std::make_shared<sim::SimVideoService>();
    service->setFile(1, MONTALA_SOURCE_DIR "/samples/video/old.mp4");
    auto thumbnails = Kelmar::owned(new sim::SimThumbnailFactory(service));
    thumbnails->openStream(1, 0, 888, 500);
    std::mt19937 random(11);
    std::vector<Kelmar::uint8> pixels(888 * 500 * 4);
    for (auto _ : state) {
        auto frame = Kelmar::owned(thumbnails->getFrame(1, static_cast<Kelmar::int64>(random() % 8900)));
        if (!frame) {
            state.SkipWithError("no frame");
            break;
        }
        frame->copyPixels(pixels.data(), 888 * 4);
        benchmark::DoNotOptimize(pixels.data());
    }
    thumbnails->unregisterClient();
}
BENCHMARK(decodeAtRandomPosition)->Unit(benchmark::kMillisecond);

} // namespace
