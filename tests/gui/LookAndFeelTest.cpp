#include "gui/LookAndFeel.h"

#include "util/Result.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace montala::gui {
namespace {

class LookAndFeelTest : public ::testing::Test {
protected:
    juce::ScopedJuceInitialiser_GUI juce;
    LookAndFeel lookAndFeel;
};

juce::Image snapshot(juce::Component& component)
{
    return component.createComponentSnapshot(component.getLocalBounds(), true, 1.0f);
}

// A character that a font lacks is not left out: FreeType hands out the
// font's missing glyph, a box. So a character counts as drawn when its
// outline is not empty and is not that box.
class GlyphProbe {
public:
    explicit GlyphProbe(juce::Typeface::Ptr probed) : typeface(std::move(probed))
    {
        outline(0x10FFFD, missing); // private use: mapped by no font
    }

    bool draws(juce::juce_wchar c) const
    {
        juce::Path shape;
        return outline(c, shape) && !shape.isEmpty() && shape != missing;
    }

private:
    bool outline(juce::juce_wchar c, juce::Path& shape) const
    {
        juce::Array<int> glyphs;
        juce::Array<float> offsets;
        typeface->getGlyphPositions(juce::String::charToString(c), glyphs, offsets);
        return glyphs.size() == 1 && offsets[1] > 0.0f && typeface->getOutlineForGlyph(glyphs[0], shape);
    }

    juce::Typeface::Ptr typeface;
    juce::Path missing;
};

// Every Japanese, Chinese and Russian text of the translation table must
// come out as glyphs, not as boxes.
TEST_F(LookAndFeelTest, JapaneseChineseAndRussianTranslationsHaveAGlyphForEveryCharacter)
{
    const juce::File table = juce::File(MONTALA_SOURCE_DIR).getChildFile("resources/translation.xml");
    const std::unique_ptr<juce::XmlElement> root = juce::XmlDocument::parse(table);
    ASSERT_NE(root, nullptr) << table.getFullPathName();
    const juce::XmlElement* strings = root->getChildByName("StringTable");
    ASSERT_NE(strings, nullptr);

    // Segoe UI when it is there; otherwise the stand-in must be a real,
    // installed family, and a font made by that name without getFont still
    // gets the window's typeface.
    const juce::String family = LookAndFeel::getFontName();
    EXPECT_TRUE(juce::Font::findAllTypefaceNames().contains(family)) << family;
    EXPECT_EQ(lookAndFeel.getTypefaceForFont(juce::Font(LookAndFeel::preferredFontName, 16.0f, 0)),
              LookAndFeel::getFont(LookAndFeel::regularFont).getTypefacePtr());

    // The probe sees boxes: the window's family alone has no kana.
    const juce::juce_wchar hiragana = 0x3042;
    if (LookAndFeel::getFontName() != LookAndFeel::preferredFontName) {
        const GlyphProbe familyAlone(
            juce::Font::getDefaultTypefaceForFont(juce::Font(LookAndFeel::getFontName(), 16.0f, 0)));
        EXPECT_TRUE(familyAlone.draws('A'));
        EXPECT_FALSE(familyAlone.draws(hiragana));
    }

    int textsChecked = 0;
    for (const int kind : {LookAndFeel::regularFont, LookAndFeel::labelFont}) {
        const GlyphProbe probe(LookAndFeel::getFont(kind).getTypefacePtr());
        for (const auto* entry : strings->getChildWithTagNameIterator("String")) {
            for (const char* language : {"jp", "zh", "ru"}) {
                const juce::XmlElement* translation = entry->getChildByName(language);
                if (translation == nullptr)
                    continue;
                const juce::String text = translation->getAllSubText();
                ++textsChecked;
                for (auto p = text.getCharPointer(); !p.isEmpty();) {
                    const juce::juce_wchar c = p.getAndAdvance();
                    if (juce::CharacterFunctions::isWhitespace(c) || probe.draws(c))
                        continue;
                    ADD_FAILURE() << "no glyph for U+" << juce::String::toHexString(static_cast<int>(c))
                                  << " in <" << language << "> of \"" << entry->getStringAttribute("Key")
                                  << "\" (font kind " << kind << ")";
                    return;
                }
            }
        }
    }
    EXPECT_GT(textsChecked, 100);
}

juce::Image drawnText(const juce::String& text, const juce::Font& font, int width)
{
    juce::Image image(juce::Image::ARGB, width, 30, true);
    juce::Graphics g(image);
    g.fillAll(juce::Colours::black);
    LookAndFeel::drawFittedText(g, text, 0, 0, width, 30, juce::Justification::centredLeft, font,
                                juce::Colours::white, false);
    return image;
}

bool samePixels(const juce::Image& a, const juce::Image& b)
{
    for (int x = 0; x < a.getWidth(); ++x)
        for (int y = 0; y < a.getHeight(); ++y)
            if (a.getPixelAt(x, y) != b.getPixelAt(x, y))
                return false;
    return true;
}

TEST_F(LookAndFeelTest, FittedCjkAndCyrillicTextIsDrawnInGlyphsNotInMissingGlyphBoxes)
{
    const juce::Font font = LookAndFeel::getFont(LookAndFeel::regularFont);
    const juce::String box = juce::String::charToString(0x10FFFD);
    const juce::Image boxImage = drawnText(box, font, 40);
    for (const char* utf8 : {"初期化されていないタイムコード", "检测到未初始化的时间码", "Обнаружен тайм-код"}) {
        const juce::String text = juce::String::fromUTF8(utf8);
        SCOPED_TRACE(utf8);
        const int width = LookAndFeel::getTextWidth(font, text);
        EXPECT_GT(width, text.length() * 5);

        // No character of it is drawn as the missing glyph.
        for (auto p = text.getCharPointer(); !p.isEmpty();) {
            const juce::juce_wchar c = p.getAndAdvance();
            if (c != ' ')
                EXPECT_FALSE(samePixels(drawnText(juce::String::charToString(c), font, 40), boxImage))
                    << "U+" << juce::String::toHexString(static_cast<int>(c));
        }
    }
}

TEST_F(LookAndFeelTest, DisabledLabelIsDrawnAtHalfOpacity)
{
    juce::Label label("probe", "MMMMMMMM");
    label.setLookAndFeel(&lookAndFeel);
    label.setFont(LookAndFeel::getFont(LookAndFeel::labelFont));
    label.setColour(juce::Label::backgroundColourId, juce::Colours::black);
    label.setColour(juce::Label::textColourId, juce::Colours::white);
    label.setSize(120, 24);

    auto brightest = [](const juce::Image& image) {
        float best = 0.0f;
        for (int x = 0; x < image.getWidth(); ++x)
            for (int y = 0; y < image.getHeight(); ++y)
                best = std::max(best, image.getPixelAt(x, y).getBrightness());
        return best;
    };
    EXPECT_GT(brightest(snapshot(label)), 0.95f);
    label.setEnabled(false);
    EXPECT_NEAR(brightest(snapshot(label)), 0.5f, 0.05f);
    label.setLookAndFeel(nullptr);
}

TEST_F(LookAndFeelTest, ComboBoxDrawsItsDarkenedArrowInsideTheButton)
{
    juce::ComboBox box;
    box.setLookAndFeel(&lookAndFeel);
    box.setColour(juce::ComboBox::arrowColourId, juce::Colours::white);
    box.setSize(200, 40);
    const juce::Image image = snapshot(box);

    // The button is right of the box's text; the arrow's body lies just
    // above its point at half the button's width and 0.63 of its height.
    ASSERT_GT(box.getNumChildComponents(), 0);
    const int buttonX = box.getChildComponent(0)->getRight();
    const int middle = (buttonX + 200) / 2;
    EXPECT_EQ(image.getPixelAt(middle, static_cast<int>(40 * 0.55)).getARGB(),
              juce::Colours::white.darker(0.4f).getARGB());
    EXPECT_EQ(image.getPixelAt(middle, static_cast<int>(40 * 0.75)).getARGB(), 0xFF797A7Bu);
    EXPECT_EQ(image.getPixelAt(buttonX + 2, 20).getARGB(), 0xFF797A7Bu);
    EXPECT_EQ(image.getPixelAt(40, 20).getARGB(), juce::Colours::black.getARGB());
    box.setLookAndFeel(nullptr);
}

} // namespace
} // namespace montala::gui
