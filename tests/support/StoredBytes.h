#pragma once

#include "core/serialize/Serializable.h"
#include "core/serialize/SerializationTree.h"

#include <cstdint>
#include <vector>

namespace montala::test {

// The bytes writeObject gives for an object: its version, then its body.
inline std::vector<uint8_t> storedBytes(const core::serialize::Serializable& object)
{
    core::serialize::SerializationTree tree;
    tree.writeObject(object);
    return tree.getBytes();
}

// A tree holding the bytes, ready to be read from the start.
inline core::serialize::SerializationTree treeOf(const std::vector<uint8_t>& bytes)
{
    core::serialize::SerializationTree tree;
    tree.assign(bytes.data(), bytes.size());
    return tree;
}

} // namespace montala::test
