#include "sim/SimFixture.h"

#include "kelmar/view/IPlugViewContentScaleSupport.h"
#include "sim/services/SimDisplay.h"
#include "sim/services/SimMenuRegistry.h"
#include "sim/services/SimSkinService.h"

namespace montala::sim::test {
namespace {

using namespace Kelmar;

// Montala's view in a real X11 window of the simulated host. The module's
// JUCE draws and resizes its own window inside the host's; the host's idle
// turns let it catch up.
class ViewOnDisplayTest : public SimFixture {
protected:
    // The one window JUCE made inside the host's window, and its size.
    std::optional<SimDisplay::Size> viewWindowSize(unsigned long hostWindow)
    {
        host->runIdle(5);
        const std::vector<unsigned long> children = host->display()->children(hostWindow);
        if (children.size() != 1)
            return std::nullopt;
        return host->display()->size(children[0]);
    }
};

TEST_F(ViewOnDisplayTest, ViewIsAttachedResizedScaledAndRemovedWithItsWindow)
{
    ASSERT_TRUE(host->openDisplay()) << "no X server on $DISPLAY: run under xvfb-run";
    std::string error;
    ASSERT_TRUE(host->loadModule(MONTALA_MODULE, error)) << error;
    ASSERT_EQ(host->menus().click("Project", u"Montala"), kResultOk) << host->skins().lastError();
    SimPlugWindow* window = host->skins().windows().at(0).get();
    const unsigned long hostWindow = window->nativeWindow();
    ASSERT_NE(hostWindow, 0u);

    std::optional<SimDisplay::Size> size = host->display()->size(hostWindow);
    ASSERT_TRUE(size);
    EXPECT_EQ(size->width, 1300);
    EXPECT_EQ(size->height, 750);
    size = viewWindowSize(hostWindow);
    ASSERT_TRUE(size) << "the view's own window inside the host's";
    EXPECT_EQ(size->width, 1300);
    EXPECT_EQ(size->height, 750);

    window->resize(1400, 800);
    size = viewWindowSize(hostWindow);
    ASSERT_TRUE(size);
    EXPECT_EQ(size->width, 1400);
    EXPECT_EQ(size->height, 800);

    // At twice the scale the view asks its frame for twice the pixels and
    // fills them.
    IPtr<IPlugViewContentScaleSupport> scaling = Kelmar::queryInterface<IPlugViewContentScaleSupport>(window->view());
    ASSERT_TRUE(scaling);
    ASSERT_EQ(scaling->setContentScaleFactor(2.0f), kResultOk);
    size = host->display()->size(hostWindow);
    ASSERT_TRUE(size);
    EXPECT_EQ(size->width, 2800);
    EXPECT_EQ(size->height, 1600);
    size = viewWindowSize(hostWindow);
    ASSERT_TRUE(size);
    EXPECT_EQ(size->width, 2800);
    EXPECT_EQ(size->height, 1600);
    scaling.reset();

    ASSERT_EQ(host->menus().click("Project", u"Montala"), kResultOk);
    EXPECT_EQ(window->nativeWindow(), 0u);
    EXPECT_FALSE(host->display()->exists(hostWindow)) << "the host's window is gone";
    EXPECT_FALSE(window->view()) << "the view was released";
    host->shutdown();
    EXPECT_EQ(host->lifecycle().back(), "unload");
}

TEST_F(ViewOnDisplayTest, OpensInsideTheHostsMainWindowAndLeavesItWhenClosed)
{
    ASSERT_TRUE(host->openDisplay()) << "no X server on $DISPLAY: run under xvfb-run";
    const unsigned long mainWindow = host->display()->createWindow("Host", 1300, 790);
    host->setWorkspace(mainWindow, 0, 40);
    std::string error;
    ASSERT_TRUE(host->loadModule(MONTALA_MODULE, error)) << error;
    ASSERT_EQ(host->menus().click("Project", u"Montala"), kResultOk) << host->skins().lastError();
    const unsigned long plugWindow = host->skins().windows().at(0)->nativeWindow();
    EXPECT_EQ(host->display()->children(mainWindow), std::vector<unsigned long>{plugWindow});
    EXPECT_TRUE(viewWindowSize(plugWindow)) << "the view's own window inside the plug window";

    ASSERT_EQ(host->menus().click("Project", u"Montala"), kResultOk);
    EXPECT_TRUE(host->display()->children(mainWindow).empty());
    host->shutdown();
    host->display()->destroyWindow(mainWindow);
}

} // namespace
} // namespace montala::sim::test
