#include "host/ProgressHandler.h"

#include "host/HostCalls.h"

namespace montala::host {

using util::Result;

ProgressHandler::~ProgressHandler()
{
    if (service)
        service->hide();
}

Kelmar::IProgressService& ProgressHandler::open()
{
    if (!service)
        throw Result::NotInitialized;
    return *service;
}

void ProgressHandler::start(const std::u16string& title, int64_t steps, bool cancellable)
{
    if (service)
        throw Result::NotInitialized;
    auto window = getService<Kelmar::IProgressService>(services);
    // The window shows the product's name as its caption and the run's title
    // as its text line.
    check(window->setup(1, u"Montala", cancellable ? &cancelFlag : nullptr));
    check(window->setPosition(0));
    check(window->setTotal(steps));
    text = title;
    check(window->setText(text.c_str()));
    cancelFlag = 0;
    total = steps;
    check(window->show());
    service = std::move(window);
}

void ProgressHandler::finish()
{
    open().hide();
    service.reset();
}

void ProgressHandler::setValue(int64_t value)
{
    check(open().setValue(value));
}

void ProgressHandler::advance(int64_t count)
{
    check(open().advance(count));
}

void ProgressHandler::setText(const std::u16string& detail)
{
    const std::u16string line = text + u" - " + detail;
    check(open().setText(line.c_str()));
}

void ProgressHandler::addSteps(int64_t count)
{
    Kelmar::IProgressService& window = open();
    total += count;
    check(window.setTotal(total));
}

} // namespace montala::host
