#include "core/events/EdlLoader.h"

#include "core/time/FramerateNames.h"
#include "core/time/Timecode.h"
#include "util/StringUtil.h"

#include <stdexcept>

namespace montala::core {

using util::Result;
using util::StringUtil;

namespace {

std::string fileNameOf(const std::string& path)
{
    const size_t slash = path.find_last_of("/\\");
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// Reads path with parser. A path that is no text cannot be handed to the
// parser: FileNotOpened, with the parser's report left without a cause.
Result::Type readFile(fileio::CmxParser& parser, const std::string& path, bool acceptAudio)
{
    std::u16string widePath;
    try {
        widePath = StringUtil::fromUtf8(path);
    } catch (const std::range_error&) {
        return Result::FileNotOpened;
    }
    return parser.read(widePath, acceptAudio);
}

} // namespace

EdlLoader::EdlLoader(std::vector<std::string> paths, EdlLoadOptions options)
    : paths(std::move(paths)), options(options)
{
}

RateSuggestion EdlLoader::suggestProjectRate()
{
    RateSuggestion suggestion;
    for (size_t index = 0; index < paths.size(); ++index) {
        auto parser = std::make_unique<fileio::CmxParser>();
        if (readFile(*parser, paths[index], options.acceptAudio) != Result::Ok)
            continue;
        const Framerate suggested = parser->getSuggestedFramerate();
        suggestion.path = paths[index];
        suggestion.rate = projectRateFor(suggested);
        suggestion.dropModeAssumed = suggestion.rate && suggested.dropMode == -1;
        readIndex = index;
        readParser = std::move(parser);
        break;
    }
    return suggestion;
}

EdlFileReport EdlLoader::load(size_t index, EventList& list)
{
    EdlFileReport report;
    report.path = paths.at(index);
    report.fileName = fileNameOf(report.path);

    std::unique_ptr<fileio::CmxParser> parser;
    if (readIndex == index && readParser) {
        parser = std::move(readParser);
        readIndex.reset();
    } else {
        parser = std::make_unique<fileio::CmxParser>();
        report.result = readFile(*parser, report.path, options.acceptAudio);
    }
    report.parse = parser->getReport();
    if (report.result != Result::Ok) {
        if (report.parse.openFailure == fileio::OpenFailure::None)
            report.parse.openFailure = fileio::OpenFailure::PathNotUtf8;
        return report;
    }
    report.opened = true;
    report.suggestedRate = parser->getSuggestedFramerate();

    // As EventList::loadEdl: a scratch list, so that the renaming sees this
    // file alone.
    EventList loaded(EventList::ChangeKind);
    parser->build(loaded);
    report.parse = parser->getReport();
    if (options.renameBRolls)
        loaded.renameBRolls();

    report.events = loaded.getSize();
    report.rateMismatch = rateMismatch(report.suggestedRate, Timecode::currentFramerate());
    bool anyUsable = false;
    for (const EventPtr& event : loaded.getEvents()) {
        report.timecodesOffRate = report.timecodesOffRate || event->hasState(EventState::InvalidTimecode);
        anyUsable = anyUsable || !event->hasFormatError();
        report.audioEvents += event->hasState(EventState::NotVideoEvent) ? 1 : 0;
    }
    report.noValidEntries = !anyUsable;
    report.unusable = unusableEvents(loaded, report.parse.eventLines);
    list.append(std::move(loaded));
    return report;
}

std::string unusableReason(const EventBase& event)
{
    std::string reason;
    for (int value = 0; value <= static_cast<int>(EventState::InvalidTimecodeRange); ++value) {
        const auto state = static_cast<EventState>(value);
        if (state == EventState::LegacyState || !event.hasState(state))
            continue;
        std::string message = EventBase::getStateMessage(state);
        if (!message.empty() && message.back() == '.')
            message.pop_back();
        reason += (reason.empty() ? "" : "; ") + message;
    }
    return reason;
}

std::vector<UnusableEvent> unusableEvents(const EventList& list, const std::vector<size_t>& lines)
{
    std::vector<UnusableEvent> found;
    for (size_t index = 0; index < list.getSize(); ++index) {
        const EventBase& event = *list.getEvent(index);
        const std::string reason = unusableReason(event);
        if (!reason.empty())
            found.push_back({index < lines.size() ? lines[index] : 0, event.getEventNumber(), reason});
    }
    return found;
}

bool EdlLoader::loadAll(EventList& list, std::vector<EdlFileReport>& reports)
{
    bool allOpened = true;
    for (size_t index = 0; index < paths.size(); ++index) {
        reports.push_back(load(index, list));
        allOpened = allOpened && reports.back().opened;
    }
    return allOpened;
}

} // namespace montala::core
