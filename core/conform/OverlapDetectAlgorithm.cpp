#include "core/conform/OverlapDetectAlgorithm.h"

#include "core/conform/CutList.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace montala::core {

namespace {

// Where the pieces of x reach over those of y on the same track, with audio
// on both sides.
std::optional<InformationEntry> overlapOf(const Cut& x, const Cut& y, const std::string& label)
{
    InformationEntry entry{std::numeric_limits<double>::max(), 0.0, label, InformationKind::Overlap};
    bool found = false;
    const size_t count = std::min(x.getPieces().size(), y.getPieces().size());
    for (size_t k = 0; k < count; ++k) {
        CutEventBase* px = x.getPieces()[k].get();
        CutEventBase* py = y.getPieces()[k].get();
        if (!px || !py || !(px->getDstEnd() > py->getDstStart()))
            continue;
        const double overlap = px->getDstEnd() - py->getDstStart();
        // Silence on either side overlaps nothing.
        if (px->getAudioInfo(px->getSrcEnd() - overlap).at.isEmpty() ||
            py->getAudioInfo(py->getSrcStart() + overlap).at.isEmpty())
            continue;
        entry.end = std::max(entry.end, px->getDstEnd());
        entry.start = std::min(entry.start, py->getDstStart());
        entry.text += px->getTrackName() + " ";
        found = true;
    }
    if (!found)
        return std::nullopt;
    return entry;
}

} // namespace

std::vector<InformationEntry> OverlapDetectAlgorithm::detect(const CutList& cuts, const InformationContext& context,
                                                             ProgressHandlerBase* progress)
{
    std::vector<InformationEntry> entries;
    const std::vector<const Cut*>& byStart = cuts.getCutsInStartOrder();
    const std::string label = translated(u"Overlap in ");

    // One step per cut, the last one too, as the progress counts events.
    for (size_t i = 0; i < byStart.size(); ++i) {
        if (i + 1 < byStart.size()) {
            if (std::optional<InformationEntry> entry = overlapOf(*byStart[i], *byStart[i + 1], label))
                entries.push_back(std::move(*entry));
        }
        advanceAndCheck(progress, 1);
    }
    return entries;
}

} // namespace montala::core
