#include "core/model/Variant.h"

#include "core/serialize/SerializationTree.h"
#include "util/Result.h"

#include <cmath>
#include <limits>

namespace montala::core {

using util::Result;

Variant::Variant() : Serializable(currentVersion) {}

Variant::Variant(bool value) : Serializable(currentVersion), type(Bool), number(value ? 1.0 : 0.0) {}

Variant::Variant(int value) : Serializable(currentVersion), type(Int), number(value) {}

Variant::Variant(double value) : Serializable(currentVersion), type(Double), number(value) {}

Variant::Variant(const std::string& value) : Serializable(currentVersion), type(Text), text(value) {}

Variant::Variant(const char* value) : Variant(std::string(value != nullptr ? value : "")) {}

Variant& Variant::operator=(const Variant& other)
{
    if (this == &other)
        return *this;
    type = other.type;
    if (type == Text) {
        text = other.text;
        number = 0.0;
    } else {
        number = other.number;
        text.clear();
    }
    return *this;
}

int Variant::asInt() const
{
    if (std::isnan(number))
        return 0;
    if (number >= static_cast<double>(std::numeric_limits<int>::max()))
        return std::numeric_limits<int>::max();
    if (number <= static_cast<double>(std::numeric_limits<int>::min()))
        return std::numeric_limits<int>::min();
    return static_cast<int>(number);
}

bool Variant::operator==(const Variant& other) const
{
    if (type != other.type)
        return false;
    return type == Text ? text == other.text : number == other.number;
}

// Stored form, versions 0 and 1 alike: the type as int32, then the value:
// text for type 3, 8 bytes of double for type 4, a 32-bit float otherwise.
void Variant::readCurrent(serialize::SerializationTree& tree)
{
    int stored = tree.readInt32();
    // Unknown types are taken as text, so a newer kind of value still reads.
    if (stored != Empty && stored != Bool && stored != Int && stored != Float && stored != Double)
        stored = Text;
    type = stored;
    if (type == Text) {
        text = tree.readText();
        number = 0.0;
    } else {
        number = type == Double ? tree.readDouble() : static_cast<double>(tree.readFloat());
        text.clear();
    }
}

void Variant::write(serialize::SerializationTree& tree) const
{
    if (type < Empty || type > Double)
        throw Result::InvalidArgument;
    tree.writeInt32(type);
    if (type == Text)
        tree.writeText(text);
    else if (type == Double)
        tree.writeDouble(number);
    else
        tree.writeFloat(static_cast<float>(number));
}

void Variant::readOld(serialize::SerializationTree& tree, uint32_t storedVersion)
{
    if (storedVersion != 0)
        throw Result::UnknownVersion;
    readCurrent(tree);
}

} // namespace montala::core
