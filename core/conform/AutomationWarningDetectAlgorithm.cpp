#include "core/conform/AutomationWarningDetectAlgorithm.h"

#include "core/conform/CutList.h"
#include "core/conform/InformationContext.h"
#include "core/time/Tolerances.h"

#include <algorithm>
#include <cmath>

namespace montala::core {

namespace {

// Values are compared as the user reads them: 0.50 and 0.51 differ by
// 0.01, although in binary the difference comes out a hair above it.
constexpr double roundingSlack = 1e-9;

// The straight line between the two points, held flat outside them.
double valueAt(const AudioInfo::AutomationSpan& span, double position)
{
    if (position <= span.t1 || span.t2 <= span.t1)
        return span.y1;
    if (position >= span.t2)
        return span.y2;
    return span.y1 + (position - span.t1) / (span.t2 - span.t1) * (span.y2 - span.y1);
}

bool valuesJump(const AudioInfo& left, double leftPosition, const AudioInfo& right, double rightPosition)
{
    for (const auto& [index, leftSpan] : left.automation) {
        const auto other = right.automation.find(index);
        if (other == right.automation.end())
            continue;
        const double difference = std::abs(valueAt(leftSpan, leftPosition) - valueAt(other->second, rightPosition));
        if (difference - automationValueTolerance > roundingSlack)
            return true;
    }
    return false;
}

// True when the second event begins where the first ends, to the frame.
bool meetAtSeam(const EventBase& first, const EventBase& second, const Framerate& rate)
{
    if (second.getDstIn() < first.getDstOut())
        return false;
    Timecode gap;
    gap.fromSeconds(second.getDstIn().toSeconds(rate) - first.getDstOut().toSeconds(rate), rate);
    return gap < Timecode(0, 0, 0, 1);
}

} // namespace

std::vector<InformationEntry> AutomationWarningDetectAlgorithm::detect(const CutList& cuts,
                                                                       const InformationContext& context,
                                                                       ProgressHandlerBase* progress)
{
    std::vector<InformationEntry> entries;
    const std::vector<const Cut*>& byStart = cuts.getCutsInStartOrder();
    const std::string label = translated(u"Automation warning in ");

    // Each cut is one step of its track count, the last one too, although
    // it has no neighbour behind it: the progress counts events times tracks.
    for (size_t i = 0; i < byStart.size(); ++i) {
        const Cut& x = *byStart[i];
        if (i + 1 < byStart.size() && meetAtSeam(*x.getEvent(), *byStart[i + 1]->getEvent(), context.framerate)) {
            const Cut& y = *byStart[i + 1];
            InformationEntry entry{0.0, 0.0, label, InformationKind::AutomationWarning};
            bool found = false;
            const size_t count = std::min(x.getPieces().size(), y.getPieces().size());
            for (size_t k = 0; k < count; ++k) {
                CutEventBase* px = x.getPieces()[k].get();
                CutEventBase* py = y.getPieces()[k].get();
                if (!px || !py)
                    continue;
                const AudioInfo ix = px->getAudioInfo(px->getSrcEnd());
                const AudioInfo iy = py->getAudioInfo(py->getSrcStart());
                if (!valuesJump(ix, px->getSrcEnd(), iy, py->getSrcStart()))
                    continue;
                const double low = std::min(px->getDstEnd(), py->getDstStart());
                const double high = std::max(px->getDstEnd(), py->getDstStart());
                entry.start = found ? std::min(entry.start, low) : low;
                entry.end = found ? std::max(entry.end, high) : high;
                entry.text += px->getTrackName() + " ";
                found = true;
            }
            if (found)
                entries.push_back(std::move(entry));
        }
        advanceAndCheck(progress, static_cast<int64_t>(x.getPieces().size()));
    }
    return entries;
}

} // namespace montala::core
