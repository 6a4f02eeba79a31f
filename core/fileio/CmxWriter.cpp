#include "core/fileio/CmxWriter.h"

#include "core/EventList.h"
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

char transitionLetter(int transitionType)
{
    switch (transitionType) {
    case EventBase::Dissolve:
        return 'D';
    case EventBase::Wipe:
        return 'W';
    default:
        return 'C';
    }
}

// Removes the temporary file on every way out unless it was moved into place.
class TemporaryFile {
public:
    explicit TemporaryFile(std::filesystem::path path) : path(std::move(path)) {}
    ~TemporaryFile()
    {
        if (!committed) {
            std::error_code ignored;
            std::filesystem::remove(path, ignored);
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::filesystem::path& getPath() const { return path; }
    bool moveTo(const std::filesystem::path& target)
    {
        std::error_code error;
        std::filesystem::rename(path, target, error);
        committed = !error;
        return committed;
    }

private:
    std::filesystem::path path;
    bool committed = false;
};

} // namespace

Result::Type writeEdlFile(const std::u16string& path, const EventList& list)
{
    auto writer = std::make_shared<CmxWriter>();
    return writer->write(path, list);
}

Result::Type CmxWriter::write(const std::u16string& path, const EventList& list)
{
    const size_t size = list.getSize();
    if (size == 0)
        return Result::InvalidArgument;
    if (size <= maxEventsPerFile)
        return writeFile(path, list);

    // Parts of 999, the last one taking the rest. Parts already written stay
    // when a later one fails: each is a complete EDL by itself.
    const size_t parts = (size + maxEventsPerFile - 1) / maxEventsPerFile;
    for (size_t part = 1; part <= parts; ++part) {
        const size_t start = (part - 1) * maxEventsPerFile;
        const size_t count = std::min(maxEventsPerFile, size - start);
        EventList partList(EventList::ChangeKind);
        partList.appendRange(list, start, count);
        const Result::Type result = writeFile(numberedPath(path, part), partList);
        if (result != Result::Ok)
            return result;
    }
    return Result::Ok;
}

Result::Type CmxWriter::writeFile(const std::u16string& path, const EventList& list)
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
    const std::u16string fileName = StringUtil::getFileName(path);
    if (fileName.empty())
        return Result::NotInitialized;
    std::string title = StringUtil::toSafeText(fileName);
    if (title.size() > maxTitleBytes)
        title.resize(maxTitleBytes);

    try {
        const std::filesystem::path target(path);
        std::filesystem::path temporaryPath = target;
        temporaryPath += u".montala-tmp";
        TemporaryFile temporary(temporaryPath);

        std::ofstream stream(temporary.getPath(), std::ios::out | std::ios::trunc);
        if (!stream)
            return Result::FileNotOpened;
        writeLines(stream, title, list);
        stream.close();
        if (stream.fail())
            return Result::FileNotOpened;
        if (!temporary.moveTo(target))
            return Result::FileNotOpened;
        return Result::Ok;
    } catch (Result::Type code) {
        return code;
    } catch (const std::exception&) {
        // A path that the file system cannot represent, or no memory for it.
        return Result::FileNotOpened;
    }
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

void CmxWriter::writeLines(std::ostream& stream, const std::string& title, const EventList& list)
{
    // No FCM line: the drop mode is not written at all.
    std::string text = "TITLE:   " + title + "\n";
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
        text += transitionLetter(event->getTransitionType());
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
    stream << text;
    if (!stream)
        throw Result::FileNotOpened;
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
