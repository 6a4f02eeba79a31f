#pragma once

#include "kelmar/base/FObject.h"
#include "kelmar/services/IIdleHandler.h"
#include "kelmar/edit/IProjectEdit.h"
#include "kelmar/edit/IProjectEditHook.h"
#include "kelmar/project/IProjectNotification.h"
#include "kelmar/project/IProjectSettingsChange.h"
#include "kelmar/project/IProjectStorageNotification.h"
#include "kelmar/base/IPtr.h"
#include "kelmar/base/String.h"
#include "sim/project/SimProject.h"

#include <functional>
#include <string>
#include <vector>

namespace montala::sim::test {

// Stands where the plug-in's host object stands: hears every notification
// and writes down what it heard, as "opened Small", "edited Small" and so on.
class Recorder : public Kelmar::FObject,
                 public Kelmar::IProjectNotification,
                 public Kelmar::IProjectStorageNotification,
                 public Kelmar::IProjectEditHook,
                 public Kelmar::IIdleHandler {
public:
    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override
    {
        if (Kelmar::answerInterface<IProjectNotification>(this, iid, obj)
            || Kelmar::answerInterface<IProjectStorageNotification>(this, iid, obj)
            || Kelmar::answerInterface<IProjectEditHook>(this, iid, obj)
            || Kelmar::answerInterface<IIdleHandler>(this, iid, obj))
            return Kelmar::kResultOk;
        return FObject::queryInterface(iid, obj);
    }
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult projectActivated(Kelmar::IProject* project) override { return note("activated", project); }
    Kelmar::tresult projectDeactivated(Kelmar::IProject* project) override { return note("deactivated", project); }
    Kelmar::tresult projectOpened(Kelmar::IProject* project) override { return note("opened", project); }
    Kelmar::tresult projectClosed(Kelmar::IProject* project) override { return note("closed", project); }
    Kelmar::tresult projectRenamed(Kelmar::IProject* project) override { return note("renamed", project); }
    Kelmar::tresult projectSaving(Kelmar::IProject* project) override
    {
        note("saving", project);
        if (onSaving)
            onSaving(project);
        return Kelmar::kResultOk;
    }
    Kelmar::tresult projectEdited(Kelmar::IProject* project, Kelmar::IProjectEdit* edit) override
    {
        note("edited", project);
        if (onEdited)
            onEdited(project, edit);
        return Kelmar::kResultOk;
    }
    Kelmar::tresult onIdle() override
    {
        heard.push_back("idle");
        return Kelmar::kResultOk;
    }
    void update(Kelmar::FUnknown* changed, Kelmar::int32 message) override
    {
        auto change = Kelmar::queryInterface<Kelmar::IProjectSettingsChange>(changed);
        if (!change) {
            heard.push_back("update " + std::to_string(message));
            return;
        }
        note("settings " + std::to_string(message), Kelmar::owned(change->getProject()).get());
    }

    std::vector<std::string> heard;
    std::function<void(Kelmar::IProject*)> onSaving;
    std::function<void(Kelmar::IProject*, Kelmar::IProjectEdit*)> onEdited;

private:
    Kelmar::tresult note(const std::string& what, Kelmar::IProject* project)
    {
        auto* simProject = dynamic_cast<SimProject*>(project);
        heard.push_back(what + " " + (simProject ? Kelmar::String::utf16ToUtf8(simProject->get().name) : "?"));
        return Kelmar::kResultOk;
    }
};

} // namespace montala::sim::test
