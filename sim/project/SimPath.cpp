#include "sim/project/SimPath.h"

namespace montala::sim {

Kelmar::tresult SimPath::queryInterface(const Kelmar::FUID& iid, void** obj)
{
    if (Kelmar::answerInterface<Kelmar::IPath>(this, iid, obj))
        return Kelmar::kResultOk;
    return FObject::queryInterface(iid, obj);
}

Kelmar::tresult SimPath::getText(Kelmar::char16* buffer, Kelmar::int32 bufferBytes)
{
    return copyOut(text, buffer, bufferBytes);
}

Kelmar::tresult SimPath::setText(const Kelmar::char16* newText, Kelmar::int32)
{
    if (!newText)
        return Kelmar::kInvalidArgument;
    text = newText;
    return Kelmar::kResultOk;
}

Kelmar::tresult SimPath::copyOut(const std::u16string& text, Kelmar::char16* buffer, Kelmar::int32 bufferBytes)
{
    if (!buffer || bufferBytes < static_cast<Kelmar::int32>(sizeof(Kelmar::char16)))
        return Kelmar::kInvalidArgument;
    const std::size_t capacity = static_cast<std::size_t>(bufferBytes) / sizeof(Kelmar::char16);
    if (text.size() + 1 > capacity) {
        buffer[0] = 0;
        return Kelmar::kResultFalse;
    }
    text.copy(buffer, text.size());
    buffer[text.size()] = 0;
    return Kelmar::kResultOk;
}

} // namespace montala::sim
