#pragma once

#include "kelmar/project/IClipSource.h"
#include "kelmar/project/IPoolClip.h"
#include "sim/project/SimBase.h"

#include <cstdint>
#include <string>

namespace montala::sim {

// One clip of a media pool.
class SimPoolClip : public SimBase, public Kelmar::IPoolClip, public Kelmar::IClipSource {
public:
    struct Info {
        std::int64_t id = 0;
        std::string kind = "video"; // "video" or "audio"
        std::u16string name;
        std::u16string path;
        double length = 0.0; // seconds

        bool operator==(const Info&) const = default;
    };

    explicit SimPoolClip(Info info) : data(std::move(info)) {}

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::IPath* getPath() override;
    Kelmar::tresult getName(Kelmar::String& name) override;
    Kelmar::int64 getId() override { return data.id; }
    bool isKind(const Kelmar::char8* kind) override;
    double getLength() override { return data.length; }

    std::int64_t id() const { return data.id; }
    const Info& info() const { return data; }

private:
    Info data;
};

} // namespace montala::sim
