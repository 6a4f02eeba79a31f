#pragma once

#include "kelmar/base/IPluginFactory.h"

#include <atomic>
#include <vector>

namespace Kelmar {

// A plug-in module's factory: its maker's record and a table of classes, each
// with the function that creates an object of it. The module keeps one and
// hands it out from GetPluginFactory: the first one made is the module's
// instance() until its last reference goes.
class CPluginFactory : public IPluginFactory3 {
public:
    // Makes a new object with a count of one; `context` is the host context
    // set with setHostContext, or null.
    using CreateFunction = FUnknown* (*)(void* context);

    explicit CPluginFactory(const PFactoryInfo& info);
    virtual ~CPluginFactory();

    // The module's factory while it lives, else null. Not counted.
    static CPluginFactory* instance() { return current; }

    // False when the class id is already registered.
    bool registerClass(const PClassInfo2& info, CreateFunction create);

    tresult queryInterface(const FUID& iid, void** obj) override;
    uint32 addRef() override;
    uint32 release() override;

    tresult getFactoryInfo(PFactoryInfo* info) override;
    int32 countClasses() override;
    tresult getClassInfo(int32 index, PClassInfo* info) override;
    tresult createInstance(const FUID& cid, const FUID& iid, void** object) override;
    tresult getClassInfo2(int32 index, PClassInfo2* info) override;
    tresult getClassInfoUnicode(int32 index, PClassInfoW* info) override;
    tresult setHostContext(FUnknown* context) override;

private:
    struct Entry {
        PClassInfo2 info;
        CreateFunction create;
    };

    PFactoryInfo factoryInfo;
    std::vector<Entry> classes;
    FUnknown* hostContext = nullptr; // borrowed
    std::atomic<uint32> refCount{1};

    static inline CPluginFactory* current = nullptr;
};

} // namespace Kelmar
