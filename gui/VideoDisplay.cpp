#include "gui/VideoDisplay.h"

#include "gui/LookAndFeel.h"
#include "gui/Palette.h"
#include "gui/Texts.h"

#include <algorithm>
#include <cstring>

namespace montala::gui {

namespace {

const juce::String hiddenTime("--:--:--:--");

// The frame before an out point, at zero for an out point at zero.
core::Timecode frameBefore(const core::Timecode& out)
{
    return core::Timecode(std::max(0, out.toFrames() - 1));
}

} // namespace

VideoDisplay::VideoDisplay()
{
    for (juce::ImageComponent* image : {&oldImage, &newImage}) {
        image->setImagePlacement(juce::RectanglePlacement::centred);
        image->setImage(placeholder);
        addAndMakeVisible(*image);
    }
    for (juce::Label* label : {&oldTime, &newTime}) {
        label->setFont(LookAndFeel::getFont(LookAndFeel::labelFont));
        label->setJustificationType(juce::Justification::centred);
        label->setColour(juce::Label::textColourId, palette::text);
        label->setColour(juce::Label::backgroundColourId, juce::Colours::transparentBlack);
        addAndMakeVisible(*label);
    }
    refresh();
}

VideoDisplay::~VideoDisplay()
{
    if (provider)
        provider->removeListener(this);
}

void VideoDisplay::setVideoProvider(std::shared_ptr<VideoProviderBase> newProvider)
{
    if (provider)
        provider->removeListener(this);
    provider = std::move(newProvider);
    if (provider) {
        provider->setSize(placeholderWidth, placeholderHeight);
        provider->addListener(this);
    }
    requestFrames();
    refresh();
}

void VideoDisplay::setShown(bool on)
{
    if (show == on)
        return;
    show = on;
    refresh();
}

void VideoDisplay::setFrames(const core::Timecode& source, const core::Timecode& destination, bool last)
{
    oldTime.setText(source.toString(), juce::dontSendNotification);
    newTime.setText(destination.toString(), juce::dontSendNotification);
    sourceTime = source;
    destinationTime = destination;
    lastFrame = last;
    requestFrames();
}

juce::Image VideoDisplay::getShownImage(int index) const
{
    return (index == 0 ? oldImage : newImage).getImage();
}

juce::String VideoDisplay::getShownTime(int index) const
{
    return (index == 0 ? oldTime : newTime).getText();
}

void VideoDisplay::requestFrames()
{
    if (!provider || !sourceTime.isInitialized() || !destinationTime.isInitialized())
        return;
    provider->setLastFrame(lastFrame);
    provider->requestFrame(0, lastFrame ? frameBefore(sourceTime) : sourceTime);
    provider->requestFrame(1, lastFrame ? frameBefore(destinationTime) : destinationTime);
}

void VideoDisplay::refresh()
{
    if (show && provider) {
        imageChanged(0);
        imageChanged(1);
        return;
    }
    if (!show) {
        oldTime.setText(hiddenTime, juce::dontSendNotification);
        newTime.setText(hiddenTime, juce::dontSendNotification);
        oldImage.setImage(placeholder);
        newImage.setImage(placeholder);
    }
}

void VideoDisplay::imageChanged(int index)
{
    if (!show || !provider)
        return;
    (index == 0 ? oldImage : newImage).setImage(toImage(provider->getImage(index)));
}

juce::Image VideoDisplay::toImage(const core::VideoImage& picture)
{
    if (picture.width < 1 || picture.height < 1)
        return juce::Image(juce::Image::RGB, placeholderWidth, placeholderHeight, true);
    juce::Image image(juce::Image::ARGB, picture.width, picture.height, true);
    if (picture.isFrame() && picture.pixels.size() >= static_cast<size_t>(picture.width) * picture.height * 4) {
        juce::Image::BitmapData bitmap(image, juce::Image::BitmapData::writeOnly);
        for (int y = 0; y < picture.height; ++y) {
            const uint8_t* row = picture.pixels.data() + static_cast<size_t>(y) * picture.width * 4;
            for (int x = 0; x < picture.width; ++x) {
                const uint8_t* p = row + x * 4;
                bitmap.setPixelColour(x, y, juce::Colour(p[2], p[1], p[0], p[3]));
            }
        }
        return image;
    }
    juce::Graphics g(image);
    g.fillAll(juce::Colours::black);
    g.setColour(juce::Colours::white);
    g.setFont(LookAndFeel::getFont(LookAndFeel::regularFont).withHeight(0.17f * picture.height));
    g.drawText(juce::String::fromUTF8(picture.message.c_str()), image.getBounds(), juce::Justification::centred,
               false);
    return image;
}

void VideoDisplay::paint(juce::Graphics& g)
{
    const int w = getWidth();
    const int h = getHeight();
    const int half = (h - 115) / 2;
    const juce::Rectangle<float> area(2.0f, 2.0f, static_cast<float>(w - 4), static_cast<float>(h - 4));
    g.setColour(palette::panel);
    g.fillRoundedRectangle(area, 8.0f);
    g.setColour(palette::outline);
    g.drawRoundedRectangle(area, 8.0f, 2.0f);

    const juce::Font title = LookAndFeel::getFont(LookAndFeel::titleFont);
    LookAndFeel::drawFittedText(g, translated(u"Video"), 0, 2, w, 20, juce::Justification::centred, title,
                                palette::outline, false);
    // The strip under the heading, as on the window's panels; the IN and
    // OUT toggles stand in it.
    g.setColour(palette::strip);
    g.fillRect(3, 22, w - 6, 35);
    g.fillRect(3, 75, w - 6, 35);
    g.fillRect(3, 95 + half, w - 6, 35);
    LookAndFeel::drawFittedText(g, translated(u"Result"), 0, 95 + half, w, 35, juce::Justification::centred, title,
                                juce::Colours::black, false);
}

void VideoDisplay::resized()
{
    const int w = getWidth();
    const int h = getHeight();
    const int half = (h - 115) / 2;
    oldImage.setBounds(8, 95, w - 16, half - 20);
    newImage.setBounds(8, 135 + half, w - 16, half - 20);
    oldTime.setBounds((w - 150) / 2, 75 + half, 150, 24);
    newTime.setBounds((w - 150) / 2, h - 40, 150, 24);
}

} // namespace montala::gui
