#include "core/model/DataModel.h"

#include "core/events/EventListIndex.h"
#include "core/generation/HealProcessing.h"
#include "core/model/PropertyKeys.h"
#include "core/serialize/SerializationTree.h"
#include "core/time/Tolerances.h"
#include "core/events/VfxNameFilter.h"

#include <utility>
#include <vector>

namespace montala::core {

using util::Result;

namespace {


// The VFX rows that take part: switched on and with at least one text.

} // namespace

DataModel::DataModel() : Serializable(currentVersion)
{
    attachToSources();
}

DataModel::~DataModel()
{
    detachFromSources();
}

void DataModel::attachToSources()
{
    oldList.addListener(this);
    newList.addListener(this);
    changeList.addListener(this);
    settings.addListener(this);
    videoList.addListener(this);
}

void DataModel::detachFromSources()
{
    oldList.removeListener(this);
    newList.removeListener(this);
    changeList.removeListener(this);
    settings.removeListener(this);
    videoList.removeListener(this);
}

void DataModel::changed(const ChangeContext& context)
{
    if (notifier != nullptr)
        notifier->notify(context);
}

void DataModel::notifyModelChanged()
{
    if (notifier != nullptr)
        notifier->notify(DataModelChangeContext(this));
}

Result::Type DataModel::generateChangeEdl()
{
    detachFromSources();
    Result::Type result = Result::Ok;
    try {
        changeEdlGenerator.configure(settings.getMatchName(), rowsInUse(settings.getVfxPatterns()));
        const int generated = changeEdlGenerator.generate(oldList, newList, changeList);
        if (generated != Result::Ok)
            throw static_cast<Result::Type>(generated);
        EventListAlgorithm::Context context;
        context.newList = &newList;
        context.settings = &settings;
        context.framerate = Timecode::currentFramerate();
        HealProcessing().process(changeList, context);
    } catch (Result::Type code) {
        changeList.clear();
        result = code;
    } catch (...) {
        // Not ours to report, but the model must not stay deaf or hold half
        // a result while it travels up.
        changeList.clear();
        attachToSources();
        throw;
    }
    attachToSources();
    if (notifier != nullptr)
        notifier->notify(EventListChangeContext(EventList::ChangeKind));
    return result;
}

void DataModel::revalidateAll()
{
    detachFromSources();
    for (const EventList* list : {&oldList, &newList, &changeList}) {
        for (const EventPtr& event : list->getEvents())
            event->revalidate();
    }
    attachToSources();
    notifyModelChanged();
}

void DataModel::applyVfxPatterns()
{
    std::vector<std::pair<std::string, std::string>> pairs;
    for (const VfxPatternEntry& entry : rowsInUse(settings.getVfxPatterns()))
        pairs.emplace_back(entry.prefix, entry.postfix);
    VfxNameFilter filter;
    filter.setPatterns(pairs);
    oldList.applyVfxPatterns(filter, settings.getMatchName());
    newList.applyVfxPatterns(filter, settings.getMatchName());
}

EventList DataModel::findNewEvents(const EventPtr& changeEvent) const
{
    return findLinkedEvents(changeEvent, false);
}

EventList DataModel::findOldEvents(const EventPtr& changeEvent) const
{
    return findLinkedEvents(changeEvent, true);
}

EventList DataModel::findLinkedEvents(const EventPtr& changeEvent, bool onOldList) const
{
    EventList found(EventList::ChangeKind);
    if (!changeEvent || !changeList.contains(changeEvent) ||
        changeEvent->hasState(EventState::InvalidTimecode) ||
        !(changeEvent->getSrcIn() < changeEvent->getSrcOut()) ||
        !(changeEvent->getDstIn() < changeEvent->getDstOut()))
        return found;

    const Framerate rate = Timecode::currentFramerate();
    const EventListIndex index(onOldList ? oldList : newList, rate);
    // A Change event's SRC lies on the old record timeline, its DST on the
    // new one: both are found on the DST side of their list.
    const Timecode& in = onOldList ? changeEvent->getSrcIn() : changeEvent->getDstIn();
    const Timecode& out = onOldList ? changeEvent->getSrcOut() : changeEvent->getDstOut();
    const SecondsRange range(in.toSeconds(rate) + positionTolerance, out.toSeconds(rate) - positionTolerance);
    for (const EventPtr& event : index.findDstEvents(range))
        found.addEvent(event);
    return found;
}

Result::Type DataModel::getProperty(int32_t key, Variant& value) const
{
    const auto found = properties.find(key);
    if (found == properties.end())
        return Result::InvalidArgument;
    value = found->second;
    return Result::Ok;
}

void DataModel::setProperty(int32_t key, const Variant& value)
{
    const auto found = properties.find(key);
    if (found == properties.end())
        properties.emplace(key, value);
    else
        found->second = value;
}

bool DataModel::isPreviewActive() const
{
    Variant value;
    return getProperty(PropertyKey::PreviewActive, value) == Result::Ok && value.asBool();
}

void DataModel::setPreviewActive(bool active)
{
    setProperty(PropertyKey::PreviewActive, Variant(active));
}

void DataModel::notifyPreviewChanged()
{
    if (notifier == nullptr)
        throw Result::NotInitialized;
    notifier->notify(ChangeContext(ChangeContext::PreviewKind));
}

void DataModel::clearAll()
{
    oldList.clear();
    newList.clear();
    changeList.clear();
    properties.clear();
    settings.reset();
    videoList.clear();
}

void DataModel::restoreKeepingSettings(serialize::SerializationTree& tree)
{
    const Settings kept = settings;
    restoringKeepingSettings = true;
    Result::Type failure = Result::Ok;
    try {
        tree.readObject(*this);
    } catch (Result::Type code) {
        failure = code;
    }
    restoringKeepingSettings = false;
    settings = kept;
    notifyModelChanged();
    if (failure != Result::Ok)
        throw failure;
}

// Stored form, version 1: the three lists, the number of values and each
// (key, Variant) by ascending key, the settings, the video list.
// Version 0 is the same without the video list.
void DataModel::write(serialize::SerializationTree& tree) const
{
    // Room for the three lists at once: each regrowth of a block of
    // megabytes costs its copy and fresh pages.
    tree.reserve(tree.getSize() + EventList::storedSizeGuess *
                                      (oldList.getSize() + newList.getSize() + changeList.getSize()));
    tree.writeObject(oldList);
    tree.writeObject(newList);
    tree.writeObject(changeList);
    tree.writeInt32(static_cast<int32_t>(properties.size()));
    for (const auto& [key, value] : properties) {
        tree.writeInt32(key);
        tree.writeObject(value);
    }
    tree.writeObject(settings);
    tree.writeObject(videoList);
}

void DataModel::readCurrent(serialize::SerializationTree& tree)
{
    read(tree, currentVersion);
}

void DataModel::readOld(serialize::SerializationTree& tree, uint32_t storedVersion)
{
    if (storedVersion != 0)
        throw Result::UnknownVersion;
    read(tree, storedVersion);
}

void DataModel::read(serialize::SerializationTree& tree, uint32_t storedVersion)
{
    detachFromSources();
    Result::Type failure = Result::Ok;
    try {
        tree.readObject(oldList);
        tree.readObject(newList);
        tree.readObject(changeList);
        properties.clear();
        const int32_t count = tree.readInt32();
        if (count < 0)
            throw Result::BadStoredData;
        for (int32_t i = 0; i < count; ++i) {
            const int32_t key = tree.readInt32();
            Variant value;
            tree.readObject(value);
            properties.insert_or_assign(key, value);
        }
        tree.readObject(settings);
        if (storedVersion >= 1)
            tree.readObject(videoList);
        else
            videoList.clear();
    } catch (Result::Type code) {
        failure = code;
    } catch (...) {
        failure = Result::NotInitialized;
    }
    if (failure != Result::Ok) {
        clearAll();
        // Version 0 blocks come from old releases: whatever went wrong, the
        // user is told the block is of an unknown version.
        if (storedVersion == 0)
            failure = Result::UnknownVersion;
    }
    attachToSources();
    if (!restoringKeepingSettings)
        notifyModelChanged();
    if (failure != Result::Ok)
        throw failure;
}

} // namespace montala::core
