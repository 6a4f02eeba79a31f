#include "core/fileio/CmxWriter.h"

#include "core/events/EventList.h"
#include "platform/FileIdentity.h"
#include "platform/SafeFileWriter.h"
#include "util/StringUtil.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string_view>
#include <system_error>

namespace montala::core::fileio {

using util::Result;
using util::StringUtil;

namespace {

const char* const cmxRollCharacters = ".-_ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
const char* const unknownRoll = "UNKNOWN";

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

} // namespace

Result::Type writeEdlFile(const std::u16string& path, const EventList& list)
{
    auto writer = std::make_shared<CmxWriter>();
    return writer->write(path, list);
}

Result::Type writeEdlFile(const std::u16string& path, const EventList& list, CmxWriter::Report& report,
                          const std::vector<std::u16string>& inputs)
{
    auto writer = std::make_shared<CmxWriter>();
    return writer->write(path, list, report, inputs);
}

Result::Type CmxWriter::write(const std::u16string& path, const EventList& list)
{
    Report report;
    return write(path, list, report);
}

Result::Type CmxWriter::write(const std::u16string& path, const EventList& list, Report& report,
                              const std::vector<std::u16string>& inputs)
{
    report = Report();
    const size_t size = list.getSize();
    if (size == 0)
        return Result::InvalidArgument;
    const std::vector<std::u16string> paths = outputPaths(path, size);

    // Every target is looked at before the first is written: an input named
    // as output, or a part that would be refused, leaves all of them as
    // they were.
    try {
        for (const std::u16string& target : paths) {
            if (StringUtil::getFileName(target).empty())
                return Result::NotInitialized;
            for (const std::u16string& input : inputs) {
                if (platform::isSameFile(std::filesystem::path(target), std::filesystem::path(input))) {
                    report.failedPath = target;
                    report.reason = StringUtil::toUtf8(target) + ": is one of the input files; it is left as it is";
                    return Result::InvalidArgument;
                }
            }
            const platform::SafeFileWriter::Outcome checked = platform::SafeFileWriter::check(target);
            if (!checked.ok()) {
                report.failedPath = target;
                report.reason = checked.message();
                return Result::FileNotOpened;
            }
        }
    } catch (const std::exception&) {
        // A path that the file system cannot represent.
        return Result::FileNotOpened;
    }

    if (paths.size() == 1) {
        const Result::Type result = writeFile(path, list, report);
        if (result == Result::Ok)
            removeStaleParts(path, 1, report, inputs);
        return result;
    }

    // Parts of 999, the last one taking the rest. Parts already written stay
    // when a later one fails: each is a complete EDL by itself.
    for (size_t part = 1; part <= paths.size(); ++part) {
        const size_t start = (part - 1) * maxEventsPerFile;
        const size_t count = std::min(maxEventsPerFile, size - start);
        EventList partList(EventList::ChangeKind);
        partList.appendRange(list, start, count);
        const Result::Type result = writeFile(paths[part - 1], partList, report);
        if (result != Result::Ok)
            return result;
    }
    removeStaleParts(path, paths.size() + 1, report, inputs);
    // The single file of an earlier, shorter run would be read instead of
    // the parts.
    removeStale(path, report, inputs);
    return Result::Ok;
}

Result::Type CmxWriter::writeFile(const std::u16string& path, const EventList& list)
{
    Report report;
    return writeFile(path, list, report);
}

Result::Type CmxWriter::writeFile(const std::u16string& path, const EventList& list, Report& report)
{
    if (list.getSize() == 0 || list.getSize() > maxEventsPerFile)
        return Result::InvalidArgument;
    bool anyWithoutFormatError = false;
    for (const EventPtr& event : list.getEvents())
        anyWithoutFormatError = anyWithoutFormatError || !event->hasFormatError();
    if (!anyWithoutFormatError)
        return Result::InvalidArgument;

    // The name is checked before anything touches the disk, so that a path
    // naming a folder does not leave a stray file in it.
    if (StringUtil::getFileName(path).empty())
        return Result::NotInitialized;

    try {
        // The whole text is made before the file is touched: an event past
        // 999 throws here and nothing is written.
        const std::string text = formatLines(titleOf(path), list);
        const platform::SafeFileWriter::Outcome outcome = platform::SafeFileWriter::write(path, text);
        if (!outcome.ok()) {
            report.failedPath = path;
            report.reason = outcome.message();
            return Result::FileNotOpened;
        }
        report.written.push_back(path);
        return Result::Ok;
    } catch (Result::Type code) {
        return code;
    } catch (const std::exception&) {
        // A path that the file system cannot represent, or no memory for it.
        return Result::FileNotOpened;
    }
}

std::string CmxWriter::titleOf(const std::u16string& path)
{
    std::string title = StringUtil::toSafeText(StringUtil::getFileName(path));
    if (title.size() > maxTitleBytes)
        title.resize(maxTitleBytes);
    return "TITLE:   " + title;
}

void CmxWriter::removeStaleParts(const std::u16string& path, size_t firstStale, Report& report,
                                 const std::vector<std::u16string>& inputs)
{
    // Numbered parts follow one another without a gap, so the first number
    // that names no file ends the search.
    //
    //   before:  film_1.edl  film_2.edl  film_3.edl        (3 parts)
    //   write:   film_1.edl  film_2.edl                    (2 parts)
    //   after:   film_1.edl  film_2.edl                    film_3.edl removed
    for (size_t part = firstStale;; ++part)
        if (!removeStale(numberedPath(path, part), report, inputs))
            return;
}

bool CmxWriter::removeStale(const std::u16string& stale, Report& report, const std::vector<std::u16string>& inputs)
{
    // A file is taken away only when it is a plain file whose title line is
    // the one this writer gave it: a file of the user's that happens to
    // share the name is left alone.
    try {
        const std::filesystem::path stalePath(stale);
        std::error_code error;
        const std::filesystem::file_status status = std::filesystem::symlink_status(stalePath, error);
        if (error || !std::filesystem::exists(status))
            return false;
        const auto keep = [&](const char* why) {
            report.keptStale.push_back(stale);
            report.keptStaleReasons.push_back(StringUtil::toUtf8(stale) + ": " + why);
            return true;
        };
        bool isInput = false;
        for (const std::u16string& input : inputs)
            isInput = isInput || platform::isSameFile(stalePath, std::filesystem::path(input));
        if (isInput)
            return keep("is one of the input files, so it stays");
        std::string firstLine;
        if (std::filesystem::is_regular_file(status)) {
            std::ifstream file(stalePath, std::ios::binary);
            std::getline(file, firstLine);
            if (!firstLine.empty() && firstLine.back() == '\r')
                firstLine.pop_back();
        }
        if (!std::filesystem::is_regular_file(status) || firstLine != titleOf(stale))
            return keep("was not written by Montala (its title line differs), so it stays");
        if (!std::filesystem::remove(stalePath, error) || error)
            return keep("could not be removed");
        report.removed.push_back(stale);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

std::vector<std::u16string> CmxWriter::outputPaths(const std::u16string& path, size_t eventCount)
{
    if (eventCount <= maxEventsPerFile)
        return {path};
    std::vector<std::u16string> paths;
    for (size_t part = 1; part <= (eventCount + maxEventsPerFile - 1) / maxEventsPerFile; ++part)
        paths.push_back(numberedPath(path, part));
    return paths;
}

namespace {

void appendTwoDigits(std::string& line, int value)
{
    line += static_cast<char>('0' + value / 10);
    line += static_cast<char>('0' + value % 10);
}

// As Timecode::toString, without a printf for each of the 40,000 timecodes
// of a long Change EDL; fields outside two digits take the general way.
void appendTimecode(std::string& line, const Timecode& timecode)
{
    const int fields[4] = {timecode.getHours(), timecode.getMinutes(), timecode.getSeconds(), timecode.getFrames()};
    for (int field : fields) {
        if (field < 0 || field > 99) {
            line += timecode.toString();
            return;
        }
    }
    for (int i = 0; i < 4; ++i) {
        if (i > 0)
            line += ':';
        appendTwoDigits(line, fields[i]);
    }
}

} // namespace

std::string CmxWriter::formatLines(const std::string& title, const EventList& list)
{
    // No FCM line: the drop mode is not written at all.
    std::string text = title + "\n";
    text.reserve(text.size() + list.getSize() * 80);
    size_t position = 0;
    for (const EventPtr& event : list.getEvents()) {
        ++position;
        // Flawed events are left out without reusing their number, so the
        // numbers show where they stood.
        if (!event->isFlawless())
            continue;
        if (position > maxEventsPerFile)
            throw Result::OutOfRange;
        text += static_cast<char>('0' + position / 100);
        appendTwoDigits(text, static_cast<int>(position % 100));
        text += "  ";
        const std::string roll = formatRollName(event->getRollName());
        text += roll;
        text.append(8 - roll.size(), ' ');
        text += " V     ";
        text += EventBase::transitionLetter(event->getTransitionType());
        text += "        ";
        appendTimecode(text, event->getSrcIn());
        text += ' ';
        appendTimecode(text, event->getSrcOut());
        text += ' ';
        appendTimecode(text, event->getDstIn());
        text += ' ';
        appendTimecode(text, event->getDstOut());
        text += '\n';
    }
    return text;
}

std::string CmxWriter::formatRollName(const std::string& rollName)
{
    std::string name = rollName;
    // A long name with a number at its end keeps the number behind a hyphen
    // in the eight characters: "Healed Event 001" -> "HEAL-001".
    if (rollName.size() > 8 && isDigit(rollName.back())) {
        bool anyNonDigit = false;
        for (char c : rollName)
            anyNonDigit = anyNonDigit || !isDigit(c);
        if (anyNonDigit) {
            // The first four characters always stay, and at most seven digits
            // fit behind the hyphen.
            int target = 7;
            size_t index = rollName.size() - 1;
            while (index > 3 && isDigit(rollName[index]) && target > 0) {
                name[static_cast<size_t>(target)] = rollName[index];
                --target;
                --index;
            }
            name[static_cast<size_t>(target)] = '-';
        }
    }
    if (name.size() > 8)
        name.resize(8);
    for (char& c : name) {
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
        else if (c == ' ')
            c = '_';
    }
    if (name.empty())
        return unknownRoll;
    for (char& c : name) {
        if (std::string_view(cmxRollCharacters).find(c) == std::string_view::npos)
            c = '_';
    }
    return name;
}

std::u16string CmxWriter::numberedPath(const std::u16string& path, size_t part)
{
    const char16_t separator = StringUtil::separatorOf(path);
    const size_t lastSeparator = path.rfind(separator);
    const std::u16string directory =
        lastSeparator == std::u16string::npos ? std::u16string() : path.substr(0, lastSeparator + 1);
    // Behind the last dot of the whole path: for a path without any dot that
    // is the whole path, which then stands twice. Callers always give names
    // with an extension.
    const size_t lastDot = path.rfind(u'.');
    const std::u16string extension = lastDot == std::u16string::npos ? path : path.substr(lastDot + 1);
    const std::string number = std::to_string(part);
    return directory + StringUtil::getStem(path) + u"_" + std::u16string(number.begin(), number.end()) + u"." +
           extension;
}

} // namespace montala::core::fileio
