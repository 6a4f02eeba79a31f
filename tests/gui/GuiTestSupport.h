#pragma once

// Doubles and input gestures that several of the window's tests need: the
// host's project, the undo steps a change opens, the sample reel, and mouse
// events as the desktop's main mouse would deliver them.

#include "core/model/DataModel.h"
#include "core/model/DataModelCommandCreator.h"
#include "util/StringUtil.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace montala::test {

// The host's side of setProject: a new listener hears of the active
// project's data model at once.
class ProjectNotifier : public core::ChangeContextNotificationBase {
public:
    explicit ProjectNotifier(core::DataModel* model) : model(model) {}
    void addListener(core::ChangeContextListenerInterface* listener) override
    {
        core::ChangeContextNotificationBase::addListener(listener);
        listener->changed(core::DataModelChangeContext(model));
    }
    core::DataModel* model;
};

// Loads the Old and New cuts of the 25 fps short film that ships with the sources.
inline void loadShortFilm(core::DataModel& model)
{
    const std::string folder = std::string(MONTALA_SOURCE_DIR) + "/samples/edl/short-film-25/";
    core::Framerate suggested;
    model.getOldList().loadEdl(util::StringUtil::fromUtf8(folder + "old.edl"), false, suggested, true, false);
    model.getNewList().loadEdl(util::StringUtil::fromUtf8(folder + "new.edl"), false, suggested, true, false);
}

// Records the titles of the undo steps opened while it is installed.
class RecordingUndo : public core::DataModelCommandCreator {
public:
    RecordingUndo() { setCommandCreator(this); }
    ~RecordingUndo() override { setCommandCreator(nullptr); }

    std::unique_ptr<core::DataModelChangeCommand> createCommand(const std::string& title) override
    {
        titles.push_back(title);
        return std::make_unique<core::DataModelChangeCommand>(title);
    }
    std::unique_ptr<core::DataModelChangeCommand> createCommand(Kelmar::IProjectEdit*) override { return nullptr; }
    std::unique_ptr<core::DataModelChangeCommand> createCommand(Kelmar::IProjectEdit*,
                                                                const core::serialize::SerializationTree&) override
    {
        return nullptr;
    }

    std::vector<std::string> titles;
};

// A mouse event on the component at the point, with the given buttons held.
inline juce::MouseEvent mouseOn(juce::Component& target, juce::Point<float> at, juce::ModifierKeys mods = {})
{
    const juce::Time now = juce::Time::getCurrentTime();
    return juce::MouseEvent(juce::Desktop::getInstance().getMainMouseSource(), at, mods,
                            juce::MouseInputSource::defaultPressure, 0.0f, 0.0f, 0.0f, 0.0f, &target, &target, now,
                            at, now, 1, false);
}

// The wheel turned over the point of the component (its centre if none).
inline void turnWheel(juce::Component& target, float deltaY, std::optional<juce::Point<float>> at = {})
{
    juce::MouseWheelDetails details{};
    details.deltaY = deltaY;
    target.mouseWheelMove(mouseOn(target, at.value_or(target.getLocalBounds().getCentre().toFloat())), details);
}

} // namespace montala::test
