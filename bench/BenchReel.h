#pragma once

// The reel that the apply and verify benchmarks share: a shuffled random
// re-cut whose every shot moved (so each is one Change event), over a
// session of plain tracks with one event per shot and track, or of the
// tracks a mix has (layers, parts, joined takes), either with volume
// automation on every fourth track; written once per size into a folder of
// this process's own.

#include "run/RandomSession.h"

#include "run/ConformJob.h"

#include <filesystem>
#include <string>
#include <vector>

#include <unistd.h>

namespace montala::bench {

namespace fs = std::filesystem;

// What the session holds besides the events of its tracks.
enum class Session { Plain, Automated, Mixed };

inline const char* sessionName(Session session)
{
    switch (session) {
    case Session::Plain: return "plain";
    case Session::Automated: return "automated";
    case Session::Mixed: return "mixed";
    }
    return "?";
}

inline fs::path reelFolder(const std::string& prefix, int shots, int tracks, Session session = Session::Plain)
{
    return fs::temp_directory_path() / (prefix + std::to_string(::getpid()) + "-" + std::to_string(shots) + "x" +
                                         std::to_string(tracks) + "-" + sessionName(session));
}

// Writes the Old session and both cuts into folder; the request names them
// and the conformed session's place beside them.
inline run::ConformRequest writeReel(const fs::path& folder, int shots, int tracks,
                                    Session session = Session::Plain)
{
    fs::create_directories(folder);
    test::RandomRecut::Shape shape;
    shape.shots = shots;
    shape.audioTracks = tracks;
    shape.shuffled = true;
    shape.plain = session != Session::Mixed;
    shape.automatedEvery = session == Session::Plain ? 0 : 4;
    test::RandomRecut recut(7, shape);
    run::ConformRequest request;
    request.sessionPath = (folder / "old.json").string();
    test::RandomRecut::write(request.sessionPath, recut.session());
    const auto writeAll = [&](const std::vector<std::string>& texts, const std::string& stem) {
        std::vector<std::string> paths;
        for (size_t index = 0; index < texts.size(); ++index) {
            paths.push_back((folder / (stem + std::to_string(index) + ".edl")).string());
            test::RandomRecut::write(paths.back(), texts[index]);
        }
        return paths;
    };
    request.oldFiles = writeAll(recut.oldEdls(), "old");
    request.newFiles = writeAll(recut.newEdls(), "new");
    request.outputPath = (folder / "new.json").string();
    return request;
}

// Removes, when the program ends, the folders this process made under prefix.
class ReelCleanup {
public:
    explicit ReelCleanup(std::string prefix) : prefix(std::move(prefix) + std::to_string(::getpid())) {}
    ~ReelCleanup()
    {
        std::error_code ignored;
        for (const auto& entry : fs::directory_iterator(fs::temp_directory_path(), ignored)) {
            if (entry.path().filename().string().rfind(prefix, 0) == 0)
                fs::remove_all(entry.path(), ignored);
        }
    }

private:
    std::string prefix;
};

} // namespace montala::bench
