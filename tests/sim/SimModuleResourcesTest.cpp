#include "SimFixture.h"

#include "kelmar/view/IPlugController.h"
#include "kelmar/view/IPlugView.h"
#include "kelmar/view/IPlugWindow.h"
#include "kelmar/view/ICloseWindowNotification.h"
#include "kelmar/view/IViewBuilder.h"
#include "kelmar/view/ViewRect.h"
#include "sim/services/SimSkinService.h"
#include "sim/services/SimTranslationService.h"

#include <cstring>
#include <filesystem>
#include <fstream>

#include <unistd.h>

namespace montala::sim::test {
namespace {

using namespace Kelmar;
namespace fs = std::filesystem;

// Module resources in a folder of their own.
class ModuleResourcesTest : public SimFixture {
protected:
    void SetUp() override
    {
        fs::create_directories(folder);
        host->setResourceFolder(folder.string());
    }
    void TearDown() override
    {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
        SimFixture::TearDown();
    }
    void write(const char* name, const std::string& text) { std::ofstream(folder / name) << text; }

    fs::path folder = fs::temp_directory_path() / ("montala-resources-" + std::to_string(::getpid()));
};

constexpr const char* table = R"(<?xml version="1.0" encoding="UTF-8"?>
<Translation>
  <LanguageTable><language key="us">English</language><language key="de">German</language></LanguageTable>
  <StringTable>
    <String Key="Apply Montala"><de>Montala anwenden</de><fr>Appliquer Montala</fr></String>
    <String Key="Preview"><fr>Aperçu</fr></String>
  </StringTable>
</Translation>)";

TEST_F(ModuleResourcesTest, TranslatesInTheHostsLanguageAndKeepsTextsWithoutAnEntry)
{
    SimTranslationService& translation = host->translation();
    EXPECT_EQ(translation.loadTable(nullptr, "translation.xml", "Montala"), kResultFalse);
    write("translation.xml", table);
    ASSERT_EQ(translation.loadTable(nullptr, "translation.xml", "Montala"), kResultOk) << translation.lastError();

    String result;
    translation.translate(String(u"Apply Montala"), result);
    EXPECT_EQ(result.toUtf8(), "Apply Montala") << "English is the language until it is changed";

    translation.setLanguage("de");
    translation.translate(String(u"Apply Montala"), result);
    EXPECT_EQ(result.toUtf8(), "Montala anwenden");
    translation.translate(String(u"Apply Montala "), result);
    EXPECT_EQ(result.toUtf8(), "Apply Montala ") << "a key differing by a blank does not match";
    translation.translate(String(u"Preview"), result);
    EXPECT_EQ(result.toUtf8(), "Preview") << "no German entry: the English text";
    translation.setLanguage("fr");
    translation.translate(String("Preview"), result);
    EXPECT_EQ(result.toUtf8(), "Aperçu");
}

// The plug-in's controller and view as far as the host sees them.
class TinyView : public FObject, public IPlugView {
public:
    tresult queryInterface(const FUID& iid, void** obj) override
    {
        if (answerInterface<IPlugView>(this, iid, obj))
            return kResultOk;
        return FObject::queryInterface(iid, obj);
    }
    KELMAR_FOBJECT_REFCOUNT
    tresult isPlatformTypeSupported(const char8*) override { return kResultOk; }
    tresult attached(void*, const char8*) override { return kResultOk; }
    tresult removed() override { return kResultOk; }
    tresult onWheel(float) override { return kResultFalse; }
    tresult onKeyDown(char16, int16, int16) override { return kResultFalse; }
    tresult onKeyUp(char16, int16, int16) override { return kResultFalse; }
    tresult getSize(ViewRect*) override { return kResultOk; }
    tresult onSize(ViewRect*) override { return kResultOk; }
    tresult onFocus(bool) override { return kResultFalse; }
    tresult setFrame(IPlugFrame*) override { return kResultOk; }
    tresult canResize() override { return kResultOk; }
    tresult checkSizeConstraint(ViewRect*) override { return kResultFalse; }
};

class TinyController : public FObject, public IPlugController, public IViewBuilder, public ICloseWindowNotification {
public:
    tresult queryInterface(const FUID& iid, void** obj) override
    {
        if (answerInterface<IPlugController>(this, iid, obj) || answerInterface<IViewBuilder>(this, iid, obj))
            return kResultOk;
        return FObject::queryInterface(iid, obj);
    }
    KELMAR_FOBJECT_REFCOUNT
    tresult getState(FUnknown*) override { return kNotImplemented; }
    tresult setState(FUnknown*) override { return kNotImplemented; }
    tresult createView(const char8* name, FUnknown*, IPlugView** view) override
    {
        if (std::strcmp(name, "MontalaWindow") != 0)
            return kResultFailed;
        ++views;
        *view = new TinyView;
        return kResultOk;
    }
    void onClose(IPlugWindow*) override { ++closed; }

    int views = 0;
    int closed = 0;
};

TEST_F(ModuleResourcesTest, OpensAWindowOfALoadedSkinWithTheControllersView)
{
    SimSkinService& skins = host->skins();
    auto controller = owned(new TinyController);
    IPlugWindow* window = nullptr; // the host's
    EXPECT_NE(skins.loadSkin(nullptr, "skin.xml"), kResultOk) << "there is no skin yet";
    write("skin.xml", R"(<skin><template name="MontalaWindow" size="0,0,0,0" title="Montala">
                           <view name="MontalaWindow" size="0,0,1300,750" attach="all"/></template></skin>)");
    ASSERT_EQ(skins.loadSkin(nullptr, "skin.xml"), kResultOk) << skins.lastError();
    EXPECT_EQ(skins.openWindow("Other", controller.get(), &window), kInvalidArgument);

    ASSERT_EQ(skins.openWindow("MontalaWindow", controller.get(), &window), kResultOk);
    EXPECT_EQ(controller->views, 1);
    window->show();
    window->setCloseNotification(controller.get());
    EXPECT_EQ(skins.openWindowCount(), 1u);
    ASSERT_EQ(window->close(0), kResultOk);
    EXPECT_EQ(controller->closed, 1);
    EXPECT_EQ(skins.openWindowCount(), 0u);
    EXPECT_EQ(window->close(0), kResultFalse) << "a closed window closes once";
}

} // namespace
} // namespace montala::sim::test
