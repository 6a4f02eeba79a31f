#include "sim/services/SimModule.h"

#include "kelmar/base/ModuleResources.h"

#include <cstring>
#include <fstream>
#include <vector>

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

namespace montala::sim {

using namespace Kelmar;

std::unique_ptr<SimModule> SimModule::open(const std::string& path, const Record& record, std::string& error)
{
    // Local: two modules may well carry libraries of the same names.
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        const char* reason = dlerror();
        error = path + ": " + (reason ? reason : "cannot be loaded");
        return nullptr;
    }
    auto initModule = reinterpret_cast<InitModuleProc>(dlsym(library, "InitDll"));
    auto exitModule = reinterpret_cast<ExitModuleProc>(dlsym(library, "ExitDll"));
    auto getFactory = reinterpret_cast<GetFactoryProc>(dlsym(library, "GetPluginFactory"));
    if (!initModule || !exitModule || !getFactory) {
        error = path + ": no " + (!initModule ? "InitDll" : !exitModule ? "ExitDll" : "GetPluginFactory")
                + " among the module's exports";
        dlclose(library);
        return nullptr;
    }
    std::unique_ptr<SimModule> module(new SimModule);
    module->file = path;
    module->library = library;
    module->record = record;
    record("load " + path.substr(path.rfind('/') + 1));
    if (!initModule()) {
        error = path + ": InitDll refused";
        dlclose(library);
        module->library = nullptr;
        return nullptr;
    }
    record("InitDll");
    module->exitModule = exitModule;
    module->pluginFactory = getFactory();
    record("GetPluginFactory");
    if (!module->pluginFactory) {
        error = path + ": GetPluginFactory gave no factory";
        return nullptr;
    }
    return module;
}

SimModule::~SimModule()
{
    if (pluginFactory)
        record("release factory: " + std::to_string(pluginFactory->release()));
    if (exitModule)
        record(std::string("ExitDll: ") + (exitModule() ? "true" : "false"));
    if (library) {
        dlclose(library);
        record("unload");
    }
}

std::string SimModule::pathOf(ModuleHandle module)
{
    link_map* map = nullptr;
    if (!module || dlinfo(module, RTLD_DI_LINKMAP, &map) != 0 || !map || !map->l_name)
        return {};
    return map->l_name;
}

std::optional<std::string> SimModule::resource(const std::string& path, const std::string& name, std::string& error)
{
    std::ifstream in(path, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const auto fits = [&](std::size_t offset, std::size_t size) {
        return offset <= bytes.size() && size <= bytes.size() - offset;
    };
    Elf64_Ehdr header;
    if (!fits(0, sizeof header) || std::memcmp(bytes.data(), ELFMAG, SELFMAG) != 0
        || bytes[EI_CLASS] != ELFCLASS64) {
        error = path + ": not a 64-bit ELF module";
        return std::nullopt;
    }
    std::memcpy(&header, bytes.data(), sizeof header);
    const auto section = [&](std::size_t index, Elf64_Shdr& out) {
        const std::size_t at = header.e_shoff + index * sizeof(Elf64_Shdr);
        if (!fits(at, sizeof out))
            return false;
        std::memcpy(&out, bytes.data() + at, sizeof out);
        return fits(out.sh_offset, out.sh_type == SHT_NOBITS ? 0 : out.sh_size);
    };
    Elf64_Shdr names;
    if (!section(header.e_shstrndx, names)) {
        error = path + ": its section table is damaged";
        return std::nullopt;
    }
    for (std::size_t index = 0; index < header.e_shnum; ++index) {
        Elf64_Shdr candidate;
        if (!section(index, candidate) || candidate.sh_name >= names.sh_size)
            continue;
        const char* sectionName = bytes.data() + names.sh_offset + candidate.sh_name;
        if (std::strncmp(sectionName, kResourceSection, names.sh_size - candidate.sh_name) != 0)
            continue;
        // Records: name, zero byte, 4-byte little-endian size, data.
        std::size_t at = candidate.sh_offset;
        const std::size_t end = candidate.sh_offset + candidate.sh_size;
        while (at < end) {
            const char* start = bytes.data() + at;
            const std::size_t nameLength = strnlen(start, end - at);
            if (at + nameLength + 1 + 4 > end)
                break;
            const unsigned char* sizeBytes = reinterpret_cast<const unsigned char*>(start + nameLength + 1);
            const std::size_t size = sizeBytes[0] | sizeBytes[1] << 8 | sizeBytes[2] << 16
                                     | static_cast<std::size_t>(sizeBytes[3]) << 24;
            const std::size_t data = at + nameLength + 1 + 4;
            if (size > end - data)
                break;
            if (name == std::string_view(start, nameLength))
                return std::string(bytes.data() + data, size);
            at = data + size;
        }
        error = path + ": no resource \"" + name + "\" in the module";
        return std::nullopt;
    }
    error = path + ": the module carries no resources";
    return std::nullopt;
}

} // namespace montala::sim
