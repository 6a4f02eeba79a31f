// The translator against the simulated host, with Montala's own table loaded
// from the resources folder: the language is the host's setting, English is
// the fallback, keys match exactly.

#include "host/StringTranslator.h"

#include "kelmar/base/FObject.h"
#include "kelmar/services/IHostServices.h"
#include "kelmar/edit/IProjectEdit.h"
#include "sim/SimFixture.h"
#include "sim/services/SimTranslationService.h"
#include "util/StringConverter.h"
#include "util/StringUtil.h"

#include <gtest/gtest.h>

#include <string>

namespace montala::host::test {
namespace {

using namespace Kelmar;

class StringTranslatorTest : public sim::test::SimFixture {
protected:
    void SetUp() override
    {
        host->setResourceFolder(MONTALA_SOURCE_DIR "/resources");
        sim::SimTranslationService& service = host->translation();
        ASSERT_EQ(service.loadTable(nullptr, "translation.xml", "Montala"), kResultOk) << service.lastError();
    }

    void setLanguage(const char* key) { host->translation().setLanguage(key); }

    StringTranslator translator{host.get()};
};

TEST_F(StringTranslatorTest, TranslatesIntoTheHostsLanguageAndFallsBackToTheEnglishKey)
{
    EXPECT_EQ(translator.translate(std::u16string(u"Apply Montala")), u"Apply Montala")
        << "the host starts in English";

    setLanguage("de");
    EXPECT_EQ(translator.translate(std::u16string(u"Apply Montala")), u"Montala anwenden");
    EXPECT_EQ(translator.translate(std::u16string(u"Overlap in ")), u"Überlappung in ")
        << "the blank the track name follows is part of key and text";

    // Keys match exactly: a blank more or less, or a text nobody wrote into
    // the table, comes back as it went in.
    EXPECT_EQ(translator.translate(std::u16string(u"Apply Montala ")), u"Apply Montala ");
    EXPECT_EQ(translator.translate(std::u16string(u"Overlap in")), u"Overlap in");
    EXPECT_EQ(translator.translate(std::u16string(u"No such text in any table")), u"No such text in any table");
    EXPECT_EQ(translator.translate(std::u16string()), u"");

    // A key with a line break survives the table's XML on both sides.
    EXPECT_EQ(translator.translate(std::u16string(u"No tracks selected for the preview.\n"
                                                  u"Please select the tracks that you want to use.")),
              u"Für die Vorschau sind keine Spuren ausgewählt.\n"
              u"Bitte wählen Sie die Spuren aus, die verwendet werden sollen.");

    // Texts outside Latin-1 come through the host's 8-bit form intact.
    setLanguage("jp");
    EXPECT_EQ(translator.translate(std::u16string(u"Apply Montala")), u"Montala を適用");
    setLanguage("ru");
    EXPECT_EQ(translator.translate(std::u16string(u"Delete")), u"Удалить");

    setLanguage("xx");
    EXPECT_EQ(translator.translate(std::u16string(u"Apply Montala")), u"Apply Montala")
        << "a language the table does not have shows English";
}

TEST_F(StringTranslatorTest, IsTheWayOfStringUtilToTheUsersLanguage)
{
    setLanguage("fr");
    util::ScopedStringConverter scope(translator);
    EXPECT_EQ(util::StringUtil::toUtf8(util::StringUtil::translate(u"Healed Event")), "Événement fusionné");
    EXPECT_EQ(util::StringUtil::fromUtf8("Aperçu"), u"Aperçu");
    EXPECT_THROW(util::StringUtil::fromUtf8("\xC3"), std::range_error) << "a cut-off sequence is no text";
}

TEST_F(StringTranslatorTest, TitlesOfEditGroupsStayValidAndReachTheUndoList)
{
    setLanguage("de");
    const char16_t* apply = translator.translate(u"Apply Montala");
    ASSERT_NE(apply, nullptr);
    EXPECT_EQ(std::u16string(apply), u"Montala anwenden");
    EXPECT_EQ(translator.translate(u"Apply Montala"), apply) << "the same title is handed out once";

    // Later titles, and a change of language, leave an earlier pointer as it was.
    const char16_t* incomplete = translator.translate(u"Apply Montala (incomplete)");
    setLanguage("it");
    const char16_t* italian = translator.translate(u"Apply Montala");
    EXPECT_EQ(std::u16string(apply), u"Montala anwenden");
    EXPECT_EQ(std::u16string(incomplete), u"Montala anwenden (unvollständig)");
    EXPECT_EQ(std::u16string(italian), u"Applica Montala");
    EXPECT_EQ(translator.translate(static_cast<const char16_t*>(nullptr)), nullptr);

    // What the user then reads in the host's undo list.
    setLanguage("de");
    IPtr<sim::SimProject> project = open(smallSession());
    void* service = nullptr;
    ASSERT_EQ(host->getService(IProjectEdit::iid, &service), kResultOk);
    IPtr<IProjectEdit> edit = owned(static_cast<IProjectEdit*>(service));
    ASSERT_EQ(edit->beginEdit(1), kResultOk);
    ASSERT_EQ(edit->deleteRange(project.get(), 0.0, 1.0, 0), kResultOk);
    ASSERT_EQ(edit->endEdit(project.get(), translator.translate(u"Apply Montala")), kResultOk);
    EXPECT_EQ(project->undoTitle(), u"Montala anwenden");
}

// A host that offers no service at all.
class BareHost : public FObject, public IHostServices {
public:
    tresult queryInterface(const FUID& iid, void** obj) override
    {
        if (answerInterface<IHostServices>(this, iid, obj))
            return kResultOk;
        return FObject::queryInterface(iid, obj);
    }
    KELMAR_FOBJECT_REFCOUNT
    tresult getService(const FUID&, void** service) override
    {
        *service = nullptr;
        return kNoInterface;
    }
};

TEST(StringTranslatorWithoutService, LeavesEveryTextInEnglish)
{
    IPtr<BareHost> bare = owned(new BareHost);
    StringTranslator withoutService(bare.get());
    EXPECT_EQ(withoutService.translate(std::u16string(u"Apply Montala")), u"Apply Montala");
    EXPECT_EQ(std::u16string(withoutService.translate(u"Preview")), u"Preview");

    StringTranslator withoutHost(nullptr);
    EXPECT_EQ(withoutHost.translate(std::u16string(u"Apply Montala")), u"Apply Montala");
}

} // namespace
} // namespace montala::host::test
