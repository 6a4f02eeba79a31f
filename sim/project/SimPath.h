#pragma once

#include "kelmar/base/IPath.h"
#include "sim/project/SimBase.h"

#include <string>

namespace montala::sim {

// A file path as the host hands it out.
class SimPath : public SimBase, public Kelmar::IPath {
public:
    SimPath() = default;
    explicit SimPath(std::u16string text) : text(std::move(text)) {}

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult getText(Kelmar::char16* buffer, Kelmar::int32 bufferBytes) override;
    Kelmar::tresult setText(const Kelmar::char16* text, Kelmar::int32 flags) override;

    const std::u16string& value() const { return text; }

    // Copies `text` into a zero-terminated buffer of `bufferBytes` bytes;
    // kResultFalse when it does not fit.
    static Kelmar::tresult copyOut(const std::u16string& text, Kelmar::char16* buffer, Kelmar::int32 bufferBytes);

private:
    std::u16string text;
};

} // namespace montala::sim
