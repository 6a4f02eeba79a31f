#pragma once

#include "kelmar/base/FVariant.h"
#include "kelmar/project/IAudioChainEvent.h"
#include "kelmar/project/IAutomationCurvePoint.h"
#include "kelmar/project/IAutomationPoint.h"
#include "kelmar/project/IAutomationTrack.h"
#include "kelmar/project/IMarkerTrack.h"
#include "kelmar/project/IPointMarker.h"
#include "kelmar/project/IProjectObject.h"
#include "kelmar/base/IPtr.h"
#include "kelmar/project/IRangeMarker.h"
#include "kelmar/project/ITrack.h"
#include "kelmar/project/IVideoEvent.h"
#include "sim/project/NodeHeap.h"
#include "sim/project/SimBase.h"
#include "sim/project/SimSharedText.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace montala::sim {

class SimProject;

// What a node of the project tree is.
enum class ObjectKind : std::uint8_t {
    Project,
    Folder,
    AudioTrack,
    VideoTrack,
    MarkerTrack,
    RulerTrack,
    AutomationTrack,
    AutomationPoint,
    AudioEvent,
    Part,
    VideoEvent,
    PointMarker,
    RangeMarker,
};

const char* kindName(ObjectKind kind);

// A project as the nodes bound to it hold it: it lasts while any of them
// does, and names no project once that project is gone, so that a node that
// outlives its project forgets it without the project keeping a list of its
// nodes (a feature's session binds a million of them).
struct ProjectLink {
    SimProject* project = nullptr;
    std::uint32_t holders = 0;

    // Takes `link` (or none) in place of what `held` holds.
    static void hold(ProjectLink*& held, ProjectLink* link);
};

// One node of a simulated project: a track of any sort, an automation track
// or point, an event, a part or a marker (the project is a node too). One
// class holds all of them so that copying, undo and the session file treat
// every node alike; each node answers only the interfaces of its kind, which
// a small class of the kind adds (see create), so that an event or a point
// does not carry the interfaces of every other kind.
//
// Times are seconds relative to the project start, except for events inside a
// part, which are relative to the part's start. Every change made while the
// node belongs to an open project is recorded for undo as SimHost says.
//
// A part answers isKind("part"), not "audio": code that looks for the audio
// of a track asks for both. Content of a locked track (the track's own name
// and attributes included) refuses changes with kResultFalse.
// IProjectObject comes first so that the node's own flags fill the room that
// SimBase leaves after its reference count (see the members).
class SimObject : public Kelmar::IProjectObject, public SimBase {
public:
    // The values of a node that undo restores as one.
    struct Fields {
        SharedText<std::u16string> name;
        SharedText<std::string> file; // source file of an audio event
        double start = 0.0;
        double end = 0.0;
        // No node has both, and a feature's session holds a million events
        // and points: they share their place.
        union {
            double offset = 0.0; // source offset of an audio or video event
            double value;        // of an automation point
        };
        std::int32_t clipId = 0;   // pool clip of a video event (see SimMediaPool::largestId)
        std::uint8_t curveType = 1; // of an automation track
        bool joinedToNext = false; // an audio event joined to the next in the chain
        bool locked = false;       // the track's "lock" toggle
        bool segmentEnd = false;   // of an automation point

        bool operator==(const Fields& other) const
        {
            return name == other.name && file == other.file && start == other.start && end == other.end
                   && offset == other.offset && clipId == other.clipId && curveType == other.curveType
                   && joinedToNext == other.joinedToNext && locked == other.locked
                   && segmentEnd == other.segmentEnd;
        }
    };

    using List = std::vector<Kelmar::IPtr<SimObject>>;
    using Attributes = std::map<std::string, Kelmar::FVariant>;

    // A node's children, shared by the node and the walks handed out over
    // them (see getChildren) instead of copied for each walk: a copy takes
    // a reference of every child and lets go of it again, which on a
    // feature's long tracks fetches each child from the heap twice more per
    // walk. The node changes a list a walk still holds only after making
    // its own copy, so that a walk sees the list as it was handed out.
    class ChildList {
    public:
        ChildList() = default;
        ChildList(const ChildList& other);
        ChildList(ChildList&& other) noexcept : block(std::exchange(other.block, nullptr)) {}
        ChildList& operator=(ChildList other) noexcept;
        ~ChildList();

        bool empty() const { return !block || block->items.empty(); }
        // Whether a walk holds the list too.
        bool shared() const { return block && block->holders > 1; }
        // The children; none for a list never made.
        const List& items() const;
        // The children to change: made on first use, copied first while a
        // walk holds them too.
        List& own();

    private:
        struct Block {
            List items;
            std::atomic<std::uint32_t> holders{1};
        };
        Block* block = nullptr;
    };

    static Kelmar::IPtr<SimObject> create(ObjectKind kind);
#ifndef __SANITIZE_ADDRESS__
    // Nodes come from the heap's place for the track being worked on (see
    // NodeHeap); the address sanitizer watches them in the general heap.
    static void* operator new(std::size_t size) { return NodeHeap::allocate(size); }
    static void operator delete(void* memory, std::size_t size) noexcept { NodeHeap::release(memory, size); }
#endif
    // Where the nodes of this track are made (see NodeHeap); 0 for any
    // other node.
    virtual std::uint8_t heapPlace() const { return 0; }
    // Shorthands for building a project by hand; times as in Fields.
    static Kelmar::IPtr<SimObject> makeTrack(ObjectKind kind, std::u16string name);
    static Kelmar::IPtr<SimObject> makeAudioEvent(std::u16string name, double start, double end, std::string file,
                                                  double offset);
    static Kelmar::IPtr<SimObject> makeVideoEvent(double start, double end, std::int32_t clipId, double offset);
    static Kelmar::IPtr<SimObject> makePart(std::u16string name, double start, double end);
    // A point marker when `end` equals `start`, else a range marker.
    static Kelmar::IPtr<SimObject> makeMarker(std::u16string name, double start, double end);
    static Kelmar::IPtr<SimObject> makeAutomation(std::u16string name, std::uint8_t curveType);
    static Kelmar::IPtr<SimObject> makePoint(double time, double value, bool segmentEnd = false);

    ~SimObject() override;

    // ---- Kelmar::FUnknown
    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT
    const char* isA() const override { return "SimObject"; }

    // ---- Kelmar::IProjectObject
    bool isKind(const Kelmar::char8* kind) override;
    Kelmar::int32 getFlags() override;
    Kelmar::tresult setAttribute(const Kelmar::char8* name, const Kelmar::FVariant& value,
                                 Kelmar::int32 notify) override;
    Kelmar::tresult getAttribute(const Kelmar::char8* name, Kelmar::FVariant& value) override;
    Kelmar::tresult hasAttribute(const Kelmar::char8* name) override;
    Kelmar::tresult removeAttribute(const Kelmar::char8* name) override;
    Kelmar::tresult getName(Kelmar::String& name) override;
    Kelmar::tresult setName(Kelmar::IEditContext* context, const Kelmar::char16* name, Kelmar::int32 flags) override;
    bool isSelected() override { return selected; }
    double getStart(Kelmar::IEditContext* context) override;
    // Moves the node; its length stays.
    Kelmar::tresult setStart(Kelmar::IEditContext* context, double start, Kelmar::int32 flags) override;
    Kelmar::tresult setLength(Kelmar::IEditContext* context, double length, Kelmar::int32 flags) override;
    double getEnd(Kelmar::IEditContext* context) override;
    Kelmar::tresult setEnd(Kelmar::IEditContext* context, double end, Kelmar::int32 flags) override;
    double getOffset(Kelmar::IEditContext* context) override;
    Kelmar::IObjectIterator* getChildren() override;
    Kelmar::IProjectObject* getParent() override;

    // ---- What the interfaces of the kinds answer (see create)
    // Kelmar::ITrack
    Kelmar::IObjectIterator* getAutomationTracks();
    Kelmar::IAudioChainEntry* getAudioChain();
    Kelmar::tresult setToggle(const Kelmar::char8* name, bool on);
    Kelmar::tresult getToggle(const Kelmar::char8* name);

    // Kelmar::IAudioChainEvent
    Kelmar::IProjectObject* getNextInChain();

    // Kelmar::IVideoEvent
    Kelmar::IPoolClip* getClip();
    Kelmar::tresult setClip(Kelmar::IEditContext* context, Kelmar::IClipSource* clip, Kelmar::int32 flags);

    // Kelmar::IAutomationTrack
    Kelmar::int32 getCurveType() { return fields.curveType; }

    // Kelmar::IAutomationPoint and IAutomationCurvePoint
    float getValue() { return static_cast<float>(fields.value); }
    Kelmar::tresult setValue(Kelmar::IEditContext* context, float value, Kelmar::int32 flags);
    bool isSegmentEnd() { return fields.segmentEnd; }
    Kelmar::tresult setSegmentEnd(Kelmar::IEditContext* context, bool segmentEnd, Kelmar::int32 flags);

    // ---- The simulator's own view of the node
    ObjectKind kind() const { return objectKind; }
    bool isTrack() const;
    bool isContentTrack() const; // a track that holds events: audio, video, marker
    bool isTimed() const;        // an event, part, marker or automation point
    // Whether `child` may be put into this node.
    bool accepts(ObjectKind child) const;

    const Fields& get() const { return fields; }
    const List& children() const
    {
        settle();
        return kids();
    }
    const List& automation() const;
    const Attributes& attributes() const;
    SimObject* parent() const { return parentNode; }
    SimProject* project() const { return owner(); }
    bool selectedFlag() const { return selected; }

    // The track that holds this node (itself for a track); null if none.
    SimObject* track();
    // Whether a change of this node's content is refused: the node is, or lies
    // in, a locked track.
    bool isLockedContent();
    // Start and end on the timeline, with a part's start added.
    double timelineStart() const;
    double timelineEnd() const;
    // Whether the node lies in its project's tree.
    bool isInProject() const;
    // Takes the children that left out of the list once a quarter of it
    // has, unless a walk holds it (see removeChild).
    void settleIfDue() const;
    // The positions of the children that may lie in [start, end): those
    // that start before `end` and end after `start`, and markers that end no
    // earlier than a hair before it (a point there lies in the range), in
    // the children's order. Found through an order of the children by start
    // that holds their times, kept until their times or the list change (a
    // child appended after all the others joins it): a look-up reads none
    // of the children themselves.
    std::vector<std::size_t> childrenNear(double start, double end);
    // The times of an automation track's points, in the list's order (which
    // is their time order): a search among thousands of points reads these
    // instead of fetching a point from the heap at each step. Kept through
    // the list changes that put points in (insertChild, replaceChildren), let
    // go of on any other change of the list or of a point.
    const std::vector<double>& pointTimes();

    // Changes, recorded for undo. The list changes keep the parents right.
    void setFields(const Fields& values);
    void insertChild(Kelmar::IPtr<SimObject> child, std::size_t index);
    void appendChild(Kelmar::IPtr<SimObject> child);
    // Appends them all, as appendChild would one by one. A long list (a
    // whole track moved home before the track's other events) lets go of
    // the order by start instead of slotting each child into it: the next
    // look-up sorts once, where slotting would move the order's tail for
    // every child.
    void appendChildren(const List& list);
    // Puts an automation point among the others in time order, after those at
    // the same time.
    void insertPoint(Kelmar::IPtr<SimObject> point);
    bool removeChild(SimObject* child);
    void replaceChildren(const List& list);
    // Puts `list` in the place of the children [first, last).
    void replaceChildren(std::size_t first, std::size_t last, const List& list);
    void appendAutomation(Kelmar::IPtr<SimObject> automationTrack);
    // Room for `count` children in all, for a reader that knows how many
    // come: a feature's long tracks do not keep a list that grew by doubling.
    void reserveChildren(std::size_t count) { ownKids().reserve(count); }
    void putAttribute(const std::string& name, const Kelmar::FVariant& value);
    void dropAttribute(const std::string& name);
    // Selection is not an edit: it is not recorded.
    void setSelectedFlag(bool on) { selected = on; }

    // A copy of the node and everything below it, in no project.
    Kelmar::IPtr<SimObject> cloneTree() const;

    // Binds the node and all below it to `project`, or to none with null.
    void bindTo(SimProject* project);

    // Used by undo: puts back values without recording.
    void restoreFields(const Fields& values);
    void restoreChildren(const List& list, bool automationList);
    void restoreAttribute(const std::string& name, const Kelmar::FVariant* value);

    // An audio track's chain in time order, found again while anyone still
    // holds it and nothing below the track has changed (see
    // SimAudioChainEntry::chainOf); null when it must be gathered and sorted
    // anew.
    std::shared_ptr<const List> sortedChain() const;
    void keepSortedChain(std::shared_ptr<const List> chain);

    // Set while the node has changed in the open undo group. With selected
    // and objectKind below, it lies in the room after the reference count.
    bool contentChanged = false;

protected:
    explicit SimObject(ObjectKind kind);
    // Answers the interfaces of the node's kind besides IProjectObject.
    virtual bool answerKind(const Kelmar::FUID& iid, void** obj);

private:
    Kelmar::tresult changeFields(const Fields& values);
    Kelmar::tresult changeEnd(Kelmar::IEditContext* context, double end, Kelmar::int32 flags);
    // Counts a call of the host's interface; true when the test made it fail.
    bool failing(const char* call);
    // Hands the project's failure plan to a store kept under `name`.
    void watchStore(const std::string& name);
    // Records a change of this node with the host, if it is in an open project.
    void noteFieldsChange(const Fields& values);
    void noteListChange(bool automationList);
    void setListParents(const List& list);
    // A change of this node's times or children: the orders kept by the
    // nodes above (the track's chain, a track's or part's children by start)
    // no longer hold.
    void dropChain();
    // Takes the children removed since the list was last read out of it.
    // A removal only lets go of its parent: a run that takes a thousand
    // events off a track one by one would move the rest of the list each
    // time.
    void settle() const;

    // The children's positions by start, each with its end and whether it
    // is a marker, and per stretch the latest end up to it (see
    // childrenNear). A long track of a feature keeps one through a run, for
    // the arrangement and the work area both: 16 bytes a child while the
    // list is in time order and holds no marker, 20 otherwise.
    struct ChildOrder {
        // Every `stretch`-th start is kept apart as well: a search reads
        // that short list and then the starts of one stretch, instead of one
        // far place of a long track's starts at each halving.
        static constexpr std::size_t stretch = 16;
        // A child's position in the list, with this bit set for a marker;
        // none while each child's place is its position and none is a
        // marker, as for a track read or built in time order.
        static constexpr std::uint32_t markerBit = 1u << 31;
        std::vector<std::uint32_t> places;
        std::vector<double> starts;
        std::vector<double> ends;
        std::vector<double> stretchStarts;
        // The latest end of the children up to each stretch's last.
        std::vector<double> stretchReach;

        std::size_t position(std::size_t place) const { return places.empty() ? place : places[place] & ~markerBit; }
        bool isMarker(std::size_t place) const { return !places.empty() && (places[place] & markerBit) != 0; }
        // Puts a child at `place`, `position` in the list.
        void insert(std::size_t place, std::size_t position, bool marker, double start, double end);
        // The first place whose start is at `time` or later (`after`: later).
        std::size_t firstFrom(double time, bool after) const;
        // The first place by which some child ends at `time` or later.
        std::size_t firstReaching(double time) const;
        // Brings the stretches in line with the starts and ends from `place`
        // on.
        void restretch(std::size_t place);
    };
    // What only some nodes have (children, automation tracks, attributes),
    // apart: a feature's session holds hundreds of thousands of events and
    // points, and each would carry it empty.
    struct Rare {
        ChildList childList;
        List automationList;
        Attributes attributeMap;
        std::weak_ptr<const List> sortedChain;
        std::unique_ptr<ChildOrder> childOrder;
        std::unique_ptr<std::vector<double>> pointTimes;
        // Children removed but still in the list (see settle), known by
        // their places in memory.
        std::vector<const SimObject*> leaving;
    };
    Rare& rare();
    SimProject* owner() const { return ownerLink ? ownerLink->project : nullptr; }
    const List& kids() const;
    List& ownKids();

    bool selected = false;
    ObjectKind objectKind;
    Fields fields;
    SimObject* parentNode = nullptr;
    ProjectLink* ownerLink = nullptr;
    std::unique_ptr<Rare> rareParts;
    friend class SimProject;
};

// The node behind an interface pointer of the simulator, or null for an
// object the simulator did not make.
SimObject* simObject(Kelmar::FUnknown* object);

} // namespace montala::sim
