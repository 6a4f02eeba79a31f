// The media pool as the dialogs and the preview see it, over the pool of a
// simulated project: only its video clips, by position, with name, path and
// id; files added through it; clips found again by name or file name.

#include "sim/SimFixture.h"
#include "support/ModelFixture.h"

#include "host/MediaPool.h"

#include "kelmar/base/IDependencyRegistry.h"
#include "kelmar/base/IDependent.h"
#include "kelmar/project/IMediaPool.h"
#include "kelmar/base/IPath.h"
#include "sim/services/SimDependencyRegistry.h"
#include "sim/services/SimFailures.h"
#include "sim/project/SimMediaPool.h"
#include "sim/project/SimProject.h"

#include <memory>
#include <string>

namespace montala::host::test {
namespace {

using namespace Kelmar;
using montala::test::thrownCode;
using util::Result;

class CountingListener : public core::MediaPoolInterface::Listener {
public:
    void poolChanged() override { ++calls; }
    int calls = 0;
};

class MediaPoolTest : public sim::test::SimFixture {
protected:
    // Two pictures and a sound file; the first picture's name is not its
    // file name, as a user may rename clips in the pool.
    static std::string poolSession(const std::string& clips)
    {
        return R"({"format": "montala-session", "version": 1, "name": "Pool", "frameRate": {"fps": 25},
                   "start": "01:00:00:00", "end": "01:01:00:00", "mediaPool": [)"
               + clips + R"(], "tracks": []})";
    }
    static std::string threeClips()
    {
        return R"({"id": 4, "kind": "video", "name": "Old Cut", "path": "/media/reel1_v3.mov", "length": 120},
                  {"id": 5, "kind": "audio", "name": "door.wav", "path": "/media/door.wav", "length": 3},
                  {"id": 7, "kind": "video", "name": "new.mov", "path": "C:\\media\\new.mov", "length": 90})";
    }

    void TearDown() override
    {
        pool.reset();
        hostPool.reset();
        project.reset();
        SimFixture::TearDown();
    }

    void openWith(const std::string& clips)
    {
        project = open(poolSession(clips));
        ASSERT_TRUE(project);
        hostPool = owned(project->getMediaPool());
        pool = std::make_unique<MediaPool>(hostPool.get(), static_cast<IHostServices*>(host.get()));
    }

    IPtr<sim::SimProject> project;
    IPtr<IMediaPool> hostPool;
    std::unique_ptr<MediaPool> pool;
};

TEST_F(MediaPoolTest, ListsTheVideoClipsWithTheirPathsNamesAndIds)
{
    openWith(threeClips());
    ASSERT_EQ(pool->getClipCount(), 2) << "the sound file is not counted";
    EXPECT_EQ(pool->getClipName(0), "Old Cut");
    EXPECT_EQ(pool->getClipPath(0), "/media/reel1_v3.mov");
    EXPECT_EQ(pool->getClipFileName(0), "reel1_v3.mov");
    EXPECT_EQ(pool->getClipId(0), 4);
    EXPECT_EQ(pool->getClipFileName(1), "new.mov") << "a Windows path splits at its backslash";
    EXPECT_EQ(pool->getClipId(1), 7);

    EXPECT_EQ(thrownCode([&] { pool->getClipName(2); }), Result::InvalidArgument);
    EXPECT_EQ(thrownCode([&] { pool->getClipPath(-1); }), Result::InvalidArgument);
}

TEST_F(MediaPoolTest, APoolWithoutAHostIsEmptyAndCannotBeRead)
{
    host->failures().withhold(IDependencyRegistry::iid);
    EXPECT_EQ(thrownCode([&] { openWith(threeClips()); }), Result::NoInterface)
        << "a pool that could not hear of changes would show a stale list";

    MediaPool unhosted;
    EXPECT_EQ(unhosted.getClipCount(), 0);
    EXPECT_EQ(thrownCode([&] { unhosted.getClipName(0); }), Result::NotInitialized);
    EXPECT_FALSE(unhosted.addClip("/media/x.mov"));
    EXPECT_FALSE(unhosted.findClip("x.mov", 1));
}

TEST_F(MediaPoolTest, FindsAClipByItsExactNameOrFileNameAndItsId)
{
    openWith(threeClips());
    auto byName = pool->findClip("Old Cut", 4);
    ASSERT_TRUE(byName);
    EXPECT_EQ(byName->getId(), 4);
    EXPECT_TRUE(pool->findClip("reel1_v3.mov", 4)) << "the file name is as good as the name";
    EXPECT_FALSE(pool->findClip("Old Cut", 7)) << "the id must fit too";
    EXPECT_FALSE(pool->findClip("old cut", 4));
    EXPECT_FALSE(pool->findClip("/media/reel1_v3.mov", 4)) << "a whole path is neither name nor file name";
    EXPECT_FALSE(pool->findClip("door.wav", 5)) << "sound clips are not looked at";
}

TEST_F(MediaPoolTest, AddsFilesOnlyToAPoolThatHoldsPicturesAndNeverTwice)
{
    openWith(threeClips());
    EXPECT_TRUE(pool->addClip("/media/reel2.mov"));
    ASSERT_EQ(pool->getClipCount(), 3);
    EXPECT_EQ(pool->getClipPath(2), "/media/reel2.mov");

    // The simulated pool gives a new clip the next free id: 9 here.
    auto ensured = pool->ensureClip("/media/reel3.mov", 9);
    ASSERT_TRUE(ensured);
    EXPECT_EQ(pool->getClipCount(), 4);
    auto again = pool->ensureClip("/elsewhere/reel3.mov", 9);
    ASSERT_TRUE(again);
    EXPECT_EQ(again.get(), ensured.get());
    EXPECT_EQ(pool->getClipCount(), 4) << "a clip already in the pool is not added again";

    pool.reset();
    openWith("");
    EXPECT_FALSE(pool->addClip("/media/reel1.mov")) << "an empty pool is left empty";
    EXPECT_FALSE(pool->ensureClip("/media/reel1.mov", 1));
    EXPECT_EQ(project->mediaPool().clips().size(), 0u);
}

TEST_F(MediaPoolTest, TellsEachListenerOnceOfAChangeOfTheHostsPoolUntilItIsRemoved)
{
    openWith(threeClips());
    CountingListener first;
    CountingListener second;
    pool->addListener(&first);
    pool->addListener(&first);
    pool->addListener(&second);

    // The host adds a clip of its own accord (the user drops a file in).
    IPtr<IPath> path;
    {
        void* answer = nullptr;
        ASSERT_EQ(host->getService(IPath::iid, &answer), kResultOk);
        path = owned(static_cast<IPath*>(answer));
    }
    path->setText(u"/media/dropped.mov", 0);
    owned(hostPool->addClip(path.get()));
    EXPECT_EQ(first.calls, 1);
    EXPECT_EQ(second.calls, 1);

    pool->update(hostPool.get(), 102);
    EXPECT_EQ(first.calls, 1) << "only a change is passed on";

    pool->removeListener(&first);
    pool->notifyListeners();
    EXPECT_EQ(first.calls, 1);
    EXPECT_EQ(second.calls, 2);

    // Gone, the pool no longer depends on the host's: a later change reaches
    // nobody (AddressSanitizer would see a call into the dead object).
    pool.reset();
    EXPECT_EQ(host->dependencies().dependentCount(hostPool.get()), 0u);
    owned(hostPool->addClip(path.get()));
    EXPECT_EQ(second.calls, 2);
}

} // namespace
} // namespace montala::host::test
