// The module's three exported functions, the ones the host looks up by name.

#include "plugin/Module.h"
#include "plugin/Montala.h"

#include "kelmar/base/CPluginFactory.h"
#include "kelmar/base/IPluginBase.h"

#include <atomic>
#include <cstring>

namespace {

// How often the host called InitDll without ExitDll. Nothing hangs on the
// first or the last call: the Host comes up with the service, not the module.
std::atomic<int> moduleCounter{0};

template <std::size_t N>
void setText(Kelmar::char8 (&field)[N], const char* text)
{
    std::strncpy(field, text, N - 1);
}

const Kelmar::PFactoryInfo& factoryInfo()
{
    static const Kelmar::PFactoryInfo info = [] {
        Kelmar::PFactoryInfo made;
        setText(made.vendor, "Montala");
        setText(made.url, "https://montala.audio");
        setText(made.email, "support@montala.audio");
        made.flags = Kelmar::PFactoryInfo::kUnicode;
        return made;
    }();
    return info;
}

const Kelmar::PClassInfo2& montalaClass()
{
    static const Kelmar::PClassInfo2 info = [] {
        Kelmar::PClassInfo2 made;
        constexpr Kelmar::FUID id{"{F61C1C25-4C9D-4D68-A782-F7FBF56B9068}"};
        std::memcpy(made.cid, id.data(), sizeof made.cid);
        made.cardinality = 1;
        setText(made.category, "Service");
        setText(made.name, "Montala");
        made.classFlags = 0;
        setText(made.version, "1.1.0.65");
        setText(made.sdkVersion, "LUMO 4.1.0");
        return made;
    }();
    return info;
}

} // namespace

MONTALA_EXPORT bool InitDll()
{
    ++moduleCounter;
    return true;
}

MONTALA_EXPORT bool ExitDll()
{
    return --moduleCounter >= 0;
}

// The one factory of the module: a second call while it lives hands out the
// same object with one more reference.
MONTALA_EXPORT Kelmar::IPluginFactory* GetPluginFactory()
{
    if (Kelmar::CPluginFactory* factory = Kelmar::CPluginFactory::instance()) {
        factory->addRef();
        return factory;
    }
    auto* factory = new Kelmar::CPluginFactory(factoryInfo());
    factory->registerClass(montalaClass(), &montala::host::Montala::create);
    return factory;
}
