#include "../ChangeRecorder.h"

#include <gtest/gtest.h>

#include <vector>

using namespace montala::core;

TEST(ChangeContext, ListenerStandsInTheSetOnce)
{
    ChangeContextNotificationBase notifier;
    montala::test::ChangeRecorder recorder;
    notifier.notify(ChangeContext(1)); // nobody listens: nothing happens
    notifier.addListener(&recorder);
    notifier.addListener(&recorder);
    notifier.notify(EventChangeContext());
    EXPECT_EQ(recorder.kinds, std::vector<int>{3});
    notifier.removeListener(&recorder);
    notifier.notify(EventChangeContext());
    EXPECT_EQ(recorder.kinds, std::vector<int>{3});
    montala::test::ChangeRecorder stranger;
    notifier.removeListener(&stranger);
    EXPECT_EQ(notifier.getListenerCount(), 0u);
}

TEST(ChangeContext, CopiedNotifierStartsWithoutListeners)
{
    ChangeContextNotificationBase notifier;
    montala::test::ChangeRecorder recorder;
    notifier.addListener(&recorder);
    ChangeContextNotificationBase copy(notifier);
    copy.notify(ChangeContext(1));
    EXPECT_TRUE(recorder.kinds.empty());
    notifier.removeListener(&recorder);
}
