#include "app/EdlLoading.h"

#include "core/fileio/CmxParser.h"
#include "util/Result.h"
#include "util/StringUtil.h"

#include <stdexcept>

namespace montala::app {

using core::Framerate;
using util::Result;
using util::StringUtil;

namespace {

struct NamedRate {
    const char* name;
    int fps;
    bool pulled;
    int dropMode;
};

constexpr NamedRate namedRates[] = {
    {"23.976", 24, true, 0}, {"24", 24, false, 0},      {"25", 25, false, 0},
    {"29.97", 30, true, 0},  {"29.97df", 30, true, 1},  {"30", 30, false, 0},
    {"30df", 30, false, 1},  {"48", 48, false, 0},      {"50", 50, false, 0},
    {"59.94", 60, true, 0},  {"60", 60, false, 0},
};

// A system message with the file name in place of its "%s".
std::string message(const char16_t* text, const std::string& fileName)
{
    return StringUtil::replaceAll(StringUtil::toUtf8(StringUtil::translate(text)), "%s", fileName);
}

std::string fileNameOf(const std::string& path)
{
    const size_t slash = path.find_last_of("/\\");
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string describeSuggestion(const Framerate& rate)
{
    if (rate.fps == 0)
        return "no frame rate (no timecode to judge by)";
    std::string text = std::to_string(rate.fps) + " fps";
    if (rate.dropMode == 1)
        text += " drop frame";
    else if (rate.dropMode == 0)
        text += " non-drop";
    else
        text += ", drop mode not given";
    return text;
}

} // namespace

std::optional<Framerate> parseRateName(const std::string& name)
{
    for (const NamedRate& rate : namedRates) {
        if (name == rate.name)
            return Framerate(rate.fps, rate.pulled, rate.dropMode);
    }
    return std::nullopt;
}

std::string rateName(const Framerate& rate)
{
    for (const NamedRate& named : namedRates) {
        if (named.fps == rate.fps && named.pulled == rate.pulled && named.dropMode == rate.dropMode)
            return named.name;
    }
    return describeSuggestion(rate);
}

const std::vector<std::string>& rateNames()
{
    static const std::vector<std::string> names = [] {
        std::vector<std::string> all;
        for (const NamedRate& rate : namedRates)
            all.emplace_back(rate.name);
        return all;
    }();
    return names;
}

bool rateMismatch(const Framerate& suggested, const Framerate& project)
{
    // A file without timecodes suggests nothing to compare with.
    if (suggested.fps == 0)
        return false;
    if (suggested.fps != project.fps)
        return true;
    return suggested.dropMode != -1 && suggested.dropMode != project.dropMode;
}

std::optional<Framerate> suggestProjectRate(const std::vector<std::string>& paths, std::ostream& err)
{
    // The events of this pass are thrown away; they only need some rate to
    // be built at.
    core::FixedFramerateProvider scratchRate(Framerate(25, 0));
    core::ScopedFramerateProvider scope(&scratchRate);
    for (const std::string& path : paths) {
        core::EventList scratch(core::EventList::ChangeKind);
        Framerate suggested;
        core::fileio::CmxParser parser;
        if (parser.parse(StringUtil::fromUtf8(path), scratch, suggested, false) != Result::Ok)
            continue;
        if (suggested.fps == 0) {
            err << "montala: " << path << " suggests no frame rate; name one with --rate ("
                << "one of 23.976, 24, 25, 29.97, 29.97df, 30, 30df, 48, 50, 59.94, 60)\n";
            return std::nullopt;
        }
        Framerate chosen;
        if (suggested.dropMode == 1) {
            // Drop frame exists to keep 29.97 in step with the clock.
            chosen = Framerate(30, true, 1);
        } else {
            if (suggested.dropMode == -1)
                err << "montala: " << path << " has no FCM line; assuming non-drop frame\n";
            chosen = Framerate(suggested.fps, false, 0);
        }
        err << "montala: no --rate given; using " << rateName(chosen) << ", the rate suggested by " << path
            << "\n";
        return chosen;
    }
    err << "montala: no file could be read to suggest a frame rate; name one with --rate\n";
    return std::nullopt;
}

bool loadEdlFiles(const std::vector<std::string>& paths, core::EventList& list, const EdlLoadOptions& options,
                  std::vector<LoadedEdlFile>& loaded, std::ostream& out, std::ostream& err)
{
    bool allOpened = true;
    const Framerate project = core::Timecode::currentFramerate();
    for (const std::string& path : paths) {
        LoadedEdlFile file;
        file.path = path;
        const size_t before = list.getSize();
        try {
            list.loadEdl(StringUtil::fromUtf8(path), true, file.suggestedRate, options.renameBRolls,
                         options.acceptAudio);
            file.opened = true;
        } catch (Result::Type code) {
            err << StringUtil::toUtf8(StringUtil::translate(u"An error occurred while loading the file."))
                << " " << path;
            if (code != Result::FileNotOpened)
                err << " (" << Result::name(code) << ")";
            err << "\n";
        } catch (const std::range_error&) {
            err << StringUtil::toUtf8(StringUtil::translate(u"An error occurred while loading the file."))
                << " " << path << " (the path is not UTF-8)\n";
        }
        if (!file.opened) {
            allOpened = false;
            loaded.push_back(file);
            continue;
        }
        file.events = list.getSize() - before;
        const std::string name = fileNameOf(path);
        out << name << ": suggests " << describeSuggestion(file.suggestedRate) << "\n";
        if (rateMismatch(file.suggestedRate, project))
            err << message(u"Frame rate mismatch between current project and loaded EDL %s", name) << "\n";
        bool anyInvalid = false;
        bool anyUsable = false;
        for (size_t i = before; i < list.getSize(); ++i) {
            const core::EventPtr& event = list.getEvent(i);
            anyInvalid = anyInvalid || event->hasState(core::EventState::InvalidTimecode);
            anyUsable = anyUsable || !event->hasFormatError();
        }
        if (anyInvalid)
            err << message(u"Some timecodes in the loaded EDL file %s do not match the current project frame rate.",
                           name)
                << "\n";
        if (!anyUsable)
            err << message(u"The loaded EDL file %s does not contain valid entries.", name) << "\n";
        loaded.push_back(file);
    }
    return allOpened;
}

} // namespace montala::app
