// The window layer's tests draw components into images without a display.
// This proves the set-up they rely on: JUCE comes up without an X server, a
// component paints into a snapshot, and text renders with some font.

#include <juce_gui_basics/juce_gui_basics.h>

#include <gtest/gtest.h>

namespace {

class Swatch : public juce::Component {
public:
    void paint(juce::Graphics& g) override
    {
        g.fillAll(juce::Colour(0xff202428));
        g.setColour(juce::Colour(0xffe0a030));
        g.fillRect(getLocalBounds().removeFromRight(getWidth() / 2));
        g.setColour(juce::Colours::white);
        g.setFont(20.0f);
        g.drawText("Montala", getLocalBounds().removeFromTop(30), juce::Justification::centredLeft);
    }
};

TEST(HeadlessRendering, ComponentPaintsIntoASnapshotWithoutADisplay)
{
    juce::ScopedJuceInitialiser_GUI juce;
    Swatch swatch;
    swatch.setSize(200, 100);
    juce::Image image = swatch.createComponentSnapshot(swatch.getLocalBounds(), true, 1.0f);
    ASSERT_EQ(image.getWidth(), 200);
    ASSERT_EQ(image.getHeight(), 100);
    EXPECT_EQ(image.getPixelAt(20, 80).getARGB(), 0xff202428u);
    EXPECT_EQ(image.getPixelAt(180, 80).getARGB(), 0xffe0a030u);

    // Some pixel of the text's row is lighter than the background.
    bool textDrawn = false;
    for (int x = 0; x < 100 && !textDrawn; ++x)
        for (int y = 0; y < 30 && !textDrawn; ++y)
            textDrawn = image.getPixelAt(x, y).getBrightness() > 0.5f;
    EXPECT_TRUE(textDrawn);
}

} // namespace
