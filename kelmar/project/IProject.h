#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IDocument;
class IMediaPool;
class IProjectObject;
class IParameterContainer;
class IEditContext;
class IProjectStorageNotification;

// One open project. The same object answers IProjectObject (the root of the
// track tree) and IProjectSettings.
class IProject : public FUnknown {
public:
    virtual IDocument* getDocument() = 0;
    virtual IMediaPool* getMediaPool() = 0;
    // A marker track for new markers; it has no parent until it is added.
    virtual IProjectObject* getDefaultMarkerTrack() = 0;
    // Answers the parameters "leftTime" and "rightTime".
    virtual IParameterContainer* getLocators() = 0;
    // The context for changes inside `container`; null gives the project root.
    virtual IEditContext* getEditContext(IProjectObject* container) = 0;
    // A new track of kind "audio", "video", "marker", "folder" or "ruler", not yet
    // in the project.
    virtual IProjectObject* createTrack(const char8* kind) = 0;
    virtual tresult addStorageNotification(IProjectStorageNotification* notification) = 0;
    virtual tresult removeStorageNotification(IProjectStorageNotification* notification) = 0;
    // Sets the project's length in seconds; the end is the start plus this.
    virtual tresult setProjectLength(double length) = 0;

    static constexpr FUID iid{"{BDC25ADD-F8B3-4682-80D7-CE5D42FBA98C}"};
};

} // namespace Kelmar
