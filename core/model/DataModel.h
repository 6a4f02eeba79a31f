#pragma once

#include "core/model/ChangeContext.h"
#include "core/generation/ChangeEdlGenerator.h"
#include "core/events/EventList.h"
#include "core/model/Settings.h"
#include "core/model/Variant.h"
#include "core/events/VideoList.h"
#include "core/serialize/Serializable.h"
#include "util/Result.h"

#include <cstdint>
#include <map>

namespace montala::core {

namespace serialize {
class SerializationTree;
}

// All conform work of one project: the three lists, the settings, the new
// videos and a store of numbered values. It is what the project saves and
// what an undo step brings back.
//
//   Old     SRC: source tape         DST: old record timeline
//   New     SRC: source tape         DST: new record timeline
//   Change  SRC: old record timeline DST: new record timeline
//
// So a Change event's SRC is looked up on the Old list's DST side and its
// DST on the New list's DST side. The model passes every change of its
// parts on to one notifier.
class DataModel : public serialize::Serializable, public ChangeContextListenerInterface {
public:
    static constexpr uint32_t currentVersion = 1;

    DataModel();
    DataModel(const DataModel&) = delete;
    DataModel& operator=(const DataModel&) = delete;
    ~DataModel() override;

    EventList& getOldList() { return oldList; }
    EventList& getNewList() { return newList; }
    EventList& getChangeList() { return changeList; }
    Settings& getSettings() { return settings; }
    VideoList& getVideoList() { return videoList; }
    const EventList& getOldList() const { return oldList; }
    const EventList& getNewList() const { return newList; }
    const EventList& getChangeList() const { return changeList; }
    const Settings& getSettings() const { return settings; }
    const VideoList& getVideoList() const { return videoList; }

    // Not owned; may be null. Setting it tells nobody.
    void setNotifier(ChangeContextNotificationBase* newNotifier) { notifier = newNotifier; }
    ChangeContextNotificationBase* getNotifier() const { return notifier; }
    void attachToSources();
    void detachFromSources();

    // Replaces the Change list by one generated from the Old and New lists
    // and healed as the settings say. The one operation that returns its
    // failure: on failure the Change list is empty.
    util::Result::Type generateChangeEdl();
    // Why the last generateChangeEdl failed and on which event, when the
    // generator knows; empty (code Ok) after a success.
    const GenerationFailure& lastGenerationFailure() const { return changeEdlGenerator.lastFailure(); }
    // Re-checks every event against the current rate.
    void revalidateAll();
    // Marks the Old and New events whose names match the active VFX rows.
    // A row with a character outside the allowed set throws
    // Result::InvalidArgument.
    void applyVfxPatterns();
    // The New (or Old) events a Change event came from: those its DST (or
    // SRC) range overlaps by more than one sample at 384 kHz. Empty for an
    // event of another list or with a bad or empty range.
    EventList findNewEvents(const EventPtr& changeEvent) const;
    EventList findOldEvents(const EventPtr& changeEvent) const;

    bool hasProperty(int32_t key) const { return properties.count(key) != 0; }
    // Result::InvalidArgument, returned, for a missing key.
    util::Result::Type getProperty(int32_t key, Variant& value) const;
    void setProperty(int32_t key, const Variant& value);
    const std::map<int32_t, Variant>& getProperties() const { return properties; }
    bool isPreviewActive() const;
    void setPreviewActive(bool active);
    // Result::NotInitialized without a notifier.
    void notifyPreviewChanged();

    // Empties the lists, the values and the videos and resets the settings.
    void clearAll();
    // An undo step: reads the lists, videos and values from the tree but
    // keeps the settings of the moment, and notifies exactly once.
    void restoreKeepingSettings(serialize::SerializationTree& tree);

    void changed(const ChangeContext& context) override;

    // A failed read leaves the model empty, never half read, and throws the
    // failure after the listeners are back and the notifier has been told.
    void readCurrent(serialize::SerializationTree& tree) override;
    void write(serialize::SerializationTree& tree) const override;
    void readOld(serialize::SerializationTree& tree, uint32_t storedVersion) override;

private:
    void read(serialize::SerializationTree& tree, uint32_t storedVersion);
    EventList findLinkedEvents(const EventPtr& changeEvent, bool onOldList) const;
    void notifyModelChanged();

    EventList oldList{EventList::OldKind};
    EventList newList{EventList::NewKind};
    EventList changeList{EventList::ChangeKind};
    ChangeContextNotificationBase* notifier = nullptr;
    std::map<int32_t, Variant> properties;
    Settings settings;
    VideoList videoList;
    ChangeEdlGenerator changeEdlGenerator;
    bool restoringKeepingSettings = false;
};

} // namespace montala::core
