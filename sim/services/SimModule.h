#pragma once

#include "kelmar/base/IPluginFactory.h"
#include "kelmar/base/Types.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace montala::sim {

// A plug-in module the host opened from a file: its three entry points and
// the factory it handed out. Opening calls InitDll, then GetPluginFactory;
// closing releases the factory, calls ExitDll and unloads the file. Every
// step is told to `record`, in the words of SimHost::lifecycle().
class SimModule {
public:
    using Record = std::function<void(std::string)>;

    // Null when the file does not load or lacks an entry point; `error`
    // names the file and what is missing.
    static std::unique_ptr<SimModule> open(const std::string& path, const Record& record, std::string& error);
    ~SimModule();
    SimModule(const SimModule&) = delete;
    SimModule& operator=(const SimModule&) = delete;

    Kelmar::IPluginFactory* factory() const { return pluginFactory; }
    Kelmar::ModuleHandle handle() const { return library; }
    const std::string& path() const { return file; }

    // The file of a loaded module, from its handle; empty for none.
    static std::string pathOf(Kelmar::ModuleHandle module);
    // The embedded resource `name` of the module file at `path`, or nothing
    // when the file carries no such resource (`error` says why).
    static std::optional<std::string> resource(const std::string& path, const std::string& name,
                                               std::string& error);

private:
    SimModule() = default;

    std::string file;
    void* library = nullptr;
    Kelmar::ExitModuleProc exitModule = nullptr;
    Kelmar::IPluginFactory* pluginFactory = nullptr; // owned reference
    Record record;
};

} // namespace montala::sim
