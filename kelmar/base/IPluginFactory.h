#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// What a module's factory says of its maker. Fixed widths, as the host reads
// them.
struct PFactoryInfo {
    enum Flags : int32 {
        kUnicode = 16, // texts of PClassInfoW are 16-bit
    };
    char8 vendor[64] = {};
    char8 url[256] = {};
    char8 email[128] = {};
    int32 flags = 0;
};

struct PClassInfo {
    uint8 cid[16] = {}; // the class id, bytes as in FUID
    int32 cardinality = 0;
    char8 category[32] = {};
    char8 name[64] = {};
};

struct PClassInfo2 {
    uint8 cid[16] = {};
    int32 cardinality = 0;
    char8 category[32] = {};
    char8 name[64] = {};
    uint32 classFlags = 0;
    char8 subCategories[128] = {};
    char8 vendor[64] = {};
    char8 version[64] = {};
    char8 sdkVersion[64] = {};
};

struct PClassInfoW {
    uint8 cid[16] = {};
    int32 cardinality = 0;
    char8 category[32] = {};
    char16 name[64] = {};
    uint32 classFlags = 0;
    char8 subCategories[128] = {};
    char16 vendor[64] = {};
    char16 version[64] = {};
    char16 sdkVersion[64] = {};
};

// The factory a plug-in module hands to the host through GetPluginFactory.
class IPluginFactory : public FUnknown {
public:
    virtual tresult getFactoryInfo(PFactoryInfo* info) = 0;
    virtual int32 countClasses() = 0;
    virtual tresult getClassInfo(int32 index, PClassInfo* info) = 0;
    // `cid` is the class id, `iid` the interface asked of the new object.
    virtual tresult createInstance(const FUID& cid, const FUID& iid, void** object) = 0;

    static constexpr FUID iid{"{7A4D811C-5211-4A1F-AED9-D2EE0B43BF9F}"};
};

class IPluginFactory2 : public IPluginFactory {
public:
    virtual tresult getClassInfo2(int32 index, PClassInfo2* info) = 0;

    static constexpr FUID iid{"{0007B650-F24B-4C0B-A464-EDB9F00B2ABB}"};
};

class IPluginFactory3 : public IPluginFactory2 {
public:
    virtual tresult getClassInfoUnicode(int32 index, PClassInfoW* info) = 0;
    virtual tresult setHostContext(FUnknown* context) = 0;

    static constexpr FUID iid{"{4555A2AB-C123-4E57-9B12-291036878931}"};
};

// The module's exported entry points: InitDll after loading, GetPluginFactory
// (an owned reference), ExitDll before unloading.
using InitModuleProc = bool (*)();
using ExitModuleProc = bool (*)();
using GetFactoryProc = IPluginFactory* (*)();

} // namespace Kelmar
