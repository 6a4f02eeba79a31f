#pragma once

#include <cstdint>

namespace montala::core::serialize {

class SerializationTree;

// Base of every stored class. Each class knows its current version and can
// read its older ones; a block from a newer release is refused by the tree.
class Serializable {
public:
    explicit Serializable(uint32_t currentVersion) : version(currentVersion) {}
    Serializable(const Serializable&) = default;
    Serializable& operator=(const Serializable&) = default;
    virtual ~Serializable() = default;

    // Reads the body of the current version.
    virtual void readCurrent(SerializationTree& tree) = 0;
    // Writes the body of the current version.
    virtual void write(SerializationTree& tree) const = 0;
    // Reads the body of an older version; classes without one keep this.
    virtual void readOld(SerializationTree& tree, uint32_t storedVersion);

    uint32_t getVersion() const { return version; }

protected:
    uint32_t version;
};

} // namespace montala::core::serialize
