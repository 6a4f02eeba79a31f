#include "core/conform/OverlapDetectAlgorithm.h"

#include "core/conform/CutList.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace montala::core {

std::vector<InformationEntry> OverlapDetectAlgorithm::detect(const CutList& cuts, const InformationContext& context,
                                                             ProgressHandlerBase* progress)
{
    std::vector<InformationEntry> entries;
    const std::map<double, CutPtr> byStart = cuts.getCutsByStart();
    if (byStart.size() < 2)
        return entries;
    const std::string label = translated(u"Overlap in ");

    for (auto it = byStart.begin(); std::next(it) != byStart.end(); ++it) {
        const Cut& x = *it->second;
        const Cut& y = *std::next(it)->second;
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
        if (found)
            entries.push_back(std::move(entry));
        advanceAndCheck(progress, 1);
    }
    return entries;
}

} // namespace montala::core
