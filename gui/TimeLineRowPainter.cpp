#include "gui/TimeLineRowPainter.h"

#include <algorithm>

namespace montala::gui {

namespace {

// JUCE's edge tables place an edge in 1/256 of a pixel and give a pixel a
// level from 0 to 255.
constexpr int subPixels = 256;
constexpr int wholeLevel = 255;

// What the edge table of one rectangle gives each of its pixel lines: a
// partly covered pixel at either end (level 0: none) and the whole pixels
// between. Edges are in 1/256 pixel, already held inside the clip.
struct Coverage {
    int firstColumn = 0;
    int firstLevel = 0;
    int wholeBegin = 0;
    int wholeEnd = 0;
    int lastColumn = 0;
    int lastLevel = 0;
};

Coverage coverageOf(int left, int right)
{
    Coverage coverage;
    if (right <= left)
        return coverage;
    // Shifts and masks round towards minus infinity, as the renderer's
    // division does in device pixels, which are never negative.
    const int leftColumn = left >> 8;
    const int rightColumn = right >> 8;
    if (leftColumn == rightColumn) {
        coverage.firstColumn = leftColumn;
        coverage.firstLevel = (right - left) * wholeLevel / subPixels;
        return coverage;
    }
    const int firstLevel = (subPixels - (left & 0xff)) * wholeLevel / subPixels;
    coverage.wholeBegin = firstLevel >= wholeLevel ? leftColumn : leftColumn + 1;
    if (firstLevel < wholeLevel) {
        coverage.firstColumn = leftColumn;
        coverage.firstLevel = firstLevel;
    }
    coverage.wholeEnd = rightColumn;
    coverage.lastColumn = rightColumn;
    coverage.lastLevel = (right & 0xff) * wholeLevel / subPixels;
    return coverage;
}

// An edge x as the renderer takes it: rounded to 1/256 pixel, then held
// inside the clip, the right end one step short of it.
int edgeOf(float x, int clipLeft, int clipRight)
{
    return std::clamp(juce::roundToInt(static_cast<float>(subPixels) * x), clipLeft * subPixels,
                      clipRight * subPixels - 1);
}

// The colour that, filled over whole pixels, blends exactly as `opaque`
// blends into a pixel it covers at `level`: the renderer scales each
// premultiplied component by the level, so this is the unpremultiplied
// colour whose premultiplied form is that scaled one. Every level has one
// while no component is 255 (see canFill).
juce::Colour partOf(juce::PixelARGB opaque, int level)
{
    const auto scaled = [level](juce::uint8 component) { return component * level >> 8; };
    const int alpha = scaled(opaque.getAlpha());
    if (alpha == 0)
        return juce::Colours::transparentBlack;
    const auto unpremultiplied = [alpha](int target) {
        // The least u with (u * alpha + 0x7f) >> 8 == target; that step is
        // below 1, so the least u reaching target hits it exactly.
        const int u = (target * 256 - 0x7f + alpha - 1) / alpha;
        return static_cast<juce::uint8>(std::max(u, 0));
    };
    return juce::Colour(juce::PixelARGB(static_cast<juce::uint8>(alpha), unpremultiplied(scaled(opaque.getRed())),
                                        unpremultiplied(scaled(opaque.getGreen())),
                                        unpremultiplied(scaled(opaque.getBlue()))));
}

} // namespace

bool TimeLineRowPainter::canPaint(juce::Graphics& g)
{
    juce::LowLevelGraphicsContext& context = g.getInternalContext();
    const float density = context.getPhysicalPixelScaleFactor();
    return dynamic_cast<juce::LowLevelGraphicsSoftwareRenderer*>(&context) != nullptr &&
           (density == 1.0f || density == 2.0f || density == 4.0f);
}

bool TimeLineRowPainter::canFill(juce::Colour colour)
{
    return colour.isOpaque() && colour.getRed() < 255 && colour.getGreen() < 255 && colour.getBlue() < 255;
}

void TimeLineRowPainter::paint(juce::Graphics& g, const std::vector<Fill>& fills, int top, int bottom)
{
    const auto density = static_cast<int>(g.getInternalContext().getPhysicalPixelScaleFactor());
    if (density == 1) {
        paintPixels(g, fills, top, bottom);
        return;
    }
    // On a denser display the rows are painted in device pixels: the context
    // scaled back to one unit a pixel, the fills' edges and the rows scaled
    // up. Both scales are powers of two, so every edge lands where the
    // display's own scaling of a path puts it.
    const auto scale = static_cast<float>(density);
    const juce::Graphics::ScopedSaveState saved(g);
    g.addTransform(juce::AffineTransform::scale(1.0f / scale));
    inDevicePixels.clear();
    for (const Fill& fill : fills)
        inDevicePixels.push_back({fill.left * scale, fill.right * scale, fill.colour});
    paintPixels(g, inDevicePixels, top * density, bottom * density);
}

void TimeLineRowPainter::paintPixels(juce::Graphics& g, const std::vector<Fill>& fills, int top, int bottom)
{
    const juce::Rectangle<int> clip = g.getClipBounds();
    if (fills.empty() || clip.isEmpty() || bottom <= clip.getY() || top >= clip.getBottom())
        return;
    const auto coverageAt = [&clip](const Fill& fill) {
        return coverageOf(edgeOf(fill.left, clip.getX(), clip.getRight()),
                          edgeOf(fill.right, clip.getX(), clip.getRight()));
    };
    // Columns are counted from the clip's left edge.
    const auto index = [&clip](int column) { return static_cast<size_t>(column - clip.getX()); };

    // Which fill, if any, is the last to cover each column whole.
    lastWhole.assign(static_cast<size_t>(clip.getWidth()), -1);
    settled.resize(lastWhole.size());
    for (size_t i = 0; i < fills.size(); ++i) {
        const Coverage coverage = coverageAt(fills[i]);
        for (int column = coverage.wholeBegin; column < coverage.wholeEnd; ++column)
            lastWhole[index(column)] = static_cast<int>(i);
    }

    // An edge over a column that is covered whole later is lost under it;
    // over one covered whole before, it blends into that colour here; over
    // one never covered whole, it is blended onto what lies beneath, in
    // its turn.
    const int height = bottom - top;
    for (size_t i = 0; i < fills.size(); ++i) {
        const int fill = static_cast<int>(i);
        const Coverage coverage = coverageAt(fills[i]);
        const juce::PixelARGB pixel = fills[i].colour.getPixelARGB();
        for (int column = coverage.wholeBegin; column < coverage.wholeEnd; ++column)
            if (lastWhole[index(column)] == fill)
                settled[index(column)] = pixel;
        for (const auto& [column, level] : {std::pair{coverage.firstColumn, coverage.firstLevel},
                                           std::pair{coverage.lastColumn, coverage.lastLevel}}) {
            if (level == 0 || lastWhole[index(column)] > fill)
                continue;
            if (lastWhole[index(column)] >= 0) {
                settled[index(column)].blend(pixel, static_cast<juce::uint32>(level));
                continue;
            }
            // The faintest edges scale to nothing and leave the pixel as it is.
            const juce::Colour part = partOf(pixel, level);
            if (part.getAlpha() == 0)
                continue;
            g.setColour(part);
            g.fillRect(column, top, 1, height);
        }
    }

    // The covered columns, a run of one colour at a time.
    for (int begin = clip.getX(); begin < clip.getRight();) {
        if (lastWhole[index(begin)] < 0) {
            ++begin;
            continue;
        }
        const juce::PixelARGB colour = settled[index(begin)];
        int end = begin + 1;
        while (end < clip.getRight() && lastWhole[index(end)] >= 0 &&
               settled[index(end)].getNativeARGB() == colour.getNativeARGB())
            ++end;
        g.setColour(juce::Colour(colour));
        g.fillRect(begin, top, end - begin, height);
        begin = end;
    }
}

} // namespace montala::gui
