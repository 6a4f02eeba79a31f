#pragma once

#include "core/conform/InformationEntry.h"

#include <cstdint>
#include <string>
#include <vector>

namespace montala::core {

class CutList;
class EventBase;
class ProgressHandlerBase;
class Settings;
struct InformationContext;

// A detector: reads the applied cuts and the lists and proposes markers. It
// changes nothing. The progress may be null; a detector that walks the cuts
// checks it for a cancel after each step and throws Result::Cancelled.
class MontalaInformationAlgorithm {
public:
    virtual std::vector<InformationEntry> detect(const CutList& cuts, const InformationContext& context,
                                                 ProgressHandlerBase* progress) = 0;
    // How many steps detect advances at most, for the total of the window.
    virtual int64_t getStepCount(int64_t eventCount, int64_t trackCount) const = 0;

protected:
    MontalaInformationAlgorithm() = default;
    // Detectors live on the stack of one run and are never deleted through
    // the base.
    ~MontalaInformationAlgorithm() = default;

    // Result::NotInitialized when the context carries no settings.
    static const Settings& settingsOf(const InformationContext& context);
    // The clip name when events are matched by clip name, else the roll name.
    static const std::string& eventName(const EventBase& event, const InformationContext& context);
    // The user's-language text as UTF-8, for the marker names.
    static std::string translated(const char16_t* text);
    static void advance(ProgressHandlerBase* progress, int64_t count);
    // One step of a detector that walks the cuts: a cancel seen here ends
    // the run with Result::Cancelled.
    static void advanceAndCheck(ProgressHandlerBase* progress, int64_t count);
};

} // namespace montala::core
