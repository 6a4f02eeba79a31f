#include "core/events/EventBase.h"

#include "core/events/HealedEvent.h"
#include "core/serialize/SerializationTree.h"
#include "core/time/Tolerances.h"
#include "util/Result.h"
#include "util/StringUtil.h"

#include <climits>
#include <cmath>
#include <cstdint>

namespace montala::core {

char EventBase::transitionLetter(int transitionType)
{
    switch (transitionType) {
    case Dissolve:
        return 'D';
    case Wipe:
        return 'W';
    default:
        return 'C';
    }
}

using util::Result;
using util::StringUtil;

EventBase::EventBase() : EventBase(Plain) {}

EventBase::EventBase(int type) : Serializable(currentVersion), eventType(type) {}

EventBase& EventBase::operator=(const EventBase& other)
{
    if (this == &other)
        return *this;
    eventType = other.eventType;
    srcIn = other.srcIn;
    srcOut = other.srcOut;
    dstIn = other.dstIn;
    dstOut = other.dstOut;
    eventNumber = other.eventNumber;
    rollName = other.rollName;
    clipName = other.clipName;
    states = other.states;
    transitionType = other.transitionType;
    transitionDuration = other.transitionDuration;
    if (!other.reservedText().empty())
        rareTexts().reservedText = other.reservedText();
    else if (rare)
        rare->reservedText.clear();
    edlFile = other.edlFile;
    edlTextBlock = other.edlTextBlock;
    edlTextOffset = other.edlTextOffset;
    edlTextLength = other.edlTextLength;
    vfx = other.vfx;
    motionSpeed = other.motionSpeed;
    return *this;
}

EventBase::RareTexts& EventBase::rareTexts()
{
    if (!rare)
        rare = std::make_unique<RareTexts>();
    return *rare;
}

const std::string& EventBase::noText()
{
    static const std::string none;
    return none;
}

void EventBase::setEdlText(std::string text)
{
    const size_t length = text.size();
    setEdlText(text.empty() ? nullptr : std::make_shared<const std::string>(std::move(text)), 0, length);
}

void EventBase::setEdlText(std::shared_ptr<const std::string> block, size_t offset, size_t length)
{
    if (offset > UINT32_MAX || length > UINT32_MAX - offset)
        throw Result::OutOfRange;
    edlTextBlock = std::move(block);
    edlTextOffset = static_cast<uint32_t>(offset);
    edlTextLength = static_cast<uint32_t>(length);
}

std::shared_ptr<EventBase> EventBase::create(int type)
{
    if (type == Plain)
        return std::make_shared<EventBase>();
    if (type == Healed)
        return std::make_shared<HealedEvent>();
    throw Result::InvalidArgument;
}

void EventBase::setSrcIn(const Timecode& tc)
{
    srcIn = tc;
    validateTimecodes();
    computeMotionSpeed();
    notifyChange();
}

void EventBase::setSrcOut(const Timecode& tc)
{
    srcOut = tc;
    validateTimecodes();
    computeMotionSpeed();
    notifyChange();
}

void EventBase::setDstIn(const Timecode& tc)
{
    dstIn = tc;
    validateTimecodes();
    computeMotionSpeed();
    notifyChange();
}

void EventBase::setDstOut(const Timecode& tc)
{
    dstOut = tc;
    validateTimecodes();
    computeMotionSpeed();
    notifyChange();
}

void EventBase::setTimecodes(const Timecode& newSrcIn, const Timecode& newSrcOut,
                             const Timecode& newDstIn, const Timecode& newDstOut)
{
    srcIn = newSrcIn;
    srcOut = newSrcOut;
    dstIn = newDstIn;
    dstOut = newDstOut;
    const Framerate rate = Timecode::currentFramerate();
    validateTimecodes(rate);
    computeMotionSpeed(rate);
    notifyChange();
}

namespace {

bool allFourValid(const EventBase::LineFields& line, const Framerate& rate)
{
    return line.readTimecodes == 0xF && line.timecodes[0].isValid(rate) && line.timecodes[1].isValid(rate)
           && line.timecodes[2].isValid(rate) && line.timecodes[3].isValid(rate);
}

const Timecode unsetTimecode;

// Timecode n of the line when all four are valid; otherwise an unset one,
// for the timecodes to be set one after the other.
const Timecode& startingTimecode(const EventBase::LineFields& line, bool allValid, int which)
{
    return allValid ? line.timecodes[which] : unsetTimecode;
}

} // namespace

EventBase::EventBase(const LineFields& line, const Framerate& rate) : EventBase(line, rate, allFourValid(line, rate)) {}

EventBase::EventBase(const LineFields& line, const Framerate& rate, bool allValid)
    : Serializable(currentVersion),
      eventNumber(line.eventNumber),
      transitionType(line.transitionType),
      transitionDuration(line.transitionDuration),
      states(static_cast<uint16_t>(bitOf(EventState::UninitializedTimecode) | line.formatStates)),
      srcIn(startingTimecode(line, allValid, 0)),
      srcOut(startingTimecode(line, allValid, 1)),
      dstIn(startingTimecode(line, allValid, 2)),
      dstOut(startingTimecode(line, allValid, 3)),
      rollName(line.rollName),
      clipName(line.clipName),
      edlFile(line.edlFile),
      edlTextBlock(line.textBlock),
      edlTextOffset(line.textOffset),
      edlTextLength(line.textLength)
{
    if (allValid) {
        // The common case. With all four valid, the states and the speed
        // follow from the four frame counts alone.
        const int frames[4] = {srcIn.toFrames(rate), srcOut.toFrames(rate), dstIn.toFrames(rate),
                               dstOut.toFrames(rate)};
        removeState(EventState::UninitializedTimecode);
        if (frames[1] < frames[0] || frames[3] < frames[2])
            addState(EventState::InvalidTimecodeRange);
        const int source = frames[1] - frames[0];
        const int record = frames[3] - frames[2];
        if (source != 0)
            motionSpeed = static_cast<double>(source) / static_cast<double>(record == 0 ? 1 : record);
        else
            motionSpeed = record == 0 ? 1.0 : 0.0;
        return;
    }
    // The timecodes as the setters would have come upon them: each judges
    // those set so far, so that a range fault found on the way stays while
    // a timecode is invalid.
    Timecode* const fields[4] = {&srcIn, &srcOut, &dstIn, &dstOut};
    for (int which = 0; which < 4; ++which) {
        if ((line.readTimecodes & (1u << which)) == 0)
            continue;
        *fields[which] = line.timecodes[which];
        validateTimecodes(rate);
        computeMotionSpeed(rate);
    }
}

void EventBase::setRollName(const std::string& name)
{
    rollName = name;
    notifyChange();
}

void EventBase::setClipName(const std::string& name)
{
    clipName = name;
    notifyChange();
}

const std::string& EventBase::getEdlFile() const
{
    static const std::string none;
    return edlFile ? *edlFile : none;
}

void EventBase::setEdlFile(const std::string& file)
{
    setEdlFile(file.empty() ? nullptr : std::make_shared<const std::string>(file));
}

void EventBase::setEdlFile(std::shared_ptr<const std::string> file)
{
    edlFile = std::move(file);
    notifyChange();
}

void EventBase::setTransitionType(int type)
{
    transitionType = type;
    notifyChange();
}

void EventBase::setTransitionDuration(int frames)
{
    transitionDuration = frames;
    notifyChange();
}

void EventBase::setVfx(bool isVfx)
{
    vfx = isVfx;
    notifyChange();
}

std::set<EventState> EventBase::getStates() const
{
    std::set<EventState> set;
    for (int value = 0; value <= 12; ++value) {
        if (hasState(static_cast<EventState>(value)))
            set.insert(set.end(), static_cast<EventState>(value));
    }
    return set;
}

bool EventBase::hasFormatError() const
{
    // The permanent states 1 to 10.
    constexpr uint16_t permanent = ((1u << 11) - 1) & ~1u;
    return (states & permanent) != 0;
}

std::string EventBase::getStateMessage(EventState state)
{
    const char16_t* message = nullptr;
    switch (state) {
    case EventState::UninitializedTimecode: message = u"Detected uninitialized timecode."; break;
    case EventState::LegacyState: return {};
    case EventState::BadEventNumber: message = u"Event Number is not a number."; break;
    case EventState::BadRollName: message = u"Roll name contains non-alphanumeric characters."; break;
    case EventState::NotVideoEvent: message = u"Not a video event."; break;
    case EventState::BadTransitionDuration: message = u"Not a valid transition duration."; break;
    case EventState::UnsupportedTransition: message = u"Found unsupported transition type."; break;
    case EventState::BadSrcIn: message = u"SRC IN format cannot be read."; break;
    case EventState::BadSrcOut: message = u"SRC OUT format cannot be read."; break;
    case EventState::BadDstIn: message = u"DST IN format cannot be read."; break;
    case EventState::BadDstOut: message = u"DST OUT format cannot be read."; break;
    case EventState::InvalidTimecode:
        message = u"Detected invalid timecode. Mismatch between timecode and project frame rate?";
        break;
    case EventState::InvalidTimecodeRange: message = u"Detected invalid timecode range."; break;
    }
    if (message == nullptr)
        return {};
    return StringUtil::toUtf8(StringUtil::translate(message));
}

std::string EventBase::getStateText() const
{
    // The legacy text stands where state 1 would, and is followed by a
    // newline whenever anything stands before it: after "uninitialized" the
    // text thus carries a blank line. The tooltip has always looked so.
    std::string text;
    for (int value = 0; value <= 12; ++value) {
        const auto state = static_cast<EventState>(value);
        if (state == EventState::LegacyState) {
            text += legacyStateText();
            if (!text.empty())
                text += "\n";
        } else if (hasState(state)) {
            text += getStateMessage(state) + "\n";
        }
    }
    return text;
}

bool EventBase::hasMotionSpeed(double speed) const
{
    return std::fabs(motionSpeed - speed) < speedTolerance;
}

void EventBase::revalidate()
{
    validateTimecodes();
    computeMotionSpeed();
    notifyChange();
}

void EventBase::validateTimecodes(const Framerate& rate)
{
    if (!srcIn.isValid(rate)) {
        addState(EventState::InvalidTimecode);
    } else if (!srcOut.isValid(rate) || !dstIn.isValid(rate) || !dstOut.isValid(rate)) {
        // A range fault found earlier stays until all four are valid again.
        addState(EventState::InvalidTimecode);
    } else if (srcOut < srcIn || dstOut < dstIn) {
        addState(EventState::InvalidTimecodeRange);
        removeState(EventState::InvalidTimecode);
    } else {
        removeState(EventState::InvalidTimecodeRange);
        removeState(EventState::InvalidTimecode);
    }
    if (srcIn.isInitialized() && srcOut.isInitialized() && dstIn.isInitialized()
        && dstOut.isInitialized())
        removeState(EventState::UninitializedTimecode);
    else
        addState(EventState::UninitializedTimecode);
}

void EventBase::computeMotionSpeed(const Framerate& rate)
{
    if (!srcIn.isValid(rate) || !srcOut.isValid(rate) || !dstIn.isValid(rate)
        || !dstOut.isValid(rate))
        return;
    if (srcOut != srcIn) {
        // A ratio of frame counts: seconds far from midnight carry rounding
        // that would make equal lengths a hair from 1.
        const int source = srcOut.toFrames(rate) - srcIn.toFrames(rate);
        // A zero-length record counts as one frame, so the speed stays finite.
        const int record = dstOut == dstIn ? 1 : dstOut.toFrames(rate) - dstIn.toFrames(rate);
        motionSpeed = static_cast<double>(source) / static_cast<double>(record);
    } else if (dstOut == dstIn) {
        motionSpeed = 1.0;
    } else {
        motionSpeed = 0.0; // a freeze frame
    }
}

// ---- Stored form ----
//
// Version 2: four timecode objects, eventNumber, rollName, clipName, the
// states (count, then each), transitionType, transitionDuration,
// reservedText, edlFile, vfx.
// Version 1: as 2, with edlText between edlFile and vfx.
// Version 0: one int32 in place of the states (0 none, 1 the legacy state),
// and edlText and legacyStateText between edlFile and vfx.

void EventBase::readCurrent(serialize::SerializationTree& tree)
{
    readBody(tree, currentVersion);
    finishRead();
}

void EventBase::readOld(serialize::SerializationTree& tree, uint32_t storedVersion)
{
    if (storedVersion > 1)
        throw Result::UnknownVersion;
    readBody(tree, storedVersion);
    finishRead();
}

void EventBase::readBody(serialize::SerializationTree& tree, uint32_t storedVersion)
{
    tree.readObject(srcIn);
    tree.readObject(srcOut);
    tree.readObject(dstIn);
    tree.readObject(dstOut);
    eventNumber = tree.readInt32();
    rollName = tree.readText();
    clipName = tree.readText();
    if (storedVersion >= 1) {
        uint16_t stored = 0;
        const int32_t count = tree.readInt32();
        if (count < 0)
            throw Result::BadStoredData;
        for (int32_t i = 0; i < count; ++i) {
            const int32_t value = tree.readInt32();
            if (value < 0 || value > 12)
                throw Result::BadStoredData;
            stored |= bitOf(static_cast<EventState>(value));
        }
        states = stored;
    } else {
        const int32_t legacy = tree.readInt32();
        if (legacy == 1)
            addState(EventState::LegacyState);
        else if (legacy != 0)
            throw Result::BadStoredData;
    }
    transitionType = tree.readInt32();
    transitionDuration = tree.readInt32();
    std::string reserved = tree.readText();
    if (!reserved.empty())
        rareTexts().reservedText = std::move(reserved);
    else if (rare)
        rare->reservedText.clear();
    // The name the event already has is kept when it is the stored one:
    // a list being read hands each event its predecessor's.
    const std::string_view file = tree.readTextView();
    if (file.empty())
        edlFile = nullptr;
    else if (!edlFile || *edlFile != file)
        edlFile = std::make_shared<const std::string>(file);
    if (storedVersion <= 1)
        setEdlText(tree.readText());
    if (storedVersion == 0) {
        std::string legacy = tree.readText();
        if (!legacy.empty())
            rareTexts().legacyStateText = std::move(legacy);
        else if (rare)
            rare->legacyStateText.clear();
    }
    vfx = tree.readBool();
}

void EventBase::finishRead()
{
    // States 0, 11 and 12 reflect the rate at the time of reading, whatever
    // the block said.
    const Framerate rate = Timecode::currentFramerate();
    validateTimecodes(rate);
    computeMotionSpeed(rate);
    notifyChange();
}

void EventBase::write(serialize::SerializationTree& tree) const
{
    tree.writeObject(srcIn);
    tree.writeObject(srcOut);
    tree.writeObject(dstIn);
    tree.writeObject(dstOut);
    tree.writeInt32(eventNumber);
    tree.writeText(rollName);
    tree.writeText(clipName);
    // Ascending, as they have always been stored.
    int32_t count = 0;
    for (int value = 0; value <= 12; ++value)
        count += hasState(static_cast<EventState>(value)) ? 1 : 0;
    tree.writeInt32(count);
    for (int value = 0; value <= 12; ++value) {
        if (hasState(static_cast<EventState>(value)))
            tree.writeInt32(value);
    }
    tree.writeInt32(transitionType);
    tree.writeInt32(transitionDuration);
    tree.writeText(reservedText());
    tree.writeText(getEdlFile());
    tree.writeBool(vfx);
}

} // namespace montala::core
