#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace montala::core::fileio {

// Why a file could not be read at all.
enum class OpenFailure {
    None,
    Missing,
    Directory,
    NotRegularFile, // a device, a pipe or a socket
    PermissionDenied,
    PathNotUtf8,    // a path whose bytes are no text cannot be handed to the model
    Unreadable,     // opened, but reading failed, or any other cause
};

// Something the reader did with a line that it did not take as written.
// The contract stays forgiving: a bad field still gives an event with a
// state. These are the lines that would otherwise change or vanish without
// a word.
enum class LineIssue {
    TooFewFields,        // an event line without all its fields: dropped, with its comments
    SignedEventNumber,   // "-1 ..." is no event line: dropped
    EventNumberTooLarge, // kept, as an event with a bad event number
    NulByte,             // NUL bytes read as blanks
    Windows1252,         // not UTF-8: read as Windows-1252 and converted
    ValueRefused,        // the event refused one of its values: dropped
};

enum class LineAction { Dropped, Changed, Converted };

LineAction actionOf(LineIssue issue);

struct LineNote {
    size_t line = 0; // counted from 1, as an editor shows it
    LineIssue issue = LineIssue::TooFewFields;

    bool operator==(const LineNote& other) const { return line == other.line && issue == other.issue; }
};

// What one read of a file left to say besides its events.
struct ParseReport {
    OpenFailure openFailure = OpenFailure::None;
    std::vector<LineNote> lines;
    // The line of each event build() added, in the order it added them.
    std::vector<size_t> eventLines;

    size_t count(LineAction action) const;
    void clear()
    {
        openFailure = OpenFailure::None;
        lines.clear();
        eventLines.clear();
    }
};

// The user's words for a failure and an issue, translated; for the command
// line and the Add EDLs overlay alike.
std::string describeOpenFailure(OpenFailure failure);
std::string describeLineIssue(LineIssue issue);

} // namespace montala::core::fileio
