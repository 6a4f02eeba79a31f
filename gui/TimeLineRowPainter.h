#pragma once

#include <juce_graphics/juce_graphics.h>

#include <vector>

namespace montala::gui {

// Paints one row of the timeline strip, a run of rectangles that all span
// the row's full height, with the very pixels that filling each of them as a
// path, one after the other, gives in JUCE's software renderer, but with a
// call per pixel column that needs one instead of a path per rectangle.
//
// A row's rectangles differ only in x, so every pixel line of the row gets
// the same coverage, and each pixel column can be worked out on its own.
// A column that some rectangle covers whole takes that rectangle's colour
// and loses all that came before: its final colour is known here, and
// neighbouring columns of one final colour are filled in one go. A column
// that no rectangle covers whole shows what lies beneath through its partly
// covered edges; each of those edges is blended onto it as the path fill
// would blend it.
//
//   column:              100    101    102    103
//   A [100.3, 103.6)      .7     1      1      .6
//   B [102.5, 103.5)                    .5     .5
//   painted as:          blend  known  known  blend, blend
//
// Columns 101 and 102 are one fill of A's colour and one of A's colour
// with B's half edge blended in, worked out here; 100 and 103 get A's and
// B's edges blended onto what lies beneath, one after the other.
//
// Where there are more events than columns (a feature's 10,000 in a
// thousand pixels) this does a pixel's work per edge instead of building and
// sweeping an edge table per rectangle.
class TimeLineRowPainter {
public:
    struct Fill {
        float left;
        float right;
        juce::Colour colour;
    };

    // Whether the context draws the way this painter reproduces: JUCE's own
    // software renderer, at one, two or four device pixels per unit, moved
    // by whole pixels and clipped to whole-pixel rectangles, as a
    // component's paint is. Elsewhere (displays scaled by 150%, native
    // renderers) the strip fills its rectangles as paths.
    static bool canPaint(juce::Graphics& g);
    // Whether a fill of this colour can be reproduced: an opaque one whose
    // partly covered edges have an exact counterpart over whole pixels,
    // which every colour without a component at 255 has.
    static bool canFill(juce::Colour colour);

    // Paints the fills in their order over the rows [top, bottom), whole
    // pixel lines, clipped as g is.
    void paint(juce::Graphics& g, const std::vector<Fill>& fills, int top, int bottom);

private:
    // Paints at one device pixel per unit.
    void paintPixels(juce::Graphics& g, const std::vector<Fill>& fills, int top, int bottom);

    std::vector<Fill> inDevicePixels;
    // Per column of the clip: the last fill to cover it whole (-1: none),
    // and for a covered column its colour as far as the fills go.
    std::vector<int> lastWhole;
    std::vector<juce::PixelARGB> settled;
};

} // namespace montala::gui
