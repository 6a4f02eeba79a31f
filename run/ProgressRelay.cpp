#include "run/ProgressRelay.h"

#include <utility>

namespace montala::run {

using namespace Kelmar;

// The progress window Montala gets: the host's own behind it.
class ServicesRelay::Window : public FObject, public IProgressService {
public:
    Window(IPtr<IProgressService> hostWindow, Watcher watcher)
        : hostWindow(std::move(hostWindow)), watcher(std::move(watcher))
    {
    }

    tresult queryInterface(const FUID& iid, void** obj) override
    {
        if (answerInterface<IProgressService>(this, iid, obj))
            return kResultOk;
        return FObject::queryInterface(iid, obj);
    }
    KELMAR_FOBJECT_REFCOUNT

    tresult setup(int32 mode, const char16* title, uint8* flag) override
    {
        state = ProgressState{};
        state.title = title ? title : u"";
        cancelFlag = flag;
        written = false;
        shown = false;
        return report(hostWindow->setup(mode, title, flag));
    }
    tresult setPosition(int64 position) override
    {
        state.position = position;
        return report(hostWindow->setPosition(position));
    }
    tresult setTotal(int64 total) override
    {
        state.total = total;
        return report(hostWindow->setTotal(total));
    }
    tresult setValue(int64 value) override
    {
        state.position = value;
        return report(hostWindow->setValue(value));
    }
    tresult setText(const char16* text) override
    {
        state.detail = text ? text : u"";
        return report(hostWindow->setText(text));
    }
    tresult advance(int64 count) override
    {
        state.position += count;
        return report(hostWindow->advance(count));
    }
    tresult show() override
    {
        const tresult answer = hostWindow->show();
        shown = true;
        return report(answer);
    }
    tresult hide() override
    {
        // A closed window can no longer be cancelled.
        const tresult answer = hostWindow->hide();
        cancelFlag = nullptr;
        shown = false;
        return answer;
    }

    bool cancelWritten() const { return written; }
    void forget() { hostWindow.reset(); }

private:
    // The host's window first, so that its own cancel (a test's button press)
    // lands before the watcher is asked. As with a host's cancel button, the
    // flag is written only while the window is shown: the one who opens it
    // clears the flag while setting it up, and a cancel written then would
    // be lost.
    tresult report(tresult answer)
    {
        if (watcher && watcher(state) && cancelFlag && shown && !written) {
            *cancelFlag = 1;
            written = true;
        }
        return answer;
    }

    IPtr<IProgressService> hostWindow;
    Watcher watcher;
    ProgressState state;
    uint8* cancelFlag = nullptr;
    bool shown = false;
    bool written = false;
};

IPtr<ServicesRelay> ServicesRelay::create(IHostServices* hostServices, Watcher watcher)
{
    return owned(new ServicesRelay(hostServices, std::move(watcher)));
}

ServicesRelay::ServicesRelay(IHostServices* hostServices, Watcher watcher) : inner(shared(hostServices))
{
    IPtr<IProgressService> hostWindow;
    if (inner->getService(IProgressService::iid, hostWindow.putVoid()) == kResultOk && hostWindow)
        window = owned(new Window(std::move(hostWindow), std::move(watcher)));
}

tresult ServicesRelay::queryInterface(const FUID& iid, void** obj)
{
    if (answerInterface<IHostServices>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

tresult ServicesRelay::getService(const FUID& iid, void** service)
{
    if (!service)
        return kInvalidArgument;
    if (!inner) {
        *service = nullptr;
        return kNoInterface;
    }
    if (iid == IProgressService::iid && window)
        return window->queryInterface(iid, service);
    return inner->getService(iid, service);
}

bool ServicesRelay::cancelWritten() const
{
    return window && window->cancelWritten();
}

void ServicesRelay::releaseServices()
{
    if (window)
        window->forget();
    window.reset();
    inner.reset();
}

} // namespace montala::run
