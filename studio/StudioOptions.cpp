#include "studio/StudioOptions.h"

#include "core/time/FramerateNames.h"
#include "core/time/Timecode.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>

namespace montala::studio {

namespace {

bool parseNumber(std::string_view text, int& value)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() && value >= 1;
}

std::string rateList()
{
    std::string names;
    for (const std::string& name : core::rateNames())
        names += (names.empty() ? "" : ", ") + name;
    return names;
}

} // namespace

bool StudioOptions::scripted() const
{
    return !settings.empty() || !overlayFiles[0].empty() || !overlayFiles[1].empty() || !overlayFiles[2].empty()
           || !newVideos.empty() || !oldFiles.empty() || !newFiles.empty() || generate || !selectRows.empty() || conform || !saveTo.empty()
           || !snapshot.empty() || quit;
}

bool parseOffset(const std::string& text, std::string& timecode, bool& positive)
{
    positive = text.empty() || (text[0] != '-');
    timecode = !text.empty() && (text[0] == '-' || text[0] == '+') ? text.substr(1) : text;
    int fields[4];
    return core::Timecode::parseText(timecode, fields);
}

bool parseRows(const std::string& text, std::vector<int>& rows)
{
    std::vector<int> parsed;
    std::string_view rest = text;
    while (true) {
        const size_t comma = rest.find(',');
        const std::string_view item = rest.substr(0, comma);
        const size_t dash = item.find('-');
        int first = 0;
        int last = 0;
        if (dash == std::string_view::npos) {
            if (!parseNumber(item, first))
                return false;
            last = first;
        } else if (!parseNumber(item.substr(0, dash), first) || !parseNumber(item.substr(dash + 1), last)
                   || last < first) {
            return false;
        }
        for (int row = first; row <= last; ++row)
            parsed.push_back(row);
        if (comma == std::string_view::npos)
            break;
        rest.remove_prefix(comma + 1);
    }
    std::sort(parsed.begin(), parsed.end());
    parsed.erase(std::unique(parsed.begin(), parsed.end()), parsed.end());
    rows = std::move(parsed);
    return true;
}

std::optional<StudioOptions> parseStudioOptions(int argc, const char* const* argv, int& status,
                                                std::string& message)
{
    StudioOptions options;
    std::string rows;
    CLI::App app{"Montala on the simulated host, in a window"};
    app.add_option("session", options.session, "Session file to open; without one a new empty project starts");
    app.add_option("--rate", options.rate, "Frame rate of a new project: " + rateList());
    app.add_option("--old", options.oldFiles, "Old EDL to add; repeatable");
    // Bare, "--new" says that a new project starts, which is also what no
    // session file means; with a file it adds a New EDL.
    app.add_option("--new", options.newFiles, "New EDL to add; repeatable. Alone: start a new project")
        ->expected(0, 1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_option("--language", options.language,
                   "Language of the texts: us, de, fr, es, it, pt, jp, zh, ru; without it the system's");
    app.add_option("--set", options.settings,
                   "Change a setting in the settings overlay, NAME=VALUE (heal=normal, insert-markers=off, "
                   "preserve-before=-00:00:02:00; see the README); repeatable");
    app.add_option("--load-old", options.overlayFiles[0], "Old EDL to load through the Add EDLs overlay; repeatable");
    app.add_option("--load-new", options.overlayFiles[1], "New EDL to load through the Add EDLs overlay; repeatable");
    app.add_option("--load-change", options.overlayFiles[2],
                   "Change EDL to load through the Add EDLs overlay; repeatable");
    app.add_option("--src-offset", options.srcOffset, "SRC offset of the overlay's loads, -HH:MM:SS:FF for back");
    app.add_option("--dst-offset", options.dstOffset, "DST offset of the overlay's loads, -HH:MM:SS:FF for back");
    app.add_option("--new-video", options.newVideos,
                   "Pool video to use as the new cut's picture from the project's start, chosen in the video "
                   "settings overlay; repeatable");
    app.add_option("--show", options.show,
                   "Leave an overlay open for the snapshot: settings, edit (the first selected row), add-edls "
                   "(the last --load-* stops before Ok), or videos")
        ->check(CLI::IsMember({"settings", "edit", "add-edls", "videos"}));
    app.add_flag("--generate", options.generate, "Generate the Change EDL");
    app.add_option("--select", rows, "Change table rows to select, from 1: 3,5-7");
    app.add_flag("--conform", options.conform, "Start the conform and wait for its end");
    app.add_option("--save", options.saveTo, "Save the session to this file");
    app.add_option("--snapshot", options.snapshot, "Draw the window into this PNG file, without a display, and end");
    app.add_flag("--quit", options.quit, "End after the steps instead of opening the window");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const bool help = dynamic_cast<const CLI::CallForHelp*>(&error) != nullptr;
        status = help ? 0 : 2;
        message = help ? app.help() : std::string(error.what());
        return std::nullopt;
    }
    options.newFiles.erase(std::remove(options.newFiles.begin(), options.newFiles.end(), std::string()),
                           options.newFiles.end());
    status = 2;
    static const char* const languages[] = {"us", "de", "fr", "es", "it", "pt", "jp", "zh", "ru"};
    if (!options.language.empty()
        && std::find(std::begin(languages), std::end(languages), options.language) == std::end(languages)) {
        message = "--language " + options.language + ": not one of us, de, fr, es, it, pt, jp, zh, ru";
        return std::nullopt;
    }
    for (const auto& [name, offset] : {std::pair<const char*, std::string&>{"--src-offset", options.srcOffset},
                                       std::pair<const char*, std::string&>{"--dst-offset", options.dstOffset}}) {
        std::string timecode;
        bool positive = true;
        if (!offset.empty() && !parseOffset(offset, timecode, positive)) {
            message = std::string(name) + " " + offset + ": not a timecode such as -00:00:10:00";
            return std::nullopt;
        }
    }
    if (!rows.empty() && !parseRows(rows, options.selectRows)) {
        message = "--select " + rows + ": not rows counted from 1, such as 3,5-7";
        return std::nullopt;
    }
    if (options.session.empty()) {
        if (options.rate.empty()) {
            message = "a new project needs --rate (" + rateList() + "), or name a session file";
            return std::nullopt;
        }
        if (!core::parseRateName(options.rate)) {
            message = "--rate " + options.rate + ": not a frame rate (" + rateList() + ")";
            return std::nullopt;
        }
    } else if (!options.rate.empty()) {
        message = "--rate is for a new project; the session " + options.session + " has its own rate";
        return std::nullopt;
    }
    status = 0;
    return options;
}

} // namespace montala::studio
