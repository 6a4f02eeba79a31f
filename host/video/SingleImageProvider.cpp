#include "host/video/SingleImageProvider.h"

#include "host/video/VideoProvider.h"
#include "util/StringUtil.h"

namespace montala::host {

SingleImageProvider::SingleImageProvider(VideoProvider& owner, int index, Kelmar::IHostServices* context,
                                         VideoSourceBase* source)
    : owner(owner), index(index), source(source), thread(std::make_unique<ImageProviderThread>(context))
{
    if (source)
        source->addListener(this);
}

SingleImageProvider::~SingleImageProvider()
{
    if (source)
        source->removeListener(this);
}

void SingleImageProvider::setFrameSize(int newWidth, int newHeight, double newSeconds, int newPosition)
{
    width = newWidth;
    height = newHeight;
    seconds = newSeconds;
    position = newPosition;
    pending = true;
}

void SingleImageProvider::poll()
{
    ImageProviderThread::Result made;
    if (thread->takeResult(made)) {
        if (made.valid)
            owner.setImage(core::VideoImage{made.width, made.height, std::move(made.pixels), {}}, index);
        else
            showMessage(u"No video available.");
    }
    if (!pending)
        return;
    if (!thread->hasFactory() || !source) {
        showMessage(u"No video available.");
        pending = false;
        return;
    }
    int64_t stream = 0;
    int64_t frame = 0;
    source->findFrame(seconds, stream, frame, position);
    if (stream == 0) {
        showMessage(u"No video available.");
        pending = false;
        return;
    }
    showMessage(u"Loading");
    // The worker is still on an older request: this one waits for the next
    // poll, and any made meanwhile replace it.
    if (thread->request(width, height, stream, frame))
        pending = false;
}

void SingleImageProvider::showMessage(const char16_t* text)
{
    const std::string message = util::StringUtil::toUtf8(util::StringUtil::translate(text));
    const core::VideoImage& shown = owner.getImage(index);
    if (shown.message == message && shown.width == width && shown.height == height)
        return;
    owner.setImage(core::VideoImage{width, height, {}, message}, index);
}

} // namespace montala::host
