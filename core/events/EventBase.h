#pragma once

#include "core/model/ChangeContext.h"
#include "core/time/Timecode.h"
#include "core/serialize/Serializable.h"

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <string_view>

namespace montala::core {

// What is wrong with an event. States 1 to 10 are permanent (set when the
// line was read); 0, 11 and 12 follow the timecodes and are worked out anew
// by validateTimecodes.
enum class EventState {
    UninitializedTimecode = 0,
    LegacyState = 1,
    BadEventNumber = 2,
    BadRollName = 3,
    NotVideoEvent = 4,
    BadTransitionDuration = 5,
    UnsupportedTransition = 6,
    BadSrcIn = 7,
    BadSrcOut = 8,
    BadDstIn = 9,
    BadDstOut = 10,
    InvalidTimecode = 11,
    InvalidTimecodeRange = 12,
};

// One EDL event: source range SRC placed at record range DST. In a Change
// EDL, SRC is a range of the old record timeline and DST of the new one.
// Bad content is kept and marked with states, never refused.
class EventBase : public serialize::Serializable, public ChangeContextNotificationBase {
public:
    static constexpr uint32_t currentVersion = 2;

    enum Type { Plain = 0, Healed = 1 };
    enum Transition { Cut = 0, Dissolve = 1, Wipe = 2 };
    // The letter an EDL writes for it: 'D', 'W', and 'C' for a cut or any
    // other number.
    static char transitionLetter(int transitionType);

    // What a reader took from an EDL line and its comments.
    struct LineFields {
        int eventNumber = 0;
        int transitionType = Cut;
        int transitionDuration = 0;
        // States 1 to 10 that the line's fields gave, as bits.
        uint16_t formatStates = 0;
        std::string_view rollName;
        std::string_view clipName;
        // The timecodes in file order (SRC IN, SRC OUT, DST IN, DST OUT);
        // bit n of readTimecodes is set when timecode n could be read.
        Timecode timecodes[4];
        uint8_t readTimecodes = 0;
        std::shared_ptr<const std::string> edlFile;
        // The event's text: textLength bytes from textOffset of textBlock.
        std::shared_ptr<const std::string> textBlock;
        uint32_t textOffset = 0;
        uint32_t textLength = 0;
    };

    EventBase();
    // An event with everything its line gave, made in one step. The states
    // and the speed come out as the setters of the timecodes read, one
    // after the other, would leave them at rate.
    EventBase(const LineFields& line, const Framerate& rate);
    EventBase(const EventBase&) = delete;
    // Copies the event's content (not listeners, not the legacy text) and
    // does not notify; the copy's timecodes all count as initialized.
    EventBase& operator=(const EventBase& other);
    ~EventBase() override = default;

    // 0 a plain event, 1 a HealedEvent; anything else Result::InvalidArgument.
    static std::shared_ptr<EventBase> create(int type);

    const Timecode& getSrcIn() const { return srcIn; }
    const Timecode& getSrcOut() const { return srcOut; }
    const Timecode& getDstIn() const { return dstIn; }
    const Timecode& getDstOut() const { return dstOut; }
    int getEventNumber() const { return eventNumber; }
    const std::string& getRollName() const { return rollName; }
    const std::string& getClipName() const { return clipName; }
    const std::string& getEdlFile() const;
    std::string_view getEdlText() const
    {
        return edlTextBlock ? std::string_view(*edlTextBlock).substr(edlTextOffset, edlTextLength)
                            : std::string_view();
    }
    int getEventType() const { return eventType; }
    int getTransitionType() const { return transitionType; }
    int getTransitionDuration() const { return transitionDuration; }
    bool isVfx() const { return vfx; }
    double getMotionSpeed() const { return motionSpeed; }
    std::set<EventState> getStates() const;

    void setSrcIn(const Timecode& tc);
    void setSrcOut(const Timecode& tc);
    void setDstIn(const Timecode& tc);
    void setDstOut(const Timecode& tc);
    void setTimecodes(const Timecode& srcIn, const Timecode& srcOut, const Timecode& dstIn,
                      const Timecode& dstOut);
    void setRollName(const std::string& name);
    void setClipName(const std::string& name);
    void setEdlFile(const std::string& file);
    // The name as one text that many events share: the events of one file
    // all carry its name.
    void setEdlFile(std::shared_ptr<const std::string> file);
    const std::shared_ptr<const std::string>& getSharedEdlFile() const { return edlFile; }
    void setTransitionType(int type);
    void setTransitionDuration(int frames);
    void setVfx(bool isVfx);
    void setEventNumber(int number) { eventNumber = number; }
    void setEdlText(std::string text);
    // length bytes from offset of a text that other events may share; at
    // most 4 GB from its start.
    void setEdlText(std::shared_ptr<const std::string> block, size_t offset, size_t length);

    void addState(EventState state) { states |= bitOf(state); }
    void removeState(EventState state) { states &= static_cast<uint16_t>(~bitOf(state)); }
    bool hasState(EventState state) const { return (states & bitOf(state)) != 0; }
    bool isFlawless() const { return states == 0; }
    // Any of the permanent states 1 to 10.
    bool hasFormatError() const;
    static std::string getStateMessage(EventState state);
    // Every message of the event, each followed by a newline; the tooltip text.
    std::string getStateText() const;
    bool hasMotionSpeed(double speed) const;
    bool isNormalSpeed() const { return hasMotionSpeed(1.0); }
    // Re-checks the timecodes against the current rate, e.g. after it changed.
    void revalidate();

    void readCurrent(serialize::SerializationTree& tree) override;
    void write(serialize::SerializationTree& tree) const override;
    void readOld(serialize::SerializationTree& tree, uint32_t storedVersion) override;

protected:
    explicit EventBase(int type);
    EventBase(const LineFields& line, const Framerate& rate, bool allValid);

    static uint16_t bitOf(EventState state) { return static_cast<uint16_t>(1u << static_cast<int>(state)); }
    void validateTimecodes() { validateTimecodes(Timecode::currentFramerate()); }
    void computeMotionSpeed() { computeMotionSpeed(Timecode::currentFramerate()); }
    void validateTimecodes(const Framerate& rate);
    void computeMotionSpeed(const Framerate& rate);
    void notifyChange() { notify(EventChangeContext()); }
    // The common part of every stored version; the version decides the
    // layout of the states and of the texts behind edlFile.
    void readBody(serialize::SerializationTree& tree, uint32_t storedVersion);
    void finishRead();

    // Declared so that the small fields pack together.
    int eventType = Plain;
    int eventNumber = 0;
    int transitionType = Cut;
    int transitionDuration = 0;
    // One bit per EventState: every event has them, and a set would cost a
    // heap block for each.
    uint16_t states = bitOf(EventState::UninitializedTimecode);
    bool vfx = false;
    double motionSpeed = 1.0;
    Timecode srcIn;
    Timecode srcOut;
    Timecode dstIn;
    Timecode dstOut;
    std::string rollName;
    std::string clipName;
    // Null for no name.
    std::shared_ptr<const std::string> edlFile;
    // The event's lines as read: a stretch of a text that the events of one
    // file share, so that reading a file costs no heap block per event.
    std::shared_ptr<const std::string> edlTextBlock;
    uint32_t edlTextOffset = 0;
    uint32_t edlTextLength = 0;

    // Texts that only stored data of old versions fill: most events never
    // have them, and go without the room.
    struct RareTexts {
        // Kept for the stored form only; nothing sets it.
        std::string reservedText;
        std::string legacyStateText;
    };
    const std::string& reservedText() const { return rare ? rare->reservedText : noText(); }
    const std::string& legacyStateText() const { return rare ? rare->legacyStateText : noText(); }
    RareTexts& rareTexts();
    static const std::string& noText();
    std::unique_ptr<RareTexts> rare;
};

using EventPtr = std::shared_ptr<EventBase>;

} // namespace montala::core
