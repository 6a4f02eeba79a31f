#include "core/conform/SnippetAlgorithm.h"

#include "core/conform/CutList.h"
#include "core/conform/SnippetContext.h"
#include "core/model/Settings.h"
#include "core/time/Tolerances.h"
#include "util/Result.h"

#include <cmath>

namespace montala::core {

namespace {


struct Limits {
    double rate;
    double frames;
    bool percentRule;
    double percent;

    // A side of the cut that may be moved: not nothing, at most the frame
    // limit, and, with the rule on, not the larger part of its event.
    bool allows(double sideFrames, double sidePercent) const
    {
        if (sideFrames == 0.0)
            return false;
        const bool shortEnough = frames > sideFrames || std::abs(sideFrames - frames) < positionTolerance;
        return shortEnough && (!percentRule || !(sidePercent > percent));
    }
};

void adjustHead(CutEventBase& piece, const Limits& limits)
{
    const double p = piece.getSrcStart();
    const AudioInfo::Range a = piece.getAudioInfo(p).at;
    if (a.isEmpty())
        return;
    const double framesBefore = limits.rate * (p - a.start);
    const double percentBefore = (p - a.start) / a.length() * 100.0;
    const double framesAfter = limits.rate * (a.end - p);
    const double percentAfter = (a.end - p) / a.length() * 100.0;

    if (limits.allows(framesBefore, percentBefore)) {
        const double d = piece.getSrcStart() - a.start;
        piece.setSrcStart(a.start);
        piece.setDstStart(piece.getDstStart() - d);
    } else if (limits.allows(framesAfter, percentAfter)) {
        const double d = a.end - piece.getSrcStart();
        piece.setSrcStart(a.end);
        piece.setDstStart(piece.getDstStart() + d);
    }
}

// Pushes the pieces at trackIndex of the cuts after cutIndex out of the way
// of a tail that now reaches further on the new timeline.
void makeRoom(const CutList& cuts, size_t cutIndex, size_t trackIndex, const CutEventBase& piece)
{
    for (size_t j = cutIndex + 1; j < cuts.size(); ++j) {
        const CutPtr& next = cuts.getCut(j);
        if (!next || trackIndex >= next->getPieces().size() || !next->getPieces()[trackIndex])
            return;
        CutEventBase& following = *next->getPieces()[trackIndex];
        const double overlap = piece.getDstEnd() - following.getDstStart();
        if (!(overlap > 0))
            return;
        if (piece.getDstEnd() > following.getDstEnd()) {
            following.setDstStart(following.getDstEnd());
            following.setSrcStart(following.getSrcEnd());
            continue;
        }
        following.setDstStart(piece.getDstEnd());
        following.setSrcStart(following.getSrcStart() + overlap);
        return;
    }
}

void adjustTail(const CutList& cuts, size_t cutIndex, size_t trackIndex, CutEventBase& piece,
                const Limits& limits)
{
    const double q = piece.getSrcEnd();
    const AudioInfo::Range b = piece.getAudioInfo(q).at;
    if (b.isEmpty())
        return;
    const double framesAfter = limits.rate * (b.end - q);
    const double percentAfter = (b.end - q) / b.length() * 100.0;
    const double framesBefore = limits.rate * (q - b.start);
    const double percentBefore = (q - b.start) / b.length() * 100.0;

    if (limits.allows(framesAfter, percentAfter)) {
        const double d = b.end - piece.getSrcEnd();
        piece.setSrcEnd(b.end);
        piece.setDstEnd(piece.getDstEnd() + d);
        makeRoom(cuts, cutIndex, trackIndex, piece);
    } else if (limits.allows(framesBefore, percentBefore)) {
        const double d = piece.getSrcEnd() - b.start;
        piece.setSrcEnd(b.start);
        piece.setDstEnd(piece.getDstEnd() - d);
    }
}

} // namespace

void SnippetAlgorithm::process(CutList& cuts, SnippetContext& context)
{
    if (!context.settings)
        throw util::Result::NotInitialized;
    const Settings& settings = *context.settings;
    if (!settings.getIncludeOverhanging() || cuts.size() == 0)
        return;
    const Limits limits{context.framerate.exactRate, static_cast<double>(settings.getOverhangFrames()),
                        settings.getOverhangPercentRule(), settings.getOverhangPercent()};

    for (size_t i = 0; i < cuts.size(); ++i) {
        const CutPtr& cut = cuts.getCut(i);
        if (!cut)
            continue;
        // A copy of the list: the pieces are shared, the list is not.
        const std::vector<CutEventPtr> pieces = cut->getPieces();
        for (size_t t = 0; t < pieces.size(); ++t) {
            if (!pieces[t])
                continue;
            adjustHead(*pieces[t], limits);
            adjustTail(cuts, i, t, *pieces[t], limits);
        }
    }
}

} // namespace montala::core
