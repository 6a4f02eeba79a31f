// montala-studio: Montala's window on the simulated host.
//
//   montala-studio SESSION.json                 open a session
//   montala-studio --new --rate 25              a new empty project
//   montala-studio SESSION.json --old O.edl --new N.edl --generate --conform --save OUT.json --quit
//   montala-studio SESSION.json --old O.edl --new N.edl --generate --select 3-5 --snapshot W.png
//   montala-studio SESSION.json --set heal=none --load-old O.edl --load-new N.edl --dst-offset -01:00:00:00 ...
//   montala-studio SESSION.json --language de     the texts in German (the system's language without it)

#include "gui/MainGui.h"
#include "studio/AlertFace.h"
#include "studio/FileDialogFace.h"
#include "studio/HostKeys.h"
#include "studio/ProgressWindowFace.h"
#include "studio/Steps.h"
#include "studio/Studio.h"
#include "studio/StudioOptions.h"
#include "studio/StudioWindow.h"

#include "sim/services/SimHost.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <iostream>
#include <memory>
#include <optional>

#include <X11/Xlib.h>

using namespace montala;

namespace {

// translation.xml: next to the program when installed, else in the source
// tree it was built from.
std::string resourceFolder(const char* argv0)
{
    const juce::File beside = juce::File::getSpecialLocation(juce::File::currentExecutableFile)
                                  .getParentDirectory()
                                  .getChildFile("resources");
    if (beside.getChildFile("translation.xml").existsAsFile())
        return beside.getFullPathName().toStdString();
    (void)argv0;
    return MONTALA_RESOURCE_DIR;
}

// JUCE puts in a forgiving X error handler only for programs it starts
// itself (JUCEApplication). Without it Xlib's default one ends the program
// at the first refused request, and an X server without a window manager,
// such as Xvfb, refuses the window manager's properties that JUCE sets on
// every window. JUCE does not need them answered: the errors are let pass.
int ignoreXError(Display*, XErrorEvent*)
{
    return 0;
}

// Montala.so: beside the program when installed, else where the build put it.
std::string moduleFile()
{
    const juce::File beside = juce::File::getSpecialLocation(juce::File::currentExecutableFile)
                                  .getParentDirectory()
                                  .getChildFile("Montala.so");
    if (beside.existsAsFile())
        return beside.getFullPathName().toStdString();
    return MONTALA_MODULE_FILE;
}

// Whether a window can be shown at all: an X server answers on $DISPLAY.
bool displayAvailable()
{
    Display* display = XOpenDisplay(nullptr);
    if (!display)
        return false;
    XCloseDisplay(display);
    return true;
}

int run(const studio::StudioOptions& options, const char* argv0)
{
    // A snapshot needs no display, and steps that end the program can run
    // without one too; anything that leaves the window open needs one.
    const bool display = displayAvailable();
    if (!display && options.snapshot.empty() && !(options.scripted() && options.quit)) {
        std::cerr << "montala-studio: no display to open the window on (is DISPLAY set?). Without one, end the "
                     "steps with --quit or --snapshot FILE.\n";
        return 2;
    }

    juce::ScopedJuceInitialiser_GUI juce;
    const std::string language = options.language.empty() ? studio::Studio::systemLanguage() : options.language;
    // The steps and snapshots press the window's buttons themselves, so they
    // run with Montala built in. A user at the screen gets Montala the way a
    // workstation starts it: the host loads the module, whose "Project" menu
    // entry opens the window.
    const bool scripted = options.scripted() || !options.snapshot.empty() || !display;
    std::unique_ptr<studio::Studio> studioOwned;
    std::string error;
    if (scripted) {
        studioOwned = std::make_unique<studio::Studio>(resourceFolder(argv0), language);
    } else {
        studioOwned = studio::Studio::withModule(moduleFile(), language, error);
        if (!studioOwned) {
            std::cerr << "montala-studio: " << error << "\n";
            return 2;
        }
    }
    studio::Studio& montala = *studioOwned;

    if (!options.session.empty()) {
        if (!montala.openSession(options.session, error)) {
            std::cerr << error << "\n";
            return 2;
        }
    } else {
        core::Framerate rate;
        studio::Studio::parseRate(options.rate, rate);
        montala.newProject(rate);
    }

    // A snapshot, and steps without a display, draw nothing on screen; a
    // run of steps that ends by itself has nobody to answer a box: they
    // keep to the console, and the host's file dialog answers what the
    // steps queue for it, or cancels.
    const bool headless = !options.snapshot.empty() || !display;
    const bool console = headless || options.quit;
    studio::AlertFace alerts(montala.simHost().alerts(), console ? studio::AlertFace::onConsole(std::cerr)
                                                                 : studio::AlertFace::askInWindow);
    std::optional<studio::FileDialogFace> fileDialogs;
    if (!console)
        fileDialogs.emplace(montala.simHost().fileDialogs(), studio::FileDialogFace::askInWindow);

    std::unique_ptr<gui::MainGui> view;
    if (scripted) {
        view = std::make_unique<gui::MainGui>();
        studio::ViewWiring::wire(*view, montala);
    }

    if (headless) {
        const int status = studio::runSteps(montala, *view, options, std::cout, std::cerr);
        studio::ViewWiring::unwire(*view);
        return status;
    }

    XSetErrorHandler(ignoreXError);
    int status = 0;
    bool quitting = false;
    auto window = std::make_unique<studio::StudioWindow>(montala, std::move(view), [&quitting] {
        quitting = true;
        juce::MessageManager::getInstance()->stopDispatchLoop();
    });
    auto progress = std::make_unique<studio::ProgressWindowFace>(montala.simHost().progress(), &window->content());
    window->setVisible(true);
    // Montala's window from the module reads its keys itself: the menu's
    // keys are taken on the way, as a workstation takes its shortcuts.
    std::unique_ptr<studio::HostKeys> keys;
    if (montala.hasModule() && window->getPeer()) {
        const auto native = reinterpret_cast<juce::pointer_sized_uint>(window->getPeer()->getNativeHandle());
        keys = std::make_unique<studio::HostKeys>(static_cast<unsigned long>(native), studio::menuKeys(),
                                                  [&window](const auto& key) { window->keyPressed(key); });
    }

    if (options.scripted() && options.quit) {
        // Steps that end the program run on the window as it stands on
        // screen, between two short turns of the message loop that draw it.
        // No quit message is posted: under a heavily loaded machine one was
        // seen to leave the loop waiting after the session had been saved.
        juce::MessageManager::getInstance()->runDispatchLoopUntil(100);
        status = studio::runSteps(montala, window->view(), options, std::cout, std::cerr);
        juce::MessageManager::getInstance()->runDispatchLoopUntil(100);
        progress.reset();
        window.reset();
        return status;
    }
    if (options.scripted()) {
        // The steps run inside the message loop, with the window on screen,
        // as the clicks of a user would.
        juce::MessageManager::callAsync([&] {
            status = studio::runSteps(montala, window->view(), options, std::cout, std::cerr);
        });
    }
    juce::MessageManager::getInstance()->runDispatchLoop();
    keys.reset();
    progress.reset();
    window.reset();
    return status;
}

} // namespace

int main(int argc, char** argv)
{
    int status = 0;
    std::string message;
    const std::optional<studio::StudioOptions> options = studio::parseStudioOptions(argc, argv, status, message);
    if (!options) {
        (status == 0 ? std::cout : std::cerr) << message << (message.empty() || message.back() == '\n' ? "" : "\n");
        return status;
    }
    try {
        return run(*options, argv[0]);
    } catch (util::Result::Type code) {
        std::cerr << "montala-studio: " << util::Result::name(code) << "\n";
        return 1;
    }
}
