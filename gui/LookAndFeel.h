#pragma once

#include "gui/Palette.h"

#include <juce_gui_basics/juce_gui_basics.h>

namespace montala::gui {

// One dark style, one font family and the palette for every window of
// Montala. MainGui holds one and sets it on itself; the overlays inherit it.
//
// The family is "Segoe UI". Where it is not installed (any Linux desktop),
// a free sans font of the set-up stands in for it. The fonts of getFont also
// carry a CJK family behind the window's own, glyph by glyph, so that the
// Japanese and Chinese translations do not show as empty boxes. The helpers
// are static: table models and other painters that have no look and feel at
// hand draw text the same way.
class LookAndFeel : public juce::LookAndFeel_V2 {
public:
    // Font kinds of getFont. The others that getFont knows repeat these
    // sizes and styles: 0, 6, 10, 12 are 16 plain; 1, 7, 9, 11, 13 are 16
    // bold; 2, 4 are 14 plain; 3, 5 are 14 bold.
    static constexpr int regularFont = 0;
    static constexpr int labelFont = 1;
    static constexpr int smallFont = 2;
    static constexpr int titleFont = 3;
    static constexpr int tableFont = 5;

    static constexpr const char* preferredFontName = "Segoe UI";

    LookAndFeel();
    ~LookAndFeel() override;

    // The family asked for, and the family that is drawn with: the preferred
    // one when installed, else the stand-in (the same value for the whole run).
    static juce::String getFontName();
    // The installed CJK family behind the window's family, or empty.
    static juce::String getFallbackFontName();

    // The font of a kind; an unknown kind throws Result::InvalidArgument.
    static juce::Font getFont(int kind);
    static int getTextWidth(const juce::Font& font, const juce::String& text);

    // Draws text in the colour and font, fitted to the box: with shrink the
    // text may be squeezed horizontally before it is cut off with an ellipsis.
    static void drawFittedText(juce::Graphics& g, const juce::String& text, int x, int y, int width,
                               int height, juce::Justification justification, const juce::Font& font,
                               juce::Colour colour, bool shrink);

    // A font named for the preferred family that somebody made without
    // getFont still finds the stand-in.
    juce::Typeface::Ptr getTypefaceForFont(const juce::Font& font) override;

    void drawButtonBackground(juce::Graphics& g, juce::Button& button, const juce::Colour& backgroundColour,
                              bool highlighted, bool down) override;
    juce::Font getTextButtonFont(juce::TextButton& button, int buttonHeight) override;
    void drawButtonText(juce::Graphics& g, juce::TextButton& button, bool highlighted, bool down) override;
    void drawToggleButton(juce::Graphics& g, juce::ToggleButton& button, bool highlighted, bool down) override;
    void drawTickBox(juce::Graphics& g, juce::Component& component, float x, float y, float w, float h,
                     bool ticked, bool enabled, bool highlighted, bool down) override;

    void drawPopupMenuBackground(juce::Graphics& g, int width, int height) override;
    void drawPopupMenuItem(juce::Graphics& g, const juce::Rectangle<int>& area, bool isSeparator, bool isActive,
                           bool isHighlighted, bool isTicked, bool hasSubMenu, const juce::String& text,
                           const juce::String& shortcutKeyText, const juce::Drawable* icon,
                           const juce::Colour* textColour) override;
    juce::Font getPopupMenuFont() override;

    void drawComboBox(juce::Graphics& g, int width, int height, bool buttonDown, int buttonX, int buttonY,
                      int buttonW, int buttonH, juce::ComboBox& box) override;
    juce::Font getComboBoxFont(juce::ComboBox& box) override;

    void drawLabel(juce::Graphics& g, juce::Label& label) override;

    void drawTableHeaderBackground(juce::Graphics& g, juce::TableHeaderComponent& header) override;
    void drawTableHeaderColumn(juce::Graphics& g, juce::TableHeaderComponent& header,
                               const juce::String& columnName, int columnId, int width, int height,
                               bool isMouseOver, bool isMouseDown, int columnFlags) override;

    void drawProgressBar(juce::Graphics& g, juce::ProgressBar& bar, int width, int height, double progress,
                         const juce::String& textToShow) override;

    int getDefaultScrollbarWidth() override;
};

} // namespace montala::gui
