#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IProject;
class IEditContext;
class IProjectObject;
class IEditClip;
class IEditStep;

// Changes a project as undoable edits. Everything between beginEdit and endEdit
// is one group on the undo list; changes made with no group open go into an
// implicit one that the next endEdit closes. Groups nest: only the outermost
// endEdit closes. Tracks that are locked refuse changes of their content.
class IProjectEdit : public FUnknown {
public:
    virtual tresult beginEdit(int32 flags) = 0;
    virtual tresult endEdit(IProject* project, const char16* title) = 0;
    virtual tresult addObject(IEditContext* context, IProjectObject* object) = 0;
    virtual tresult removeObject(IEditContext* context, IProjectObject* object) = 0;
    virtual tresult moveObject(IEditContext* source, IEditContext* target, IProjectObject* object) = 0;
    // Copies what lies between start and end on all tracks; leaves the project as it is.
    virtual tresult extractRange(IProject* project, double start, double end, IEditClip** clip) = 0;
    // Adds a clip's content at `position`, over what is there.
    virtual tresult insertClip(IProject* project, IEditClip* clip, double position, int32 flags) = 0;
    // Removes what lies between start and end on all tracks, splitting at the edges;
    // later material does not move.
    virtual tresult deleteRange(IProject* project, double start, double end, int32 flags) = 0;
    // Puts a plug-in's step into the open group; the host keeps a reference.
    virtual tresult addEditStep(IEditStep* step) = 0;

    static constexpr FUID iid{"{7199C83A-68C9-40BF-9F14-2DCDFF1A1CB3}"};
};

} // namespace Kelmar
