#include "core/fileio/CmxParser.h"

#include "core/events/EventList.h"
#include "core/fileio/TextEncoding.h"
#include "util/StringUtil.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <system_error>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace montala::core::fileio {

using util::Result;
using util::StringUtil;

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// ".-_", letters and digits: what a roll name may hold.
bool isRollCharacter(char c)
{
    return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '.' || c == '-' || c == '_';
}

// Character by character: find_first_not_of would search the allowed set
// once for every character, and this runs for every field of every line.
template <typename Allowed>
bool consistsOf(std::string_view text, Allowed allowed)
{
    for (char c : text) {
        if (!allowed(c))
            return false;
    }
    return true;
}

bool startsWith(std::string_view text, std::string_view prefix)
{
    return text.substr(0, prefix.size()) == prefix;
}

bool contains(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

// A piece that the line does not have. Raised and caught inside the
// event-line parse: the line is then dropped.
struct MissingPiece {};

// Bit i set where byte base + i of line is a space and, in blanks, where
// it is a tab or a line end, for the size bytes (at most 64) from base;
// bits past them are clear.
uint64_t spaceBits(std::string_view line, size_t base, size_t size, uint64_t& blanks)
{
    const char* const text = line.data() + base;
    uint64_t spaces = 0;
    blanks = 0;
    size_t at = 0;
#if defined(__SSE2__)
    const __m128i space = _mm_set1_epi8(' ');
    const __m128i tab = _mm_set1_epi8('\t');
    const __m128i newline = _mm_set1_epi8('\n');
    const __m128i carriageReturn = _mm_set1_epi8('\r');
    // Bits for the 16 bytes of the line from `from`, shifted down to start
    // at `at`.
    const auto take = [&](size_t from) {
        const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(line.data() + from));
        const __m128i blank = _mm_or_si128(_mm_cmpeq_epi8(chunk, tab),
                                           _mm_or_si128(_mm_cmpeq_epi8(chunk, newline),
                                                        _mm_cmpeq_epi8(chunk, carriageReturn)));
        const unsigned shift = static_cast<unsigned>(base + at - from);
        spaces |= uint64_t{static_cast<uint16_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(chunk, space)))} >> shift << at;
        blanks |= uint64_t{static_cast<uint16_t>(_mm_movemask_epi8(blank))} >> shift << at;
    };
    for (; at + 16 <= size; at += 16)
        take(base + at);
    // The rest, from the sixteen bytes that end with it.
    if (at < size && base + size >= 16) {
        take(base + size - 16);
        at = size;
    }
#endif
    for (; at < size; ++at) {
        spaces |= uint64_t{text[at] == ' '} << at;
        blanks |= uint64_t{text[at] == '\t' || text[at] == '\n' || text[at] == '\r'} << at;
    }
    return spaces;
}

// The pieces of an event line: split at blanks (a tab does not split),
// empty pieces skipped, each trimmed. No line needs more than nine; those
// behind are never looked at.
class Pieces {
public:
    // The edges are found in a mask of the bytes that are not spaces, 64
    // at a time: a walk byte by byte guesses wrong at nearly every edge,
    // and a line has twenty.
    explicit Pieces(std::string_view line) : text(line)
    {
        uint64_t solidBefore = 0; // the last byte of the block before
        uint64_t blanks = 0;
        for (size_t base = 0; base < line.size() && edgeCount < maxEdges; base += 64) {
            const size_t size = std::min<size_t>(64, line.size() - base);
            uint64_t blockBlanks = 0;
            const uint64_t inText = size == 64 ? ~uint64_t{0} : (uint64_t{1} << size) - 1;
            const uint64_t solid = ~spaceBits(line, base, size, blockBlanks) & inText;
            blanks |= blockBlanks;
            // A bit where each piece starts and where each ends: starts and
            // ends alternate, from the first start on.
            uint64_t edges = solid ^ ((solid << 1) | solidBefore);
            for (; edges != 0 && edgeCount < maxEdges; edges &= edges - 1)
                bounds[edgeCount++] = base + static_cast<size_t>(std::countr_zero(edges));
            solidBefore = solid >> 63;
        }
        // A piece still open ends with the line.
        if (edgeCount % 2 != 0)
            bounds[edgeCount++] = line.size();
        // Only a tab or a line end can stand at a piece's edge.
        if (blanks != 0) {
            for (size_t i = 0; i < edgeCount; i += 2) {
                const std::string_view piece = at(i / 2);
                if (isBlank(piece.front()) || isBlank(piece.back())) {
                    const std::string_view trimmed = StringUtil::trimView(piece);
                    bounds[i] = static_cast<size_t>(trimmed.data() - line.data());
                    bounds[i + 1] = bounds[i] + trimmed.size();
                }
            }
        }
    }

    std::string_view at(size_t index) const
    {
        if (2 * index >= edgeCount)
            throw MissingPiece{};
        return text.substr(bounds[2 * index], bounds[2 * index + 1] - bounds[2 * index]);
    }

private:
    static bool isBlank(char c) { return c == '\t' || c == '\n' || c == '\r'; }

    static constexpr size_t maxEdges = 18;
    std::string_view text;
    // Where each piece starts and ends; only the first edgeCount are set.
    size_t bounds[maxEdges];
    size_t edgeCount = 0;
};

// The four numbers of "hh:mm:ss:ff" (';' allowed before the frames), two
// digits a field as nearly every EDL writes them, checked and read as two
// words at once; false, with fields untouched, for any other eleven bytes.
bool readTwoDigitTimecode(const char* text, std::array<uint8_t, 4>& fields)
{
    // The words are read with their first byte lowest.
    if constexpr (std::endian::native != std::endian::little)
        return false;
    uint64_t head = 0; // "hh:mm:ss", byte 0 lowest
    std::memcpy(&head, text, 8);
    uint32_t tail = 0; // "s:ff"
    std::memcpy(&tail, text + 7, 4);
    constexpr uint64_t highs = 0xF0F0F0F0F0F0F0F0ull;
    constexpr uint64_t zeros = 0x3030303030303030ull;
    constexpr uint64_t sixes = 0x0606060606060606ull;
    constexpr uint64_t headDigits = 0xFFFF00FFFF00FFFFull;
    constexpr uint32_t tailDigits = 0xFFFF00FFu;
    // A byte is a digit when its high half is 3, before and after adding 6.
    // A carry out of a byte can only come from a byte above 0xF9, which
    // fails on its own.
    const bool headOk = ((head & highs) & headDigits) == (zeros & headDigits)
                        && (((head + sixes) & highs) & headDigits) == (zeros & headDigits)
                        && ((head >> 16) & 0xFF) == ':' && ((head >> 40) & 0xFF) == ':';
    const uint32_t tailHighs = static_cast<uint32_t>(highs);
    const uint32_t tailZeros = static_cast<uint32_t>(zeros);
    const uint32_t tailSixes = static_cast<uint32_t>(sixes);
    const bool tailOk = ((tail & tailHighs) & tailDigits) == (tailZeros & tailDigits)
                        && (((tail + tailSixes) & tailHighs) & tailDigits) == (tailZeros & tailDigits)
                        && (((tail >> 8) & 0xFF) | 1) == ';';
    if (!headOk || !tailOk)
        return false;
    const uint64_t digits = head - zeros;
    const uint32_t frameDigits = tail - tailZeros;
    const auto pair = [](uint64_t word, int at) {
        return static_cast<uint8_t>(((word >> (8 * at)) & 0xF) * 10 + ((word >> (8 * at + 8)) & 0xF));
    };
    fields = {pair(digits, 0), pair(digits, 3), pair(digits, 6), pair(frameDigits, 2)};
    return true;
}

enum class NumberRead { Ok, NotANumber, TooLarge };

// Digits only, as an int.
NumberRead readNumber(std::string_view text, int& value)
{
    if (text.empty() || !consistsOf(text, isDigit))
        return NumberRead::NotANumber;
    long long number = 0;
    for (char c : text) {
        number = number * 10 + (c - '0');
        if (number > 2147483647LL)
            return NumberRead::TooLarge;
    }
    value = static_cast<int>(number);
    return NumberRead::Ok;
}

// The line delimiter: a carriage return when the text up to the first "\n"
// is longer than the text up to the first carriage return. CR, LF and CR LF
// files all work, since every line is trimmed.
char lineDelimiter(std::string_view text)
{
    const size_t newline = std::min(text.find('\n'), text.size());
    const size_t carriageReturn = std::min(text.find('\r'), text.size());
    return newline > carriageReturn ? '\r' : '\n';
}

// Neither a NUL nor a byte above 0x7F anywhere in the text, looked at eight
// bytes at a time.
bool isPlainAscii(std::string_view text)
{
    constexpr uint64_t ones = 0x0101010101010101ull;
    constexpr uint64_t highs = 0x8080808080808080ull;
    size_t at = 0;
#if defined(__SSE2__)
    // Sixty-four bytes at a time: their high bits and their zero bytes
    // gathered, then one test.
    const __m128i zero = _mm_setzero_si128();
    for (; at + 64 <= text.size(); at += 64) {
        const auto* const from = reinterpret_cast<const __m128i*>(text.data() + at);
        const __m128i a = _mm_loadu_si128(from);
        const __m128i b = _mm_loadu_si128(from + 1);
        const __m128i c = _mm_loadu_si128(from + 2);
        const __m128i d = _mm_loadu_si128(from + 3);
        const __m128i high = _mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d));
        const __m128i nul = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(a, zero), _mm_cmpeq_epi8(b, zero)),
                                         _mm_or_si128(_mm_cmpeq_epi8(c, zero), _mm_cmpeq_epi8(d, zero)));
        if (_mm_movemask_epi8(_mm_or_si128(high, nul)) != 0)
            return false;
    }
#endif
    for (; at + 8 <= text.size(); at += 8) {
        uint64_t word = 0;
        std::memcpy(&word, text.data() + at, 8);
        // A high bit set, or a zero byte (whose borrow sets its high bit).
        if ((word & highs) != 0 || ((word - ones) & ~word & highs) != 0)
            return false;
    }
    for (; at < text.size(); ++at) {
        if (text[at] == '\0' || static_cast<unsigned char>(text[at]) >= 0x80)
            return false;
    }
    return true;
}

bool isTrimmed(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// The text without blanks at its ends; nearly every line has none.
std::string_view trimmed(std::string_view text)
{
    if (!text.empty() && !isTrimmed(text.front()) && !isTrimmed(text.back()))
        return text;
    return StringUtil::trimView(text);
}

OpenFailure failureOfStatus(const std::filesystem::path& path, std::error_code& error)
{
    namespace fs = std::filesystem;
    const fs::file_status status = fs::status(path, error);
    if (error) {
        if (error == std::errc::permission_denied)
            return OpenFailure::PermissionDenied;
        if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory)
            return OpenFailure::Missing;
        return OpenFailure::Unreadable;
    }
    switch (status.type()) {
    case fs::file_type::not_found: return OpenFailure::Missing;
    case fs::file_type::directory: return OpenFailure::Directory;
    case fs::file_type::regular: return OpenFailure::None;
    default: return OpenFailure::NotRegularFile;
    }
}

} // namespace

Result::Type CmxParser::parse(const std::u16string& path, EventList& list, Framerate& framerate, bool acceptAudio)
{
    try {
        const Result::Type result = read(path, acceptAudio);
        if (result != Result::Ok)
            return result;
        build(list);
        framerate = getSuggestedFramerate();
        return Result::Ok;
    } catch (Result::Type code) {
        return code;
    }
}

Result::Type CmxParser::parseStream(std::istream& stream, const std::string& edlFileName, EventList& list,
                                    Framerate& framerate, bool acceptAudio)
{
    try {
        const Result::Type result = readStream(stream, edlFileName, acceptAudio);
        if (result != Result::Ok)
            return result;
        build(list);
        framerate = getSuggestedFramerate();
        return Result::Ok;
    } catch (Result::Type code) {
        return code;
    }
}

Result::Type CmxParser::read(const std::u16string& path, bool acceptAudio)
{
    report.clear();
    pending.clear();
    try {
        const std::string file = StringUtil::toUtf8(path);
        std::error_code error;
        report.openFailure = failureOfStatus(file, error);
        if (report.openFailure != OpenFailure::None)
            return Result::FileNotOpened;
        std::ifstream stream(file, std::ios::binary);
        if (!stream.is_open()) {
            report.openFailure = errno == EACCES ? OpenFailure::PermissionDenied : OpenFailure::Unreadable;
            return Result::FileNotOpened;
        }
        const size_t size = static_cast<size_t>(std::filesystem::file_size(file, error));
        if (!readWhole(stream, StringUtil::toUtf8(StringUtil::getFileName(path)), acceptAudio, error ? 0 : size)) {
            report.openFailure = OpenFailure::Unreadable;
            return Result::FileNotOpened;
        }
        return Result::Ok;
    } catch (Result::Type code) {
        return code;
    } catch (const std::range_error&) {
        report.openFailure = OpenFailure::PathNotUtf8;
        return Result::FileNotOpened;
    }
}

Result::Type CmxParser::readStream(std::istream& stream, const std::string& edlFileName, bool acceptAudio)
{
    report.clear();
    pending.clear();
    if (!readWhole(stream, edlFileName, acceptAudio)) {
        report.openFailure = OpenFailure::Unreadable;
        return Result::FileNotOpened;
    }
    return Result::Ok;
}

bool CmxParser::readWhole(std::istream& stream, const std::string& edlFileName, bool acceptAudio, size_t sizeHint)
{
    // The text in pieces, each line taken as soon as it is whole: a long
    // file costs no copy of all of it, only the events' lines are kept.
    startText(edlFileName, sizeHint);
    std::string buffer(64 * 1024, '\0');
    size_t held = 0;
    size_t lineNumber = 0;
    char delimiter = '\0'; // decided by the first line end
    for (;;) {
        // Room for a line longer than the buffer.
        if (held == buffer.size())
            buffer.resize(buffer.size() * 2);
        stream.read(buffer.data() + held, static_cast<std::streamsize>(buffer.size() - held));
        held += static_cast<size_t>(stream.gcount());
        const bool atEnd = !stream;
        const std::string_view text(buffer.data(), held);
        if (delimiter == '\0') {
            if (!atEnd && text.find_first_of("\r\n") == std::string_view::npos)
                continue;
            delimiter = lineDelimiter(text);
        }
        const size_t taken = takeLines(text, delimiter, lineNumber, acceptAudio, atEnd);
        if (atEnd)
            break;
        // The unfinished line moves to the front.
        std::memmove(buffer.data(), buffer.data() + taken, held - taken);
        held -= taken;
    }
    if (stream.bad()) {
        // Nothing of a file that could not be read is kept.
        startText(edlFileName, 0);
        return false;
    }
    finishText();
    return true;
}

void CmxParser::readText(std::string_view text, const std::string& edlFileName, bool acceptAudio)
{
    report.clear();
    startText(edlFileName, text.size());
    size_t lineNumber = 0;
    takeLines(text, lineDelimiter(text), lineNumber, acceptAudio, true);
    finishText();
}

size_t CmxParser::takeLines(std::string_view text, char delimiter, size_t& lineNumber, bool acceptAudio, bool atEnd)
{
    const bool plain = isPlainAscii(text);
    size_t start = 0;
    while (start < text.size()) {
        size_t stop = text.find(delimiter, start);
        if (stop == std::string_view::npos) {
            if (!atEnd)
                break;
            stop = text.size();
        }
        takeLine(text.substr(start, stop - start), ++lineNumber, acceptAudio, plain);
        start = std::min(stop + 1, text.size());
    }
    return start;
}

void CmxParser::startText(const std::string& edlFileName, size_t textSize)
{
    dropState = -1;
    frameHistogram.fill(0);
    report.lines.clear();
    report.eventLines.clear();
    pending.clear();
    // Nearly every event line takes 58 bytes or more: room for that many
    // spares regrowing.
    pending.reserve(textSize / 58 + 1);
    edlFile = std::make_shared<const std::string>(edlFileName);
    // The events' lines are about the whole text.
    texts.clear();
    texts.reserve(textSize);
    dummy = PendingEvent{};
    current = PendingEvent{};
    lastLineGood = false;
}

void CmxParser::finishText()
{
    if (lastLineGood)
        pending.push_back(std::move(current));
    current = PendingEvent{};
    lastLineGood = false;
}

void CmxParser::takeLine(std::string_view line, size_t lineNumber, bool acceptAudio, bool plain)
{
    // Most texts are plain ASCII throughout; in any other, each line with a
    // NUL or an upper byte takes the slow way.
    if (!plain && !isPlainAscii(line)) {
        if (trimmed(line).empty())
            return;
        if (!isValidUtf8(line)) {
            repaired = windows1252ToUtf8(line);
            report.lines.push_back({lineNumber, LineIssue::Windows1252});
        } else {
            repaired.assign(line);
        }
        // A NUL would end the text wherever it is handled as a C string.
        if (repaired.find('\0') != std::string::npos) {
            for (char& c : repaired) {
                if (c == '\0')
                    c = ' ';
            }
            report.lines.push_back({lineNumber, LineIssue::NulByte});
        }
        line = repaired;
    }
    readLine(trimmed(line), lineNumber, acceptAudio);
}

void CmxParser::readLine(std::string_view line, size_t lineNumber, bool acceptAudio)
{
    if (line.empty())
        return;
    if (startsWith(line, "FCM")) {
        // "NON-DROP FRAME" holds "DROP FRAME" too, so it is looked for first.
        if (contains(line, "NON-DROP FRAME"))
            dropState = 0;
        else if (contains(line, "DROP FRAME"))
            dropState = 1;
    } else if (isDigit(line[0])) {
        if (lastLineGood)
            pending.push_back(std::move(current));
        current = PendingEvent{};
        current.line = lineNumber;
        lastLineGood = parseEventLine(line, current, acceptAudio);
        if (!lastLineGood)
            report.lines.push_back({lineNumber, LineIssue::TooFewFields});
    } else if (line[0] == '*' && lastLineGood) {
        // The two lines of a transition share one number: the outgoing
        // clip's comment goes to the first of them, the incoming one's to
        // the second, and any other comment of the pair is dropped.
        PendingEvent& previous = pending.empty() ? dummy : pending.back();
        if (previous.eventNumber == current.eventNumber) {
            if (contains(line, "FROM CLIP"))
                addComment(line, previous);
            else if (contains(line, "TO CLIP"))
                addComment(line, current);
        } else {
            addComment(line, current);
        }
    } else if ((line[0] == '-' || line[0] == '+') && line.size() > 1 && isDigit(line[1])) {
        // Not an event line, as the reader has always seen it; but a user
        // who wrote one expects an event and is told where it went.
        report.lines.push_back({lineNumber, LineIssue::SignedEventNumber});
    }
    // Anything else (title, M2 motion lines, audio notes, comments of a
    // dropped event) is not read.
}

void CmxParser::addComment(std::string_view line, PendingEvent& target)
{
    const size_t name = line.find("NAME:");
    if (name != std::string_view::npos) {
        const std::string_view clipName = StringUtil::trimView(line.substr(name + 5));
        if (clipName.empty())
            return;
        // The name stays where the line lands in the target's text.
        const size_t inLine = static_cast<size_t>(clipName.data() - line.data());
        target.clipStart = static_cast<uint32_t>(target.textLength + 1 + inLine);
        target.clipLength = static_cast<uint32_t>(clipName.size());
    }
    if (&target == &dummy)
        return;
    // The line joins the end of the target's text. Behind it may stand the
    // text of the current event (the target is the first line of a
    // transition), which moves up to make room.
    const size_t end = target.textStart + target.textLength;
    texts.insert(end, line.size() + 1, '\n');
    std::copy(line.begin(), line.end(), texts.begin() + static_cast<std::ptrdiff_t>(end + 1));
    if (&target != &current && current.textStart >= end)
        current.textStart += line.size() + 1;
    target.textLength += 1 + line.size();
}

bool CmxParser::parseEventLine(std::string_view line, PendingEvent& target, bool acceptAudio)
{
    try {
        const Pieces pieces(line);

        int number = 0;
        const NumberRead numberRead = readNumber(pieces.at(0), number);
        if (numberRead == NumberRead::Ok)
            target.eventNumber = number;
        else
            target.addState(EventState::BadEventNumber);

        const std::string_view roll = pieces.at(1);
        if (consistsOf(roll, isRollCharacter)) {
            target.rollStart = static_cast<uint32_t>(roll.data() - line.data());
            target.rollLength = static_cast<uint32_t>(roll.size());
        } else {
            target.addState(EventState::BadRollName);
        }

        const std::string_view channels = pieces.at(2);
        bool video = false;
        for (char c : channels)
            video = video || c == 'B' || c == 'V' || (acceptAudio && c == 'A');
        if (!video)
            target.addState(EventState::NotVideoEvent);

        const std::string_view transition = pieces.at(3);
        size_t firstTimecode = 4;
        switch (transition.empty() ? '\0' : transition[0]) {
        case 'C':
            target.transitionType = EventBase::Cut;
            break;
        case 'D':
        case 'W': {
            target.transitionType = transition[0] == 'D' ? EventBase::Dissolve : EventBase::Wipe;
            int duration = 0;
            if (readNumber(pieces.at(4), duration) == NumberRead::Ok)
                target.transitionDuration = duration;
            else
                target.addState(EventState::BadTransitionDuration);
            firstTimecode = 5;
            break;
        }
        default:
            target.addState(EventState::UnsupportedTransition);
            break;
        }

        for (int which = 0; which < 4; ++which)
            parseTimecode(pieces.at(firstTimecode + static_cast<size_t>(which)), target, which);

        target.textStart = texts.size();
        target.textLength = line.size();
        texts += line;
        if (numberRead == NumberRead::TooLarge)
            report.lines.push_back({target.line, LineIssue::EventNumberTooLarge});
        return true;
    } catch (MissingPiece) {
        return false;
    }
}

void CmxParser::parseTimecode(std::string_view piece, PendingEvent& target, int which)
{
    static constexpr EventState badStates[4] = {EventState::BadSrcIn, EventState::BadSrcOut,
                                                EventState::BadDstIn, EventState::BadDstOut};
    std::array<uint8_t, 4> read;
    if (piece.size() != 11 || !readTwoDigitTimecode(piece.data(), read)) {
        int fields[4];
        if (piece.size() > 11 || !Timecode::parseText(piece, fields)) {
            target.addState(badStates[which]);
            return;
        }
        for (size_t i = 0; i < 4; ++i)
            read[i] = static_cast<uint8_t>(fields[i]);
    }
    target.timecodes[static_cast<size_t>(which)] = read;
    target.readTimecodes = static_cast<uint8_t>(target.readTimecodes | (1u << which));
    if (read[3] < 60)
        ++frameHistogram[read[3]];
}

void CmxParser::build(EventList& list)
{
    EventBase::LineFields fields;
    fields.edlFile = edlFile;
    if (texts.size() < texts.capacity() / 2)
        texts.shrink_to_fit();
    fields.textBlock = std::make_shared<const std::string>(std::move(texts));
    texts = std::string();
    const std::string_view block(*fields.textBlock);
    const Framerate rate = Timecode::currentFramerate();
    arena.expect(pending.size());
    std::vector<EventPtr> built;
    built.reserve(pending.size());
    report.eventLines.reserve(report.eventLines.size() + pending.size());
    for (const PendingEvent& waiting : pending) {
        // An event's text is held by 32-bit offsets.
        if (waiting.textStart > UINT32_MAX || waiting.textLength > UINT32_MAX - waiting.textStart) {
            report.lines.push_back({waiting.line, LineIssue::ValueRefused});
            continue;
        }
        const std::string_view text = block.substr(waiting.textStart, waiting.textLength);
        fields.eventNumber = waiting.eventNumber;
        fields.transitionType = waiting.transitionType;
        fields.transitionDuration = waiting.transitionDuration;
        fields.formatStates = waiting.formatStates;
        fields.rollName = text.substr(waiting.rollStart, waiting.rollLength);
        fields.clipName = text.substr(waiting.clipStart, waiting.clipLength);
        for (size_t which = 0; which < 4; ++which) {
            const auto& f = waiting.timecodes[which];
            fields.timecodes[which].set(f[0], f[1], f[2], f[3]);
        }
        fields.readTimecodes = waiting.readTimecodes;
        fields.textOffset = static_cast<uint32_t>(waiting.textStart);
        fields.textLength = static_cast<uint32_t>(waiting.textLength);
        built.push_back(arena.makeEvent(fields, rate));
        report.eventLines.push_back(waiting.line);
    }
    pending.clear();
    list.addEvents(std::move(built));
}

Framerate CmxParser::getSuggestedFramerate() const
{
    if (dropState == 1)
        return Framerate(30, 1);
    // Only a lower bound: a 25 frames file that never shows frame 24 comes
    // out as 24. The caller compares it with the project's rate.
    int highest = 0;
    for (int frames = 59; frames > 0; --frames) {
        if (frameHistogram[static_cast<size_t>(frames)] != 0) {
            highest = frames;
            break;
        }
    }
    int nominal = 60;
    if (highest == 0)
        nominal = 0;
    else if (highest <= 23)
        nominal = 24;
    else if (highest == 24)
        nominal = 25;
    else if (highest <= 29)
        nominal = 30;
    return Framerate(nominal, dropState);
}

Result::Type parseEdlFile(const std::u16string& path, EventList& list, Framerate& framerate, bool acceptAudio,
                          ParseReport* report)
{
    auto parser = std::make_shared<CmxParser>();
    Result::Type result = Result::Ok;
    if (list.getListenerCount() == 0) {
        // The scratch list exists so that whoever listens to list sees one
        // change. Nobody does: the events go straight in, saving a copy of
        // the list and a subscription for every event.
        list.clear();
        result = parser->parse(path, list, framerate, acceptAudio);
    } else {
        EventList parsed(EventList::ChangeKind);
        result = parser->parse(path, parsed, framerate, acceptAudio);
        list = parsed;
    }
    if (report != nullptr)
        *report = parser->getReport();
    return result;
}

} // namespace montala::core::fileio
