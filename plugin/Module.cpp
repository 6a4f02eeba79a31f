#include "plugin/Module.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace montala::host::module {

namespace {

struct Identity {
    Kelmar::ModuleHandle handle = nullptr;
    std::string folder;
};

// Found from an address inside the module, on first use: by then the loader
// has finished with the module, and a query about it is safe.
Identity find()
{
    Identity identity;
    std::string file;
#if defined(_WIN32)
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCSTR>(&find), &module);
    char path[MAX_PATH] = {};
    GetModuleFileNameA(module, path, MAX_PATH);
    identity.handle = module;
    file = path;
    const char separator = '\\';
#else
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&find), &info) && info.dli_fname) {
        file = info.dli_fname;
        // The handle the host's dlopen gave; RTLD_NOLOAD only looks it up,
        // and the reference it adds is given back at once.
        identity.handle = dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD);
        if (identity.handle)
            dlclose(identity.handle);
    }
    const char separator = '/';
#endif
    identity.folder = file.substr(0, file.rfind(separator) + 1);
    return identity;
}

const Identity& identity()
{
    static const Identity found = find();
    return found;
}

} // namespace

Kelmar::ModuleHandle handle()
{
    return identity().handle;
}

const std::string& folder()
{
    return identity().folder;
}

} // namespace montala::host::module
