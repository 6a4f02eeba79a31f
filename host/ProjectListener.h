#pragma once

namespace montala::host {

class Project;

// An object that follows one project: its tracks, the video track handler.
// The project calls every registered listener when its settings changed (a
// new frame rate, say) and after an edit of the user's. Listeners are not
// owned; each takes itself out of the project before it goes.
class ProjectListener {
public:
    virtual ~ProjectListener() = default;
    virtual void projectChanged(Project& project) = 0;
    virtual void projectEdited(Project& project) = 0;
};

} // namespace montala::host
