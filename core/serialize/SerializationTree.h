#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace montala::core::serialize {

class Serializable;

// A stored block in memory. Flat despite the name: a byte vector and a read
// cursor; nesting shows only in the order of the bytes. All numbers are
// little-endian, without padding or alignment.
class SerializationTree {
public:
    void writeByte(uint8_t value);
    void writeInt32(int32_t value);
    void writeUInt32(uint32_t value) { writeInt32(static_cast<int32_t>(value)); }
    void writeInt64(int64_t value);
    void writeDouble(double value);
    void writeFloat(float value);
    void writeBool(bool value);
    void writeText(const std::string& text);
    // The object's version, then its body.
    void writeObject(const Serializable& object);

    // Each read throws Result::StreamExhausted if it would pass the end.
    uint8_t readByte();
    int32_t readInt32();
    uint32_t readUInt32() { return static_cast<uint32_t>(readInt32()); }
    int64_t readInt64();
    double readDouble();
    float readFloat();
    bool readBool();
    std::string readText();
    // Reads a version and then the body: readCurrent for the object's own
    // version, readOld for an older one, Result::NewerVersion for a newer one.
    void readObject(Serializable& object);

    size_t getSize() const { return bytes.size(); }
    const uint8_t* getData() const { return bytes.empty() ? nullptr : bytes.data(); }
    const std::vector<uint8_t>& getBytes() const { return bytes; }
    uint64_t getPosition() const { return position; }
    void assign(const void* data, size_t size);
    void clear();
    void rewind() { position = 0; }
    // CRC-32 (reflected 0xEDB88320, initial and final inversion); 0 when empty.
    uint32_t computeChecksum() const;

private:
    const uint8_t* take(size_t count);

    std::vector<uint8_t> bytes;
    uint64_t position = 0;
};

} // namespace montala::core::serialize
