#include "../SimFixture.h"

#include "kelmar/base/IParameterContainer.h"
#include "kelmar/project/ITimeParameter.h"
#include "kelmar/project/ITransport.h"

namespace montala::sim::test {
namespace {

using namespace Kelmar;

class SimHostTest : public SimFixture {};

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

} // namespace
} // namespace montala::sim::test
