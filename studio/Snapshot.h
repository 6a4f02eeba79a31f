#pragma once

#include <string>

namespace juce {
class Component;
class Image;
} // namespace juce

namespace montala::studio {

// Draws a component, with its children, into an image of its size; needs no
// display and no window.
juce::Image renderComponent(juce::Component& component);

// Writes the component's picture as a PNG file, whole or not at all: the
// file is written next to itself and swapped in. False with `error` naming
// the file.
bool writeSnapshot(juce::Component& component, const std::string& path, std::string& error);

} // namespace montala::studio
