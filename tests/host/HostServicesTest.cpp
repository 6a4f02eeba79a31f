// The adapter reaches the host only through IHostServices. These checks run
// against the simulated host, as all of the adapter's tests do: every service
// the adapter queries must be there, and a query for an interface the host
// does not offer must answer "no interface" and leave the pointer empty.

#include "kelmar/services/IAlertService.h"
#include "kelmar/services/IFileDialogService.h"
#include "kelmar/services/IHostServices.h"
#include "kelmar/services/IProgressService.h"
#include "kelmar/edit/IProjectEdit.h"
#include "kelmar/project/IProjectManager.h"
#include "kelmar/edit/IRangeEdit.h"
#include "kelmar/services/ITranslationService.h"
#include "kelmar/project/ITransport.h"
#include "sim/project/SimBase.h"
#include "sim/services/SimHost.h"

#include <gtest/gtest.h>

namespace {

using namespace Kelmar;

template <typename Interface>
bool offers(IHostServices& services)
{
    void* pointer = nullptr;
    if (services.getService(Interface::iid, &pointer) != kResultOk || pointer == nullptr)
        return false;
    static_cast<Interface*>(pointer)->release();
    return true;
}

TEST(HostServices, SimulatedHostOffersEveryServiceTheAdapterQueriesAndNothingElse)
{
    long before = montala::sim::SimBase::liveObjects();
    {
        IPtr<montala::sim::SimHost> host = montala::sim::SimHost::create();
        IHostServices& services = *host;
        EXPECT_TRUE(offers<IProjectManager>(services));
        EXPECT_TRUE(offers<ITransport>(services));
        EXPECT_TRUE(offers<IProjectEdit>(services));
        EXPECT_TRUE(offers<IRangeEdit>(services));
        EXPECT_TRUE(offers<IProgressService>(services));
        EXPECT_TRUE(offers<IAlertService>(services));
        EXPECT_TRUE(offers<IFileDialogService>(services));
        EXPECT_TRUE(offers<ITranslationService>(services));

        void* pointer = reinterpret_cast<void*>(1);
        EXPECT_EQ(services.getService(FUID{"{00000000-0000-0000-0000-000000000001}"}, &pointer), kNoInterface);
        EXPECT_EQ(pointer, nullptr);
        host->shutdown();
    }
    EXPECT_EQ(montala::sim::SimBase::liveObjects(), before);
}

} // namespace
