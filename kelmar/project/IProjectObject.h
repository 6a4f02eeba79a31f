#pragma once

#include "kelmar/base/FUnknown.h"
#include "kelmar/base/FVariant.h"
#include "kelmar/base/String.h"

namespace Kelmar {

class IEditContext;
class IObjectIterator;

// Any object of a project: the project itself, tracks, automation tracks and
// points, events, parts, markers. Times are seconds relative to the project start;
// the times of an event inside a part are relative to the part's start.
class IProjectObject : public FUnknown {
public:
    enum Flags : int32 {
        kLeftProject = 1 << 1,    // no longer in the project; look it up again
        kReadByProject = 1 << 2,  // reserved for the host's own readers
        kContentChanged = 1 << 3, // it or what it holds changed in the current edit
    };

    virtual bool isKind(const char8* kind) = 0;
    virtual int32 getFlags() = 0;
    virtual tresult setAttribute(const char8* name, const FVariant& value, int32 notify) = 0;
    // The value owns what it hands out (kOwner); the reader frees it.
    virtual tresult getAttribute(const char8* name, FVariant& value) = 0;
    // kResultOk when present, kResultFalse when not.
    virtual tresult hasAttribute(const char8* name) = 0;
    virtual tresult removeAttribute(const char8* name) = 0;
    virtual tresult getName(String& name) = 0;
    virtual tresult setName(IEditContext* context, const char16* name, int32 flags) = 0;
    virtual bool isSelected() = 0;
    virtual double getStart(IEditContext* context) = 0;
    virtual tresult setStart(IEditContext* context, double start, int32 flags) = 0;
    virtual tresult setLength(IEditContext* context, double length, int32 flags) = 0;
    virtual double getEnd(IEditContext* context) = 0;
    virtual tresult setEnd(IEditContext* context, double end, int32 flags) = 0;
    // Source offset in seconds of an audio or video event.
    virtual double getOffset(IEditContext* context) = 0;
    virtual IObjectIterator* getChildren() = 0;
    virtual IProjectObject* getParent() = 0;

    static constexpr FUID iid{"{7A6F999F-BDBC-4BCC-AC40-3DABACE8A171}"};
};

} // namespace Kelmar
