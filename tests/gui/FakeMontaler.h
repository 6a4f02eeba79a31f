#pragma once

// A stand-in for the conform driver behind the window: it records what the
// window asks of it and keeps the data model's preview flag as the host
// does, so that the window sees the state it would see in a project.

#include "core/model/DataModel.h"
#include "core/events/EventList.h"
#include "core/conform/MontalerBase.h"
#include "util/Result.h"

#include <cstddef>
#include <string>
#include <vector>

namespace montala::test {

class FakeMontaler : public core::MontalerBase {
public:
    struct PreviewCall {
        std::vector<core::EventPtr> events;
        size_t first = 0;
        size_t last = 0;
        bool showDestination = false;
    };

    explicit FakeMontaler(core::DataModel* model = nullptr) : model(model) {}

    // What checkTracks answers.
    util::Result::Type tracksCode = util::Result::Ok;

    int startConformCalls = 0;
    int deletePreviewCalls = 0;
    std::vector<PreviewCall> previews;
    std::vector<PreviewCall> shownPreviews;
    std::vector<bool> previewActivations;

    util::Result::Type startConform() override
    {
        ++startConformCalls;
        return util::Result::Ok;
    }
    util::Result::Type preview(const core::EventList& events, size_t first, size_t last, bool showDestination) override
    {
        previews.push_back({events.getEvents(), first, last, showDestination});
        return util::Result::Ok;
    }
    util::Result::Type showPreview(const core::EventList& events, size_t first, size_t last,
                                   bool showDestination) override
    {
        shownPreviews.push_back({events.getEvents(), first, last, showDestination});
        return util::Result::Ok;
    }
    util::Result::Type deletePreview() override
    {
        ++deletePreviewCalls;
        return util::Result::Ok;
    }
    void setPreviewActive(bool on) override
    {
        previewActivations.push_back(on);
        if (model)
            model->setPreviewActive(on);
    }
    bool isPreviewActive() override { return model && model->isPreviewActive(); }
    util::Result::Type checkTracks() override { return tracksCode; }

    void getLocators(double& left, double& right) override { left = right = 0.0; }
    void setLocators(double, double, bool) override {}
    void getCycle(double& start, double& end) override { start = end = 0.0; }
    void setCycle(double, double) override {}
    double getCursor() override { return 0.0; }
    void setCursor(double) override {}
    std::string getProjectName() override { return "Reel 1"; }
    core::MediaPoolInterface* getMediaPool() override { return nullptr; }
    double getProjectStart() override { return 0.0; }
    util::Result::Type clearWorkArea() override { return util::Result::Ok; }
    util::Result::Type applyCut(core::Cut&) override { return util::Result::Ok; }
    core::CutPtr createCut(const core::EventPtr&) override { return nullptr; }
    util::Result::Type complete() override { return util::Result::Ok; }
    util::Result::Type generateMarkers(const std::vector<core::InformationEntry>&) override
    {
        return util::Result::Ok;
    }
    core::InformationContext getInformationContext() override { return {}; }
    core::SnippetContext getSnippetContext() override { return {}; }
    void setPreviewEvents(const core::EventList&) override {}

private:
    core::DataModel* model;
};

} // namespace montala::test
