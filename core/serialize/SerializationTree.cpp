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

template <typename T>
void appendLittleEndian(std::vector<uint8_t>& bytes, T value)
{
    for (size_t i = 0; i < sizeof(T); ++i)
        bytes.push_back(static_cast<uint8_t>(static_cast<uint64_t>(value) >> (8 * i)));
}

template <typename T>
T fromLittleEndian(const uint8_t* data)
{
    uint64_t value = 0;
    for (size_t i = 0; i < sizeof(T); ++i)
        value |= static_cast<uint64_t>(data[i]) << (8 * i);
    return static_cast<T>(value);
}

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

void SerializationTree::writeByte(uint8_t value)
{
    bytes.push_back(value);
    position = bytes.size();
}

void SerializationTree::writeInt32(int32_t value)
{
    appendLittleEndian(bytes, static_cast<uint32_t>(value));
    position = bytes.size();
}

void SerializationTree::writeInt64(int64_t value)
{
    appendLittleEndian(bytes, static_cast<uint64_t>(value));
    position = bytes.size();
}

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

void SerializationTree::writeBool(bool value)
{
    writeByte(value ? 1 : 0);
}

void SerializationTree::writeText(const std::string& text)
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

const uint8_t* SerializationTree::take(size_t count)
{
    if (position > bytes.size() || count > bytes.size() - position)
        throw Result::StreamExhausted;
    const uint8_t* data = bytes.data() + position;
    position += count;
    return data;
}

uint8_t SerializationTree::readByte()
{
    return *take(1);
}

int32_t SerializationTree::readInt32()
{
    return static_cast<int32_t>(fromLittleEndian<uint32_t>(take(4)));
}

int64_t SerializationTree::readInt64()
{
    return static_cast<int64_t>(fromLittleEndian<uint64_t>(take(8)));
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

bool SerializationTree::readBool()
{
    return readByte() != 0;
}

std::string SerializationTree::readText()
{
    const uint32_t length = readUInt32();
    if (length == 0)
        return {};
    const uint8_t* data = take(length);
    return std::string(reinterpret_cast<const char*>(data), length);
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
