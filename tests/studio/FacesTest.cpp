// The faces of the host's dialogs: what they are asked, and that their
// answers reach Montala exactly as the host's own dialogs would give them.

#include "studio/AlertFace.h"
#include "studio/FileDialogFace.h"
#include "studio/ProgressWindowFace.h"

#include "kelmar/base/IObjectList.h"
#include "kelmar/base/IPath.h"
#include "kelmar/base/String.h"
#include "sim/services/SimHost.h"
#include "sim/project/SimPath.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>

namespace montala::studio {
namespace {

using Kelmar::IAlertService;

TEST(AlertFace, AsksWithTheHostsDefaultsAndItsAnswerReachesTheCaller)
{
    auto host = sim::SimHost::create();
    std::vector<AlertTexts> asked;
    {
        AlertFace face(host->alerts(), [&asked](const AlertTexts& texts) {
            asked.push_back(texts);
            return Kelmar::int32(IAlertService::kSecondButton);
        });
        EXPECT_EQ(host->alerts().show(u"Delete the Change EDL?", nullptr, u"Delete", u"Keep"),
                  IAlertService::kSecondButton);
        EXPECT_EQ(host->alerts().show(u"No events in Change EDL.", u"", nullptr, nullptr),
                  IAlertService::kSecondButton);
    }
    ASSERT_EQ(asked.size(), 2u);
    EXPECT_EQ(asked[0].title, "Montala");
    EXPECT_EQ(asked[0].firstButton, "Delete");
    EXPECT_EQ(asked[0].secondButton, "Keep");
    EXPECT_EQ(asked[1].message, "No events in Change EDL.");
    EXPECT_EQ(asked[1].firstButton, "OK");
    EXPECT_TRUE(asked[1].secondButton.empty()) << "one button only";
    EXPECT_EQ(host->alerts().shown().size(), 2u) << "messages are kept with a face too";

    // The face is gone with its object: the queue answers again.
    EXPECT_EQ(host->alerts().show(u"again", nullptr, u"A", u"B"), IAlertService::kFirstButton);

    // A new face first shows what nobody has seen (the message of a session
    // opened before the window came), then what comes.
    std::ostringstream console;
    AlertFace onConsole(host->alerts(), AlertFace::onConsole(console));
    EXPECT_EQ(host->alerts().show(u"Überspielen fertig", u"Montala", u"Ja", u"Nein"), IAlertService::kFirstButton);
    EXPECT_EQ(console.str(), "Montala: again\nMontala: Überspielen fertig\n");
    host->shutdown();
}

TEST(FileDialogFace, OffersBothSpellingsOfTheExtensionAndHandsBackTheChoice)
{
    auto host = sim::SimHost::create();
    std::vector<FileDialogRequest> asked;
    std::optional<std::vector<std::string>> answer = std::vector<std::string>{"/edl/R1 OLD.EDL", "/edl/r1 new.edl"};
    FileDialogFace face(host->fileDialogs(), [&](const FileDialogRequest& request) {
        asked.push_back(request);
        return answer;
    });

    Kelmar::IFileDialogService::FileFilter filter;
    std::strcpy(filter.extension, "edl");
    std::strcpy(filter.description, "EDL files");
    auto start = Kelmar::owned(new sim::SimPath(u"/work/film"));
    Kelmar::IObjectList* list = nullptr;
    ASSERT_EQ(host->getService(Kelmar::IObjectList::iid, reinterpret_cast<void**>(&list)), Kelmar::kResultOk);
    auto results = Kelmar::owned(list);

    ASSERT_EQ(host->fileDialogs().runFileDialog(u"Add EDL", &filter, 1, start.get(), list,
                                                Kelmar::IFileDialogService::kAllowMultiple),
              Kelmar::kResultOk);
    ASSERT_EQ(asked.size(), 1u);
    EXPECT_EQ(asked[0].title, "Add EDL");
    EXPECT_EQ(asked[0].startPath, "/work/film");
    EXPECT_EQ(asked[0].wildcard, "*.edl;*.EDL");
    EXPECT_TRUE(asked[0].multiple);
    ASSERT_EQ(list->getCount(), 2);

    // Without the flag for several files, and without a filter.
    ASSERT_EQ(host->fileDialogs().runFileDialog(u"Open", nullptr, 0, start.get(), list, 0), Kelmar::kResultOk);
    EXPECT_EQ(asked[1].wildcard, "*");
    EXPECT_FALSE(asked[1].multiple);
    EXPECT_EQ(list->getCount(), 3) << "one more file: the dialog lets a user pick one";

    // Asked to save: the chooser takes a new name, which gets the filter's extension.
    ASSERT_EQ(host->fileDialogs().runFileDialog(u"Save Change EDL as...", &filter, 1, start.get(), list,
                                                Kelmar::IFileDialogService::kSaveFile),
              Kelmar::kResultOk);
    EXPECT_TRUE(asked[2].save);
    EXPECT_FALSE(asked[2].multiple);
    EXPECT_EQ(asked[2].extension, "edl");
    EXPECT_FALSE(asked[1].save);

    answer.reset();
    EXPECT_EQ(host->fileDialogs().runFileDialog(u"Open", nullptr, 0, start.get(), list, 0), Kelmar::kResultFalse);
    EXPECT_EQ(list->getCount(), 4);
    results.reset();
    start.reset();
    host->shutdown();
}

TEST(ProgressWindowFace, ViewFollowsTheServiceAndCancelWritesOnlyACancellableFlag)
{
    auto host = sim::SimHost::create();
    sim::SimProgressService& service = host->progress();
    Kelmar::uint8 flag = 0;
    service.setup(1, u"Montala", &flag);
    service.setTotal(8);
    service.setText(u"Processing Project - Cut 3");
    service.advance(2);
    ProgressView view = describeProgress(service);
    EXPECT_EQ(view.text, "Processing Project - Cut 3");
    EXPECT_DOUBLE_EQ(view.fraction, 0.25);
    EXPECT_TRUE(view.cancellable);

    // Steps added late may run past the total for a moment.
    service.advance(10);
    EXPECT_DOUBLE_EQ(describeProgress(service).fraction, 1.0);

    service.cancel();
    EXPECT_EQ(flag, 0) << "a window that is not showing has no button to press";
    service.show();
    service.cancel();
    EXPECT_EQ(flag, 1);
    EXPECT_TRUE(service.wasCancelled());
    service.hide();

    // Without a flag there is nothing to cancel.
    service.setup(1, u"Montala", nullptr);
    service.show();
    service.cancel();
    EXPECT_FALSE(describeProgress(service).cancellable);
    EXPECT_FALSE(service.wasCancelled());
    service.setTotal(0);
    EXPECT_DOUBLE_EQ(describeProgress(service).fraction, 0.0) << "no total: the bar stays empty";
    service.hide();
    host->shutdown();
}

} // namespace
} // namespace montala::studio
