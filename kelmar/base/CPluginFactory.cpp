#include "kelmar/base/CPluginFactory.h"

#include "kelmar/base/String.h"

#include <algorithm>
#include <cstring>

namespace Kelmar {

namespace {

// Copies 8-bit text into a fixed 16-bit field, cut to fit and terminated.
template <std::size_t N>
void toWide(const char8* text, char16 (&field)[N])
{
    const std::u16string wide = String::utf8ToUtf16(std::string_view(text, strnlen(text, N)));
    const std::size_t n = std::min(wide.size(), N - 1);
    wide.copy(field, n);
    field[n] = 0;
}

} // namespace

CPluginFactory::CPluginFactory(const PFactoryInfo& info) : factoryInfo(info)
{
    if (!current)
        current = this;
}

CPluginFactory::~CPluginFactory()
{
    if (current == this)
        current = nullptr;
}

bool CPluginFactory::registerClass(const PClassInfo2& info, CreateFunction create)
{
    const FUID id = FUID::fromBytes(info.cid);
    for (const Entry& entry : classes)
        if (FUID::fromBytes(entry.info.cid) == id)
            return false;
    classes.push_back(Entry{info, create});
    return true;
}

tresult CPluginFactory::queryInterface(const FUID& iid, void** obj)
{
    if (!obj)
        return kInvalidArgument;
    if (iid == FUnknown::iid || iid == IPluginFactory::iid || iid == IPluginFactory2::iid
        || iid == IPluginFactory3::iid) {
        addRef();
        *obj = static_cast<IPluginFactory3*>(this);
        return kResultOk;
    }
    *obj = nullptr;
    return kNoInterface;
}

uint32 CPluginFactory::addRef()
{
    return ++refCount;
}

uint32 CPluginFactory::release()
{
    const uint32 left = --refCount;
    if (left == 0)
        delete this;
    return left;
}

tresult CPluginFactory::getFactoryInfo(PFactoryInfo* info)
{
    if (!info)
        return kInvalidArgument;
    *info = factoryInfo;
    return kResultOk;
}

int32 CPluginFactory::countClasses()
{
    return static_cast<int32>(classes.size());
}

tresult CPluginFactory::getClassInfo(int32 index, PClassInfo* info)
{
    if (!info || index < 0 || index >= countClasses())
        return kInvalidArgument;
    const PClassInfo2& source = classes[static_cast<std::size_t>(index)].info;
    std::memcpy(info->cid, source.cid, sizeof info->cid);
    info->cardinality = source.cardinality;
    std::memcpy(info->category, source.category, sizeof info->category);
    std::memcpy(info->name, source.name, sizeof info->name);
    return kResultOk;
}

tresult CPluginFactory::getClassInfo2(int32 index, PClassInfo2* info)
{
    if (!info || index < 0 || index >= countClasses())
        return kInvalidArgument;
    *info = classes[static_cast<std::size_t>(index)].info;
    return kResultOk;
}

tresult CPluginFactory::getClassInfoUnicode(int32 index, PClassInfoW* info)
{
    if (!info || index < 0 || index >= countClasses())
        return kInvalidArgument;
    const PClassInfo2& source = classes[static_cast<std::size_t>(index)].info;
    std::memcpy(info->cid, source.cid, sizeof info->cid);
    info->cardinality = source.cardinality;
    std::memcpy(info->category, source.category, sizeof info->category);
    toWide(source.name, info->name);
    info->classFlags = source.classFlags;
    std::memcpy(info->subCategories, source.subCategories, sizeof info->subCategories);
    toWide(source.vendor, info->vendor);
    toWide(source.version, info->version);
    toWide(source.sdkVersion, info->sdkVersion);
    return kResultOk;
}

tresult CPluginFactory::createInstance(const FUID& cid, const FUID& iid, void** object)
{
    if (!object)
        return kInvalidArgument;
    *object = nullptr;
    for (const Entry& entry : classes) {
        if (!(FUID::fromBytes(entry.info.cid) == cid))
            continue;
        FUnknown* made = entry.create(hostContext);
        if (!made)
            return kResultFailed;
        const tresult result = made->queryInterface(iid, object);
        made->release();
        return result;
    }
    return kInvalidArgument;
}

tresult CPluginFactory::setHostContext(FUnknown* context)
{
    hostContext = context;
    return kResultOk;
}

} // namespace Kelmar
