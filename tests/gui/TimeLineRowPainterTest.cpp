#include "gui/TimeLineRowPainter.h"

#include "gui/Palette.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <optional>
#include <random>
#include <vector>

namespace montala::gui {
namespace {

using Fill = TimeLineRowPainter::Fill;

constexpr int top = 10;
constexpr int bottom = 45;

// The row as the strip drew it before: each rectangle filled as a path, in
// order. The painter must give the very same bytes.
void paintAsPaths(juce::Graphics& g, const std::vector<Fill>& fills)
{
    juce::Path path;
    for (const Fill& fill : fills) {
        g.setColour(fill.colour);
        path.clear();
        path.addRectangle(fill.left, static_cast<float>(top), fill.right - fill.left, static_cast<float>(bottom - top));
        g.fillPath(path);
    }
}

// The first pixel whose bytes differ, or none.
std::optional<juce::Point<int>> firstDifference(const juce::Image& a, const juce::Image& b)
{
    const juce::Image::BitmapData one(a, juce::Image::BitmapData::readOnly);
    const juce::Image::BitmapData other(b, juce::Image::BitmapData::readOnly);
    for (int y = 0; y < a.getHeight(); ++y)
        for (int x = 0; x < a.getWidth(); ++x)
            if (std::memcmp(one.getPixelPointer(x, y), other.getPixelPointer(x, y),
                            static_cast<size_t>(one.pixelStride)) != 0)
                return juce::Point<int>(x, y);
    return std::nullopt;
}

struct Scene {
    const char* name;
    juce::Image::PixelFormat format;
    std::function<void(juce::Graphics&)> setUp; // clip and origin
    std::vector<Fill> fills;
};

// Rectangles from x0 on, `count` of them, `width` wide at most (never less
// than `least`), their edges on a grid of 1/`grid` pixel.
std::vector<Fill> scatter(int count, float x0, float span, float least, float width, float grid)
{
    std::mt19937 random(11);
    const juce::Colour colours[] = {palette::event, palette::vfx, palette::bright};
    const auto onGrid = [grid](float x) { return std::round(x * grid) / grid; };
    std::vector<Fill> fills;
    for (int i = 0; i < count; ++i) {
        const float x = onGrid(x0 + span * static_cast<float>(random() % 10000) / 10000.0f);
        const float w = std::max(least, onGrid(width * static_cast<float>(random() % 10000) / 10000.0f));
        const juce::Rectangle<float> r(x, static_cast<float>(top), w, static_cast<float>(bottom - top));
        fills.push_back({r.getX(), r.getRight(), colours[random() % 3]});
    }
    return fills;
}

TEST(TimeLineRowPainterTest, PaintsTheSameBytesAsFillingEachRectangleAsAPath)
{
    const auto none = [](juce::Graphics&) {};
    const Scene scenes[] = {
        // A feature's events: one-pixel rectangles, a dozen to each column.
        {"denser than the pixels", juce::Image::ARGB, none, scatter(3000, 20.0f, 250.0f, 1.0f, 1.0f, 1e6f)},
        // A selected event over a wide one, and the next one starting inside
        // its last pixel.
        {"edges over a covered column", juce::Image::RGB, none,
         {{100.0f, 160.0f, palette::event}, {120.5f, 121.5f, palette::bright}, {159.25f, 170.75f, palette::vfx}}},
        // Few wide events whose edges fall anywhere, on whole pixels too,
        // and slivers thinner than a pixel, over a background of many colours.
        {"wide and thin over a pattern", juce::Image::RGB, none, scatter(60, 5.0f, 280.0f, 0.1f, 60.0f, 8.0f)},
        {"clipped to a region with a hole", juce::Image::ARGB,
         [](juce::Graphics& g) {
             g.reduceClipRegion(37, 12, 181, 30);
             g.excludeClipRegion({90, 20, 13, 5});
         },
         scatter(400, 0.0f, 300.0f, 1.0f, 40.0f, 1e6f)},
        // Edges on 1/64 pixel stay exact when moved by whole pixels.
        {"moved by a whole-pixel origin", juce::Image::RGB, [](juce::Graphics& g) { g.setOrigin(18, 3); },
         scatter(500, 0.0f, 260.0f, 1.0f, 30.0f, 64.0f)},
        // A display of twice or four times the density, the strip moved by
        // whole pixels on it; the rows are then 70 or 140 device pixels high.
        {"on a display of twice the density", juce::Image::ARGB,
         [](juce::Graphics& g) {
             g.addTransform(juce::AffineTransform::scale(2.0f));
             g.setOrigin(3, -9);
         },
         scatter(3000, 0.0f, 140.0f, 0.1f, 20.0f, 1e6f)},
        {"on a display of four times the density", juce::Image::RGB,
         [](juce::Graphics& g) {
             g.addTransform(juce::AffineTransform::scale(4.0f));
             g.setOrigin(1, -10);
         },
         scatter(200, 0.0f, 70.0f, 0.1f, 10.0f, 64.0f)},
    };
    for (const Scene& scene : scenes) {
        SCOPED_TRACE(scene.name);
        juce::Image background(scene.format, 300, 60, true);
        for (int y = 0; y < background.getHeight(); ++y)
            for (int x = 0; x < background.getWidth(); x += 1 + y % 3)
                background.setPixelAt(x, y, juce::Colour(static_cast<juce::uint32>(0xFF000000u | (x * 2654435761u >> 8))));

        juce::Image expected = background.createCopy();
        {
            juce::Graphics g(expected);
            scene.setUp(g);
            paintAsPaths(g, scene.fills);
        }
        juce::Image painted = background.createCopy();
        {
            juce::Graphics g(painted);
            scene.setUp(g);
            ASSERT_TRUE(TimeLineRowPainter::canPaint(g));
            TimeLineRowPainter().paint(g, scene.fills, top, bottom);
        }
        ASSERT_TRUE(firstDifference(expected, background).has_value()) << "the scene draws nothing";
        const auto difference = firstDifference(painted, expected);
        EXPECT_FALSE(difference.has_value())
            << "at " << difference->toString() << ": " << painted.getPixelAt(difference->x, difference->y).toString()
            << " instead of " << expected.getPixelAt(difference->x, difference->y).toString();
    }
}

} // namespace
} // namespace montala::gui
