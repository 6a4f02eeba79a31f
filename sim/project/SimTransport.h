#pragma once

#include "kelmar/project/ITransport.h"
#include "sim/project/SimBase.h"

namespace montala::sim {

class SimHost;

// The transport; it works on the active project's cursor, play state and
// cycle. With no active project it answers zero and refuses changes.
class SimTransport : public SimBase, public Kelmar::ITransport {
public:
    explicit SimTransport(SimHost& host) : host(&host) {}

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult stop() override;
    bool isPlaying() override;
    double getCursor() override;
    Kelmar::tresult setCursor(double time) override;
    Kelmar::FUnknown* getParameter(const Kelmar::char8* name) override;

    // What the user's play button does.
    Kelmar::tresult play();

private:
    SimHost* host;
};

} // namespace montala::sim
