#pragma once

#include "core/model/ChangeContext.h"
#include "core/events/EventBase.h"
#include "core/time/TimecodeRange.h"
#include "core/serialize/Serializable.h"

#include <memory>
#include <string>
#include <vector>

namespace montala::core {

class VfxNameFilter;
namespace fileio {
struct ParseReport;
}
enum class MatchName : int;
enum class HealProcessingMode : int;

// An ordered list of shared events: the Old, New or Change EDL, or a scratch
// list. It listens to every event it holds and reports their changes with
// its own list kind. Operations that touch many events take the list out of
// the events' listeners first and send one notification at the end.
class EventList : public serialize::Serializable,
                  public ChangeContextNotificationBase,
                  public ChangeContextListenerInterface {
public:
    static constexpr uint32_t currentVersion = 0;
    // Bytes a stored event takes, generously: a plain one takes 81 and its
    // names. Room reserved but never written is never touched either.
    static constexpr size_t storedSizeGuess = 160;

    enum Kind { OldKind = 0, NewKind = 1, ChangeKind = 2 };
    enum RangeKind { Src = 0, Dst = 1 };

    explicit EventList(int listKind);
    // A copy is always of kind 2, whatever the source's kind.
    EventList(const EventList& other);
    // Keeps this list's kind.
    EventList& operator=(const EventList& other);
    ~EventList() override;

    void append(const EventList& other);
    // Appends other's events and leaves other empty: the events change
    // lists rather than gain one more listener each.
    void append(EventList&& other);
    // Result::OutOfRange if start + count passes the end of other.
    void appendRange(const EventList& other, size_t start, size_t count);
    void addEvent(const EventPtr& event);
    // Adds the events in order, with one notification.
    void addEvents(const std::vector<EventPtr>& added);
    // The same; an empty list takes the vector itself.
    void addEvents(std::vector<EventPtr>&& added);
    // Removes the events that stand in selection (by pointer).
    void removeEvents(const EventList& selection);
    void removeRange(size_t start, size_t count);
    void clear();
    // Independent plain copies of other's events. A healed event becomes a
    // plain object that still says type 1; its parts are not copied.
    void copyEventsFrom(const EventList& other);

    size_t getSize() const { return events.size(); }
    const EventPtr& getEvent(size_t index) const { return events[index]; }
    const std::vector<EventPtr>& getEvents() const { return events; }
    int getListKind() const { return listKind; }
    bool contains(const EventPtr& event) const;
    bool hasGoodEvent() const;
    int countInvalidTimecodes() const;
    int countFlawedEvents() const;
    // The span of the flawless events, 00:00:00:00 to 00:00:00:00 if none.
    TimecodeRange getRange(RangeKind kind) const;
    // Result::NotInitialized on an empty list.
    TimecodeRange getDstRange() const;
    static TimecodeRange getEventRange(const EventPtr& event, RangeKind kind);

    // Reads one EDL file (optionally appended), B-roll renaming that file
    // alone; framerate receives the rate the file suggests, and report, when
    // given, the lines the reader dropped or changed and why a file did not
    // open. A failure is thrown and leaves the list as the first step left it.
    void loadEdl(const std::u16string& path, bool append, Framerate& framerate, bool renameBRolls,
                 bool acceptAudio, fileio::ParseReport* report = nullptr);
    // A roll name ending in "B" takes the name without it when that name
    // stands in the list too.
    void renameBRolls();
    // Shifts the record (or source) side of all flawless events, or throws
    // Result::OutOfRange before any change if the shift leaves the day.
    void offsetDst(const Timecode& offset, bool add);
    void offsetSrc(const Timecode& offset, bool add);
    bool canExtendToNeighbour(const EventPtr& event, bool toPrevious) const;
    void extendToNeighbour(const EventPtr& event, bool toPrevious);

    // Writes the list as CMX text; a failure of the writer is thrown.
    void saveEdl(const std::u16string& path) const;
    // Heals the selected events of this list anew in the given mode; healed
    // events among them are broken up into their parts first. The list ends
    // sorted by DST IN and numbered.
    void healEvents(const EventList& selection, const EventList& newList, HealProcessingMode healMode);
    // True if the selection is contiguous and healing it would change the
    // number of events; this list is not touched.
    bool canHealEvents(const EventList& selection, const EventList& newList, HealProcessingMode healMode) const;
    // Marks every event whose clip name or roll name (as kind says) matches
    // the patterns as VFX.
    void applyVfxPatterns(const VfxNameFilter& patterns, MatchName kind);

    void changed(const ChangeContext& context) override;

    void readCurrent(serialize::SerializationTree& tree) override;
    void write(serialize::SerializationTree& tree) const override;

protected:
    // Takes the list out of (and back into) the listeners of all its events.
    void subscribeAll();
    void unsubscribeAll();
    // Lets go of all events, unsubscribing from those that outlive the
    // list's hold on them.
    void releaseEvents();
    void notifyListChanged();

    // Keeps the list subscribed to its events on every way out of a bulk
    // change, thrown failures included.
    class BulkChange {
    public:
        explicit BulkChange(EventList& list) : list(list) { list.unsubscribeAll(); }
        ~BulkChange() { list.subscribeAll(); }
        BulkChange(const BulkChange&) = delete;
        BulkChange& operator=(const BulkChange&) = delete;

    private:
        EventList& list;
    };

private:
    void offset(RangeKind kind, const Timecode& offset, bool add);

    std::vector<EventPtr> events;
    int listKind;
};

} // namespace montala::core
