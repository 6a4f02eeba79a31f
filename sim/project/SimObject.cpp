#include "sim/project/SimObject.h"

#include "kelmar/project/IStorage.h"
#include "sim/project/SimAudioChainEntry.h"
#include "sim/edit/SimEditGroup.h"
#include "sim/services/SimFailures.h"
#include "sim/services/SimHost.h"
#include "sim/project/SimMediaPool.h"
#include "sim/project/SimObjectIterator.h"
#include "sim/project/SimPoolClip.h"
#include "sim/project/SimProject.h"
#include "sim/project/SimStorage.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace montala::sim {

using namespace Kelmar;

namespace {

bool same(const char8* a, const char* b)
{
    return a && std::strcmp(a, b) == 0;
}

// A copy that owns its payload, as attributes are kept and handed out.
FVariant ownedCopy(const FVariant& value)
{
    FVariant copy;
    if (value.isString8())
        copy.setString8(value.getString8(), true);
    else if (value.isString16())
        copy.setString16(value.getString16(), true);
    else if (value.isObject())
        copy.setObject(value.getObject(), true);
    else
        copy = value;
    return copy;
}

bool isPointKind(ObjectKind kind)
{
    return kind == ObjectKind::PointMarker || kind == ObjectKind::AutomationPoint;
}

bool isMarkerKind(ObjectKind kind) { return kind == ObjectKind::PointMarker || kind == ObjectKind::RangeMarker; }

// Two ends of a chain meet when they lie this close.
constexpr double chainTolerance = 1e-9;

} // namespace

const char* kindName(ObjectKind kind)
{
    switch (kind) {
    case ObjectKind::Project: return "project";
    case ObjectKind::Folder: return "folder";
    case ObjectKind::AudioTrack: return "audio";
    case ObjectKind::VideoTrack: return "video";
    case ObjectKind::MarkerTrack: return "marker";
    case ObjectKind::RulerTrack: return "ruler";
    case ObjectKind::AutomationTrack: return "automation";
    case ObjectKind::AutomationPoint: return "point";
    case ObjectKind::AudioEvent: return "audio";
    case ObjectKind::Part: return "part";
    case ObjectKind::VideoEvent: return "video";
    case ObjectKind::PointMarker: return "point";
    case ObjectKind::RangeMarker: return "range";
    }
    return "?";
}

void ProjectLink::hold(ProjectLink*& held, ProjectLink* link)
{
    if (link)
        ++link->holders;
    if (held && --held->holders == 0)
        delete held;
    held = link;
}

SimObject* simObject(FUnknown* object)
{
    return dynamic_cast<SimObject*>(object);
}

namespace {

// The nodes of each kind, with the interfaces that kind answers; the
// node itself does the work.
class TrackNode final : public SimObject, public ITrack, public IMarkerTrack {
public:
    explicit TrackNode(ObjectKind kind) : SimObject(kind), place(NodeHeap::newPlace()) {}
    tresult queryInterface(const FUID& iid, void** obj) override { return SimObject::queryInterface(iid, obj); }
    KELMAR_FOBJECT_REFCOUNT
    std::uint8_t heapPlace() const override { return place; }
    IObjectIterator* getAutomationTracks() override { return SimObject::getAutomationTracks(); }
    IAudioChainEntry* getAudioChain() override { return SimObject::getAudioChain(); }
    tresult setToggle(const char8* name, bool on) override { return SimObject::setToggle(name, on); }
    tresult getToggle(const char8* name) override { return SimObject::getToggle(name); }

protected:
    bool answerKind(const FUID& iid, void** obj) override
    {
        return answerInterface<ITrack>(this, iid, obj)
               || (kind() == ObjectKind::MarkerTrack && answerInterface<IMarkerTrack>(this, iid, obj));
    }

private:
    const std::uint8_t place;
};

class AudioEventNode final : public SimObject, public IAudioChainEvent {
public:
    AudioEventNode() : SimObject(ObjectKind::AudioEvent) {}
    tresult queryInterface(const FUID& iid, void** obj) override { return SimObject::queryInterface(iid, obj); }
    KELMAR_FOBJECT_REFCOUNT
    IProjectObject* getNextInChain() override { return SimObject::getNextInChain(); }

protected:
    bool answerKind(const FUID& iid, void** obj) override { return answerInterface<IAudioChainEvent>(this, iid, obj); }
};

class VideoEventNode final : public SimObject, public IVideoEvent {
public:
    VideoEventNode() : SimObject(ObjectKind::VideoEvent) {}
    tresult queryInterface(const FUID& iid, void** obj) override { return SimObject::queryInterface(iid, obj); }
    KELMAR_FOBJECT_REFCOUNT
    IPoolClip* getClip() override { return SimObject::getClip(); }
    tresult setClip(IEditContext* context, IClipSource* clip, int32 flags) override
    {
        return SimObject::setClip(context, clip, flags);
    }

protected:
    bool answerKind(const FUID& iid, void** obj) override { return answerInterface<IVideoEvent>(this, iid, obj); }
};

class MarkerNode final : public SimObject, public IPointMarker, public IRangeMarker {
public:
    explicit MarkerNode(ObjectKind kind) : SimObject(kind) {}
    tresult queryInterface(const FUID& iid, void** obj) override { return SimObject::queryInterface(iid, obj); }
    KELMAR_FOBJECT_REFCOUNT

protected:
    bool answerKind(const FUID& iid, void** obj) override
    {
        return kind() == ObjectKind::PointMarker ? answerInterface<IPointMarker>(this, iid, obj)
                                                 : answerInterface<IRangeMarker>(this, iid, obj);
    }
};

class AutomationTrackNode final : public SimObject, public IAutomationTrack {
public:
    AutomationTrackNode() : SimObject(ObjectKind::AutomationTrack) {}
    tresult queryInterface(const FUID& iid, void** obj) override { return SimObject::queryInterface(iid, obj); }
    KELMAR_FOBJECT_REFCOUNT
    int32 getCurveType() override { return SimObject::getCurveType(); }

protected:
    bool answerKind(const FUID& iid, void** obj) override { return answerInterface<IAutomationTrack>(this, iid, obj); }
};

class PointNode final : public SimObject, public IAutomationPoint, public IAutomationCurvePoint {
public:
    PointNode() : SimObject(ObjectKind::AutomationPoint) {}
    tresult queryInterface(const FUID& iid, void** obj) override { return SimObject::queryInterface(iid, obj); }
    KELMAR_FOBJECT_REFCOUNT
    float getValue() override { return SimObject::getValue(); }
    tresult setValue(IEditContext* context, float value, int32 flags) override
    {
        return SimObject::setValue(context, value, flags);
    }
    bool isSegmentEnd() override { return SimObject::isSegmentEnd(); }
    tresult setSegmentEnd(IEditContext* context, bool segmentEnd, int32 flags) override
    {
        return SimObject::setSegmentEnd(context, segmentEnd, flags);
    }

protected:
    bool answerKind(const FUID& iid, void** obj) override
    {
        return answerInterface<IAutomationPoint>(this, iid, obj) || answerInterface<IAutomationCurvePoint>(this, iid, obj);
    }
};

// A part answers only IProjectObject; a project is made by SimProject.
class PlainNode final : public SimObject {
public:
    explicit PlainNode(ObjectKind kind) : SimObject(kind) {}
};

} // namespace

IPtr<SimObject> SimObject::create(ObjectKind kind)
{
    switch (kind) {
    case ObjectKind::Folder:
    case ObjectKind::AudioTrack:
    case ObjectKind::VideoTrack:
    case ObjectKind::MarkerTrack:
    case ObjectKind::RulerTrack: return owned<SimObject>(new TrackNode(kind));
    case ObjectKind::AudioEvent: return owned<SimObject>(new AudioEventNode);
    case ObjectKind::VideoEvent: return owned<SimObject>(new VideoEventNode);
    case ObjectKind::PointMarker:
    case ObjectKind::RangeMarker: return owned<SimObject>(new MarkerNode(kind));
    case ObjectKind::AutomationTrack: return owned<SimObject>(new AutomationTrackNode);
    case ObjectKind::AutomationPoint: return owned<SimObject>(new PointNode);
    case ObjectKind::Project:
    case ObjectKind::Part: break;
    }
    return owned<SimObject>(new PlainNode(kind));
}

IPtr<SimObject> SimObject::makeTrack(ObjectKind kind, std::u16string name)
{
    IPtr<SimObject> track = create(kind);
    track->fields.name = std::move(name);
    return track;
}

IPtr<SimObject> SimObject::makeAudioEvent(std::u16string name, double start, double end, std::string file,
                                          double offset)
{
    IPtr<SimObject> event = create(ObjectKind::AudioEvent);
    event->fields.name = std::move(name);
    event->fields.start = start;
    event->fields.end = end;
    event->fields.file = std::move(file);
    event->fields.offset = offset;
    return event;
}

IPtr<SimObject> SimObject::makeVideoEvent(double start, double end, std::int32_t clipId, double offset)
{
    IPtr<SimObject> event = create(ObjectKind::VideoEvent);
    event->fields.start = start;
    event->fields.end = end;
    event->fields.clipId = clipId;
    event->fields.offset = offset;
    return event;
}

IPtr<SimObject> SimObject::makePart(std::u16string name, double start, double end)
{
    IPtr<SimObject> part = create(ObjectKind::Part);
    part->fields.name = std::move(name);
    part->fields.start = start;
    part->fields.end = end;
    return part;
}

IPtr<SimObject> SimObject::makeMarker(std::u16string name, double start, double end)
{
    IPtr<SimObject> marker = create(end == start ? ObjectKind::PointMarker : ObjectKind::RangeMarker);
    marker->fields.name = std::move(name);
    marker->fields.start = start;
    marker->fields.end = end;
    return marker;
}

IPtr<SimObject> SimObject::makeAutomation(std::u16string name, std::uint8_t curveType)
{
    IPtr<SimObject> automationTrack = create(ObjectKind::AutomationTrack);
    automationTrack->fields.name = std::move(name);
    automationTrack->fields.curveType = curveType;
    return automationTrack;
}

IPtr<SimObject> SimObject::makePoint(double time, double value, bool segmentEnd)
{
    IPtr<SimObject> point = create(ObjectKind::AutomationPoint);
    point->fields.start = time;
    point->fields.end = time;
    point->fields.value = value;
    point->fields.segmentEnd = segmentEnd;
    return point;
}

// A feature's session holds a million events and points, so a byte more
// here is a megabyte more; a field added belongs in operator== as well.
static_assert(sizeof(SimObject::Fields) <= 48);
// The node heap hands out slots aligned for pointers only.
static_assert(alignof(TrackNode) <= alignof(void*) && alignof(AudioEventNode) <= alignof(void*) &&
              alignof(VideoEventNode) <= alignof(void*) && alignof(MarkerNode) <= alignof(void*) &&
              alignof(AutomationTrackNode) <= alignof(void*) && alignof(PointNode) <= alignof(void*) &&
              alignof(PlainNode) <= alignof(void*));

SimObject::SimObject(ObjectKind kind) : objectKind(kind) {}

const SimObject::List& SimObject::automation() const
{
    static const List none;
    return rareParts ? rareParts->automationList : none;
}

const SimObject::Attributes& SimObject::attributes() const
{
    static const Attributes none;
    return rareParts ? rareParts->attributeMap : none;
}

std::shared_ptr<const SimObject::List> SimObject::sortedChain() const
{
    return rareParts ? rareParts->sortedChain.lock() : nullptr;
}

void SimObject::keepSortedChain(std::shared_ptr<const List> chain)
{
    rare().sortedChain = std::move(chain);
}

SimObject::Rare& SimObject::rare()
{
    if (!rareParts)
        rareParts = std::make_unique<Rare>();
    return *rareParts;
}

SimObject::ChildList::ChildList(const ChildList& other) : block(other.block)
{
    if (block)
        ++block->holders;
}

SimObject::ChildList& SimObject::ChildList::operator=(ChildList other) noexcept
{
    std::swap(block, other.block);
    return *this;
}

SimObject::ChildList::~ChildList()
{
    if (block && --block->holders == 0)
        delete block;
}

const SimObject::List& SimObject::ChildList::items() const
{
    static const List none;
    return block ? block->items : none;
}

SimObject::List& SimObject::ChildList::own()
{
    if (!block) {
        block = new Block;
    } else if (block->holders > 1) {
        auto* copy = new Block;
        copy->items = block->items;
        *this = ChildList();
        block = copy;
    }
    return block->items;
}

const SimObject::List& SimObject::kids() const
{
    static const List none;
    return rareParts ? rareParts->childList.items() : none;
}

SimObject::List& SimObject::ownKids()
{
    return rare().childList.own();
}

SimObject::~SimObject()
{
    // Children still held elsewhere (a track kept past its project's end)
    // must not walk up into this node once it is gone.
    if (rareParts) {
        for (const auto& child : rareParts->childList.items())
            if (child && child->parentNode == this)
                child->parentNode = nullptr;
        for (const auto& curve : rareParts->automationList)
            if (curve && curve->parentNode == this)
                curve->parentNode = nullptr;
    }
    ProjectLink::hold(ownerLink, nullptr);
}

tresult SimObject::queryInterface(const FUID& iid, void** obj)
{
    if (!obj)
        return kInvalidArgument;
    if (owner() && owner()->failures().isWithheld(iid)) {
        *obj = nullptr;
        return kNoInterface;
    }
    if (answerInterface<IProjectObject>(this, iid, obj))
        return kResultOk;
    if (iid == FUnknown::iid) {
        *obj = static_cast<IProjectObject*>(this);
        addRef();
        return kResultOk;
    }
    if (answerKind(iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

bool SimObject::answerKind(const FUID&, void**)
{
    return false;
}

// ---- What the node is

bool SimObject::isTrack() const
{
    switch (objectKind) {
    case ObjectKind::Folder:
    case ObjectKind::AudioTrack:
    case ObjectKind::VideoTrack:
    case ObjectKind::MarkerTrack:
    case ObjectKind::RulerTrack: return true;
    default: return false;
    }
}

bool SimObject::isContentTrack() const
{
    return objectKind == ObjectKind::AudioTrack || objectKind == ObjectKind::VideoTrack
           || objectKind == ObjectKind::MarkerTrack;
}

bool SimObject::isTimed() const
{
    switch (objectKind) {
    case ObjectKind::AutomationPoint:
    case ObjectKind::AudioEvent:
    case ObjectKind::Part:
    case ObjectKind::VideoEvent:
    case ObjectKind::PointMarker:
    case ObjectKind::RangeMarker: return true;
    default: return false;
    }
}

bool SimObject::accepts(ObjectKind child) const
{
    const bool childIsTrack = child == ObjectKind::Folder || child == ObjectKind::AudioTrack
                              || child == ObjectKind::VideoTrack || child == ObjectKind::MarkerTrack
                              || child == ObjectKind::RulerTrack;
    switch (objectKind) {
    case ObjectKind::Project:
    case ObjectKind::Folder: return childIsTrack;
    case ObjectKind::AudioTrack: return child == ObjectKind::AudioEvent || child == ObjectKind::Part;
    case ObjectKind::Part: return child == ObjectKind::AudioEvent;
    case ObjectKind::VideoTrack: return child == ObjectKind::VideoEvent;
    case ObjectKind::MarkerTrack: return child == ObjectKind::PointMarker || child == ObjectKind::RangeMarker;
    case ObjectKind::AutomationTrack: return child == ObjectKind::AutomationPoint;
    default: return false;
    }
}

bool SimObject::isKind(const char8* kind)
{
    if (!kind)
        return false;
    if (same(kind, "track"))
        return isTrack();
    if (same(kind, "audio"))
        return objectKind == ObjectKind::AudioTrack || objectKind == ObjectKind::AudioEvent;
    if (same(kind, "video"))
        return objectKind == ObjectKind::VideoTrack || objectKind == ObjectKind::VideoEvent;
    if (same(kind, "marker"))
        return objectKind == ObjectKind::MarkerTrack || objectKind == ObjectKind::PointMarker
               || objectKind == ObjectKind::RangeMarker;
    if (same(kind, "folder"))
        return objectKind == ObjectKind::Folder;
    if (same(kind, "ruler"))
        return objectKind == ObjectKind::RulerTrack;
    if (same(kind, "part"))
        return objectKind == ObjectKind::Part;
    if (same(kind, "range"))
        return objectKind == ObjectKind::RangeMarker;
    if (same(kind, "automation"))
        return objectKind == ObjectKind::AutomationTrack;
    if (same(kind, "point"))
        return objectKind == ObjectKind::AutomationPoint;
    if (same(kind, "project"))
        return objectKind == ObjectKind::Project;
    return false;
}

SimObject* SimObject::track()
{
    for (SimObject* node = this; node; node = node->parentNode)
        if (node->isTrack())
            return node;
    return nullptr;
}

bool SimObject::isLockedContent()
{
    SimObject* holder = track();
    return holder && holder->fields.locked && holder->objectKind != ObjectKind::Folder;
}

double SimObject::timelineStart() const
{
    if (parentNode && parentNode->objectKind == ObjectKind::Part)
        return parentNode->fields.start + fields.start;
    return fields.start;
}

double SimObject::timelineEnd() const
{
    if (parentNode && parentNode->objectKind == ObjectKind::Part)
        return parentNode->fields.start + fields.end;
    return fields.end;
}

bool SimObject::isInProject() const
{
    const SimObject* root = this;
    while (root->parentNode)
        root = root->parentNode;
    return owner() && root == static_cast<const SimObject*>(owner());
}

Kelmar::int32 SimObject::getFlags()
{
    int32 flags = 0;
    if (!isInProject())
        flags |= kLeftProject;
    if (contentChanged)
        flags |= kContentChanged;
    return flags;
}

// ---- Recording

bool SimObject::failing(const char* call)
{
    return owner() && owner()->failures().fails(call);
}

void SimObject::noteFieldsChange(const Fields& values)
{
    if (!owner())
        return;
    // The project's fields are its length (and name); a track's lock alone
    // is a toggle. Neither is an edit unless made inside a group.
    Fields lockOnly = fields;
    lockOnly.locked = values.locked;
    const ChangeKind change = objectKind == ObjectKind::Project ? ChangeKind::Setting
                              : lockOnly == values              ? ChangeKind::Toggle
                                                                : ChangeKind::Structure;
    if (SimEditGroup* group = owner()->recordingGroup(change)) {
        group->recordFields(*this, fields, values);
        group->noteChanged(*this);
    }
}

void SimObject::noteListChange(bool automation)
{
    if (SimEditGroup* group = owner() ? owner()->recordingGroup(ChangeKind::Structure) : nullptr) {
        // Only the first change in a group needs the list as it was.
        if (!group->recorded(*this, automation)) {
            settle();
            group->recordList(*this, automation ? this->automation() : kids(), automation);
        }
        group->noteChanged(*this);
    }
}

void SimObject::dropChain()
{
    for (SimObject* node = this; node; node = node->parentNode) {
        if (node->rareParts) {
            node->rareParts->sortedChain.reset();
            node->rareParts->childOrder.reset();
            node->rareParts->pointTimes.reset();
        }
        // The orders above an automation track are of the track's events:
        // a point that comes or goes leaves them as they are.
        if (node->objectKind == ObjectKind::AutomationTrack)
            break;
    }
}

std::vector<std::size_t> SimObject::childrenNear(double start, double end)
{
    settle();
    const List& list = kids();
    std::unique_ptr<ChildOrder>& childOrder = rare().childOrder;
    if (!childOrder) {
        // Each child's times are read once, in the list's order: sorting by
        // comparisons that read two children each would fetch every child
        // of a long track from all over the heap some twenty times.
        std::vector<std::pair<double, std::size_t>> starts(list.size());
        std::vector<double> ends(list.size());
        for (std::size_t i = 0; i < list.size(); ++i) {
            starts[i] = {list[i]->fields.start, i};
            ends[i] = list[i]->fields.end;
        }
        const bool sorted = std::is_sorted(starts.begin(), starts.end());
        if (!sorted)
            std::sort(starts.begin(), starts.end());
        auto order = std::make_unique<ChildOrder>();
        order->starts.reserve(starts.size());
        order->ends.reserve(starts.size());
        for (const auto& [start, i] : starts) {
            order->starts.push_back(start);
            order->ends.push_back(ends[i]);
        }
        const bool inPlace = sorted && std::none_of(list.begin(), list.end(), [](const auto& child) {
            return isMarkerKind(child->objectKind);
        });
        if (!inPlace) {
            order->places.reserve(starts.size());
            for (const auto& [start, i] : starts)
                order->places.push_back(static_cast<std::uint32_t>(i)
                                        | (isMarkerKind(list[i]->objectKind) ? ChildOrder::markerBit : 0));
        }
        order->restretch(0);
        childOrder = std::move(order);
    }
    // Wider than any rounding the range work allows, so that no marker that
    // touches the range is missed; the caller decides on each one near.
    constexpr double margin = 1e-6;
    // Anything else that ends within this of the start has nothing in the
    // range: the range work counts times this close as one.
    constexpr double hair = 1e-9;
    const ChildOrder& order = *childOrder;
    const std::size_t last = order.firstFrom(end, false);
    std::vector<std::size_t> near;
    for (std::size_t i = order.firstReaching(start - margin); i < last; ++i)
        if (order.isMarker(i) ? order.ends[i] >= start - margin : order.ends[i] > start + hair)
            near.push_back(order.position(i));
    std::sort(near.begin(), near.end());
    return near;
}

std::size_t SimObject::ChildOrder::firstFrom(double time, bool after) const
{
    const auto before = [time, after](double start) { return after ? start <= time : start < time; };
    // The first stretch that begins with a start at or after the time: the
    // place lies in the stretch before it, or is that stretch's first.
    const auto first = static_cast<std::size_t>(
        std::partition_point(stretchStarts.begin(), stretchStarts.end(), before) - stretchStarts.begin());
    const std::size_t low = first == 0 ? 0 : (first - 1) * stretch;
    const std::size_t high = std::min(starts.size(), first * stretch);
    const auto begin = starts.begin();
    return static_cast<std::size_t>(std::partition_point(begin + static_cast<std::ptrdiff_t>(low),
                                                         begin + static_cast<std::ptrdiff_t>(high), before) -
                                    begin);
}

std::size_t SimObject::ChildOrder::firstReaching(double time) const
{
    // The first stretch by whose end some child reaches the time; within
    // it, the latest end is carried on from the stretch before.
    const auto first = static_cast<std::size_t>(
        std::partition_point(stretchReach.begin(), stretchReach.end(), [time](double reach) { return reach < time; })
        - stretchReach.begin());
    if (first == stretchReach.size())
        return starts.size();
    double reach = first == 0 ? -std::numeric_limits<double>::infinity() : stretchReach[first - 1];
    std::size_t place = first * stretch;
    for (; place < ends.size(); ++place) {
        reach = std::max(reach, ends[place]);
        if (reach >= time)
            break;
    }
    return place;
}

void SimObject::ChildOrder::insert(std::size_t place, std::size_t position, bool marker, double start, double end)
{
    const auto at = static_cast<std::ptrdiff_t>(place);
    if (places.empty() && (marker || place != position)) {
        places.reserve(starts.capacity());
        for (std::size_t i = 0; i < starts.size(); ++i)
            places.push_back(static_cast<std::uint32_t>(i));
    }
    if (!places.empty())
        places.insert(places.begin() + at, static_cast<std::uint32_t>(position) | (marker ? markerBit : 0));
    starts.insert(starts.begin() + at, start);
    ends.insert(ends.begin() + at, end);
    restretch(place);
}

void SimObject::ChildOrder::restretch(std::size_t place)
{
    const std::size_t count = (starts.size() + stretch - 1) / stretch;
    stretchStarts.resize(count);
    stretchReach.resize(count);
    for (std::size_t j = place / stretch; j < count; ++j) {
        stretchStarts[j] = starts[j * stretch];
        double reach = j == 0 ? -std::numeric_limits<double>::infinity() : stretchReach[j - 1];
        for (std::size_t i = j * stretch; i < std::min(ends.size(), (j + 1) * stretch); ++i)
            reach = std::max(reach, ends[i]);
        stretchReach[j] = reach;
    }
}

const std::vector<double>& SimObject::pointTimes()
{
    settle();
    std::unique_ptr<std::vector<double>>& times = rare().pointTimes;
    if (!times) {
        times = std::make_unique<std::vector<double>>();
        times->reserve(kids().size());
        for (const auto& child : kids())
            times->push_back(child->fields.start);
    }
    return *times;
}

void SimObject::setFields(const Fields& values)
{
    if (values == fields)
        return;
    dropChain();
    noteFieldsChange(values);
    fields = values;
}

tresult SimObject::changeFields(const Fields& values)
{
    setFields(values);
    return kResultOk;
}

void SimObject::setListParents(const List& list)
{
    for (const auto& child : list) {
        child->parentNode = this;
        if (child->owner() != owner())
            child->bindTo(owner());
    }
}

void SimObject::insertChild(IPtr<SimObject> child, std::size_t index)
{
    if (!child || child->parentNode)
        return;
    settle();
    noteListChange(false);
    index = std::min(index, kids().size());
    // A run appends its pieces, mostly in time order: an appended child
    // takes its place in the order by start (near its end, after those that
    // start with it), and a copy of the next range finds its children
    // without sorting them all again.
    const bool appended = rareParts && rareParts->childOrder && index == kids().size();
    std::unique_ptr<ChildOrder> order = appended ? std::move(rareParts->childOrder) : nullptr;
    // A point put among the others keeps the times in step.
    std::unique_ptr<std::vector<double>> times = rareParts ? std::move(rareParts->pointTimes) : nullptr;
    dropChain();
    if (times) {
        times->insert(times->begin() + static_cast<std::ptrdiff_t>(index), child->fields.start);
        rareParts->pointTimes = std::move(times);
    }
    if (order) {
        const double start = child->fields.start;
        order->insert(order->firstFrom(start, true), index, isMarkerKind(child->objectKind), start, child->fields.end);
        rareParts->childOrder = std::move(order);
    }
    child->parentNode = this;
    child->bindTo(owner());
    List& list = ownKids();
    list.insert(list.begin() + static_cast<std::ptrdiff_t>(index), std::move(child));
}

void SimObject::appendChild(IPtr<SimObject> child)
{
    insertChild(std::move(child), kids().size());
}

void SimObject::appendChildren(const List& list)
{
    // Up to this many children are slotted into the order one by one: a
    // cut's pieces, pasted behind the others.
    constexpr std::size_t slotted = 64;
    if (list.size() > slotted && rareParts && rareParts->childOrder) {
        settle();
        noteListChange(false);
        dropChain();
    }
    for (const auto& child : list)
        insertChild(child, kids().size());
}

void SimObject::insertPoint(IPtr<SimObject> point)
{
    const std::vector<double>& times = pointTimes();
    const auto index = std::upper_bound(times.begin(), times.end(), point->fields.start) - times.begin();
    insertChild(std::move(point), static_cast<std::size_t>(index));
}

bool SimObject::removeChild(SimObject* child)
{
    // A child in the list has this node for its parent; an automation track
    // has too, but lies in the other list.
    if (!child || child->parentNode != this || child->objectKind == ObjectKind::AutomationTrack)
        return false;
    noteListChange(false);
    dropChain();
    child->parentNode = nullptr;
    rare().leaving.push_back(child);
    settleIfDue();
    return true;
}

void SimObject::settleIfDue() const
{
    // Once a quarter of the list is leaving, those go at once: what a run
    // takes away is let go of while it goes on, and the list is moved only
    // once for every quarter of it removed. Not while a walk holds the list,
    // though: a run that removes what it meets would have it copied; the
    // walk's end takes them out.
    if (rareParts && !rareParts->leaving.empty() && rareParts->leaving.size() >= kids().size() / 4
        && !rareParts->childList.shared())
        settle();
}

void SimObject::settle() const
{
    if (!rareParts || rareParts->leaving.empty())
        return;
    // Found by their places in memory, among the list's pointers: asking
    // each child whether it still belongs here would fetch every child of a
    // long track from the heap. They mostly left in the list's order, so
    // each child is first compared with the next to leave only; those that
    // left out of order are then looked up among the rest.
    std::vector<const SimObject*> leaving = std::move(rareParts->leaving);
    rareParts->leaving = {};
    List& list = rareParts->childList.own();
    std::size_t next = 0;
    std::erase_if(list, [&](const auto& child) {
        if (next == leaving.size() || child.get() != leaving[next])
            return false;
        ++next;
        return true;
    });
    if (next == leaving.size())
        return;
    const auto rest = leaving.begin() + static_cast<std::ptrdiff_t>(next);
    std::sort(rest, leaving.end());
    std::erase_if(list, [&](const auto& child) {
        return std::binary_search(rest, leaving.end(), static_cast<const SimObject*>(child.get()));
    });
}

void SimObject::replaceChildren(const List& list)
{
    settle();
    replaceChildren(0, kids().size(), list);
}

void SimObject::replaceChildren(std::size_t first, std::size_t last, const List& list)
{
    settle();
    noteListChange(false);
    // The points' times follow the points that come and go.
    std::unique_ptr<std::vector<double>> times = rareParts ? std::move(rareParts->pointTimes) : nullptr;
    dropChain();
    List& kidsList = ownKids();
    last = std::min(last, kidsList.size());
    first = std::min(first, last);
    // Those that stay keep their parent; only the ones that leave let go of
    // it and only the new ones take it, so a paste among a long list of
    // points costs what it changes. Each is fetched once: one that leaves
    // is let go of at once, a new one takes its parent, its project and
    // gives its time.
    for (std::size_t i = first; i < last; ++i) {
        kidsList[i]->parentNode = nullptr;
        kidsList[i].reset();
    }
    std::vector<double> coming;
    if (times)
        coming.reserve(list.size());
    for (const auto& child : list) {
        child->parentNode = this;
        if (child->owner() != owner())
            child->bindTo(owner());
        if (times)
            coming.push_back(child->fields.start);
    }
    if (times) {
        const auto at = times->erase(times->begin() + static_cast<std::ptrdiff_t>(first),
                                     times->begin() + static_cast<std::ptrdiff_t>(last));
        times->insert(at, coming.begin(), coming.end());
        rareParts->pointTimes = std::move(times);
    }
    const auto at = kidsList.erase(kidsList.begin() + static_cast<std::ptrdiff_t>(first),
                                   kidsList.begin() + static_cast<std::ptrdiff_t>(last));
    kidsList.insert(at, list.begin(), list.end());
}

void SimObject::appendAutomation(IPtr<SimObject> automationTrack)
{
    if (!automationTrack || automationTrack->parentNode)
        return;
    noteListChange(true);
    automationTrack->parentNode = this;
    automationTrack->bindTo(owner());
    rare().automationList.push_back(std::move(automationTrack));
}

void SimObject::putAttribute(const std::string& name, const FVariant& value)
{
    if (SimEditGroup* group = owner() ? owner()->recordingGroup(ChangeKind::Setting) : nullptr) {
        const auto found = attributes().find(name);
        group->recordAttribute(*this, name, found == attributes().end() ? nullptr : &found->second);
        group->noteChanged(*this);
    }
    rare().attributeMap[name] = ownedCopy(value);
}

void SimObject::dropAttribute(const std::string& name)
{
    if (!rareParts)
        return;
    Attributes& attributeMap = rareParts->attributeMap;
    const auto found = attributeMap.find(name);
    if (found == attributeMap.end())
        return;
    if (SimEditGroup* group = owner() ? owner()->recordingGroup(ChangeKind::Setting) : nullptr) {
        group->recordAttribute(*this, name, &found->second);
        group->noteChanged(*this);
    }
    attributeMap.erase(found);
}

void SimObject::restoreFields(const Fields& values)
{
    dropChain();
    fields = values;
}

void SimObject::restoreChildren(const List& list, bool automation)
{
    settle();
    List& target = automation ? rare().automationList : ownKids();
    dropChain();
    for (const auto& child : target)
        if (child->parentNode == this)
            child->parentNode = nullptr;
    target = list;
    setListParents(target);
}

void SimObject::restoreAttribute(const std::string& name, const FVariant* value)
{
    if (value)
        rare().attributeMap[name] = ownedCopy(*value);
    else if (rareParts)
        rareParts->attributeMap.erase(name);
}

IPtr<SimObject> SimObject::cloneTree() const
{
    IPtr<SimObject> copy = create(objectKind);
    copy->fields = fields;
    copy->selected = selected;
    for (const auto& [name, value] : attributes()) {
        // A copy keeps its own store: what is written to it later leaves the
        // original's alone.
        auto* storage = value.isObject() ? dynamic_cast<SimStorage*>(value.getObject()) : nullptr;
        if (storage) {
            IPtr<SimStorage> own = storage->copy();
            FVariant holder;
            holder.setObject(static_cast<IStorage*>(own.get()), true);
            copy->rare().attributeMap[name] = holder;
        } else {
            copy->rare().attributeMap[name] = ownedCopy(value);
        }
    }
    for (const auto& child : children()) {
        IPtr<SimObject> childCopy = child->cloneTree();
        childCopy->parentNode = copy.get();
        copy->ownKids().push_back(childCopy);
    }
    for (const auto& automationTrack : automation()) {
        IPtr<SimObject> trackCopy = automationTrack->cloneTree();
        trackCopy->parentNode = copy.get();
        copy->rare().automationList.push_back(trackCopy);
    }
    return copy;
}

void SimObject::bindTo(SimProject* project)
{
    if (owner() != project)
        ProjectLink::hold(ownerLink, project ? project->link() : nullptr);
    for (const auto& child : children())
        child->bindTo(project);
    for (const auto& automationTrack : automation())
        automationTrack->bindTo(project);
}

// ---- Attributes

tresult SimObject::setAttribute(const char8* name, const FVariant& value, int32)
{
    if (failing("setAttribute"))
        return kResultFailed;
    if (!name || !*name || value.isEmpty())
        return kInvalidArgument;
    if (value.isObject()) {
        // Objects kept in attributes are stores; nothing else could be saved.
        if (!Kelmar::queryInterface<IStorage>(value.getObject()))
            return kInvalidArgument;
    }
    if (isLockedContent())
        return kResultFalse;
    putAttribute(name, value);
    watchStore(name);
    return kResultOk;
}

void SimObject::watchStore(const std::string& name)
{
    // Stores read from a session file were made without the host's failure
    // plan; they take it when a plug-in can reach them.
    const auto found = attributes().find(name);
    if (!owner() || found == attributes().end() || !found->second.isObject())
        return;
    if (auto* storage = dynamic_cast<SimStorage*>(found->second.getObject()))
        storage->setFailures(owner()->failurePlanShared());
}

tresult SimObject::getAttribute(const char8* name, FVariant& value)
{
    const auto found = name ? attributes().find(name) : attributes().end();
    if (found == attributes().end())
        return kResultFalse;
    watchStore(name);
    value = ownedCopy(found->second);
    return kResultOk;
}

tresult SimObject::hasAttribute(const char8* name)
{
    return name && attributes().count(name) ? kResultOk : kResultFalse;
}

tresult SimObject::removeAttribute(const char8* name)
{
    if (failing("removeAttribute"))
        return kResultFailed;
    if (!name || !attributes().count(name) || isLockedContent())
        return kResultFalse;
    dropAttribute(name);
    return kResultOk;
}

// ---- Names and times

tresult SimObject::getName(String& name)
{
    name.assign(std::u16string_view(fields.name));
    return kResultOk;
}

tresult SimObject::setName(IEditContext*, const char16* name, int32)
{
    if (failing("setName"))
        return kResultFailed;
    if (!name)
        return kInvalidArgument;
    if (isLockedContent())
        return kResultFalse;
    const SimHost::OwnStep step(owner(), u"Rename");
    Fields values = fields;
    values.name = name;
    return changeFields(values);
}

double SimObject::getStart(IEditContext*)
{
    return isTimed() ? fields.start : 0.0;
}

double SimObject::getEnd(IEditContext*)
{
    if (objectKind == ObjectKind::Project)
        return fields.end;
    if (isTrack())
        return owner() ? owner()->length() : 0.0;
    return isPointKind(objectKind) ? fields.start : fields.end;
}

double SimObject::getOffset(IEditContext*)
{
    // A point's value lies where an event keeps its offset.
    return objectKind == ObjectKind::AutomationPoint ? 0.0 : fields.offset;
}

tresult SimObject::setStart(IEditContext*, double start, int32)
{
    if (failing("setStart"))
        return kResultFailed;
    if (!isTimed())
        return kNotImplemented;
    if (isLockedContent())
        return kResultFalse;
    const SimHost::OwnStep step(owner(), u"Move");
    Fields values = fields;
    values.end = isPointKind(objectKind) ? start : start + (fields.end - fields.start);
    values.start = start;
    if (objectKind == ObjectKind::AutomationPoint && parentNode) {
        // Points stay in time order: take the point out and put it back.
        IPtr<SimObject> self = shared(this);
        SimObject* automationTrack = parentNode;
        automationTrack->removeChild(this);
        setFields(values);
        automationTrack->insertPoint(self);
        return kResultOk;
    }
    return changeFields(values);
}

tresult SimObject::setLength(IEditContext* context, double length, int32 flags)
{
    if (failing("setLength"))
        return kResultFailed;
    if (objectKind == ObjectKind::Project)
        return owner() ? owner()->setProjectLength(length) : kResultFalse;
    if (!isTimed() || isPointKind(objectKind))
        return kNotImplemented;
    if (length < 0.0)
        return kInvalidArgument;
    return changeEnd(context, fields.start + length, flags);
}

tresult SimObject::setEnd(IEditContext* context, double end, int32 flags)
{
    if (failing("setEnd"))
        return kResultFailed;
    return changeEnd(context, end, flags);
}

tresult SimObject::changeEnd(IEditContext*, double end, int32)
{
    if (objectKind == ObjectKind::Project)
        return owner() ? owner()->setProjectLength(end) : kResultFalse;
    if (!isTimed() || isPointKind(objectKind))
        return kNotImplemented;
    if (end < fields.start)
        return kInvalidArgument;
    if (isLockedContent())
        return kResultFalse;
    const SimHost::OwnStep step(owner(), u"Trim");
    Fields values = fields;
    values.end = end;
    return changeFields(values);
}

// ---- Tree

IObjectIterator* SimObject::getChildren()
{
    settle();
    return new SimObjectIterator(rareParts ? rareParts->childList : ChildList(), this);
}

IProjectObject* SimObject::getParent()
{
    if (!parentNode)
        return nullptr;
    parentNode->addRef();
    return parentNode;
}

// ---- Tracks

IObjectIterator* SimObject::getAutomationTracks()
{
    if (!isTrack() || automation().empty())
        return nullptr;
    ChildList curves;
    curves.own() = automation();
    return new SimObjectIterator(std::move(curves));
}

IAudioChainEntry* SimObject::getAudioChain()
{
    if (objectKind != ObjectKind::AudioTrack)
        return nullptr;
    SimAudioChainEntry::Chain chain = SimAudioChainEntry::chainOf(*this);
    if (chain->empty())
        return nullptr;
    return new SimAudioChainEntry(chain, 0);
}

tresult SimObject::setToggle(const char8* name, bool on)
{
    if (failing("setToggle"))
        return kResultFailed;
    if (!isTrack())
        return kNotImplemented;
    if (!same(name, "lock"))
        return kInvalidArgument;
    Fields values = fields;
    values.locked = on;
    return changeFields(values);
}

tresult SimObject::getToggle(const char8* name)
{
    if (!isTrack())
        return kNotImplemented;
    if (!same(name, "lock"))
        return kInvalidArgument;
    return fields.locked ? kResultOk : kResultFalse;
}

// ---- Events

IProjectObject* SimObject::getNextInChain()
{
    if (objectKind != ObjectKind::AudioEvent || !fields.joinedToNext)
        return nullptr;
    SimObject* holder = track();
    if (!holder || holder->objectKind != ObjectKind::AudioTrack)
        return nullptr;
    // The next event is joined only where it takes over: an event that no
    // longer begins at this one's end is another sound, not the chain's.
    const SimAudioChainEntry::Chain chain = SimAudioChainEntry::chainOf(*holder);
    const std::size_t index = SimAudioChainEntry::indexOf(*chain, *this);
    if (index + 1 >= chain->size())
        return nullptr;
    SimObject* next = (*chain)[index + 1].get();
    if (std::abs(next->timelineStart() - timelineEnd()) > chainTolerance)
        return nullptr;
    next->addRef();
    return next;
}

IPoolClip* SimObject::getClip()
{
    if (objectKind != ObjectKind::VideoEvent || !owner())
        return nullptr;
    SimPoolClip* clip = owner()->mediaPool().findClip(fields.clipId);
    if (!clip)
        return nullptr;
    clip->addRef();
    return clip;
}

tresult SimObject::setClip(IEditContext*, IClipSource* source, int32)
{
    if (failing("setClip"))
        return kResultFailed;
    if (objectKind != ObjectKind::VideoEvent)
        return kNotImplemented;
    auto* clip = dynamic_cast<SimPoolClip*>(source);
    if (!clip)
        return kInvalidArgument;
    if (isLockedContent())
        return kResultFalse;
    const SimHost::OwnStep step(owner(), u"Change Clip");
    Fields values = fields;
    // The pool's ids fit.
    values.clipId = static_cast<std::int32_t>(clip->id());
    return changeFields(values);
}

// ---- Automation points

tresult SimObject::setValue(IEditContext*, float value, int32)
{
    if (failing("setValue"))
        return kResultFailed;
    if (objectKind != ObjectKind::AutomationPoint)
        return kNotImplemented;
    if (isLockedContent())
        return kResultFalse;
    const SimHost::OwnStep step(owner(), u"Change Value");
    Fields values = fields;
    values.value = value;
    return changeFields(values);
}

tresult SimObject::setSegmentEnd(IEditContext*, bool segmentEnd, int32)
{
    if (failing("setSegmentEnd"))
        return kResultFailed;
    if (objectKind != ObjectKind::AutomationPoint)
        return kNotImplemented;
    if (isLockedContent())
        return kResultFalse;
    const SimHost::OwnStep step(owner(), u"Change Value");
    Fields values = fields;
    values.segmentEnd = segmentEnd;
    return changeFields(values);
}

} // namespace montala::sim
