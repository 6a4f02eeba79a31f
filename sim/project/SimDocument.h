#pragma once

#include "kelmar/project/IDocument.h"
#include "sim/project/SimBase.h"

#include <string>

namespace montala::sim {

// The file behind a project: the path of its session file.
class SimDocument : public SimBase, public Kelmar::IDocument {
public:
    explicit SimDocument(std::u16string path) : path(std::move(path)) {}

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult getName(Kelmar::char16* buffer, Kelmar::int32 bufferBytes) override;

private:
    std::u16string path;
};

} // namespace montala::sim
