#include "core/fileio/ParseReport.h"

#include "util/StringUtil.h"

namespace montala::core::fileio {

using util::StringUtil;

LineAction actionOf(LineIssue issue)
{
    switch (issue) {
    case LineIssue::TooFewFields:
    case LineIssue::SignedEventNumber:
    case LineIssue::ValueRefused:
        return LineAction::Dropped;
    case LineIssue::Windows1252:
        return LineAction::Converted;
    case LineIssue::EventNumberTooLarge:
    case LineIssue::NulByte:
        break;
    }
    return LineAction::Changed;
}

size_t ParseReport::count(LineAction action) const
{
    size_t total = 0;
    for (const LineNote& note : lines) {
        if (actionOf(note.issue) == action)
            ++total;
    }
    return total;
}

std::string describeOpenFailure(OpenFailure failure)
{
    const char16_t* text = u"the file cannot be read";
    switch (failure) {
    case OpenFailure::None: return {};
    case OpenFailure::Missing: text = u"no such file"; break;
    case OpenFailure::Directory: text = u"it is a folder, not a file"; break;
    case OpenFailure::NotRegularFile: text = u"it is not a regular file"; break;
    case OpenFailure::PermissionDenied: text = u"permission denied"; break;
    case OpenFailure::PathNotUtf8: text = u"the path is not UTF-8"; break;
    case OpenFailure::Unreadable: break;
    }
    return StringUtil::toUtf8(StringUtil::translate(text));
}

std::string describeLineIssue(LineIssue issue)
{
    const char16_t* text = nullptr;
    switch (issue) {
    case LineIssue::TooFewFields:
        text = u"event line with too few fields; dropped with its comments";
        break;
    case LineIssue::SignedEventNumber:
        text = u"event number with a sign; the line is not read as an event";
        break;
    case LineIssue::EventNumberTooLarge:
        text = u"event number too large; kept as an event without a number";
        break;
    case LineIssue::NulByte: text = u"NUL bytes read as blanks"; break;
    case LineIssue::Windows1252: text = u"not UTF-8; read as Windows-1252 and converted"; break;
    case LineIssue::ValueRefused: text = u"the event refused one of its values; dropped"; break;
    }
    return StringUtil::toUtf8(StringUtil::translate(text));
}

} // namespace montala::core::fileio
