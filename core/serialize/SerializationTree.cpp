#include "core/serialize/SerializationTree.h"

#include "core/serialize/Serializable.h"
#include "util/Result.h"

#include <array>
#include <cstring>

namespace montala::core::serialize {

using util::Result;

void Serializable::readOld(SerializationTree&, uint32_t)
{
    throw Result::NotSupported;
}

namespace {

std::array<uint32_t, 256> makeCrcTable()
{
    std::array<uint32_t, 256> table{};
    for (uint32_t n = 0; n < 256; ++n) {
        uint32_t c = n;
        for (int k = 0; k < 8; ++k)
            c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
        table[n] = c;
    }
    return table;
}

} // namespace

void SerializationTree::writeDouble(double value)
{
    int64_t raw = 0;
    std::memcpy(&raw, &value, sizeof raw);
    writeInt64(raw);
}

void SerializationTree::writeFloat(float value)
{
    int32_t raw = 0;
    std::memcpy(&raw, &value, sizeof raw);
    writeInt32(raw);
}

void SerializationTree::writeText(std::string_view text)
{
    writeInt32(static_cast<int32_t>(text.size()));
    bytes.insert(bytes.end(), text.begin(), text.end());
    position = bytes.size();
}

void SerializationTree::writeObject(const Serializable& object)
{
    writeUInt32(object.getVersion());
    object.write(*this);
}

void SerializationTree::throwExhausted()
{
    throw Result::StreamExhausted;
}

double SerializationTree::readDouble()
{
    const int64_t raw = readInt64();
    double value = 0;
    std::memcpy(&value, &raw, sizeof value);
    return value;
}

float SerializationTree::readFloat()
{
    const int32_t raw = readInt32();
    float value = 0;
    std::memcpy(&value, &raw, sizeof value);
    return value;
}

std::string_view SerializationTree::readTextView()
{
    const uint32_t length = readUInt32();
    if (length == 0)
        return {};
    const uint8_t* data = take(length);
    return std::string_view(reinterpret_cast<const char*>(data), length);
}

void SerializationTree::readObject(Serializable& object)
{
    const uint32_t stored = readUInt32();
    if (stored == object.getVersion())
        object.readCurrent(*this);
    else if (stored > object.getVersion())
        throw Result::NewerVersion;
    else
        object.readOld(*this, stored);
}

void SerializationTree::assign(const void* data, size_t size)
{
    const auto* begin = static_cast<const uint8_t*>(data);
    bytes.assign(begin, begin + size);
    position = 0;
}

void SerializationTree::clear()
{
    bytes.clear();
    position = 0;
}

uint32_t SerializationTree::computeChecksum() const
{
    if (bytes.empty())
        return 0;
    static const std::array<uint32_t, 256> table = makeCrcTable();
    uint32_t crc = 0xFFFFFFFFu;
    for (uint8_t byte : bytes)
        crc = table[(crc ^ byte) & 0xFF] ^ (crc >> 8);
    return crc ^ 0xFFFFFFFFu;
}

} // namespace montala::core::serialize
