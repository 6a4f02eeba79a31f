#include "core/conform/RemainsDetectAlgorithm.h"

#include "core/conform/CutList.h"
#include "core/conform/InformationContext.h"
#include "core/model/Settings.h"
#include "core/time/Tolerances.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace montala::core {

namespace {


struct Span {
    double start;
    double end;
};

} // namespace

std::vector<InformationEntry> RemainsDetectAlgorithm::detect(const CutList& cuts, const InformationContext& context,
                                                             ProgressHandlerBase* progress)
{
    maxFrames = settingsOf(context).getSnippetMarkerFrames();
    offset = context.offset;
    Timecode limitTimecode;
    limitTimecode.fromFrames(static_cast<int>(maxFrames), context.framerate);
    const double limit = limitTimecode.toSeconds(context.framerate);
    const auto isSnippet = [limit](double length) {
        return length > positionTolerance && (limit > length || std::abs(length - limit) < positionTolerance);
    };
    const std::string label = translated(u"Audio snippet in ");

    std::vector<InformationEntry> entries;
    for (const Cut* cut : cuts.getCutsInStartOrder()) {
        for (const CutEventPtr& piece : cut->getPieces()) {
            if (!piece)
                continue;
            std::optional<Span> head;
            std::optional<Span> tail;
            if (piece->isAudioTrack()) {
                const AudioInfo::Range a = piece->getAudioInfo(piece->getSrcStart()).at;
                if (!a.isEmpty()) {
                    const double n = std::min(a.end, piece->getSrcEnd()) - piece->getSrcStart();
                    if (isSnippet(n))
                        head = Span{piece->getDstStart(), piece->getDstStart() + n};
                }
                const AudioInfo::Range b = piece->getAudioInfo(piece->getSrcEnd()).at;
                if (!b.isEmpty()) {
                    const double n = piece->getSrcEnd() - std::max(piece->getSrcStart(), b.start);
                    if (isSnippet(n))
                        tail = Span{piece->getDstEnd() - n, piece->getDstEnd()};
                }
            }
            if (head || tail) {
                const std::string text = label + piece->getTrackName();
                if (head)
                    entries.push_back({head->start, head->end, text, InformationKind::Snippet});
                const bool sameAsHead = head && tail && std::abs(tail->start - head->start) < positionTolerance &&
                                        std::abs(tail->end - head->end) < positionTolerance;
                if (tail && !sameAsHead)
                    entries.push_back({tail->start, tail->end, text, InformationKind::Snippet});
            }
            advanceAndCheck(progress, 1);
        }
    }
    return entries;
}

} // namespace montala::core
