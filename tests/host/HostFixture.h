#pragma once

#include "host/Project.h"
#include "host/ConformRun.h"
#include "host/TakingPart.h"
#include "host/Track.h"
#include "sim/SimFixture.h"

#include "kelmar/edit/IProjectEdit.h"
#include "kelmar/edit/IRangeEdit.h"
#include "sim/project/SimObject.h"
#include "sim/project/SimPlayback.h"
#include "util/StringUtil.h"

#include <memory>
#include <optional>
#include <string>

namespace montala::host::test {

// A simulated host with one open project and Montala's Project over it.
// The project goes before the host shuts down, so that the count of the
// simulator's objects comes out even.
class HostFixture : public sim::test::SimFixture {
protected:
    // Texts stay English: the tests read the messages as the code wrote them.
    class EnglishConverter : public util::StringUtil::StringConverterInterface {
    public:
        std::string toUtf8(const std::u16string& wide) override { return Kelmar::String::utf16ToUtf8(wide); }
        std::u16string fromUtf8(const std::string& text) override { return Kelmar::String::utf8ToUtf16(text); }
        std::u16string translate(const std::u16string& wide) override { return wide; }
    };

    void SetUp() override
    {
        previousConverter = util::StringUtil::getStringConverter();
        util::StringUtil::setStringConverter(&converter);
    }

    void TearDown() override
    {
        edit.reset();
        project.reset();
        hostProject.reset();
        util::StringUtil::setStringConverter(previousConverter);
        SimFixture::TearDown();
    }

    Project& openProject(const std::string& session)
    {
        hostProject = open(session);
        project = std::make_unique<Project>(hostProject.get(), host.get());
        return *project;
    }

    // An open undo group on the project, as a run has.
    Kelmar::IProjectEdit& beginEdit()
    {
        void* service = nullptr;
        host->getService(Kelmar::IProjectEdit::iid, &service);
        edit = Kelmar::owned(static_cast<Kelmar::IProjectEdit*>(service));
        edit->beginEdit(1);
        return *edit;
    }

    void endEdit() { edit->endEdit(hostProject.get(), u"Test"); }

    sim::SimObject& simTrack(const std::string& name)
    {
        sim::SimObject* track = hostProject->findTrack(u16(name));
        EXPECT_NE(track, nullptr) << name;
        return *track;
    }

    Track track(const std::string& name)
    {
        return Track(project ? &project->tracks() : nullptr, dynamic_cast<Kelmar::ITrack*>(&simTrack(name)));
    }

    // What a track plays at an absolute time, as "file@position", or "-".
    std::string heard(const std::string& trackName, double absoluteTime)
    {
        auto source = sim::SimPlayback::at(simTrack(trackName), absoluteTime - hostProject->getProjectStart());
        if (!source)
            return "-";
        char position[32];
        std::snprintf(position, sizeof position, "%.2f", source->position);
        return source->file + "@" + position;
    }

    Kelmar::IPtr<sim::SimProject> hostProject;
    std::unique_ptr<Project> project;
    Kelmar::IPtr<Kelmar::IProjectEdit> edit;

private:
    EnglishConverter converter;
    util::StringUtil::StringConverterInterface* previousConverter = nullptr;
};

// Seconds of a timecode at 25 fps.
inline double at25(int hours, int minutes, int seconds, int frames = 0)
{
    return hours * 3600.0 + minutes * 60.0 + seconds + frames / 25.0;
}

} // namespace montala::host::test
