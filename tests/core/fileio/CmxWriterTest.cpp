#include "support/ModelFixture.h"
#include "support/TempFolderTest.h"
#include "core/events/EventList.h"
#include "core/fileio/CmxParser.h"
#include "core/fileio/CmxWriter.h"
#include "util/Result.h"
#include "util/StringConverter.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/stat.h>

namespace montala::core::fileio {
namespace {

using montala::test::tc;
using montala::test::makeEvent;

using util::Result;
namespace fs = std::filesystem;

// A list of count one-second cuts laid end to end from 01:00:00:00.
EventList makeCuts(size_t count)
{
    EventList list(EventList::ChangeKind);
    for (size_t i = 0; i < count; ++i) {
        Timecode in(3600.0 + static_cast<double>(i));
        Timecode out(3601.0 + static_cast<double>(i));
        EventPtr event = EventBase::create(EventBase::Plain);
        event->setTimecodes(in, out, in, out);
        event->setRollName("R" + std::to_string(i));
        list.addEvent(event);
    }
    return list;
}

std::string readFile(const fs::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

// A valid event with one format fault, which the writer refuses.
EventPtr faultyEvent(EventState state)
{
    EventPtr event = makeEvent("A", "01:00:00:00", "01:00:01:00", "01:00:00:00", "01:00:01:00");
    event->addState(state);
    return event;
}

size_t countLines(const std::string& text)
{
    return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
}

class CmxWriterTest : public test::TempFolderTest {
protected:
    CmxWriterTest() : TempFolderTest("montala-writer"), providerScope(&provider), converterScope(converter) {}

    std::u16string pathOf(const std::string& name) const { return (folder / name).u16string(); }

    std::vector<std::string> filesInFolder() const
    {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    EventList reload(const std::string& name, Framerate& suggested)
    {
        EventList list(EventList::ChangeKind);
        EXPECT_EQ(Result::Ok, parseEdlFile(pathOf(name), list, suggested, false));
        return list;
    }

    FixedFramerateProvider provider{Framerate(25, 0)};
    ScopedFramerateProvider providerScope;
    util::StringConverter converter;
    util::ScopedStringConverter converterScope;
};

TEST_F(CmxWriterTest, WritesFixedColumnsNumberedByPositionWithoutFlawedEvents)
{
    EventList list(EventList::ChangeKind);
    EventPtr first = makeEvent("A001", "01:00:00:00", "01:00:04:00", "10:00:00:00", "10:00:04:00");
    first->setEventNumber(17);
    first->setClipName("SHOT_A.MOV");
    list.addEvent(first);
    // Out before in: flawed, left out, but its number 002 is not reused.
    list.addEvent(makeEvent("A002", "01:00:10:00", "01:00:09:00", "10:00:04:00", "10:00:05:00"));
    EventPtr dissolve = makeEvent("b 7", "02:00:00:00", "02:00:02:12", "10:00:04:00", "10:00:06:12");
    dissolve->setTransitionType(EventBase::Dissolve);
    dissolve->setTransitionDuration(12);
    list.addEvent(dissolve);
    EventPtr wipe = makeEvent("C", "03:00:00:00", "03:00:01:00", "10:00:06:12", "10:00:07:12");
    wipe->setTransitionType(EventBase::Wipe);
    list.addEvent(wipe);

    ASSERT_EQ(Result::Ok, writeEdlFile(pathOf("change.edl"), list));

    // No FCM line, no blank line, no comments, no transition duration.
    EXPECT_EQ("TITLE:   change.edl\n"
              "001  A001     V     C        01:00:00:00 01:00:04:00 10:00:00:00 10:00:04:00\n"
              "003  B_7      V     D        02:00:00:00 02:00:02:12 10:00:04:00 10:00:06:12\n"
              "004  C        V     W        03:00:00:00 03:00:01:00 10:00:06:12 10:00:07:12\n",
              readFile(folder / "change.edl"));
    EXPECT_EQ(std::vector<std::string>{"change.edl"}, filesInFolder());
}

TEST_F(CmxWriterTest, ReloadLosesTransitionsClipNamesNumbersAndDropModeByDesign)
{
    EventList list(EventList::ChangeKind);
    EventPtr cut = makeEvent("Healed Event 001", "01:00:00:00", "01:00:04:00", "10:00:00:00", "10:00:04:00");
    cut->setEventNumber(42);
    cut->setClipName("CLIP.MOV");
    list.addEvent(cut);
    EventPtr dissolve = makeEvent("B", "02:00:00:00", "02:00:02:00", "10:00:04:00", "10:00:06:00");
    dissolve->setTransitionType(EventBase::Dissolve);
    dissolve->setTransitionDuration(25);
    list.addEvent(dissolve);
    list.addEvent(makeEvent("ABCDEFGHIJ123", "03:00:00:00", "03:00:01:00", "10:00:06:00", "10:00:07:00"));
    ASSERT_EQ(Result::Ok, writeEdlFile(pathOf("change.edl"), list));

    Framerate suggested;
    EventList back = reload("change.edl", suggested);

    // The dissolve line has no duration, so the reader drops it entirely.
    ASSERT_EQ(2u, back.getSize());
    const EventPtr& healed = back.getEvent(0);
    EXPECT_EQ("HEAL-001", healed->getRollName());
    EXPECT_EQ(1, healed->getEventNumber());
    EXPECT_EQ("", healed->getClipName());
    EXPECT_EQ(tc("01:00:00:00"), healed->getSrcIn());
    EXPECT_EQ(tc("10:00:04:00"), healed->getDstOut());
    EXPECT_TRUE(healed->isFlawless());
    const EventPtr& third = back.getEvent(1);
    EXPECT_EQ("ABCD-123", third->getRollName());
    EXPECT_EQ(3, third->getEventNumber());
    EXPECT_EQ(EventBase::Cut, third->getTransitionType());
    // No FCM line: the drop mode comes back unknown.
    EXPECT_EQ(-1, suggested.dropMode);
}

TEST_F(CmxWriterTest, DropFrameTimecodesAreWrittenWithColons)
{
    provider.setFramerate(Framerate(30, true, 1));
    EventList list(EventList::ChangeKind);
    list.addEvent(makeEvent("A", "01:00:00;02", "01:00:01;02", "01:01:00;02", "01:01:01;02"));
    ASSERT_EQ(Result::Ok, writeEdlFile(pathOf("df.edl"), list));
    EXPECT_EQ("TITLE:   df.edl\n"
              "001  A        V     C        01:00:00:02 01:00:01:02 01:01:00:02 01:01:01:02\n",
              readFile(folder / "df.edl"));
}

TEST(CmxWriterRollNames, FollowTheCmxCharacterSetAndKeepTrailingNumbers)
{
    // Long names ending in a number keep the number behind a hyphen.
    EXPECT_EQ("HEAL-001", CmxWriter::formatRollName("Healed Event 001"));
    EXPECT_EQ("ABCD-123", CmxWriter::formatRollName("ABCDEFGHIJ123"));
    EXPECT_EQ("A-456789", CmxWriter::formatRollName("A123456789"));
    // Digits only: simply cut, no hyphen.
    EXPECT_EQ("12345678", CmxWriter::formatRollName("12345678901"));
    // The first four characters always stay; at most seven digits are kept.
    EXPECT_EQ("-3456789", CmxWriter::formatRollName("X1234567890123456789"));
    // Eight characters or fewer are not touched by the number rule.
    EXPECT_EQ("ABCDEF12", CmxWriter::formatRollName("abcdef12"));
    EXPECT_EQ("AB_CD", CmxWriter::formatRollName("ab cd"));
    EXPECT_EQ("UNKNOWN", CmxWriter::formatRollName(""));
    EXPECT_EQ("A.B-C_D", CmxWriter::formatRollName("a.b-c_d"));
    // Both bytes of the UTF-8 "é" become underscores.
    EXPECT_EQ("__1", CmxWriter::formatRollName("\xC3\xA9" "1"));
    EXPECT_EQ("A_B_C", CmxWriter::formatRollName("A/B*C"));
    // A long name without a trailing number is just cut.
    EXPECT_EQ("LONGROLL", CmxWriter::formatRollName("longrollname"));
}

TEST(CmxWriterNumberedPaths, InsertThePartBeforeTheExtension)
{
    EXPECT_EQ(u"/tmp/edl/change_2.edl", CmxWriter::numberedPath(u"/tmp/edl/change.edl", 2));
    EXPECT_EQ(u"C:\\edl\\change_1.edl", CmxWriter::numberedPath(u"C:\\edl\\change.edl", 1));
    EXPECT_EQ(u"change_11.edl", CmxWriter::numberedPath(u"change.edl", 11));
    EXPECT_EQ(u"/a/my.cut_1.edl", CmxWriter::numberedPath(u"/a/my.cut.edl", 1));
    // Without any dot the "extension" is the whole path: kept as it is.
    EXPECT_EQ(u"/a/change_1./a/change", CmxWriter::numberedPath(u"/a/change", 1));
}

TEST_F(CmxWriterTest, SplitsListsAbove999EventsIntoNumberedFiles)
{
    EventList list999 = makeCuts(999);
    ASSERT_EQ(Result::Ok, writeEdlFile(pathOf("one.edl"), list999));
    EXPECT_EQ(std::vector<std::string>{"one.edl"}, filesInFolder());
    EXPECT_EQ(1000u, countLines(readFile(folder / "one.edl")));

    EventList list1000 = makeCuts(1000);
    ASSERT_EQ(Result::Ok, writeEdlFile(pathOf("two.edl"), list1000));
    EXPECT_EQ((std::vector<std::string>{"one.edl", "two_1.edl", "two_2.edl"}), filesInFolder());
    EXPECT_EQ(1000u, countLines(readFile(folder / "two_1.edl")));
    const std::string second = readFile(folder / "two_2.edl");
    // Each file numbers its events from 001 and has its own title.
    EXPECT_EQ("TITLE:   two_2.edl\n"
              "001  R999     V     C        01:16:39:00 01:16:40:00 01:16:39:00 01:16:40:00\n",
              second);

    Framerate suggested;
    EXPECT_EQ(999u, reload("two_1.edl", suggested).getSize());
}

TEST_F(CmxWriterTest, TitleIsCutTo70BytesAndControlCharactersReplaced)
{
    EventList list = makeCuts(1);
    const std::string longName = std::string(80, 'n') + ".edl";
    ASSERT_EQ(Result::Ok, writeEdlFile(pathOf(longName), list));
    const std::string text = readFile(folder / longName);
    EXPECT_EQ("TITLE:   " + std::string(70, 'n') + "\n", text.substr(0, text.find('\n') + 1));

    const std::string oddName = "t\tab.edl";
    ASSERT_EQ(Result::Ok, writeEdlFile(pathOf(oddName), list));
    EXPECT_EQ(0u, readFile(folder / oddName).rfind("TITLE:   t?ab.edl\n", 0));
}

TEST_F(CmxWriterTest, RefusesListsWithoutWritableEventsAndLeavesNoFile)
{
    EventList empty(EventList::ChangeKind);
    EXPECT_EQ(Result::InvalidArgument, writeEdlFile(pathOf("empty.edl"), empty));

    EventList formatErrors(EventList::ChangeKind);
    formatErrors.addEvent(faultyEvent(EventState::BadRollName));
    EXPECT_EQ(Result::InvalidArgument, writeEdlFile(pathOf("bad.edl"), formatErrors));
    EXPECT_TRUE(filesInFolder().empty());
    EXPECT_THROW(formatErrors.saveEdl(pathOf("bad.edl")), Result::Type);

    // A wrong timecode is no format error: the file is written, with the
    // title alone since the event is flawed.
    EventList invalidOnly(EventList::ChangeKind);
    invalidOnly.addEvent(makeEvent("A", "01:00:00:30", "01:00:01:00", "01:00:00:00", "01:00:01:00"));
    ASSERT_TRUE(invalidOnly.getEvent(0)->hasState(EventState::InvalidTimecode));
    EXPECT_EQ(Result::Ok, writeEdlFile(pathOf("title-only.edl"), invalidOnly));
    EXPECT_EQ("TITLE:   title-only.edl\n", readFile(folder / "title-only.edl"));
}

TEST_F(CmxWriterTest, FailuresLeaveNothingBehindAndKeepWhatWasThere)
{
    EventList list = makeCuts(2);
    CmxWriter writer;

    EXPECT_EQ(Result::NotInitialized, writer.write(pathOf("") + u"/", list));
    EXPECT_EQ(Result::FileNotOpened, writer.write(pathOf("missing/change.edl"), list));
    EXPECT_TRUE(filesInFolder().empty());

    // The target is a folder: the text is written aside and cannot be moved
    // into place. The folder stays and no temporary file is left.
    fs::create_directories(folder / "taken.edl" / "inside");
    EXPECT_EQ(Result::FileNotOpened, writer.write(pathOf("taken.edl"), list));
    EXPECT_EQ(std::vector<std::string>{"taken.edl"}, filesInFolder());
    EXPECT_TRUE(fs::is_directory(folder / "taken.edl" / "inside"));

    // An existing file is replaced as a whole.
    {
        std::ofstream old(folder / "change.edl");
        old << std::string(5000, 'x');
    }
    list.saveEdl(pathOf("change.edl"));
    EXPECT_EQ(3u, countLines(readFile(folder / "change.edl")));
    EXPECT_EQ(std::string::npos, readFile(folder / "change.edl").find('x'));
    fs::remove(folder / "change.edl");
    fs::remove_all(folder / "taken.edl");

    // Parts already written stay when a later part fails.
    EventList parts = makeCuts(999);
    parts.addEvent(faultyEvent(EventState::NotVideoEvent));
    EXPECT_EQ(Result::InvalidArgument, writer.write(pathOf("split.edl"), parts));
    EXPECT_EQ(std::vector<std::string>{"split_1.edl"}, filesInFolder());
}

TEST_F(CmxWriterTest, SavesThroughLinksKeepModesAndRefuseReadOnlyFilesAndDevices)
{
    EventList list = makeCuts(2);
    CmxWriter writer;
    CmxWriter::Report report;

    // Through a link: the target gets the text, the link stays a link, and
    // the target keeps its mode.
    fs::create_directory(folder / "real");
    {
        std::ofstream old(folder / "real" / "change.edl");
        old << "old";
    }
    ::chmod((folder / "real" / "change.edl").c_str(), 0640);
    fs::create_symlink(folder / "real" / "change.edl", folder / "link.edl");
    ASSERT_EQ(Result::Ok, writer.write(pathOf("link.edl"), list, report)) << report.reason;
    EXPECT_TRUE(fs::is_symlink(folder / "link.edl"));
    EXPECT_EQ(3u, countLines(readFile(folder / "real" / "change.edl")));
    EXPECT_EQ(fs::perms(0640), fs::status(folder / "real" / "change.edl").permissions() & fs::perms::mask);
    EXPECT_EQ(std::vector<std::u16string>{pathOf("link.edl")}, report.written);

    // A read-only file is refused even for root, with a reason naming it.
    {
        std::ofstream old(folder / "locked.edl");
        old << "keep";
    }
    ::chmod((folder / "locked.edl").c_str(), 0444);
    EXPECT_EQ(Result::FileNotOpened, writer.write(pathOf("locked.edl"), list, report));
    EXPECT_EQ("keep", readFile(folder / "locked.edl"));
    EXPECT_EQ(pathOf("locked.edl"), report.failedPath);
    EXPECT_EQ((folder / "locked.edl").string() + ": is read-only (mode 444); it is left as it is", report.reason);
    EXPECT_TRUE(report.written.empty());

    // A device stays a device.
    EXPECT_EQ(Result::FileNotOpened, writer.write(u"/dev/null", list, report));
    struct stat status {};
    ASSERT_EQ(0, ::stat("/dev/null", &status));
    EXPECT_TRUE(S_ISCHR(status.st_mode));
}

TEST_F(CmxWriterTest, RefusesToReplaceAnInputFileHoweverItIsNamed)
{
    EventList list = makeCuts(2);
    {
        std::ofstream input(folder / "old.edl");
        input << "TITLE: old\n";
    }
    fs::create_directory(folder / "sub");
    fs::create_symlink(folder / "old.edl", folder / "alias.edl");
    const std::vector<std::u16string> inputs = {pathOf("sub/../old.edl")};
    CmxWriter writer;
    CmxWriter::Report report;
    for (const char* name : {"old.edl", "alias.edl"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(Result::InvalidArgument, writer.write(pathOf(name), list, report, inputs));
        EXPECT_EQ(pathOf(name), report.failedPath);
        EXPECT_NE(std::string::npos, report.reason.find("is one of the input files")) << report.reason;
        EXPECT_EQ("TITLE: old\n", readFile(folder / "old.edl"));
    }

    // An input among the numbered parts stops the run before the first part.
    fs::rename(folder / "old.edl", folder / "split_2.edl");
    EXPECT_EQ(Result::InvalidArgument, writer.write(pathOf("split.edl"), makeCuts(1000), report, {pathOf("split_2.edl")}));
    EXPECT_EQ(pathOf("split_2.edl"), report.failedPath);
    EXPECT_FALSE(fs::exists(folder / "split_1.edl"));
    EXPECT_TRUE(report.written.empty());

    // A refused later part leaves the earlier ones unwritten too.
    ::chmod((folder / "split_2.edl").c_str(), 0444);
    EXPECT_EQ(Result::FileNotOpened, writer.write(pathOf("split.edl"), makeCuts(1000), report));
    EXPECT_FALSE(fs::exists(folder / "split_1.edl"));
    EXPECT_EQ("TITLE: old\n", readFile(folder / "split_2.edl"));
}

TEST_F(CmxWriterTest, ReportsOnlyFilesThisRunWroteAndRemovesPartsOfALongerRun)
{
    CmxWriter writer;
    CmxWriter::Report report;
    ASSERT_EQ(Result::Ok, writer.write(pathOf("film.edl"), makeCuts(2500), report));
    EXPECT_EQ((std::vector<std::u16string>{pathOf("film_1.edl"), pathOf("film_2.edl"), pathOf("film_3.edl")}),
              report.written);
    EXPECT_EQ(CmxWriter::outputPaths(pathOf("film.edl"), 2500), report.written);

    // A shorter run takes away the third part of the longer one.
    ASSERT_EQ(Result::Ok, writer.write(pathOf("film.edl"), makeCuts(1500), report));
    EXPECT_EQ((std::vector<std::u16string>{pathOf("film_1.edl"), pathOf("film_2.edl")}), report.written);
    EXPECT_EQ(std::vector<std::u16string>{pathOf("film_3.edl")}, report.removed);
    EXPECT_EQ((std::vector<std::string>{"film_1.edl", "film_2.edl"}), filesInFolder());

    // One file now: the parts go too, but a file of the user's that only
    // shares the name stays, and so does an input.
    {
        std::ofstream mine(folder / "film_3.edl");
        mine << "TITLE:   my notes\n";
    }
    ASSERT_EQ(Result::Ok, writer.write(pathOf("film.edl"), makeCuts(3), report, {pathOf("film_2.edl")}));
    EXPECT_EQ(std::vector<std::u16string>{pathOf("film.edl")}, report.written);
    EXPECT_EQ(std::vector<std::u16string>{pathOf("film_1.edl")}, report.removed);
    EXPECT_EQ((std::vector<std::u16string>{pathOf("film_2.edl"), pathOf("film_3.edl")}), report.keptStale);
    ASSERT_EQ(2u, report.keptStaleReasons.size());
    EXPECT_NE(std::string::npos, report.keptStaleReasons[0].find("film_2.edl: is one of the input files"));
    EXPECT_NE(std::string::npos, report.keptStaleReasons[1].find("film_3.edl: was not written by Montala"));
    fs::remove(folder / "film_2.edl");
    fs::remove(folder / "film_3.edl");

    // A failure in the second part: the old second part stays but is not
    // reported as written, and nothing stale is removed.
    ASSERT_EQ(Result::Ok, writer.write(pathOf("film.edl"), makeCuts(2500), report));
    const std::string oldSecond = readFile(folder / "film_2.edl");
    EventList failing = makeCuts(999);
    failing.addEvent(faultyEvent(EventState::NotVideoEvent));
    EXPECT_EQ(Result::InvalidArgument, writer.write(pathOf("film.edl"), failing, report));
    EXPECT_EQ(std::vector<std::u16string>{pathOf("film_1.edl")}, report.written);
    EXPECT_TRUE(report.removed.empty());
    EXPECT_EQ(oldSecond, readFile(folder / "film_2.edl"));
    EXPECT_TRUE(fs::exists(folder / "film_3.edl"));
}

} // namespace
} // namespace montala::core::fileio
