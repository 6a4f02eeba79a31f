#pragma once

#include <optional>
#include <string>
#include <vector>

namespace montala::studio {

// How montala-studio was started. Without a session file the program starts
// on a new empty project at `rate`. The steps after start-up run in this
// order, as a user would take them: change settings in the settings overlay,
// choose the new cut's videos in the video settings overlay, load EDLs
// through the Add EDLs overlay, add the Old and New EDLs,
// generate, select Change rows, start the conform, save, take the snapshot,
// quit.
struct StudioOptions {
    std::string session;
    std::string rate; // for a new project
    // The language of the texts ("de"); empty: the system's.
    std::string language;
    // "heal=gaps-with-inserts", "insert-markers=off": set in the overlay.
    std::vector<std::string> settings;
    // Files for the Add EDLs overlay, by list (Old, New, Change), each list's
    // files in one browse, moved by the offsets ("-00:00:10:00").
    std::vector<std::string> overlayFiles[3];
    std::string srcOffset;
    std::string dstOffset;
    // Pool videos ticked as the new cut's in the video settings overlay.
    std::vector<std::string> newVideos;
    // An overlay left open for the snapshot: "settings", "edit" (the first
    // selected Change row), "add-edls" (the last overlay load, before "Ok")
    // or "videos".
    std::string show;
    std::vector<std::string> oldFiles;
    std::vector<std::string> newFiles;
    bool generate = false;
    // Change table rows, counted from 1 as a user counts them.
    std::vector<int> selectRows;
    bool conform = false;
    std::string saveTo;
    std::string snapshot;
    bool quit = false;

    // Steps are given: nobody waits at the screen, so messages go to the
    // console and file dialogs are cancelled.
    bool scripted() const;
};

// Reads the command line. Nothing when the program should end at once:
// `status` is then its exit status (0 after --help) and `message` what to
// print (the help, or what is wrong, naming the argument).
std::optional<StudioOptions> parseStudioOptions(int argc, const char* const* argv, int& status,
                                                std::string& message);

// "-00:00:10:00" -> 10 seconds back. False for text that is no timecode.
bool parseOffset(const std::string& text, std::string& timecode, bool& positive);

// "3,5-7" -> {3, 5, 6, 7}. False for anything else (a row below 1, an empty
// or reversed range, text).
bool parseRows(const std::string& text, std::vector<int>& rows);

} // namespace montala::studio
