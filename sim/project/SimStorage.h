#pragma once

#include "kelmar/base/IPtr.h"
#include "kelmar/project/IStorage.h"
#include "sim/project/SimBase.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace montala::sim {

class SimFailures;

// Named binary blocks, kept in a project as the value of an attribute. With
// the host's failure plan, writes can be made to fail and the interface
// withheld.
class SimStorage : public SimBase, public Kelmar::IStorage {
public:
    using Blocks = std::map<std::string, std::vector<unsigned char>>;

    explicit SimStorage(std::shared_ptr<SimFailures> failures = nullptr) : failures(std::move(failures)) {}

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult write(const Kelmar::char8* name, const void* data, Kelmar::int64 size, Kelmar::int32 flags) override;
    Kelmar::tresult read(const Kelmar::char8* name, void* buffer, Kelmar::int64 size) override;
    Kelmar::int64 getSize(const Kelmar::char8* name) override;

    const Blocks& blocks() const { return data; }
    void setBlock(const std::string& name, std::vector<unsigned char> bytes) { data[name] = std::move(bytes); }

    // A new store with the same blocks, as a copied object gets.
    Kelmar::IPtr<SimStorage> copy() const;
    void setFailures(std::shared_ptr<SimFailures> plan) { failures = std::move(plan); }

private:
    Blocks data;
    std::shared_ptr<SimFailures> failures;
};

} // namespace montala::sim
