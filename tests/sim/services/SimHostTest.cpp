#include "../Recorder.h"
#include "../SimFixture.h"

#include "kelmar/services/IActionHandler.h"
#include "kelmar/services/IActionManager.h"
#include "kelmar/services/IApplicationState.h"
#include "kelmar/project/IAutomationCurvePoint.h"
#include "kelmar/base/IClassFactory.h"
#include "kelmar/services/IMenuRegistry.h"
#include "kelmar/base/IObjectList.h"
#include "kelmar/base/IParameterContainer.h"
#include "kelmar/base/IPluginBase.h"
#include "kelmar/base/IPluginFactory.h"
#include "kelmar/edit/IProjectEdit.h"
#include "kelmar/project/IProjectManager.h"
#include "kelmar/edit/IRangeEdit.h"
#include "kelmar/project/ITransport.h"
#include "kelmar/project/ITimeParameter.h"
#include "kelmar/project/IVideoEvent.h"
#include "kelmar/services/IVideoFrame.h"
#include "kelmar/services/IVideoThumbnailFactory.h"
#include "sim/services/SimActionManager.h"
#include "sim/services/SimApplicationState.h"
#include "sim/services/SimClassFactory.h"
#include "sim/services/SimMenuRegistry.h"
#include "sim/services/SimUser.h"

#include <cstring>

namespace montala::sim::test {
namespace {

using namespace Kelmar;

class SimHostTest : public SimFixture {};

TEST_F(SimHostTest, SharesItsServicesAndMakesANewObjectForEachRequestOfTheOthers)
{
    EXPECT_EQ(service<IProjectManager>(), service<IProjectManager>());
    EXPECT_EQ(service<IActionManager>(), service<IActionManager>());
    EXPECT_NE(service<IObjectList>(), service<IObjectList>());

    auto edit = service<IRangeEdit>();
    ASSERT_TRUE(edit);
    EXPECT_TRUE(Kelmar::queryInterface<IProjectEdit>(edit.get())) << "the range edit is also a project edit";
    auto videoEvent = service<IVideoEvent>();
    ASSERT_TRUE(videoEvent);
    EXPECT_TRUE(Kelmar::queryInterface<IProjectObject>(videoEvent.get())->isKind("video"));
    auto point = service<IAutomationCurvePoint>();
    ASSERT_TRUE(point);
    EXPECT_EQ(owned(Kelmar::queryInterface<IProjectObject>(point.get())->getParent()), nullptr);

    void* answer = reinterpret_cast<void*>(1);
    EXPECT_EQ(host->getService(FUnknown::iid, &answer), kNoInterface);
    EXPECT_EQ(answer, nullptr);
}

TEST_F(SimHostTest, TheTransportWorksOnTheActiveProject)
{
    auto transport = service<ITransport>();
    EXPECT_EQ(transport->setCursor(5.0), kResultFalse) << "no project is open";
    EXPECT_EQ(transport->getParameter("cycleLeftTime"), nullptr);

    auto project = open(smallSession());
    ASSERT_EQ(transport->setCursor(12.5), kResultOk);
    EXPECT_DOUBLE_EQ(project->cursor, 12.5);
    auto left = owned(transport->getParameter("cycleLeftTime"));
    auto time = Kelmar::queryInterface<ITimeParameter>(left.get());
    ASSERT_TRUE(time);
    time->setTime(4.0, 1);
    EXPECT_DOUBLE_EQ(project->cycleLeft, 4.0);
    EXPECT_EQ(transport->getParameter("leftTime"), nullptr) << "locators belong to the project, not the transport";

    auto locators = owned(project->getLocators());
    auto right = Kelmar::queryInterface<ITimeParameter>(owned(locators->getParameter("rightTime")).get());
    right->setTime(30.0, 1);
    EXPECT_DOUBLE_EQ(project->rightLocator, 30.0);
    project->playing = true;
    EXPECT_TRUE(transport->isPlaying());
    transport->stop();
    EXPECT_FALSE(transport->isPlaying());
}

// A plug-in module as small as can be: one service that puts an entry into
// the Project menu, carries out its action, and takes it all away again.
class TinyPlugin : public FObject, public IPluginBase, public IActionHandler {
public:
    tresult queryInterface(const FUID& iid, void** obj) override
    {
        if (answerInterface<IPluginBase>(this, iid, obj) || answerInterface<IActionHandler>(this, iid, obj))
            return kResultOk;
        return FObject::queryInterface(iid, obj);
    }
    KELMAR_FOBJECT_REFCOUNT

    tresult initialize(FUnknown* context) override
    {
        services = Kelmar::queryInterface<IHostServices>(context);
        auto menus = get<IMenuRegistry>();
        auto actions = get<IActionManager>();
        if (!menus || !actions)
            return kResultFalse;
        menus->addEntry(this, "Project", u"Tiny", 1, "Tiny", "Show");
        actions->addHandler(this);
        return kResultOk;
    }
    tresult terminate() override
    {
        get<IActionManager>()->removeHandler(this);
        get<IMenuRegistry>()->removeEntries(this);
        services.reset();
        return kResultOk;
    }
    tresult onAction(const char8* category, const char8* name, bool queryOnly) override
    {
        if (!category || !name || std::strcmp(category, "Tiny") != 0 || std::strcmp(name, "Show") != 0)
            return kResultFalse;
        if (!queryOnly)
            ++shown;
        return kResultOk;
    }

    static int shown;

private:
    template <class I>
    IPtr<I> get()
    {
        void* answer = nullptr;
        services->getService(I::iid, &answer);
        return owned(static_cast<I*>(answer));
    }

    IPtr<IHostServices> services;
};

int TinyPlugin::shown = 0;

class TinyFactory : public FObject, public IPluginFactory {
public:
    tresult queryInterface(const FUID& iid, void** obj) override
    {
        if (answerInterface<IPluginFactory>(this, iid, obj))
            return kResultOk;
        return FObject::queryInterface(iid, obj);
    }
    KELMAR_FOBJECT_REFCOUNT

    tresult getFactoryInfo(PFactoryInfo*) override { return kResultOk; }
    int32 countClasses() override { return 1; }
    tresult getClassInfo(int32, PClassInfo* info) override
    {
        std::memcpy(info->cid, classId.data(), 16);
        std::strcpy(info->category, "Service");
        std::strcpy(info->name, "Tiny");
        return kResultOk;
    }
    tresult createInstance(const FUID& cid, const FUID& iid, void** object) override
    {
        if (!(cid == classId))
            return kResultFalse;
        auto plugin = owned(new TinyPlugin);
        return plugin->queryInterface(iid, object);
    }

    static constexpr FUID classId{"{F61C1C25-4C9D-4D68-A782-F7FBF56B9068}"};
};

TEST_F(SimHostTest, APluginsMenuEntryReachesItThroughTheActionManager)
{
    TinyPlugin::shown = 0;
    auto factory = owned(new TinyFactory);
    ASSERT_TRUE(host->loadPlugin(factory.get()));
    ASSERT_EQ(host->menus().entries().size(), 1u);
    EXPECT_EQ(host->menus().entries()[0].title, u"Tiny");
    EXPECT_TRUE(host->actionManager().isEnabled("Tiny", "Show"));
    EXPECT_EQ(TinyPlugin::shown, 0) << "asking whether it is enabled does not carry it out";

    SimUser user(*host);
    ASSERT_TRUE(user.clickMenu("Project", u"Tiny"));
    EXPECT_EQ(TinyPlugin::shown, 1);
    EXPECT_FALSE(user.clickMenu("Project", u"Other"));
    EXPECT_EQ(host->actionManager().invoke("Other", "Show"), kResultFalse);

    host->unloadPlugin();
    EXPECT_TRUE(host->menus().entries().empty());
    EXPECT_EQ(host->actionManager().handlerCount(), 0u);
}

TEST_F(SimHostTest, TheRunLoopCallsTheIdleHandlersAndBusyIsKept)
{
    auto recorder = owned(new Recorder);
    auto state = service<IApplicationState>();
    state->addIdleHandler(recorder.get());
    host->runIdle(3);
    EXPECT_EQ(recorder->heard, (std::vector<std::string>{"idle", "idle", "idle"}));
    state->removeIdleHandler(recorder.get());
    host->runIdle();
    EXPECT_EQ(recorder->heard.size(), 3u);

    state->setBusy(true);
    state->setBusy(false);
    EXPECT_EQ(host->applicationState().busyChanges(), (std::vector<bool>{true, false}));
}

TEST_F(SimHostTest, TheClassFactoryMakesTheThumbnailServiceWhosePixelsSayWhereTheyComeFrom)
{
    auto factory = service<IClassFactory>();
    IPtr<IVideoThumbnailFactory> thumbnails;
    ASSERT_EQ(factory->createInstance("Video", "VideoThumbnailFactory", IVideoThumbnailFactory::iid,
                                      thumbnails.putVoid()),
              kResultOk);
    EXPECT_EQ(thumbnails->openStream(0, 0, 4, 2), kResultFalse) << "no stream has id 0";
    EXPECT_EQ(thumbnails->getFrame(7, 300), nullptr) << "a stream that was not opened";
    ASSERT_EQ(thumbnails->openStream(7, 300, 4, 2), kResultOk);
    auto frame = owned(thumbnails->getFrame(7, 300));
    ASSERT_TRUE(frame);
    int32 width = 0, height = 0;
    frame->getSize(width, height);
    EXPECT_EQ(width, 4);
    EXPECT_EQ(height, 2);
    std::vector<uint8> pixels(2 * 20, 0);
    ASSERT_EQ(frame->copyPixels(pixels.data(), 20), kResultOk);
    // 300 = 0x012C: blue 0x2C, green 0x01, red 7, alpha 255; the row's padding untouched.
    EXPECT_EQ((std::vector<uint8>(pixels.begin() + 20, pixels.begin() + 24)), (std::vector<uint8>{0x2C, 0x01, 7, 255}));
    EXPECT_EQ(pixels[18], 0);
    EXPECT_EQ(frame->copyPixels(pixels.data(), 8), kInvalidArgument) << "a pitch below a row's width";
    thumbnails->unregisterClient();

    host->classFactory().setThumbnailsAvailable(false);
    void* none = nullptr;
    EXPECT_EQ(factory->createInstance("Video", "VideoThumbnailFactory", IVideoThumbnailFactory::iid, &none),
              kResultFalse);
}

} // namespace
} // namespace montala::sim::test
