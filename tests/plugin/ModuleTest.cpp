#include "sim/SimFixture.h"

#include "kelmar/base/IPluginBase.h"
#include "kelmar/base/IPluginFactory.h"
#include "kelmar/services/IActionHandler.h"
#include "kelmar/services/IActionManager.h"
#include "kelmar/services/IMenuRegistry.h"
#include "kelmar/services/ITranslationService.h"
#include "kelmar/view/ICloseWindowNotification.h"
#include "kelmar/view/IPlugController.h"
#include "kelmar/view/IPlugWindowFactory.h"
#include "kelmar/view/IViewBuilder.h"
#include "kelmar/view/IWindowRegistry.h"
#include "sim/services/SimActionManager.h"
#include "sim/services/SimFailures.h"
#include "sim/services/SimMenuRegistry.h"
#include "sim/services/SimModule.h"
#include "sim/services/SimSkinService.h"
#include "sim/services/SimTranslationService.h"
#include "sim/services/SimWindowRegistry.h"

#include <gmock/gmock.h>

#include <cstring>

#include <dlfcn.h>

namespace montala::sim::test {
namespace {

using namespace Kelmar;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

// Montala.so as the simulated host loads it.
class ModuleTest : public SimFixture {
protected:
    void load()
    {
        std::string error;
        ASSERT_TRUE(host->loadModule(MONTALA_MODULE, error)) << error;
    }

    template <class I>
    IPtr<I> service() const
    {
        return Kelmar::queryInterface<I>(host->plugin());
    }
};

TEST_F(ModuleTest, FactoryDescribesOneServiceClassAndIsOneCountedObject)
{
    std::vector<std::string> steps;
    std::string error;
    auto module = SimModule::open(MONTALA_MODULE, [&](std::string step) { steps.push_back(step); }, error);
    ASSERT_TRUE(module) << error;
    IPluginFactory* factory = module->factory();

    PFactoryInfo maker;
    ASSERT_EQ(factory->getFactoryInfo(&maker), kResultOk);
    EXPECT_STRNE(maker.vendor, "");
    EXPECT_STRNE(maker.url, "");
    EXPECT_STRNE(maker.email, "");
    EXPECT_EQ(maker.flags, 16);

    ASSERT_EQ(factory->countClasses(), 1);
    IPtr<IPluginFactory2> factory2 = Kelmar::queryInterface<IPluginFactory2>(factory);
    ASSERT_TRUE(factory2);
    PClassInfo2 record;
    ASSERT_EQ(factory2->getClassInfo2(0, &record), kResultOk);
    EXPECT_EQ(FUID::fromBytes(record.cid).toText(), "{F61C1C25-4C9D-4D68-A782-F7FBF56B9068}");
    EXPECT_EQ(record.cardinality, 1);
    EXPECT_STREQ(record.category, "Service");
    EXPECT_STREQ(record.name, "Montala");
    EXPECT_EQ(record.classFlags, 0u);
    EXPECT_STREQ(record.subCategories, "");
    EXPECT_STREQ(record.vendor, "");
    EXPECT_STREQ(record.version, "1.1.0.65");
    EXPECT_STREQ(record.sdkVersion, "LUMO 4.1.0");

    // A second GetPluginFactory: the same object, with a count of two.
    auto getFactory = reinterpret_cast<GetFactoryProc>(dlsym(module->handle(), "GetPluginFactory"));
    ASSERT_TRUE(getFactory);
    IPluginFactory* again = getFactory();
    EXPECT_EQ(again, factory);
    factory2.reset();
    EXPECT_EQ(again->release(), 1u);

    // Only the three entry points are seen from outside.
    EXPECT_TRUE(dlsym(module->handle(), "InitDll"));
    EXPECT_TRUE(dlsym(module->handle(), "ExitDll"));
    EXPECT_FALSE(dlsym(module->handle(), "_ZN4juce18initialiseJuce_GUIEv"));
    EXPECT_FALSE(dlsym(module->handle(), "_ZN6Kelmar14CPluginFactory8instanceEv"));

    module.reset();
    EXPECT_THAT(steps, ElementsAre("load Montala.so", "InitDll", "GetPluginFactory", "release factory: 0",
                                   "ExitDll: true", "unload"));
}

TEST_F(ModuleTest, StartsUpAndShutsDownInOrderWithEveryReferenceGivenBack)
{
    load();
    EXPECT_THAT(host->lifecycle(),
                ElementsAre("load Montala.so", "InitDll", "GetPluginFactory", "create Montala",
                            "menu entry Project/Montala", "action handler added", "translation table Montala",
                            "window factory added", "initialize Montala: 0"));
    ASSERT_EQ(host->menus().entries().size(), 1u);
    const SimMenuRegistry::Entry& entry = host->menus().entries()[0];
    EXPECT_TRUE(entry.module) << "the module's own handle";
    EXPECT_EQ(entry.flags, 1);
    EXPECT_EQ(entry.category, "Montala");
    EXPECT_EQ(entry.action, "ShowDialog");
    EXPECT_TRUE(host->windows().find("MontalaWindow"));

    // A second initialize finds the Host there and only loads the table and
    // adds the window factory again.
    const std::size_t before = host->lifecycle().size();
    ASSERT_EQ(host->plugin()->initialize(static_cast<IHostServices*>(host.get())), kResultOk);
    EXPECT_THAT(std::vector(host->lifecycle().begin() + before, host->lifecycle().end()),
                ElementsAre("translation table Montala"));
    EXPECT_EQ(host->menus().entries().size(), 1u);

    ASSERT_EQ(host->menus().click("Project", u"Montala"), kResultOk);
    host->shutdown();
    const std::vector<std::string> down(host->lifecycle().begin() + before + 1, host->lifecycle().end());
    EXPECT_THAT(down, ElementsAre("terminate Montala", "close window MontalaWindow", "action handler removed",
                                  "menu entries removed: 1",
                                  "window factory removed", "release Montala: 0", "release factory: 0",
                                  "ExitDll: true", "unload"));
    EXPECT_EQ(host->actionManager().handlerCount(), 0u);
    EXPECT_EQ(host->windows().size(), 0u);
}

TEST_F(ModuleTest, MenuEntryOpensTheWindowAndASecondClickClosesIt)
{
    load();
    SimSkinService& skins = host->skins();
    IPlugWindowFactory* factory = host->windows().find("MontalaWindow");
    ASSERT_TRUE(factory);
    EXPECT_STREQ(factory->getWindowName(), "MontalaWindow");

    ASSERT_EQ(host->menus().click("Project", u"Montala"), kResultOk) << skins.lastError();
    ASSERT_EQ(skins.windows().size(), 1u);
    SimPlugWindow* window = skins.windows()[0].get();
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(window->view()) << "the view built by createView";
    EXPECT_EQ(factory->getWindow(), window);
    EXPECT_EQ(factory->isWindowOpen(window), kResultOk);
    EXPECT_EQ(factory->isWindowOpen(nullptr), kResultFalse);

    ASSERT_EQ(host->menus().click("Project", u"Montala"), kResultOk);
    EXPECT_FALSE(window->isOpen());
    EXPECT_FALSE(window->view()) << "the view was let go";
    EXPECT_EQ(skins.windows().size(), 1u) << "closing made no second window";
    EXPECT_EQ(factory->isWindowOpen(window), kResultFalse);

    // Reopened by the host, e.g. restoring its workspace.
    IPlugWindow* reopened = factory->getWindow();
    ASSERT_EQ(skins.windows().size(), 2u);
    EXPECT_EQ(reopened, skins.windows()[1].get());
    EXPECT_EQ(factory->getWindow(), reopened) << "an open window is not made again";
    EXPECT_EQ(skins.windows().size(), 2u);
}

TEST_F(ModuleTest, AnswersOnlyItsOwnActionAndView)
{
    load();
    IPtr<IActionHandler> actions = service<IActionHandler>();
    IPtr<IViewBuilder> views = service<IViewBuilder>();
    ASSERT_TRUE(actions && views);

    EXPECT_EQ(actions->onAction(nullptr, "ShowDialog", false), kResultFalse);
    EXPECT_EQ(actions->onAction("Montala", nullptr, false), kResultFalse);
    EXPECT_EQ(actions->onAction("Edit", "ShowDialog", false), kResultFalse);
    EXPECT_EQ(actions->onAction("Montala", "ShowDialogs", false), kResultFalse);
    EXPECT_EQ(actions->onAction("Montala", "ShowDialog", true), kResultOk) << "the entry is enabled";
    EXPECT_EQ(host->skins().windows().size(), 0u) << "asking opens nothing";
    EXPECT_TRUE(host->actionManager().isEnabled("Montala", "ShowDialog"));

    auto* untouched = reinterpret_cast<IPlugView*>(0x5a5a);
    IPlugView* view = untouched;
    EXPECT_EQ(views->createView("Other", nullptr, &view), kResultFailed);
    EXPECT_EQ(view, untouched);

    IPtr<IPluginBase> base = service<IPluginBase>();
    EXPECT_TRUE(base && service<IPlugController>() && service<IPlugWindowFactory>());
    EXPECT_FALSE(service<ICloseWindowNotification>()) << "handed over only by pointer";
}

TEST_F(ModuleTest, AMissingWindowRegistryIsAnErrorAndOtherMissingServicesSkipTheirStep)
{
    host->failures().withhold(IWindowRegistry::iid);
    std::string error;
    EXPECT_FALSE(host->loadModule(MONTALA_MODULE, error));
    EXPECT_THAT(error, HasSubstr("Montala.so"));
    EXPECT_THAT(host->lifecycle(), ::testing::IsSupersetOf({"initialize Montala: 1", "release Montala: 0",
                                                            "release factory: 0", "unload"}));
    EXPECT_TRUE(host->menus().entries().empty()) << "nothing stays registered";
    EXPECT_EQ(host->actionManager().handlerCount(), 0u);
    EXPECT_FALSE(host->plugin());

    const std::size_t tables = host->translation().tables().size();
    host->failures().clear();
    host->failures().withhold(IMenuRegistry::iid);
    host->failures().withhold(IActionManager::iid);
    host->failures().withhold(ITranslationService::iid);
    ASSERT_TRUE(host->loadModule(MONTALA_MODULE, error)) << error;
    EXPECT_TRUE(host->menus().entries().empty());
    EXPECT_EQ(host->actionManager().handlerCount(), 0u);
    EXPECT_EQ(host->translation().tables().size(), tables);
    EXPECT_EQ(host->windows().size(), 1u);
}

} // namespace
} // namespace montala::sim::test
