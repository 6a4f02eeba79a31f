#include "studio/Snapshot.h"

#include "platform/SafeFileWriter.h"

#include <juce_gui_basics/juce_gui_basics.h>

namespace montala::studio {

juce::Image renderComponent(juce::Component& component)
{
    return component.createComponentSnapshot(component.getLocalBounds(), true, 1.0f);
}

bool writeSnapshot(juce::Component& component, const std::string& path, std::string& error)
{
    const juce::Image image = renderComponent(component);
    juce::MemoryOutputStream bytes;
    juce::PNGImageFormat png;
    if (!image.isValid() || !png.writeImageToStream(image, bytes)) {
        error = path + ": the picture could not be encoded as PNG";
        return false;
    }
    const auto outcome = platform::SafeFileWriter::write(
        path, std::string_view(static_cast<const char*>(bytes.getData()), bytes.getDataSize()));
    if (!outcome.ok()) {
        error = outcome.message();
        return false;
    }
    return true;
}

} // namespace montala::studio
