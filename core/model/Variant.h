#pragma once

#include "core/serialize/Serializable.h"

#include <string>

namespace montala::core {

// One value of the data model's numbered store: empty, bool, int, text or
// double. All types but text keep their value in one double. In storage the
// non-text types other than double travel as a 32-bit float, so an int that
// a float cannot hold exactly comes back changed: positions are doubles for
// that reason.
class Variant : public serialize::Serializable {
public:
    static constexpr uint32_t currentVersion = 1;

    // Type 2 (float) has no constructor: it only ever comes from storage.
    enum Type { Empty = -1, Bool = 0, Int = 1, Float = 2, Text = 3, Double = 4 };

    Variant();
    explicit Variant(bool value);
    explicit Variant(int value);
    explicit Variant(double value);
    explicit Variant(const std::string& value);
    // Without it a string literal would pick the bool constructor.
    explicit Variant(const char* value);
    Variant(const Variant& other) = default;
    // Copies the type and the field that holds the value; the other field is
    // cleared, so stale text never rides along with a number.
    Variant& operator=(const Variant& other);
    ~Variant() override = default;

    int getType() const { return type; }
    bool isEmpty() const { return type == Empty; }
    bool asBool() const { return number != 0.0; }
    double asDouble() const { return number; }
    // Truncated towards zero; values outside int (and NaN) are clamped, 0 for NaN.
    int asInt() const;
    const std::string& asText() const { return text; }

    bool operator==(const Variant& other) const;
    bool operator!=(const Variant& other) const { return !(*this == other); }

    void readCurrent(serialize::SerializationTree& tree) override;
    // Result::InvalidArgument for a type outside -1 to 4.
    void write(serialize::SerializationTree& tree) const override;
    void readOld(serialize::SerializationTree& tree, uint32_t storedVersion) override;

private:
    int type = Empty;
    double number = 0.0;
    std::string text;
};

} // namespace montala::core
