#include "kelmar/base/CPluginFactory.h"
#include "kelmar/view/CPluginView.h"
#include "kelmar/base/IPluginBase.h"
#include "kelmar/base/IPtr.h"

#include <gtest/gtest.h>

#include <cstring>

namespace Kelmar {
namespace {

class Service : public FObject, public IPluginBase {
public:
    tresult queryInterface(const FUID& iid, void** obj) override
    {
        if (answerInterface<IPluginBase>(this, iid, obj))
            return kResultOk;
        return FObject::queryInterface(iid, obj);
    }
    KELMAR_FOBJECT_REFCOUNT
    tresult initialize(FUnknown*) override { return kResultOk; }
    tresult terminate() override { return kResultOk; }

    static FUnknown* create(void*) { return static_cast<IPluginBase*>(new Service); }
};

constexpr FUID serviceId{"{F61C1C25-4C9D-4D68-A782-F7FBF56B9068}"};

PClassInfo2 serviceInfo()
{
    PClassInfo2 info;
    std::memcpy(info.cid, serviceId.data(), 16);
    info.cardinality = 1;
    std::strcpy(info.category, "Service");
    std::strcpy(info.name, "Montala");
    std::strcpy(info.version, "1.1.0.65");
    std::strcpy(info.sdkVersion, "LUMO 4.1.0");
    return info;
}

TEST(CPluginFactory, DescribesAndCreatesItsRegisteredClasses)
{
    PFactoryInfo factoryInfo;
    factoryInfo.flags = PFactoryInfo::kUnicode;
    auto factory = owned(new CPluginFactory(factoryInfo));
    ASSERT_TRUE(factory->registerClass(serviceInfo(), &Service::create));
    EXPECT_FALSE(factory->registerClass(serviceInfo(), &Service::create)) << "one class id once";
    ASSERT_EQ(factory->countClasses(), 1);

    PClassInfo info;
    ASSERT_EQ(factory->getClassInfo(0, &info), kResultOk);
    EXPECT_STREQ(info.category, "Service");
    EXPECT_EQ(FUID::fromBytes(info.cid), serviceId);
    PClassInfoW wide;
    ASSERT_EQ(factory->getClassInfoUnicode(0, &wide), kResultOk);
    EXPECT_EQ(std::u16string(wide.version), u"1.1.0.65");
    EXPECT_EQ(factory->getClassInfo(1, &info), kInvalidArgument);

    IPtr<IPluginBase> service;
    ASSERT_EQ(factory->createInstance(serviceId, IPluginBase::iid, service.putVoid()), kResultOk);
    EXPECT_EQ(dynamic_cast<FObject*>(service.get())->getRefCount(), 1u) << "the caller holds the only reference";
    void* none = nullptr;
    EXPECT_EQ(factory->createInstance(FUID{"{00000000-0000-0000-0000-000000000001}"}, IPluginBase::iid, &none),
              kInvalidArgument);

    auto asThree = queryInterface<IPluginFactory3>(factory.get());
    EXPECT_TRUE(asThree);
    EXPECT_EQ(factory->addRef(), 3u);
    factory->release();
}

} // namespace
} // namespace Kelmar
