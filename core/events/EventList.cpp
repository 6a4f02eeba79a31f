#include "core/events/EventList.h"

#include "core/events/EventListAlgorithm.h"
#include "core/events/EventListIndex.h"
#include "core/generation/HealProcessing.h"
#include "core/events/HealedEvent.h"
#include "core/model/Settings.h"
#include "core/events/VfxNameFilter.h"
#include "core/fileio/CmxParser.h"
#include "core/fileio/CmxWriter.h"
#include "core/serialize/SerializationTree.h"
#include "util/Result.h"
#include "util/StringUtil.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <set>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace montala::core {

using util::Result;

EventList::EventList(int listKind) : Serializable(currentVersion), listKind(listKind) {}

EventList::EventList(const EventList& other)
    : Serializable(other),
      ChangeContextNotificationBase(),
      ChangeContextListenerInterface(),
      events(other.events),
      listKind(ChangeKind)
{
    subscribeAll();
    notifyListChanged();
}

EventList& EventList::operator=(const EventList& other)
{
    if (this == &other)
        return *this;
    unsubscribeAll();
    events = other.events;
    subscribeAll();
    notifyListChanged();
    return *this;
}

EventList::~EventList()
{
    releaseEvents();
}

void EventList::releaseEvents()
{
    // An event that only this list holds goes with it, listeners and all.
    // One walk over the events: a long list's events lie far beyond the
    // cache, and each is reached once.
    for (EventPtr& event : events) {
        if (event.use_count() > 1)
            event->removeListener(this);
        event.reset();
    }
    events.clear();
}

void EventList::subscribeAll()
{
    for (const EventPtr& event : events)
        event->addListener(this);
}

void EventList::unsubscribeAll()
{
    for (const EventPtr& event : events)
        event->removeListener(this);
}

void EventList::notifyListChanged()
{
    notify(EventListChangeContext(listKind));
}

void EventList::append(const EventList& other)
{
    appendRange(other, 0, other.getSize());
}

void EventList::appendRange(const EventList& other, size_t start, size_t count)
{
    if (count == 0)
        return;
    if (start > other.getSize() || count > other.getSize() - start)
        throw Result::OutOfRange;
    // Copy first: other may be this list.
    const std::vector<EventPtr> added(other.events.begin() + static_cast<std::ptrdiff_t>(start),
                                      other.events.begin() + static_cast<std::ptrdiff_t>(start + count));
    addEvents(added);
}

void EventList::append(EventList&& other)
{
    if (&other == this || other.events.empty())
        return;
    std::vector<EventPtr> moved = std::move(other.events);
    other.events.clear();
    for (const EventPtr& event : moved)
        event->removeListener(&other);
    other.notifyListChanged();
    addEvents(moved);
}

void EventList::addEvent(const EventPtr& event)
{
    event->addListener(this);
    events.push_back(event);
    notifyListChanged();
}

void EventList::addEvents(const std::vector<EventPtr>& added)
{
    if (added.empty())
        return;
    // Only the new events are subscribed; an event already in the list
    // keeps its one subscription.
    events.reserve(events.size() + added.size());
    for (const EventPtr& event : added) {
        event->addListener(this);
        events.push_back(event);
    }
    notifyListChanged();
}

void EventList::addEvents(std::vector<EventPtr>&& added)
{
    if (!events.empty() || added.empty()) {
        addEvents(added);
        return;
    }
    events = std::move(added);
    subscribeAll();
    notifyListChanged();
}

void EventList::removeEvents(const EventList& selection)
{
    std::unordered_set<const EventBase*> removed;
    for (const EventPtr& event : selection.events)
        removed.insert(event.get());
    {
        BulkChange bulk(*this);
        events.erase(std::remove_if(events.begin(), events.end(),
                                    [&](const EventPtr& event) { return removed.count(event.get()) != 0; }),
                     events.end());
    }
    notifyListChanged();
}

void EventList::removeRange(size_t start, size_t count)
{
    if (count == 0)
        return;
    if (start > events.size() || count > events.size() - start)
        throw Result::OutOfRange;
    {
        BulkChange bulk(*this);
        events.erase(events.begin() + static_cast<std::ptrdiff_t>(start),
                     events.begin() + static_cast<std::ptrdiff_t>(start + count));
    }
    notifyListChanged();
}

void EventList::clear()
{
    unsubscribeAll();
    events.clear();
    notifyListChanged();
}

void EventList::copyEventsFrom(const EventList& other)
{
    std::vector<EventPtr> copies;
    copies.reserve(other.events.size());
    for (const EventPtr& source : other.events) {
        auto copy = std::make_shared<EventBase>();
        *copy = *source;
        copies.push_back(std::move(copy));
    }
    {
        BulkChange bulk(*this);
        events = std::move(copies);
    }
    notifyListChanged();
}

bool EventList::contains(const EventPtr& event) const
{
    return std::find(events.begin(), events.end(), event) != events.end();
}

bool EventList::hasGoodEvent() const
{
    return std::any_of(events.begin(), events.end(),
                       [](const EventPtr& event) { return !event->hasFormatError(); });
}

int EventList::countInvalidTimecodes() const
{
    return static_cast<int>(std::count_if(events.begin(), events.end(), [](const EventPtr& event) {
        return event->hasState(EventState::InvalidTimecode);
    }));
}

int EventList::countFlawedEvents() const
{
    return static_cast<int>(std::count_if(events.begin(), events.end(),
                                          [](const EventPtr& event) { return !event->isFlawless(); }));
}

TimecodeRange EventList::getEventRange(const EventPtr& event, RangeKind kind)
{
    if (kind == Src)
        return TimecodeRange(event->getSrcIn(), event->getSrcOut());
    if (kind == Dst)
        return TimecodeRange(event->getDstIn(), event->getDstOut());
    throw Result::InvalidArgument;
}

TimecodeRange EventList::getRange(RangeKind kind) const
{
    const Timecode first = Timecode::maximum();
    const Timecode last = Timecode::zero();
    Timecode low = first;
    Timecode high = last;
    for (const EventPtr& event : events) {
        if (!event->isFlawless())
            continue;
        const TimecodeRange range = getEventRange(event, kind);
        if (range.start < low)
            low = range.start;
        if (range.end > high)
            high = range.end;
    }
    if (low == first && high == last)
        return TimecodeRange(Timecode::zero(), Timecode::zero());
    return TimecodeRange(low, high);
}

TimecodeRange EventList::getDstRange() const
{
    if (events.empty())
        throw Result::NotInitialized;
    return getRange(Dst);
}

void EventList::loadEdl(const std::u16string& path, bool append, Framerate& framerate,
                        bool renameBRolls, bool acceptAudio, fileio::ParseReport* report)
{
    if (!append)
        clear();
    // The parser fills the scratch list itself: going through parseEdlFile
    // would copy it once more into another scratch list.
    EventList loaded(ChangeKind);
    fileio::CmxParser parser;
    const Result::Type result = parser.parse(path, loaded, framerate, acceptAudio);
    if (report != nullptr)
        *report = parser.getReport();
    if (result != Result::Ok)
        throw result;
    if (renameBRolls)
        loaded.renameBRolls();
    this->append(std::move(loaded));
}

void EventList::renameBRolls()
{
    const auto endsInB = [](const EventPtr& event) {
        const std::string& name = event->getRollName();
        return !name.empty() && name.back() == 'B';
    };
    if (std::none_of(events.begin(), events.end(), endsInB))
        return;
    // The names as they stand before any renaming, as views into the
    // events; the renames wait until all are looked up.
    std::unordered_set<std::string_view> names;
    names.reserve(events.size());
    for (const EventPtr& event : events)
        names.insert(event->getRollName());
    std::vector<std::pair<EventBase*, std::string>> renames;
    for (const EventPtr& event : events) {
        const std::string& name = event->getRollName();
        if (endsInB(event) && names.count(std::string_view(name).substr(0, name.size() - 1)) != 0)
            renames.emplace_back(event.get(), name.substr(0, name.size() - 1));
    }
    for (auto& [event, shorter] : renames)
        event->setRollName(shorter);
}

void EventList::offsetDst(const Timecode& offsetValue, bool add)
{
    offset(Dst, offsetValue, add);
}

void EventList::offsetSrc(const Timecode& offsetValue, bool add)
{
    offset(Src, offsetValue, add);
}

void EventList::offset(RangeKind kind, const Timecode& offsetValue, bool add)
{
    if (events.empty())
        return;
    {
        BulkChange bulk(*this);
        const TimecodeRange range = getRange(kind);
        // Check before any change, so that a list moves whole or not at all.
        if (add) {
            if (range.end > Timecode::difference(Timecode::maximum(), offsetValue))
                throw Result::OutOfRange;
        } else if (range.start < offsetValue) {
            throw Result::OutOfRange;
        }
        const double shift = add ? offsetValue.toSeconds() : -offsetValue.toSeconds();
        for (const EventPtr& event : events) {
            if (!event->isFlawless())
                continue;
            const TimecodeRange old = getEventRange(event, kind);
            const TimecodeRange moved(Timecode(old.start.toSeconds() + shift),
                                      Timecode(old.end.toSeconds() + shift));
            if (kind == Src) {
                event->setSrcIn(moved.start);
                event->setSrcOut(moved.end);
            } else {
                event->setDstIn(moved.start);
                event->setDstOut(moved.end);
            }
        }
    }
    notifyListChanged();
}

namespace {

// The neighbour of an event on the record timeline, or null.
EventPtr findNeighbour(const EventListIndex& index, const EventPtr& event, bool toPrevious)
{
    if (!index.containsEvent(event))
        return nullptr;
    const auto& byDstIn = index.getByDstIn();
    // Among the events that share its DST IN, find this very one.
    auto [it, end] = byDstIn.equal_range(event->getDstIn());
    while (it != end && it->second.lock() != event)
        ++it;
    if (it == end)
        return nullptr;
    if (toPrevious) {
        if (it == byDstIn.begin())
            return nullptr;
        return std::prev(it)->second.lock();
    }
    ++it;
    if (it == byDstIn.end())
        return nullptr;
    return it->second.lock();
}

} // namespace

bool EventList::canExtendToNeighbour(const EventPtr& event, bool toPrevious) const
{
    const Framerate rate = Timecode::currentFramerate();
    const EventListIndex index(*this, rate);
    const EventPtr neighbour = findNeighbour(index, event, toPrevious);
    if (!neighbour)
        return false;
    if (toPrevious)
        return event->getDstIn().toSeconds(rate) - neighbour->getDstOut().toSeconds(rate) > 0.0;
    return neighbour->getDstIn().toSeconds(rate) - event->getDstOut().toSeconds(rate) > 0.0;
}

void EventList::extendToNeighbour(const EventPtr& event, bool toPrevious)
{
    // The picture stays in sync: the source edge moves by as much as the
    // record edge.
    //
    //   before:  [ A ]      [ B ]        after (B to previous):  [ A ][   B ]
    //                  gap                                        B's SRC IN moves back by gap
    const EventListIndex index(*this, Timecode::currentFramerate());
    const EventPtr neighbour = findNeighbour(index, event, toPrevious);
    if (!neighbour)
        return;
    {
        BulkChange bulk(*this);
        if (toPrevious) {
            const Timecode gap = Timecode::difference(event->getDstIn(), neighbour->getDstOut());
            event->setDstIn(neighbour->getDstOut());
            event->setSrcIn(Timecode::difference(event->getSrcIn(), gap));
        } else {
            const Timecode gap = Timecode::difference(neighbour->getDstIn(), event->getDstOut());
            event->setDstOut(neighbour->getDstIn());
            event->setSrcOut(Timecode::sum(event->getSrcOut(), gap));
        }
    }
    notifyListChanged();
}

void EventList::changed(const ChangeContext& context)
{
    if (context.kind == ChangeContext::EventKind)
        notifyListChanged();
}

// Stored form, version 0: the count, then each event's type and the event.
// The kind is not stored: the owner's constructor has set it.
void EventList::readCurrent(serialize::SerializationTree& tree)
{
    const int32_t count = tree.readInt32();
    if (count < 0)
        throw Result::BadStoredData;
    std::vector<EventPtr> loaded;
    // Room for what the block can hold, at five bytes an event at least.
    loaded.reserve(std::min<size_t>(static_cast<size_t>(count), tree.getSize() / 5));
    for (int32_t i = 0; i < count; ++i) {
        const int32_t type = tree.readInt32();
        if (type != EventBase::Plain && type != EventBase::Healed)
            throw Result::BadStoredData;
        EventPtr event = EventBase::create(type);
        // Events of one file in a row share its name.
        if (!loaded.empty())
            event->setEdlFile(loaded.back()->getSharedEdlFile());
        tree.readObject(*event);
        loaded.push_back(std::move(event));
    }
    releaseEvents();
    events = std::move(loaded);
    subscribeAll();
    notifyListChanged();
}

void EventList::write(serialize::SerializationTree& tree) const
{
    tree.reserve(tree.getSize() + events.size() * storedSizeGuess);
    tree.writeInt32(static_cast<int32_t>(events.size()));
    for (const EventPtr& event : events) {
        tree.writeInt32(event->getEventType());
        tree.writeObject(*event);
    }
}


// Healing a selection anew, with the heal processing.

namespace {

// The selected events of the list, in list order, with every healed event
// broken up into its parts so that it can be healed anew.
void collectSelection(const std::vector<EventPtr>& events, const EventListIndex& selectionIndex,
                      EventList& parts)
{
    for (const EventPtr& event : events) {
        if (!selectionIndex.containsEvent(event))
            continue;
        auto* healed = event->getEventType() == EventBase::Healed
                           ? dynamic_cast<HealedEvent*>(event.get())
                           : nullptr;
        if (healed)
            parts.append(healed->getHealedEvents());
        else
            parts.addEvent(event);
    }
}

void runHealing(EventList& parts, const EventList& newList, HealProcessingMode healMode, const Framerate& rate)
{
    Settings settings;
    settings.setHealProcessing(healMode);
    EventListAlgorithm::Context context;
    context.newList = &newList;
    context.settings = &settings;
    context.framerate = rate;
    HealProcessing().process(parts, context);
}

} // namespace

void EventList::healEvents(const EventList& selection, const EventList& newList, HealProcessingMode healMode)
{
    const Framerate rate = Timecode::currentFramerate();
    const EventListIndex selectionIndex(selection, rate);

    // Heal first, take out afterwards: a failure of the healing leaves the
    // list as it was.
    EventList healed(ChangeKind);
    collectSelection(events, selectionIndex, healed);
    runHealing(healed, newList, healMode, rate);

    std::vector<EventPtr> kept;
    kept.reserve(events.size() + healed.getSize());
    for (const EventPtr& event : events) {
        if (!selectionIndex.containsEvent(event))
            kept.push_back(event);
    }
    kept.insert(kept.end(), healed.getEvents().begin(), healed.getEvents().end());
    std::stable_sort(kept.begin(), kept.end(), [](const EventPtr& a, const EventPtr& b) {
        return a->getDstIn() < b->getDstIn();
    });

    {
        // The events' own notifications of the renumbering and renaming do
        // not reach this list's listeners one by one.
        BulkChange bulk(*this);
        const std::string healedName =
            util::StringUtil::toUtf8(util::StringUtil::translate(u"Healed Event"));
        int healedCounter = 1;
        for (size_t i = 0; i < kept.size(); ++i) {
            kept[i]->setEventNumber(static_cast<int>(i) + 1);
            if (kept[i]->getEventType() == EventBase::Healed) {
                char number[16];
                std::snprintf(number, sizeof number, "%03d", healedCounter++);
                kept[i]->setRollName(healedName + " " + number);
            }
        }
        events = std::move(kept);
    }
    notifyListChanged();
}

bool EventList::canHealEvents(const EventList& selection, const EventList& newList, HealProcessingMode healMode) const
{
    const Framerate rate = Timecode::currentFramerate();
    const std::vector<EventPtr> selected = EventListAlgorithm::orderByDstIn(selection);
    if (selected.size() >= 2) {
        const std::vector<EventPtr> order = EventListAlgorithm::orderByDstIn(*this);
        std::unordered_map<const EventBase*, size_t> position;
        for (size_t i = 0; i < order.size(); ++i)
            position.emplace(order[i].get(), i);
        for (size_t i = 0; i + 1 < selected.size(); ++i) {
            const auto first = position.find(selected[i].get());
            const auto second = position.find(selected[i + 1].get());
            if (first == position.end() || second == position.end() || second->second != first->second + 1)
                return false;
        }
    }

    // Try it on independent copies of the parts, so nothing here changes.
    const EventListIndex selectionIndex(selection, rate);
    EventList parts(ChangeKind);
    collectSelection(events, selectionIndex, parts);
    EventList copies(ChangeKind);
    copies.copyEventsFrom(parts);
    runHealing(copies, newList, healMode, rate);
    return copies.getSize() != selection.getSize();
}

// VFX marking and writing.

void EventList::applyVfxPatterns(const VfxNameFilter& patterns, MatchName kind)
{
    {
        BulkChange bulk(*this);
        for (const EventPtr& event : events) {
            const std::string& name = kind == MatchName::ClipName ? event->getClipName() : event->getRollName();
            event->setVfx(patterns.isVfxName(name));
        }
    }
    notifyListChanged();
}

void EventList::saveEdl(const std::u16string& path) const
{
    const Result::Type result = fileio::writeEdlFile(path, *this);
    if (result != Result::Ok)
        throw result;
}

} // namespace montala::core
