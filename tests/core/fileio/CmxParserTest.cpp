#include "support/ModelFixture.h"

#include "core/events/EventList.h"
#include "core/fileio/CmxParser.h"
#include "util/Result.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

using namespace montala::core;
using montala::core::fileio::CmxParser;
using montala::test::ModelFixture;
using montala::test::tc;
using montala::util::Result;

namespace {

class CmxParserTest : public ModelFixture {
protected:
    // Parses EDL text as if it were the file "reel.edl".
    Result::Type parse(const std::string& text, bool acceptAudio = false)
    {
        std::istringstream stream(text);
        return parser.parseStream(stream, "reel.edl", list, suggested, acceptAudio);
    }

    const EventBase& event(size_t index) const { return *list.getEvent(index); }

    CmxParser parser;
    EventList list{EventList::ChangeKind};
    Framerate suggested;
};

const char* const dissolvePair =
    "TITLE: DISSOLVES\n"
    "FCM: NON-DROP FRAME\n"
    "001  A001     V     C        10:00:00:00 10:00:04:00 01:00:00:00 01:00:04:00\n"
    "* FROM CLIP NAME:  first.mov\n"
    "002  A001     V     C        10:00:04:00 10:00:04:00 01:00:04:00 01:00:04:00\n"
    "002  B001     V     D    025 20:00:00:00 20:00:05:00 01:00:04:00 01:00:09:00\n"
    "* EFFECT NAME: CROSS DISSOLVE\n"
    "* FROM CLIP NAME:  outgoing.mov\n"
    "* TO CLIP NAME:  incoming.mov\n"
    "003  B001     V     C        20:00:05:00 20:00:06:24 01:00:09:00 01:00:10:24\n";

} // namespace

TEST_F(CmxParserTest, DissolvePairBecomesTwoEventsWithTheirClipNames)
{
    ASSERT_EQ(parse(dissolvePair), Result::Ok);
    ASSERT_EQ(list.getSize(), 4u);
    EXPECT_EQ(event(0).getClipName(), "first.mov");
    EXPECT_EQ(event(1).getClipName(), "outgoing.mov");
    EXPECT_EQ(event(1).getTransitionType(), EventBase::Cut);
    EXPECT_EQ(event(2).getClipName(), "incoming.mov");
    EXPECT_EQ(event(2).getTransitionType(), EventBase::Dissolve);
    EXPECT_EQ(event(2).getTransitionDuration(), 25);
    EXPECT_EQ(event(2).getEventNumber(), 2);
    EXPECT_EQ(event(2).getSrcIn(), tc("20:00:00:00"));
    EXPECT_EQ(event(2).getDstOut(), tc("01:00:09:00"));
    // Each line of the pair takes its own clip's comment; a comment of the
    // pair that is neither FROM nor TO is dropped.
    EXPECT_EQ(event(0).getEdlText(),
              "001  A001     V     C        10:00:00:00 10:00:04:00 01:00:00:00 01:00:04:00\n"
              "* FROM CLIP NAME:  first.mov");
    EXPECT_EQ(event(1).getEdlText(),
              "002  A001     V     C        10:00:04:00 10:00:04:00 01:00:04:00 01:00:04:00\n"
              "* FROM CLIP NAME:  outgoing.mov");
    EXPECT_EQ(event(2).getEdlText(),
              "002  B001     V     D    025 20:00:00:00 20:00:05:00 01:00:04:00 01:00:09:00\n"
              "* TO CLIP NAME:  incoming.mov");
    EXPECT_EQ(event(3).getEdlText(),
              "003  B001     V     C        20:00:05:00 20:00:06:24 01:00:09:00 01:00:10:24");
    EXPECT_EQ(event(3).getEdlFile(), "reel.edl");
    for (size_t i = 0; i < 4; ++i)
        EXPECT_TRUE(event(i).isFlawless()) << i;
    EXPECT_EQ(suggested, Framerate(25, 0));
}

TEST_F(CmxParserTest, LineEndsOfEveryKindReadAlike)
{
    std::string crLf, crOnly;
    for (char c : std::string(dissolvePair)) {
        crLf += c == '\n' ? std::string("\r\n") : std::string(1, c);
        crOnly += c == '\n' ? '\r' : c;
    }
    for (const std::string& text : {crLf, crOnly}) {
        list.clear();
        ASSERT_EQ(parse(text), Result::Ok);
        ASSERT_EQ(list.getSize(), 4u);
        EXPECT_EQ(event(2).getClipName(), "incoming.mov");
        EXPECT_EQ(event(3).getDstOut(), tc("01:00:10:24"));
        EXPECT_EQ(event(3).getEdlText().find('\r'), std::string::npos);
    }
    // The last line needs no line end.
    list.clear();
    ASSERT_EQ(parse("001  A001 V C 10:00:00:00 10:00:01:00 01:00:00:00 01:00:01:00\n"
                    "* FROM CLIP NAME: last.mov"),
              Result::Ok);
    EXPECT_EQ(event(0).getClipName(), "last.mov");
}

TEST_F(CmxParserTest, CommentsBeforeTheFirstEventAndUnknownLinesAreIgnored)
{
    ASSERT_EQ(parse("TITLE: X\n* NOTE: cut by the editor\n* FROM CLIP NAME: stray.mov\n"
                    "M2   A001       050.0                10:00:00:00\n"
                    "AUD  3    4\n"
                    "001  A001 V C 10:00:00:00 10:00:01:00 01:00:00:00 01:00:01:00\n"
                    "M2   A001       050.0                10:00:00:00\n"),
              Result::Ok);
    ASSERT_EQ(list.getSize(), 1u);
    EXPECT_EQ(event(0).getClipName(), "");
    EXPECT_DOUBLE_EQ(event(0).getMotionSpeed(), 1.0) << "M2 lines are not read: speed comes from the ranges";
}

TEST_F(CmxParserTest, ShortLinesAreDroppedWithTheirComments)
{
    ASSERT_EQ(parse("001  AX V\n* FROM CLIP NAME: lost.mov\n"
                    "1 AX V C 01:00:00:00 01:00:01:00 01:00:00:00\n"
                    "2 AX V D 01:00:00:00 01:00:01:00 01:00:00:00 01:00:01:00\n"
                    "X1 AX V C 01:00:00:00 01:00:01:00 01:00:00:00 01:00:01:00\n"),
              Result::Ok);
    // The dissolve line misses a piece, since its duration is not a number
    // and the timecodes start one piece later.
    EXPECT_EQ(list.getSize(), 0u);
}

TEST_F(CmxParserTest, BadFieldsKeepTheEventWithItsState)
{
    ASSERT_EQ(parse("1X A+B A X 01:00:00:00 01:00:01:00 01:00:00:00 01:00:01:00\n"
                    "2 AX V D 0X5 01:00:00:00 100:00:01:00 01:00:00:00 01:00:01:00\n"
                    "3 AX NONE c 01:00:00:00 01:00:01:00 1:0:0:0 01:00:01:00\n"
                    "99999999999999999999 AX V C 01:00:00:00 01:00:01:00 01:00:00:00 01:00:01:00\n"),
              Result::Ok);
    ASSERT_EQ(list.getSize(), 4u);
    EXPECT_EQ(event(3).getStates(), std::set<EventState>{EventState::BadEventNumber}) << "a huge number, no crash";
    EXPECT_EQ(event(0).getStates(), (std::set<EventState>{EventState::BadEventNumber, EventState::BadRollName,
                                                         EventState::NotVideoEvent,
                                                         EventState::UnsupportedTransition}));
    EXPECT_EQ(event(0).getEventNumber(), 0);
    EXPECT_EQ(event(0).getRollName(), "");
    EXPECT_EQ(event(0).getDstOut(), tc("01:00:01:00"));
    // The unread SRC OUT stays 00:00:00:00, before SRC IN: a range fault too.
    EXPECT_EQ(event(1).getStates(), (std::set<EventState>{EventState::BadTransitionDuration, EventState::BadSrcOut,
                                                         EventState::UninitializedTimecode,
                                                         EventState::InvalidTimecodeRange}));
    EXPECT_FALSE(event(1).getSrcOut().isInitialized());
    EXPECT_EQ(event(2).getStates(),
              (std::set<EventState>{EventState::NotVideoEvent, EventState::UnsupportedTransition}));
    EXPECT_EQ(event(2).getDstIn(), tc("01:00:00:00"));
}

TEST_F(CmxParserTest, FieldsAreFoundWhereverTheirEdgesFallInALongLine)
{
    // Runs of blanks of every length move each edge across the places
    // where the line is looked at in pieces (16 and 64 bytes); a tab sticks
    // to its field and is trimmed off.
    for (size_t blanks = 1; blanks <= 70; ++blanks) {
        SCOPED_TRACE(blanks);
        const std::string gap(blanks, ' ');
        list.clear();
        ASSERT_EQ(parse("007" + gap + "A007\t" + gap + "V" + gap + "D" + gap + "012" + gap + "10:00:00:00" + gap +
                        "10:00:01:12\t" + gap + "01:00:00:00" + gap + "01:00:01:12" + gap + "\n"),
                  Result::Ok);
        ASSERT_EQ(list.getSize(), 1u);
        EXPECT_EQ(event(0).getEventNumber(), 7);
        EXPECT_EQ(event(0).getRollName(), "A007");
        EXPECT_EQ(event(0).getTransitionDuration(), 12);
        EXPECT_EQ(event(0).getSrcOut(), tc("10:00:01:12"));
        EXPECT_EQ(event(0).getDstOut(), tc("01:00:01:12"));
        EXPECT_TRUE(event(0).isFlawless());
    }
}

TEST_F(CmxParserTest, TimecodesAreReadOnlyInTheirPattern)
{
    struct Case {
        const char* text;
        const char* read; // nullptr: SRC IN cannot be read
    };
    const Case cases[] = {
        {"10:20:30:12", "10:20:30:12"}, {"10:20:30;12", "10:20:30:12"}, {"1:2:3:4", "01:02:03:04"},
        {"10;20:30:12", nullptr},       {"10:20;30:12", nullptr},       {"1a:20:30:12", nullptr},
        {"10:2/:30:12", nullptr},       {"10:20:3::12", nullptr},       {"10:20:30:1:", nullptr},
        {"10:20:30:1;", nullptr},       {"10:20:30<12", nullptr},       {"100:20:30:1", nullptr},
        {"10:20:30:123", nullptr},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        list.clear();
        ASSERT_EQ(parse(std::string("1 AX V C ") + c.text + " 10:20:31:00 01:00:00:00 01:00:01:00\n"), Result::Ok);
        ASSERT_EQ(list.getSize(), 1u);
        EXPECT_EQ(event(0).hasState(EventState::BadSrcIn), c.read == nullptr);
        if (c.read != nullptr) {
            EXPECT_EQ(event(0).getSrcIn(), tc(c.read));
        }
    }
}

TEST_F(CmxParserTest, ChannelCheckWidensForAudioOnlyWhenAsked)
{
    const std::string lines = "1 AX A C 01:00:00:00 01:00:01:00 01:00:00:00 01:00:01:00\n"
                              "2 AX AA/V C 01:00:00:00 01:00:01:00 01:00:01:00 01:00:02:00\n"
                              "3 AX B C 01:00:00:00 01:00:01:00 01:00:02:00 01:00:03:00\n"
                              "4 AX none C 01:00:00:00 01:00:01:00 01:00:03:00 01:00:04:00\n";
    ASSERT_EQ(parse(lines), Result::Ok);
    EXPECT_TRUE(event(0).hasState(EventState::NotVideoEvent));
    EXPECT_TRUE(event(1).isFlawless());
    EXPECT_TRUE(event(2).isFlawless());
    EXPECT_TRUE(event(3).hasState(EventState::NotVideoEvent));
    list.clear();
    ASSERT_EQ(parse(lines, true), Result::Ok);
    EXPECT_TRUE(event(0).isFlawless());
    EXPECT_TRUE(event(3).hasState(EventState::NotVideoEvent));
}

TEST_F(CmxParserTest, SuggestedRateIsALowerBoundFromTheHighestFrames)
{
    const auto rateOf = [this](const std::string& frames) {
        list.clear();
        parse("1 AX V C 01:00:00:" + frames + " 01:00:01:00 01:00:00:00 01:00:01:00\n");
        return suggested;
    };
    EXPECT_EQ(rateOf("24").getFps(), 25);
    EXPECT_EQ(rateOf("23").getFps(), 24);
    EXPECT_EQ(rateOf("29").getFps(), 30);
    EXPECT_EQ(rateOf("30").getFps(), 60);
    EXPECT_EQ(rateOf("24").getDropMode(), -1) << "no FCM line leaves the drop mode open";
}

TEST_F(CmxParserTest, OnlyTheFcmLineSaysDropFrame)
{
    // Without an event there are no frames to suggest a rate from.
    ASSERT_EQ(parse("TITLE: EMPTY\nFCM: NON-DROP FRAME\n"), Result::Ok);
    EXPECT_EQ(list.getSize(), 0u);
    EXPECT_TRUE(suggested.isUndefined());
    // ";" as separator does not make a file drop frame.
    ASSERT_EQ(parse("1 AX V C 01:00:00;10 01:00:01;00 01:00:00;00 01:00:01;00\n"), Result::Ok);
    EXPECT_EQ(event(0).getSrcIn(), tc("01:00:00:10"));
    EXPECT_EQ(suggested.getDropMode(), -1);
    list.clear();
    // "NON-DROP FRAME" contains "DROP FRAME": it is looked for first; the last FCM line wins.
    ASSERT_EQ(parse("FCM: DROP FRAME\nFCM: NON-DROP FRAME\n1 AX V C 01:00:00:24 01:00:01:00 01:00:00:00 01:00:01:00\n"),
              Result::Ok);
    EXPECT_EQ(suggested, Framerate(25, 0));
    list.clear();
    ASSERT_EQ(parse("FCM: NON-DROP FRAME\nFCM: DROP FRAME\n"), Result::Ok);
    EXPECT_EQ(suggested, Framerate(30, 1));
    list.clear();
    ASSERT_EQ(parse("fcm: drop frame\n"), Result::Ok);
    EXPECT_EQ(suggested.getDropMode(), -1);
}

TEST_F(CmxParserTest, DropFrameEventsAcrossMinuteBoundaries)
{
    setRate(30, 1, true);
    ASSERT_EQ(parse("FCM: DROP FRAME\n"
                    "001  A001 V C 14:00:59;20 14:01:00;10 01:00:59;20 01:01:00;10\n"
                    "002  A001 V C 14:09:59;28 14:10:00;02 01:09:59;28 01:10:00;02\n"
                    "003  A001 V C 14:01:00;00 14:01:00;10 01:01:00;02 01:01:00;12\n"),
              Result::Ok);
    ASSERT_EQ(list.getSize(), 3u);
    // 20 to 29 of second 59 are 10 frames, then 02 to 09 of the next minute are 8.
    EXPECT_TRUE(event(0).isFlawless());
    EXPECT_EQ(event(0).getDstOut().toFrames() - event(0).getDstIn().toFrames(), 18);
    // At the tenth minute nothing is dropped.
    EXPECT_TRUE(event(1).isFlawless());
    EXPECT_EQ(event(1).getDstOut().toFrames() - event(1).getDstIn().toFrames(), 4);
    // Frame 00 of minute 1 does not exist at drop frame.
    EXPECT_TRUE(event(2).hasState(EventState::InvalidTimecode));
    EXPECT_EQ(suggested, Framerate(30, 1));
}

TEST_F(CmxParserTest, CutKeepsTheLastClipName)
{
    ASSERT_EQ(parse("1 AX V C 01:00:00:00 01:00:01:00 01:00:00:00 01:00:01:00\n"
                    "* FROM CLIP NAME: a.mov\n* LOC: 01:00:00:12 RED marker\n* TO CLIP NAME: b.mov\n"
                    "* FROM CLIP NAME:   \n"),
              Result::Ok);
    EXPECT_EQ(event(0).getClipName(), "b.mov");
    // A NAME: with nothing behind it is not recorded at all.
    EXPECT_EQ(event(0).getEdlText(), "1 AX V C 01:00:00:00 01:00:01:00 01:00:00:00 01:00:01:00\n"
                                     "* FROM CLIP NAME: a.mov\n* LOC: 01:00:00:12 RED marker\n"
                                     "* TO CLIP NAME: b.mov");
}

TEST_F(CmxParserTest, FilesAreReadByPathAndAMissingFileFails)
{
    const std::string path = ::testing::TempDir() + "montala_parser_test.edl";
    {
        std::ofstream file(path, std::ios::binary);
        file << dissolvePair;
    }
    Framerate rate;
    EventList target(EventList::OldKind);
    target.addEvent(std::make_shared<EventBase>());
    ASSERT_EQ(fileio::parseEdlFile(converter.fromUtf8(path), target, rate, false), Result::Ok);
    EXPECT_EQ(target.getSize(), 4u);
    EXPECT_EQ(target.getListKind(), EventList::OldKind);
    EXPECT_EQ(target.getEvent(0)->getEdlFile(), "montala_parser_test.edl");
    std::remove(path.c_str());

    rate = Framerate(24, 0);
    EXPECT_EQ(fileio::parseEdlFile(converter.fromUtf8(path), target, rate, false), Result::FileNotOpened);
    EXPECT_EQ(target.getSize(), 0u) << "the list takes the empty result";
    EXPECT_EQ(rate, Framerate(24, 0)) << "the rate is written only on success";
}

TEST_F(CmxParserTest, LoadEdlAppendsAndRenamesBRollsPerFile)
{
    const std::string first = ::testing::TempDir() + "montala_load_a.edl";
    const std::string second = ::testing::TempDir() + "montala_load_b.edl";
    {
        std::ofstream(first, std::ios::binary) << "1 A001 V C 01:00:00:00 01:00:01:00 01:00:00:00 01:00:01:00\n"
                                                  "2 A001B V C 01:00:00:00 01:00:01:00 01:00:01:00 01:00:02:00\n";
        std::ofstream(second, std::ios::binary) << "1 A001B V C 01:00:00:00 01:00:01:00 01:00:02:00 01:00:03:00\n";
    }
    EventList target(EventList::NewKind);
    Framerate rate;
    target.loadEdl(converter.fromUtf8(first), false, rate, true, false);
    target.loadEdl(converter.fromUtf8(second), true, rate, true, false);
    ASSERT_EQ(target.getSize(), 3u);
    EXPECT_EQ(target.getEvent(1)->getRollName(), "A001");
    EXPECT_EQ(target.getEvent(2)->getRollName(), "A001B") << "each file is renamed by itself";
    EXPECT_EQ(montala::test::thrownCode([&] { target.loadEdl(u"/nonexistent/montala.edl", true, rate, true, false); }),
              Result::FileNotOpened);
    EXPECT_EQ(target.getSize(), 3u) << "a failed append leaves the list as it was";
    std::remove(first.c_str());
    std::remove(second.c_str());
}

TEST_F(CmxParserTest, LinesDroppedOrChangedAreReportedWithTheirNumbers)
{
    using fileio::LineIssue;
    using fileio::LineNote;
    ASSERT_EQ(parse("TITLE: HOSTILE\n"
                    "-1 AX V C 01:00:00:00 01:00:01:00 01:00:00:00 01:00:01:00\n"
                    "-2147483649 AX V C 01:00:00:00 01:00:01:00 01:00:00:00 01:00:01:00\n"
                    "2147483648 AX V C 01:00:00:00 01:00:01:00 01:00:00:00 01:00:01:00\n"
                    "2 AX V C 01:00:00:00 01:00:01:00\n"
                    "3 AX V C 01:00:00:00 01:00:01:00 01:00:01:00 01:00:02:00\n"
                    + std::string("* FROM CLIP NAME: A\0B.mov\0\0", 27) + "\n"
                    "- not an event, no number behind the sign\n"),
              Result::Ok);
    // The forgiving contract holds: a sign makes no event line, a number
    // too large keeps its event with a state, a short line goes.
    ASSERT_EQ(list.getSize(), 2u);
    EXPECT_TRUE(event(0).hasState(EventState::BadEventNumber));
    EXPECT_EQ(event(0).getEventNumber(), 0);
    EXPECT_EQ(event(1).getEventNumber(), 3);
    // The name is whole: a NUL would cut it wherever it is printed.
    EXPECT_EQ(event(1).getClipName(), "A B.mov");
    EXPECT_EQ(parser.getReport().lines,
              (std::vector<LineNote>{{2, LineIssue::SignedEventNumber},
                                     {3, LineIssue::SignedEventNumber},
                                     {4, LineIssue::EventNumberTooLarge},
                                     {5, LineIssue::TooFewFields},
                                     {7, LineIssue::NulByte}}));
    EXPECT_EQ(parser.getReport().count(fileio::LineAction::Dropped), 3u);
    EXPECT_EQ(parser.getReport().count(fileio::LineAction::Changed), 2u);

    // A second read starts a new report; CR-only files count their lines too.
    list.clear();
    ASSERT_EQ(parse("TITLE: X\r\r+7 AX V C 01:00:00:00 01:00:01:00 01:00:00:00 01:00:01:00\r"), Result::Ok);
    EXPECT_EQ(parser.getReport().lines, (std::vector<LineNote>{{3, LineIssue::SignedEventNumber}}));
}

TEST_F(CmxParserTest, LinesThatAreNotUtf8AreReadAsWindows1252)
{
    // "Áú±ê422.mov" as an editing system wrote it in Windows-1252, then a
    // name that is already UTF-8, which stays as it is.
    ASSERT_EQ(parse("001  AX V C 01:00:00:00 01:00:01:00 01:00:00:00 01:00:01:00\n"
                    "* FROM CLIP NAME: \xC1\xFA\xB1\xEA" "422.mov\n"
                    "002  AX V C 01:00:01:00 01:00:02:00 01:00:01:00 01:00:02:00\n"
                    "* FROM CLIP NAME: \xC3\xA9t\xC3\xA9 \xE2\x82\xAC.mov\n"
                    "003  AX V C 01:00:02:00 01:00:03:00 01:00:02:00 01:00:03:00\n"
                    "* FROM CLIP NAME: \x80\x81\x9F\xFF\n"),
              Result::Ok);
    ASSERT_EQ(list.getSize(), 3u);
    EXPECT_EQ(event(0).getClipName(), "\xC3\x81\xC3\xBA\xC2\xB1\xC3\xAA" "422.mov");
    EXPECT_EQ(event(1).getClipName(), "\xC3\xA9t\xC3\xA9 \xE2\x82\xAC.mov");
    // The euro sign, an undefined byte kept as its control character,
    // Ÿ and ÿ.
    EXPECT_EQ(event(2).getClipName(), "\xE2\x82\xAC\xC2\x81\xC5\xB8\xC3\xBF");
    EXPECT_EQ(event(0).getEdlText().substr(event(0).getEdlText().find('\n') + 1),
              "* FROM CLIP NAME: \xC3\x81\xC3\xBA\xC2\xB1\xC3\xAA" "422.mov");
    EXPECT_EQ(parser.getReport().lines, (std::vector<fileio::LineNote>{{2, fileio::LineIssue::Windows1252},
                                                                      {6, fileio::LineIssue::Windows1252}}));
}

TEST_F(CmxParserTest, AStreamReadInPiecesGivesWhatTheWholeTextGives)
{
    // Far more than one piece of the reader's, with lines across the
    // joins, dissolve pairs and a comment longer than a piece.
    std::string text = "TITLE: LONG\n";
    char line[160];
    for (int i = 1; i <= 3000; ++i) {
        const int frame = i % 25;
        std::snprintf(line, sizeof line, "%03d  A%03d     V     C        10:00:%02d:%02d 10:00:%02d:%02d 01:%02d:%02d:00 01:%02d:%02d:01\n",
                      i % 1000, i % 400, i % 60, frame, i % 60, frame, i / 60 % 60, i % 60, i / 60 % 60, i % 60);
        text += line;
        text += "* FROM CLIP NAME:  clip" + std::to_string(i) + ".mov\n";
        if (i % 7 == 0) {
            std::snprintf(line, sizeof line, "%03d  B%03d     V     D    010 20:00:00:00 20:00:01:00 01:%02d:%02d:00 01:%02d:%02d:01\n",
                          i % 1000, i % 400, i / 60 % 60, i % 60, i / 60 % 60, i % 60);
            text += line;
            text += "* TO CLIP NAME:  in" + std::to_string(i) + ".mov\n";
        }
        if (i == 1500)
            text += "* " + std::string(70000, 'x') + "\n";
    }
    std::string crLf;
    for (char c : text)
        crLf += c == '\n' ? std::string("\r\n") : std::string(1, c);
    for (const std::string& edl : {text, crLf}) {
        CmxParser whole;
        whole.readText(edl, "reel.edl", false);
        EventList expected(EventList::ChangeKind);
        whole.build(expected);
        list.clear();
        ASSERT_EQ(parse(edl), Result::Ok);
        ASSERT_EQ(list.getSize(), expected.getSize());
        ASSERT_EQ(list.getSize(), 3000u + 3000u / 7);
        for (size_t i = 0; i < list.getSize(); ++i) {
            const EventBase& wanted = *expected.getEvent(i);
            ASSERT_EQ(event(i).getEventNumber(), wanted.getEventNumber()) << i;
            ASSERT_EQ(event(i).getClipName(), wanted.getClipName()) << i;
            ASSERT_EQ(event(i).getEdlText(), wanted.getEdlText()) << i;
            ASSERT_EQ(event(i).getDstIn(), wanted.getDstIn()) << i;
        }
        EXPECT_EQ(parser.getReport().eventLines, whole.getReport().eventLines);
    }
    EXPECT_EQ(event(1499).getClipName(), "clip1313.mov");
}

TEST_F(CmxParserTest, ReadingThenBuildingJudgesAtTheRateSetBetween)
{
    // Frames 27 do not exist at 25 fps; frame 00 of minute 1 not at drop
    // frame; and a reversed range. Read at one rate, built at another, the
    // events must be those a parse at the second rate gives.
    const std::string text = "001  A V C 01:00:00:00 01:00:00:27 01:00:00:00 01:00:00:27\n"
                             "002  A V C 01:01:00;00 01:01:00;10 01:00:00:00 01:00:00:10\n"
                             "003  A V C 01:00:02:00 01:00:01:00 01:00:00:27 01:00:10:00\n"
                             "004  A V C 01:00:00:00 01:00:00:10 01:00:00:00 99:00:00:00\n";
    for (const Framerate& rate : {Framerate(25, 0), Framerate(30, true, 1), Framerate(30, 0)}) {
        SCOPED_TRACE(rate.getFps() * 10 + rate.getDropMode());
        provider.setFramerate(rate);
        EventList direct(EventList::ChangeKind);
        std::istringstream stream(text);
        Framerate suggestedRate;
        ASSERT_EQ(CmxParser().parseStream(stream, "a.edl", direct, suggestedRate, false), Result::Ok);

        provider.setFramerate(Framerate(24, 0));
        CmxParser twoSteps;
        std::istringstream again(text);
        ASSERT_EQ(twoSteps.readStream(again, "a.edl", false), Result::Ok);
        provider.setFramerate(rate);
        EventList built(EventList::ChangeKind);
        twoSteps.build(built);
        twoSteps.build(built);
        ASSERT_EQ(built.getSize(), direct.getSize()) << "a second build adds nothing";
        for (size_t i = 0; i < direct.getSize(); ++i) {
            EXPECT_EQ(built.getEvent(i)->getStates(), direct.getEvent(i)->getStates()) << i;
            EXPECT_EQ(built.getEvent(i)->getMotionSpeed(), direct.getEvent(i)->getMotionSpeed()) << i;
            EXPECT_EQ(built.getEvent(i)->getEdlText(), direct.getEvent(i)->getEdlText()) << i;
        }
        EXPECT_EQ(twoSteps.getSuggestedFramerate(), suggestedRate);
    }
}

TEST_F(CmxParserTest, FilesThatCannotBeReadSayWhy)
{
    using fileio::OpenFailure;
    const auto failureOf = [this](const std::string& path) {
        EXPECT_EQ(parser.read(converter.fromUtf8(path), false), Result::FileNotOpened) << path;
        return parser.getReport().openFailure;
    };
    const std::string folder = ::testing::TempDir() + "montala_parser_folder.edl";
    std::remove(folder.c_str());
    ASSERT_EQ(::mkdir(folder.c_str(), 0755), 0);
    EXPECT_EQ(failureOf(folder), OpenFailure::Directory) << "a folder is no empty EDL";
    EXPECT_EQ(failureOf(folder + "/missing.edl"), OpenFailure::Missing);
    EXPECT_EQ(failureOf("/dev/null"), OpenFailure::NotRegularFile);

    const std::string locked = folder + "/locked.edl";
    std::ofstream(locked) << "TITLE: X\n";
    ::chmod(locked.c_str(), 0);
    // Root reads it all the same; then there is nothing to refuse.
    if (::access(locked.c_str(), R_OK) != 0) {
        EXPECT_EQ(failureOf(locked), OpenFailure::PermissionDenied);
    }
    std::remove(locked.c_str());
    ::rmdir(folder.c_str());

    EventList target(EventList::OldKind);
    Framerate rate;
    fileio::ParseReport report;
    EXPECT_THROW(target.loadEdl(u"/", false, rate, true, false, &report), Result::Type);
    EXPECT_EQ(report.openFailure, OpenFailure::Directory);
}
