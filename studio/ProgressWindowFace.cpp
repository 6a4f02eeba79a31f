#include "studio/ProgressWindowFace.h"

#include "gui/LookAndFeel.h"
#include "gui/Palette.h"

#include "kelmar/base/String.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <algorithm>

namespace montala::studio {

ProgressView describeProgress(const sim::SimProgressService& service)
{
    ProgressView view;
    view.title = Kelmar::String::utf16ToUtf8(service.title());
    view.text = Kelmar::String::utf16ToUtf8(service.text());
    // Steps are added while a run goes on, so the position may pass a total
    // set earlier for a moment; the bar never runs over.
    if (service.total() > 0)
        view.fraction = std::clamp(static_cast<double>(service.position()) / static_cast<double>(service.total()),
                                   0.0, 1.0);
    view.cancellable = service.isCancellable();
    return view;
}

class ProgressWindowFace::Window : public juce::DocumentWindow {
public:
    explicit Window(sim::SimProgressService& service)
        : juce::DocumentWindow("Montala", gui::palette::panel, 0, true), service(service)
    {
        content.setLookAndFeel(&lookAndFeel);
        content.addAndMakeVisible(text);
        content.addAndMakeVisible(bar);
        content.addAndMakeVisible(cancel);
        text.setFont(gui::LookAndFeel::getFont(gui::LookAndFeel::regularFont));
        text.setColour(juce::Label::textColourId, gui::palette::text);
        cancel.setButtonText("Cancel");
        cancel.onClick = [this] { this->service.cancel(); };
        content.setSize(460, 120);
        content.onLayout = [this] {
            auto area = content.getLocalBounds().reduced(16);
            text.setBounds(area.removeFromTop(24));
            area.removeFromTop(8);
            bar.setBounds(area.removeFromTop(22));
            area.removeFromTop(12);
            cancel.setBounds(area.removeFromRight(100).removeFromTop(26));
        };
        setContentNonOwned(&content, true);
        setUsingNativeTitleBar(true);
        setAlwaysOnTop(true);
        centreWithSize(getWidth(), getHeight());
    }

    ~Window() override { content.setLookAndFeel(nullptr); }

    void show(const ProgressView& view)
    {
        setName(juce::String::fromUTF8(view.title.c_str()));
        text.setText(juce::String::fromUTF8(view.text.empty() ? view.title.c_str() : view.text.c_str()),
                     juce::dontSendNotification);
        progress = view.fraction;
        cancel.setEnabled(view.cancellable);
        if (!isVisible())
            setVisible(true);
        repaint();
    }

    void closeButtonPressed() override {}

private:
    struct Content : juce::Component {
        std::function<void()> onLayout;
        void paint(juce::Graphics& g) override { g.fillAll(gui::palette::panel); }
        void resized() override
        {
            if (onLayout)
                onLayout();
        }
    };

    sim::SimProgressService& service;
    gui::LookAndFeel lookAndFeel;
    Content content;
    juce::Label text;
    double progress = 0.0;
    juce::ProgressBar bar{progress};
    juce::TextButton cancel;
};

ProgressWindowFace::ProgressWindowFace(sim::SimProgressService& service, juce::Component* blocked)
    : service(service), blocked(blocked)
{
    service.setFace([this](const sim::SimProgressService& changed) { update(changed); });
}

ProgressWindowFace::~ProgressWindowFace()
{
    service.setFace(nullptr);
    if (window && blocked)
        blocked->setEnabled(true);
}

bool ProgressWindowFace::isShowing() const
{
    return window && window->isVisible();
}

void ProgressWindowFace::update(const sim::SimProgressService& changed)
{
    if (!changed.isVisible()) {
        window.reset();
        if (blocked)
            blocked->setEnabled(true);
        return;
    }
    if (!window) {
        window = std::make_unique<Window>(service);
        if (blocked)
            blocked->setEnabled(false);
    }
    window->show(describeProgress(changed));
    // The run holds the message thread: let it draw and take a Cancel click
    // now and then, not at every step, which would slow the run down.
    const double now = juce::Time::getMillisecondCounterHiRes();
    if (now - lastDispatch >= 50.0) {
        lastDispatch = now;
        juce::MessageManager::getInstance()->runDispatchLoopUntil(1);
    }
}

} // namespace montala::studio
