#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace montala::core::serialize {

class Serializable;

// A stored block in memory. Flat despite the name: a byte vector and a read
// cursor; nesting shows only in the order of the bytes. All numbers are
// little-endian, without padding or alignment.
class SerializationTree {
public:
    // The numbers are written and read here, inline: a stored data model
    // holds hundreds of thousands of them.
    void writeByte(uint8_t value)
    {
        bytes.push_back(value);
        position = bytes.size();
    }
    void writeInt32(int32_t value) { appendLittleEndian(static_cast<uint32_t>(value)); }
    void writeUInt32(uint32_t value) { appendLittleEndian(value); }
    void writeInt64(int64_t value) { appendLittleEndian(static_cast<uint64_t>(value)); }
    void writeDouble(double value);
    void writeFloat(float value);
    void writeBool(bool value) { writeByte(value ? 1 : 0); }
    void writeBytes(const uint8_t* data, size_t count)
    {
        bytes.insert(bytes.end(), data, data + count);
        position = bytes.size();
    }
    void writeText(std::string_view text);
    // The object's version, then its body.
    void writeObject(const Serializable& object);

    // Each read throws Result::StreamExhausted if it would pass the end.
    uint8_t readByte() { return *take(1); }
    int32_t readInt32() { return static_cast<int32_t>(fromLittleEndian<uint32_t>(take(4))); }
    uint32_t readUInt32() { return fromLittleEndian<uint32_t>(take(4)); }
    int64_t readInt64() { return static_cast<int64_t>(fromLittleEndian<uint64_t>(take(8))); }
    double readDouble();
    float readFloat();
    bool readBool() { return readByte() != 0; }
    std::string readText() { return std::string(readTextView()); }
    // The text where it stands in the block: valid until the tree changes.
    std::string_view readTextView();
    // Reads a version and then the body: readCurrent for the object's own
    // version, readOld for an older one, Result::NewerVersion for a newer one.
    void readObject(Serializable& object);

    size_t getSize() const { return bytes.size(); }
    const uint8_t* getData() const { return bytes.empty() ? nullptr : bytes.data(); }
    const std::vector<uint8_t>& getBytes() const { return bytes; }
    uint64_t getPosition() const { return position; }
    void assign(const void* data, size_t size);
    // Room for size bytes in all, so that a long write need not regrow;
    // grows at least by half, so that reserving list by list stays cheap.
    void reserve(size_t size)
    {
        if (size > bytes.capacity())
            bytes.reserve(std::max(size, bytes.capacity() + bytes.capacity() / 2));
    }
    void clear();
    void rewind() { position = 0; }
    // CRC-32 (reflected 0xEDB88320, initial and final inversion); 0 when empty.
    uint32_t computeChecksum() const;

private:
    template <typename T>
    void appendLittleEndian(T value)
    {
        for (size_t i = 0; i < sizeof(T); ++i)
            bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
        position = bytes.size();
    }

    template <typename T>
    static T fromLittleEndian(const uint8_t* data)
    {
        T value = 0;
        for (size_t i = 0; i < sizeof(T); ++i)
            value = static_cast<T>(value | static_cast<T>(data[i]) << (8 * i));
        return value;
    }

    const uint8_t* take(size_t count)
    {
        if (position > bytes.size() || count > bytes.size() - position)
            throwExhausted();
        const uint8_t* data = bytes.data() + position;
        position += count;
        return data;
    }
    [[noreturn]] static void throwExhausted();

    std::vector<uint8_t> bytes;
    uint64_t position = 0;
};

} // namespace montala::core::serialize
