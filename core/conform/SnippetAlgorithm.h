#pragma once

#include "core/conform/MontalaAlgorithm.h"

namespace montala::core {

// Moves the ends of the planned pieces so that a few frames of an audio
// event do not stay behind at an edit, nor come along alone. Runs before
// anything is cut and changes only the numbers of the pieces; the events of
// the Change EDL stay as they are. Does nothing unless includeOverhanging.
//
// "Short" is a length of at most overhangFrames frames (within a 384 kHz
// sample). With overhangPercentRule on, a side that is more than
// overhangPercent of its audio event is never short enough to move.
//
// Head of a piece (the tail mirrors it):
//
//   old timeline   ...[====audio event====]...
//   piece              |srcStart
//   short before:   [==|===============]     srcStart moves back to the
//                   ^                        event's start: the head comes
//                                            along (dstStart moves with it)
//   short after:    [=================|==]   srcStart moves on to the
//                                         ^  event's end: the short rest
//                                            stays behind
//
// A short part before the cut wins over a short part after it. A head drawn
// in may overlap the piece before it on the new timeline; the overlap
// detector reports that. A tail drawn in, though, pushes the pieces of the
// same track in the following cuts aside:
//
//   new timeline   [piece P ====>>]          P's tail grew by d
//                              [N ========]  N starts d later, source too;
//                              [M]           a piece it covers wholly is
//                                            emptied, and the next is tried
class SnippetAlgorithm : public MontalaAlgorithm {
public:
    void process(CutList& cuts, SnippetContext& context) override;
};

} // namespace montala::core
