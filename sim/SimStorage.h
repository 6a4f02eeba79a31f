#pragma once

#include "kelmar/IStorage.h"
#include "sim/SimBase.h"

#include <map>
#include <string>
#include <vector>

namespace montala::sim {

// Named binary blocks, kept in a project as the value of an attribute.
class SimStorage : public SimBase, public Kelmar::IStorage {
public:
    using Blocks = std::map<std::string, std::vector<unsigned char>>;

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult write(const Kelmar::char8* name, const void* data, Kelmar::int64 size, Kelmar::int32 flags) override;
    Kelmar::tresult read(const Kelmar::char8* name, void* buffer, Kelmar::int64 size) override;
    Kelmar::int64 getSize(const Kelmar::char8* name) override;

    const Blocks& blocks() const { return data; }
    void setBlock(const std::string& name, std::vector<unsigned char> bytes) { data[name] = std::move(bytes); }

private:
    Blocks data;
};

} // namespace montala::sim
