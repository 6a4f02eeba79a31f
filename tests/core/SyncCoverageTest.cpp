// Property test of sync: a re-cut made of trims, deletes, inserts, moves,
// splits and extensions of an Old cut must come out of generation so that
// every frame of the new record timeline whose picture was in the Old cut
// is covered by exactly one Change event, and that event maps it to the old
// record frame that showed the same source frame. Nothing else is covered.

#include "support/ModelFixture.h"

#include "core/generation/ChangeEdlGenerator.h"
#include "core/events/EventList.h"
#include "core/generation/HealProcessing.h"
#include "core/model/Settings.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

namespace montala::core {
namespace {

struct Shot {
    std::string roll;
    int srcIn = 0;  // frames
    int length = 0; // frames
};

struct Placed {
    Shot shot;
    int recIn = 0;
};

class SyncCoverageTest : public test::ModelFixture, public ::testing::WithParamInterface<int> {
protected:
    SyncCoverageTest()
    {
        if (GetParam() == 30)
            setRate(30, 1); // 29.97 drop frame
    }

    Timecode at(int frames) const { return Timecode(frames); }

    // An Old cut whose sources never repeat: each roll's takes are laid
    // out one after another with unused source between them.
    std::vector<Shot> makeOldShots(std::mt19937& random)
    {
        std::vector<Shot> shots;
        std::map<std::string, int> nextSource;
        const int count = std::uniform_int_distribution<int>(4, 18)(random);
        for (int i = 0; i < count; ++i) {
            const std::string roll = "R" + std::to_string(std::uniform_int_distribution<int>(1, 4)(random));
            int& source = nextSource.try_emplace(roll, 3600 * 25 * 2).first->second;
            source += std::uniform_int_distribution<int>(0, 60)(random);
            const int length = std::uniform_int_distribution<int>(10, 150)(random);
            shots.push_back({roll, source, length});
            source += length;
        }
        return shots;
    }

    static std::vector<Placed> layOut(const std::vector<Shot>& shots, std::mt19937& random, int start)
    {
        std::vector<Placed> placed;
        int rec = start;
        for (const Shot& shot : shots) {
            // Now and then a stretch of black between shots.
            if (std::uniform_int_distribution<int>(0, 5)(random) == 0)
                rec += std::uniform_int_distribution<int>(1, 30)(random);
            placed.push_back({shot, rec});
            rec += shot.length;
        }
        return placed;
    }

    // The re-cut: a random run of the edits an editor makes.
    static std::vector<Shot> recut(std::vector<Shot> shots, std::mt19937& random)
    {
        const int edits = std::uniform_int_distribution<int>(1, 12)(random);
        int insertSource = 3600 * 25 * 5;
        for (int e = 0; e < edits && !shots.empty(); ++e) {
            auto pick = std::uniform_int_distribution<size_t>(0, shots.size() - 1);
            const size_t i = pick(random);
            Shot& shot = shots[i];
            switch (std::uniform_int_distribution<int>(0, 6)(random)) {
            case 0: { // trim the head
                const int cut = std::uniform_int_distribution<int>(0, shot.length / 2)(random);
                shot.srcIn += cut;
                shot.length -= cut;
                break;
            }
            case 1: // trim the tail
                shot.length -= std::uniform_int_distribution<int>(0, shot.length / 2)(random);
                break;
            case 2: // delete
                shots.erase(shots.begin() + static_cast<long>(i));
                break;
            case 3: { // insert new picture, of a new roll or unused source of an old one
                const bool oldRoll = std::uniform_int_distribution<int>(0, 1)(random) == 1;
                const int length = std::uniform_int_distribution<int>(5, 80)(random);
                Shot inserted{oldRoll ? shot.roll : "NEW", insertSource, length};
                insertSource += length + 10;
                shots.insert(shots.begin() + static_cast<long>(i), inserted);
                break;
            }
            case 4: { // move
                const Shot moved = shot;
                shots.erase(shots.begin() + static_cast<long>(i));
                const size_t to = std::uniform_int_distribution<size_t>(0, shots.size())(random);
                shots.insert(shots.begin() + static_cast<long>(to), moved);
                break;
            }
            case 5: { // split, and put the second half elsewhere
                if (shot.length < 4)
                    break;
                const int first = std::uniform_int_distribution<int>(1, shot.length - 1)(random);
                const Shot second{shot.roll, shot.srcIn + first, shot.length - first};
                shot.length = first;
                const size_t to = std::uniform_int_distribution<size_t>(0, shots.size())(random);
                shots.insert(shots.begin() + static_cast<long>(to), second);
                break;
            }
            case 6: // extend the tail into source that may or may not have been used
                shot.length += std::uniform_int_distribution<int>(1, 90)(random);
                break;
            }
        }
        for (size_t i = shots.size(); i-- > 0;) {
            if (shots[i].length <= 0)
                shots.erase(shots.begin() + static_cast<long>(i));
        }
        return shots;
    }

    EventList toList(int kind, const std::vector<Placed>& placed) const
    {
        EventList events(kind);
        int number = 1;
        for (const Placed& p : placed) {
            auto event = std::make_shared<EventBase>();
            event->setTimecodes(at(p.shot.srcIn), at(p.shot.srcIn + p.shot.length), at(p.recIn),
                                at(p.recIn + p.shot.length));
            event->setRollName(p.shot.roll);
            event->setEventNumber(number++);
            events.addEvent(event);
        }
        return events;
    }

    // What the old cut showed at a record frame: roll and source frame.
    static bool oldPicture(const std::vector<Placed>& oldCut, int rec, std::string& roll, int& source)
    {
        for (const Placed& p : oldCut) {
            if (rec >= p.recIn && rec < p.recIn + p.shot.length) {
                roll = p.shot.roll;
                source = p.shot.srcIn + (rec - p.recIn);
                return true;
            }
        }
        return false;
    }

    static bool oldCutHas(const std::vector<Placed>& oldCut, const std::string& roll, int source)
    {
        for (const Placed& p : oldCut) {
            if (p.shot.roll == roll && source >= p.shot.srcIn && source < p.shot.srcIn + p.shot.length)
                return true;
        }
        return false;
    }

    // Frames seen covered and left as holes over all runs, so that the test
    // is known to have exercised both.
    long totalCovered = 0;
    long totalHoles = 0;

    void checkSync(const std::vector<Placed>& oldCut, const std::vector<Placed>& newCut,
                   const EventList& changes, const std::string& what)
    {
        long coveredFrames = 0;
        for (const EventPtr& change : changes.getEvents()) {
            ASSERT_EQ(change->getDstOut().toFrames() - change->getDstIn().toFrames(),
                      change->getSrcOut().toFrames() - change->getSrcIn().toFrames())
                << what << ": a Change event of speed 1 must keep its length";
            coveredFrames += change->getDstOut().toFrames() - change->getDstIn().toFrames();
        }

        long checkedFrames = 0;
        for (const Placed& p : newCut) {
            for (int offset = 0; offset < p.shot.length; ++offset) {
                const int rec = p.recIn + offset;
                const int source = p.shot.srcIn + offset;
                int covering = 0;
                for (const EventPtr& change : changes.getEvents()) {
                    const int dstIn = change->getDstIn().toFrames();
                    if (rec < dstIn || rec >= change->getDstOut().toFrames())
                        continue;
                    ++covering;
                    const int oldRec = change->getSrcIn().toFrames() + (rec - dstIn);
                    std::string oldRoll;
                    int oldSource = -1;
                    ASSERT_TRUE(oldPicture(oldCut, oldRec, oldRoll, oldSource))
                        << what << ": new frame " << at(rec).toString() << " taken from old "
                        << at(oldRec).toString() << ", where the old cut had no picture";
                    ASSERT_TRUE(oldRoll == p.shot.roll && oldSource == source)
                        << what << ": new frame " << at(rec).toString() << " shows " << p.shot.roll << " "
                        << at(source).toString() << " but is taken from old " << at(oldRec).toString()
                        << ", which shows " << oldRoll << " " << at(oldSource).toString();
                }
                const int expected = oldCutHas(oldCut, p.shot.roll, source) ? 1 : 0;
                ASSERT_EQ(covering, expected) << what << ": new frame " << at(rec).toString() << " ("
                                              << p.shot.roll << " " << at(source).toString() << ")";
                checkedFrames += covering;
                (covering ? totalCovered : totalHoles) += 1;
            }
        }
        EXPECT_EQ(coveredFrames, checkedFrames) << what << ": Change events cover frames outside the new cut";
    }
};

TEST_P(SyncCoverageTest, EveryNewFrameFromTheOldCutIsCoveredOnceAndShowsTheSameSourceFrame)
{
    const int start = 3600 * GetParam(); // 01:00:00:00 in frames at the nominal rate
    for (unsigned seed = 1; seed <= 150; ++seed) {
        std::mt19937 random(seed);
        const std::vector<Shot> oldShots = makeOldShots(random);
        const std::vector<Placed> oldCut = layOut(oldShots, random, start);
        const std::vector<Placed> newCut = layOut(recut(oldShots, random), random, start);
        const EventList oldList = toList(EventList::OldKind, oldCut);
        const EventList newList = toList(EventList::NewKind, newCut);

        ChangeEdlGenerator generator;
        EventList changes(EventList::ChangeKind);
        ASSERT_EQ(generator.generate(oldList, newList, changes), 0);
        const std::string what = "seed " + std::to_string(seed);
        checkSync(oldCut, newCut, changes, what);
        if (HasFatalFailure())
            return;

        // Strict neighbours join into stretches that still map frame for frame.
        Settings settings;
        settings.setHealProcessing(HealProcessingMode::Normal);
        EventListAlgorithm::Context context{&newList, &settings, provider.getFramerate()};
        HealProcessing().process(changes, context);
        checkSync(oldCut, newCut, changes, what + " healed");
        if (HasFatalFailure())
            return;
    }
    EXPECT_GT(totalCovered, 10000);
    EXPECT_GT(totalHoles, 1000);
}

INSTANTIATE_TEST_SUITE_P(Rates, SyncCoverageTest, ::testing::Values(25, 30),
                         [](const auto& info) { return info.param == 25 ? "Fps25" : "Fps2997DropFrame"; });

} // namespace
} // namespace montala::core
