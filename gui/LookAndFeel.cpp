#include "gui/LookAndFeel.h"

#include "util/Result.h"

#include <initializer_list>
#include <utility>

namespace montala::gui {

namespace {

// Free families that stand in for Segoe UI, in the order they are tried. All
// cover Latin and Cyrillic, so the Russian translation draws in the window's
// own family.
constexpr std::initializer_list<const char*> standInFamilies{"DejaVu Sans", "Noto Sans", "Liberation Sans"};

// Families for the glyphs the window's family lacks (kana, CJK ideographs).
// Only single-face files count: JUCE's font scan on Linux skips .ttc
// collections, so Noto Sans CJK as Debian ships it is never found.
constexpr std::initializer_list<const char*> cjkFamilies{"Droid Sans Fallback", "Noto Sans CJK JP",
                                                         "Noto Sans CJK SC", "WenQuanYi Micro Hei"};

// A code point that no font maps (the last private use one): asking for it
// gives a font's "missing glyph", the box FreeType draws for unknown code
// points.
constexpr juce::juce_wchar unmappedCharacter = 0x10FFFD;

juce::String firstInstalled(std::initializer_list<const char*> families)
{
    const juce::StringArray installed = juce::Font::findAllTypefaceNames();
    for (const char* family : families)
        if (installed.contains(family))
            return family;
    return {};
}

bool outlineOf(juce::Typeface& typeface, juce::juce_wchar character, juce::Path& outline)
{
    juce::Array<int> glyphs;
    juce::Array<float> offsets;
    typeface.getGlyphPositions(juce::String::charToString(character), glyphs, offsets);
    return glyphs.size() == 1 && typeface.getOutlineForGlyph(glyphs[0], outline);
}

// The window's family with the CJK family behind it, glyph by glyph.
//
// JUCE on Linux never falls back for a single character: FreeType hands out
// the font's missing-glyph box for anything the font lacks, and JUCE draws
// that. So a Japanese text with a Latin word in it needs both fonts in one
// typeface: each character comes from the window's family unless that one
// answers with its missing glyph, and then from the CJK family if it has it.
// Advance widths come with the glyph; kerning pairs are not carried over.
class WindowTypeface : public juce::CustomTypeface {
public:
    WindowTypeface(juce::Typeface::Ptr primaryTypeface, juce::Typeface::Ptr fallbackTypeface)
        : primary(std::move(primaryTypeface)), fallback(std::move(fallbackTypeface))
    {
        setCharacteristics(primary->getName(), primary->getStyle(), primary->getAscent(), L' ');
        outlineOf(*primary, unmappedCharacter, primaryMissing);
        if (fallback != nullptr)
            outlineOf(*fallback, unmappedCharacter, fallbackMissing);
    }

protected:
    bool loadGlyphIfPossible(juce::juce_wchar character) override
    {
        juce::Path shape;
        juce::Typeface* source = primary.get();
        bool found = outlineOf(*primary, character, shape);
        if (fallback != nullptr && (!found || shape == primaryMissing)) {
            juce::Path other;
            if (outlineOf(*fallback, character, other) && other != fallbackMissing) {
                shape = other;
                source = fallback.get();
                found = true;
            }
        }
        if (!found)
            return false;
        addGlyph(character, shape, source->getStringWidth(juce::String::charToString(character)));
        return true;
    }

private:
    juce::Typeface::Ptr primary;
    juce::Typeface::Ptr fallback;
    juce::Path primaryMissing;
    juce::Path fallbackMissing;
};

struct FontChoice {
    juce::String family;
    juce::String fallback;
    juce::Typeface::Ptr plain;
    juce::Typeface::Ptr bold;
};

juce::Typeface::Ptr systemTypeface(const juce::String& family, int style)
{
    // Straight from the system, not through a look and feel: ours hands out
    // the typefaces made here.
    return juce::Font::getDefaultTypefaceForFont(juce::Font(family, 10.0f, style));
}

juce::Typeface::Ptr windowTypeface(const juce::String& family, const juce::String& fallback, int style)
{
    juce::Typeface::Ptr primary = systemTypeface(family, style);
    if (fallback.isEmpty() || primary == nullptr)
        return primary;
    return new WindowTypeface(primary, systemTypeface(fallback, juce::Font::plain));
}

// Chosen once: the font scan reads every font file of the system.
const FontChoice& fontChoice()
{
    static const FontChoice choice = [] {
        FontChoice made;
        made.family = firstInstalled({LookAndFeel::preferredFontName});
        if (made.family.isEmpty())
            made.family = firstInstalled(standInFamilies);
        if (made.family.isEmpty())
            made.family = juce::Font::getDefaultSansSerifFontName();
        made.fallback = firstInstalled(cjkFamilies);
        made.plain = windowTypeface(made.family, made.fallback, juce::Font::plain);
        made.bold = windowTypeface(made.family, made.fallback, juce::Font::bold);
        return made;
    }();
    return choice;
}

juce::Font windowFont(float height, int style)
{
    const FontChoice& choice = fontChoice();
    const juce::Typeface::Ptr& typeface = (style & juce::Font::bold) != 0 ? choice.bold : choice.plain;
    if (typeface == nullptr)
        return juce::Font(choice.family, height, style);
    return juce::Font(typeface).withHeight(height);
}

} // namespace

LookAndFeel::LookAndFeel()
{
    fontChoice();

    setColour(juce::ListBox::backgroundColourId, palette::panel);

    setColour(juce::ScrollBar::thumbColourId, juce::Colour(0xFFFFFFFFu));
    setColour(juce::ScrollBar::trackColourId, juce::Colour(0xFF8D8F90u));

    setColour(juce::Slider::textBoxBackgroundColourId, juce::Colours::black);
    setColour(juce::Slider::textBoxTextColourId, juce::Colours::white);
    setColour(juce::Slider::textBoxOutlineColourId, juce::Colours::black);
    setColour(juce::Slider::textBoxHighlightColourId, juce::Colours::white);

    setColour(juce::TextEditor::backgroundColourId, juce::Colours::black);
    setColour(juce::TextEditor::textColourId, juce::Colours::white);
    setColour(juce::TextEditor::highlightedTextColourId, juce::Colours::black);
    setColour(juce::TextEditor::highlightColourId, palette::bright);
    setColour(juce::CaretComponent::caretColourId, palette::bright);
    setColour(juce::TextEditor::focusedOutlineColourId, juce::Colours::transparentBlack);

    setColour(juce::ComboBox::backgroundColourId, juce::Colours::black);
    setColour(juce::ComboBox::textColourId, juce::Colours::white);
    setColour(juce::ComboBox::outlineColourId, juce::Colours::black);
    setColour(juce::ComboBox::buttonColourId, juce::Colour(0xFF797A7Bu));
    setColour(juce::ComboBox::arrowColourId, juce::Colours::black);

    setColour(juce::TooltipWindow::backgroundColourId, juce::Colour(0xFFEFF0F6u));
    setColour(juce::TooltipWindow::textColourId, juce::Colour(0xFF5A5A5Au));
    setColour(juce::TooltipWindow::outlineColourId, juce::Colour(0xFF767676u));

    setColour(juce::ProgressBar::backgroundColourId, juce::Colours::black);
    setColour(juce::ProgressBar::foregroundColourId, juce::Colour(0xFF98B1C9u));

    setColour(juce::TextButton::buttonOnColourId, palette::lightBlue);
    setColour(juce::PopupMenu::backgroundColourId, juce::Colour(0xFFF0F0F0u));
    setColour(juce::PopupMenu::highlightedBackgroundColourId, palette::lightBlue.darker(0.4f));
    setColour(juce::PopupMenu::highlightedTextColourId, juce::Colours::black);
    // The menu is light, so its text is dark.
    setColour(juce::PopupMenu::textColourId, juce::Colours::black);

    // The rest of the dark style: buttons on the panel colour, light text.
    setColour(juce::TextButton::buttonColourId, palette::strip);
    setColour(juce::TextButton::textColourOffId, palette::text);
    setColour(juce::TextButton::textColourOnId, juce::Colours::black);
    setColour(juce::ToggleButton::textColourId, palette::text);
    setColour(juce::ToggleButton::tickColourId, palette::bright);
    setColour(juce::Label::textColourId, palette::text);
    setColour(juce::TableHeaderComponent::textColourId, palette::text);
    setColour(juce::TableHeaderComponent::backgroundColourId, palette::panel);
    setColour(juce::TableHeaderComponent::outlineColourId, palette::strip);
}

LookAndFeel::~LookAndFeel() = default;

juce::String LookAndFeel::getFontName()
{
    return fontChoice().family;
}

juce::String LookAndFeel::getFallbackFontName()
{
    return fontChoice().fallback;
}

juce::Font LookAndFeel::getFont(int kind)
{
    switch (kind) {
    case 0: case 6: case 10: case 12:
        return windowFont(16.0f, juce::Font::plain);
    case 1: case 7: case 9: case 11: case 13:
        return windowFont(16.0f, juce::Font::bold);
    case 2: case 4:
        return windowFont(14.0f, juce::Font::plain);
    case 3: case 5:
        return windowFont(14.0f, juce::Font::bold);
    default:
        throw util::Result::InvalidArgument;
    }
}

int LookAndFeel::getTextWidth(const juce::Font& font, const juce::String& text)
{
    return font.getStringWidth(text);
}

void LookAndFeel::drawFittedText(juce::Graphics& g, const juce::String& text, int x, int y, int width, int height,
                                 juce::Justification justification, const juce::Font& font, juce::Colour colour,
                                 bool shrink)
{
    g.setColour(colour);
    g.setFont(font);
    const int lines = juce::jmax(1, static_cast<int>(static_cast<float>(height) / font.getHeight()));
    // A scale of 1 forbids squeezing: JUCE then cuts the text with an ellipsis.
    g.drawFittedText(text, x, y, width, height, justification, lines, shrink ? 0.7f : 1.0f);
}

juce::Typeface::Ptr LookAndFeel::getTypefaceForFont(const juce::Font& font)
{
    const juce::String name = font.getTypefaceName();
    if (name == preferredFontName || name == getFontName()) {
        const FontChoice& choice = fontChoice();
        if (auto typeface = font.isBold() ? choice.bold : choice.plain)
            return typeface;
    }
    return juce::LookAndFeel_V2::getTypefaceForFont(font);
}

void LookAndFeel::drawButtonBackground(juce::Graphics& g, juce::Button& button,
                                       const juce::Colour& backgroundColour, bool highlighted, bool down)
{
    auto bounds = button.getLocalBounds().toFloat().reduced(0.5f);
    juce::Colour fill = backgroundColour;
    if (down)
        fill = fill.darker(0.2f);
    else if (highlighted)
        fill = fill.brighter(0.15f);
    if (!button.isEnabled())
        fill = fill.withMultipliedAlpha(0.5f);
    g.setColour(fill);
    g.fillRoundedRectangle(bounds, 2.0f);
    g.setColour(palette::outline.withMultipliedAlpha(button.isEnabled() ? 1.0f : 0.5f));
    g.drawRoundedRectangle(bounds, 2.0f, 1.0f);
}

juce::Font LookAndFeel::getTextButtonFont(juce::TextButton&, int)
{
    return windowFont(14.0f, juce::Font::plain);
}

void LookAndFeel::drawButtonText(juce::Graphics& g, juce::TextButton& button, bool, bool)
{
    const auto colourId = button.getToggleState() ? juce::TextButton::textColourOnId
                                                  : juce::TextButton::textColourOffId;
    const auto colour = button.findColour(colourId).withMultipliedAlpha(button.isEnabled() ? 1.0f : 0.5f);
    const int inset = juce::jmin(4, button.getHeight() / 4);
    drawFittedText(g, button.getButtonText(), inset, 0, button.getWidth() - 2 * inset, button.getHeight(),
                   juce::Justification::centred, getTextButtonFont(button, button.getHeight()), colour, true);
}

void LookAndFeel::drawToggleButton(juce::Graphics& g, juce::ToggleButton& button, bool highlighted, bool down)
{
    const float boxSize = juce::jmin(16.0f, static_cast<float>(button.getHeight()) - 4.0f);
    drawTickBox(g, button, 2.0f, (static_cast<float>(button.getHeight()) - boxSize) * 0.5f, boxSize, boxSize,
                button.getToggleState(), button.isEnabled(), highlighted, down);
    const int textX = static_cast<int>(boxSize) + 8;
    const auto colour = button.findColour(juce::ToggleButton::textColourId)
                            .withMultipliedAlpha(button.isEnabled() ? 1.0f : 0.5f);
    drawFittedText(g, button.getButtonText(), textX, 0, button.getWidth() - textX - 2, button.getHeight(),
                   juce::Justification::centredLeft, getFont(regularFont), colour, true);
}

void LookAndFeel::drawTickBox(juce::Graphics& g, juce::Component& component, float x, float y, float w, float h,
                              bool ticked, bool enabled, bool highlighted, bool)
{
    const float alpha = enabled ? 1.0f : 0.5f;
    const juce::Rectangle<float> box(x, y, w, h);
    g.setColour(juce::Colours::black.withMultipliedAlpha(alpha));
    g.fillRect(box);
    g.setColour((highlighted ? palette::bright : palette::outline).withMultipliedAlpha(alpha));
    g.drawRect(box, 1.0f);
    if (ticked) {
        const auto tick = getTickShape(0.75f);
        g.setColour(component.findColour(juce::ToggleButton::tickColourId).withMultipliedAlpha(alpha));
        g.fillPath(tick, tick.getTransformToScaleToFit(box.reduced(w * 0.2f, h * 0.2f), true));
    }
}

void LookAndFeel::drawPopupMenuBackground(juce::Graphics& g, int width, int height)
{
    g.fillAll(findColour(juce::PopupMenu::backgroundColourId));
    g.setColour(palette::outline);
    g.drawRect(0, 0, width, height);
}

void LookAndFeel::drawPopupMenuItem(juce::Graphics& g, const juce::Rectangle<int>& area, bool isSeparator,
                                    bool isActive, bool isHighlighted, bool isTicked, bool hasSubMenu,
                                    const juce::String& text, const juce::String& shortcutKeyText,
                                    const juce::Drawable* icon, const juce::Colour* textColour)
{
    if (isSeparator) {
        auto line = area.reduced(5, 0);
        line.removeFromTop(line.getHeight() / 2);
        g.setColour(palette::outline);
        g.fillRect(line.removeFromTop(1));
        return;
    }

    auto r = area.reduced(1);
    juce::Colour colour = textColour != nullptr ? *textColour : findColour(juce::PopupMenu::textColourId);
    if (isHighlighted && isActive) {
        g.setColour(findColour(juce::PopupMenu::highlightedBackgroundColourId));
        g.fillRect(r);
        colour = findColour(juce::PopupMenu::highlightedTextColourId);
    }
    if (!isActive)
        colour = colour.withMultipliedAlpha(0.4f);

    juce::Font font = getPopupMenuFont();
    const float maxHeight = static_cast<float>(area.getHeight()) / 1.3f;
    if (font.getHeight() > maxHeight)
        font.setHeight(maxHeight);

    const auto iconArea = r.removeFromLeft((r.getHeight() * 5) / 4).reduced(3).toFloat();
    g.setColour(colour);
    if (icon != nullptr) {
        icon->drawWithin(g, iconArea, juce::RectanglePlacement::centred | juce::RectanglePlacement::onlyReduceInSize,
                         isActive ? 1.0f : 0.4f);
    } else if (isTicked) {
        const auto tick = getTickShape(1.0f);
        g.fillPath(tick, tick.getTransformToScaleToFit(iconArea, true));
    }

    if (hasSubMenu) {
        const float arrowH = 0.6f * font.getAscent();
        const auto x = static_cast<float>(r.removeFromRight(static_cast<int>(arrowH)).getX());
        const auto halfH = static_cast<float>(r.getCentreY());
        juce::Path arrow;
        arrow.addTriangle(x, halfH - arrowH * 0.5f, x, halfH + arrowH * 0.5f, x + arrowH * 0.6f, halfH);
        g.fillPath(arrow);
    }

    r.removeFromRight(3);
    drawFittedText(g, text, r.getX(), r.getY(), r.getWidth(), r.getHeight(), juce::Justification::centredLeft, font,
                   colour, true);
    if (shortcutKeyText.isNotEmpty()) {
        juce::Font small = font.withHeight(font.getHeight() * 0.75f);
        drawFittedText(g, shortcutKeyText, r.getX(), r.getY(), r.getWidth(), r.getHeight(),
                       juce::Justification::centredRight, small, colour, true);
    }
}

juce::Font LookAndFeel::getPopupMenuFont()
{
    return windowFont(16.0f, juce::Font::plain);
}

void LookAndFeel::drawComboBox(juce::Graphics& g, int width, int height, bool, int buttonX, int buttonY,
                               int buttonW, int buttonH, juce::ComboBox& box)
{
    g.fillAll(box.findColour(juce::ComboBox::backgroundColourId));
    g.setColour(box.findColour(juce::ComboBox::outlineColourId));
    g.drawRect(0, 0, width, height);

    const float alpha = box.isEnabled() ? 1.0f : 0.5f;
    g.setColour(box.findColour(juce::ComboBox::buttonColourId).withMultipliedAlpha(alpha));
    g.fillRect(buttonX, buttonY, buttonW, buttonH);

    // A downward arrow: its point at half the button's width and 0.63 of its
    // height, its top edge from 0.2 to 0.8 of the width.
    const auto bx = static_cast<float>(buttonX);
    const auto by = static_cast<float>(buttonY);
    const auto bw = static_cast<float>(buttonW);
    const auto bh = static_cast<float>(buttonH);
    juce::Path arrow;
    arrow.addTriangle(bx + bw * 0.5f, by + bh * 0.63f, bx + bw * 0.8f, by + bh * 0.45f, bx + bw * 0.2f,
                      by + bh * 0.45f);
    g.setColour(box.findColour(juce::ComboBox::arrowColourId).darker(0.4f).withMultipliedAlpha(alpha));
    g.fillPath(arrow);
}

juce::Font LookAndFeel::getComboBoxFont(juce::ComboBox&)
{
    return windowFont(16.0f, juce::Font::plain);
}

void LookAndFeel::drawLabel(juce::Graphics& g, juce::Label& label)
{
    g.fillAll(label.findColour(juce::Label::backgroundColourId));

    const float alpha = label.isEnabled() ? 1.0f : 0.5f;
    if (!label.isBeingEdited()) {
        const auto area = getLabelBorderSize(label).subtractedFrom(label.getLocalBounds());
        drawFittedText(g, label.getText(), area.getX(), area.getY(), area.getWidth(), area.getHeight(),
                       label.getJustificationType(), getLabelFont(label),
                       label.findColour(juce::Label::textColourId).withMultipliedAlpha(alpha),
                       label.getMinimumHorizontalScale() < 1.0f);
    }
    g.setColour(label.findColour(juce::Label::outlineColourId).withMultipliedAlpha(alpha));
    g.drawRect(label.getLocalBounds());
}

void LookAndFeel::drawTableHeaderBackground(juce::Graphics& g, juce::TableHeaderComponent& header)
{
    // The header is wider than its columns by the table's scroll bar; that
    // corner is part of the dark header, not the light one of the base class.
    g.fillAll(header.findColour(juce::TableHeaderComponent::backgroundColourId));
    g.setColour(header.findColour(juce::TableHeaderComponent::outlineColourId));
    g.fillRect(0, header.getHeight() - 1, header.getWidth(), 1);
}

void LookAndFeel::drawTableHeaderColumn(juce::Graphics& g, juce::TableHeaderComponent& header,
                                        const juce::String& columnName, int, int width, int height,
                                        bool isMouseOver, bool isMouseDown, int columnFlags)
{
    auto background = header.findColour(juce::TableHeaderComponent::backgroundColourId);
    if (isMouseDown)
        background = background.darker(0.2f);
    else if (isMouseOver)
        background = background.brighter(0.1f);
    g.fillAll(background);
    g.setColour(header.findColour(juce::TableHeaderComponent::outlineColourId));
    g.fillRect(width - 1, 0, 1, height);
    g.fillRect(0, height - 1, width, 1);

    juce::Rectangle<int> area(4, 0, width - 8, height);
    if ((columnFlags & (juce::TableHeaderComponent::sortedForwards | juce::TableHeaderComponent::sortedBackwards))
        != 0) {
        const auto arrowArea = area.removeFromRight(height / 2).toFloat();
        const bool forwards = (columnFlags & juce::TableHeaderComponent::sortedForwards) != 0;
        const float top = arrowArea.getCentreY() - 3.0f;
        const float bottom = arrowArea.getCentreY() + 3.0f;
        juce::Path arrow;
        if (forwards)
            arrow.addTriangle(arrowArea.getX(), bottom, arrowArea.getRight(), bottom, arrowArea.getCentreX(), top);
        else
            arrow.addTriangle(arrowArea.getX(), top, arrowArea.getRight(), top, arrowArea.getCentreX(), bottom);
        g.setColour(palette::outline);
        g.fillPath(arrow);
    }
    drawFittedText(g, columnName, area.getX(), area.getY(), area.getWidth(), area.getHeight(),
                   juce::Justification::centredLeft, getFont(tableFont),
                   header.findColour(juce::TableHeaderComponent::textColourId), true);
}

void LookAndFeel::drawProgressBar(juce::Graphics& g, juce::ProgressBar& bar, int width, int height, double progress,
                                  const juce::String& textToShow)
{
    g.fillAll(bar.findColour(juce::ProgressBar::backgroundColourId));
    const auto foreground = bar.findColour(juce::ProgressBar::foregroundColourId);
    if (progress >= 0.0 && progress <= 1.0) {
        g.setColour(foreground);
        g.fillRect(0, 0, juce::roundToInt(progress * width), height);
    } else {
        // Unknown progress: a dimmed bar rather than an empty one.
        g.setColour(foreground.withMultipliedAlpha(0.4f));
        g.fillRect(0, 0, width, height);
    }
    g.setColour(palette::outline);
    g.drawRect(0, 0, width, height);
    if (textToShow.isNotEmpty())
        drawFittedText(g, textToShow, 2, 0, width - 4, height, juce::Justification::centred, getFont(smallFont),
                       juce::Colours::white, true);
}

int LookAndFeel::getDefaultScrollbarWidth()
{
    return 5;
}

} // namespace montala::gui
