#pragma once

#include <juce_graphics/juce_graphics.h>

// The window's colours. Every drawing of the window takes its colours from
// here, so that panels, tables, the timeline and the inputs agree; a test
// that probes a pixel compares it with the same names.
namespace montala::gui::palette {

inline const juce::Colour window{0xFF070C10u};     // behind the panels
inline const juce::Colour panel{0xFF25282Bu};      // panels and rows
inline const juce::Colour strip{0xFF5B5D60u};      // panel strips, row lines
inline const juce::Colour outline{0xFF76787Au};    // outlines, titles
inline const juce::Colour text{0xFFC9D3DCu};       // text
inline const juce::Colour bright{0xFFE9E9E9u};     // selected background, marked text
inline const juce::Colour event{0xFF40688Eu};      // timeline rectangles
inline const juce::Colour vfx{0xFF02A8A8u};        // events with the VFX flag
inline const juce::Colour green{0xFF41C800u};      // valid dot, no invalid events
inline const juce::Colour darkGreen{0xFF006400u};  // ring of the valid dot
inline const juce::Colour red{0xFFC81600u};        // invalid dot, some invalid events
inline const juce::Colour darkRed{0xFF640000u};    // ring of the invalid dot
inline const juce::Colour accent{0xFFFFAD00u};     // lit preview button
inline const juce::Colour lightBlue{0xFFA3CCFFu};  // on-colour of the other text buttons

} // namespace montala::gui::palette
