#include "host/TakingPart.h"

#include "host/MontalaTracks.h"
#include "host/Project.h"

#include <algorithm>

namespace montala::host {

using util::Result;

namespace {

bool isMemos(Track& track)
{
    return track.isMarkerTrack() && track.getType() == static_cast<int>(TrackType::Memos);
}

} // namespace

TakingPart::TakingPart(Project& project, const core::Settings& settings)
    : selectedOnly(settings.getApplyTo() == core::ApplyTo::SelectedTracks)
{
    memosMissing = true;
    const std::vector<Track>& previewLocks = project.getLockedTracks();
    auto lockedByPreview = [&](const Track& track) {
        return std::any_of(previewLocks.begin(), previewLocks.end(), [&](const Track& each) { return each.sameTrack(track); });
    };
    for (Track& track : project.getTracks()) {
        const bool own = MontalaTracks::isMontalaTrack(track);
        if (own && !isMemos(track))
            continue;
        if (own)
            memosMissing = false;
        const bool lockedByUser = track.isLocked() && !lockedByPreview(track);
        if (lockedByUser || !chosen(track)) {
            if (!own)
                leftOut.push_back({track.getName(), lockedByUser ? RunSummary::LeftOut::Locked
                                                                 : RunSummary::LeftOut::NotSelected});
            continue;
        }
        carriedTracks.push_back(track);
        if (own)
            memosTracks.push_back(track);
    }
}

Result::Type TakingPart::refusal(Project& project, const core::Settings& settings)
{
    const std::vector<Track> tracks = project.getTracks();
    if (tracks.empty())
        return Result::NoTracks;
    if (settings.getApplyTo() == core::ApplyTo::SelectedTracks
        && std::none_of(tracks.begin(), tracks.end(), [](const Track& track) { return track.isSelected(); }))
        return Result::NoSelectedTracks;
    return Result::Ok;
}

bool TakingPart::isCarried(const Track& track) const
{
    return std::any_of(carriedTracks.begin(), carriedTracks.end(),
                       [&](const Track& each) { return each.sameTrack(track); });
}

std::vector<Track> TakingPart::usersTracks() const
{
    std::vector<Track> users;
    for (const Track& track : carriedTracks)
        if (std::none_of(memosTracks.begin(), memosTracks.end(), [&](const Track& m) { return m.sameTrack(track); }))
            users.push_back(track);
    return users;
}

void TakingPart::addMemos(Track& memos)
{
    if (!memos.isValid() || isCarried(memos) || memos.isLocked() || !chosen(memos))
        return;
    carriedTracks.push_back(memos);
    memosTracks.push_back(memos);
}

int64_t TakingPart::piecesPerCut() const
{
    // A run for all tracks makes "Memos" when there is none, and carries it.
    return static_cast<int64_t>(carriedTracks.size()) + (memosMissing && !selectedOnly ? 1 : 0);
}

std::vector<Track> TakingPart::movingHome(Project& project) const
{
    std::vector<Track> home;
    for (Track& track : project.getTracks()) {
        if (!MontalaTracks::isMontalaTrack(track)) {
            if (isCarried(track))
                home.push_back(track);
            continue;
        }
        // The new cut's picture is written at home after the run, from the
        // new videos; with none, the track keeps what it holds.
        if (track.isLocked() || track.isVideoTrack())
            continue;
        // What the run wrote on its marker tracks comes home in any case.
        if (chosen(track) || (track.isMarkerTrack() && MontalaTracks::holdsRunOutput(track)))
            home.push_back(track);
    }
    return home;
}

std::vector<Track> TakingPart::closing(Project& project) const
{
    std::vector<Track> closed;
    for (Track& track : project.getTracks())
        if (chosen(track))
            closed.push_back(track);
    return closed;
}

void TakingPart::describe(RunSummary& summary) const
{
    summary.tracksTakingPart.clear();
    for (const Track& track : usersTracks())
        summary.tracksTakingPart.push_back(track.getName());
    summary.tracksLeftOut = leftOut;
}

} // namespace montala::host
