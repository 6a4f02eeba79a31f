#include "core/report/ReportWriters.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <vector>

namespace montala::core::report {

namespace {

std::string number(int value)
{
    return std::to_string(value);
}

std::string event(int number)
{
    char text[16];
    std::snprintf(text, sizeof text, "%03d", number);
    return text;
}

std::string csvField(const std::string& text)
{
    if (text.find_first_of(",\"\n\r") == std::string::npos)
        return text;
    std::string quoted = "\"";
    for (char c : text)
        quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + "\"";
}

// A row's columns as text, shared by the text and CSV forms.
struct RowText {
    std::string fate, detail, oldEvent, newEvent, roll, clip, oldIn, oldOut, newIn, newOut, offset, offsetFrames,
        oldDuration, newDuration, change;
};

RowText rowText(const ChangeReport& report, const ShotRow& row)
{
    RowText text;
    text.fate = fateLabel(row.fate);
    text.detail = row.detail;
    if (row.hasOld) {
        text.oldEvent = event(row.oldEvent);
        text.oldIn = report.timecode(row.oldIn);
        text.oldOut = report.timecode(row.oldOut);
        text.oldDuration = number(row.oldDuration());
    }
    if (row.hasNew) {
        text.newEvent = event(row.newEvent);
        text.newIn = report.timecode(row.newIn);
        text.newOut = report.timecode(row.newOut);
        text.newDuration = number(row.newDuration());
    }
    text.roll = row.roll;
    text.clip = row.clip;
    if (row.hasOffset) {
        text.offset = report.signedTimecode(row.offset);
        text.offsetFrames = (row.offset > 0 ? "+" : "") + number(row.offset);
    }
    text.change = changeRefText(row);
    return text;
}

std::string span(const ChangeReport& report, int in, int out)
{
    return report.timecode(in) + "-" + report.timecode(out);
}

} // namespace

std::string changeRefText(const ShotRow& row)
{
    std::string text;
    for (const ChangeRef& ref : row.carriedBy) {
        if (!text.empty())
            text += ", ";
        text += number(ref.event) + (ref.part > 0 ? "." + number(ref.part) : "");
    }
    return text;
}

std::string jsonString(const std::string& text)
{
    std::string quoted = "\"";
    for (unsigned char c : text) {
        switch (c) {
        case '"':
            quoted += "\\\"";
            break;
        case '\\':
            quoted += "\\\\";
            break;
        case '\n':
            quoted += "\\n";
            break;
        case '\t':
            quoted += "\\t";
            break;
        default:
            if (c < 0x20) {
                char escaped[8];
                std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
                quoted += escaped;
            } else {
                quoted += static_cast<char>(c);
            }
        }
    }
    return quoted + "\"";
}

void writeNeedsSoundText(std::ostream& out, const ChangeReport& report)
{
    for (const NeedsSound& gap : report.needsSound)
        out << span(report, gap.in, gap.out) << "  " << std::setw(5) << gap.out - gap.in << " frames  New "
            << event(gap.newEvent) << ": " << gap.why << "\n";
}

void writeNeedsSoundJson(std::ostream& out, const ChangeReport& report, const std::string& indent)
{
    out << "[";
    for (size_t index = 0; index < report.needsSound.size(); ++index) {
        const NeedsSound& gap = report.needsSound[index];
        out << (index ? ",\n" : "\n") << indent << "  {\"in\": \"" << report.timecode(gap.in) << "\", \"out\": \""
            << report.timecode(gap.out) << "\", \"inFrame\": " << gap.in << ", \"outFrame\": " << gap.out
            << ", \"frames\": " << gap.out - gap.in << ", \"newEvent\": " << gap.newEvent << ", \"reason\": \""
            << gapReasonName(gap.reason) << "\", \"why\": " << jsonString(gap.why) << "}";
    }
    out << (report.needsSound.empty() ? "]" : "\n" + indent + "]");
}

void writeText(std::ostream& out, const ChangeReport& report)
{
    out << report.summary() << "\n";
    for (const Suggestion& suggestion : report.suggestions)
        out << "Suggestion: " << suggestion.text << "\n";
    if (!report.needsSound.empty()) {
        out << "\nNeeds sound:\n";
        writeNeedsSoundText(out, report);
    }
    if (!report.overlaps.empty()) {
        out << "\nChange events that overlap on the New timeline:\n";
        for (const ChangeOverlap& overlap : report.overlaps)
            out << span(report, overlap.in, overlap.out) << "  " << std::setw(5) << overlap.out - overlap.in
                << " frames  events " << overlap.first << " and " << overlap.second << "\n";
    }
    // Columns two blanks apart, each as wide as its longest cell.
    const char* const heads[] = {"Fate", "Old", "New", "Roll", "Offset", "Frames", "OldDur", "NewDur", "Change",
                                 "Detail"};
    std::vector<std::array<std::string, 10>> table;
    table.push_back({});
    std::copy(std::begin(heads), std::end(heads), table.back().begin());
    for (const ShotRow& row : report.rows) {
        const RowText t = rowText(report, row);
        table.push_back({t.fate, t.oldEvent, t.newEvent, t.roll, t.offset, t.offsetFrames, t.oldDuration,
                         t.newDuration, t.change, t.detail});
    }
    std::array<size_t, 10> widths{};
    for (const auto& cells : table)
        for (size_t column = 0; column < cells.size(); ++column)
            widths[column] = std::max(widths[column], cells[column].size());
    out << "\n";
    for (const auto& cells : table) {
        std::string line;
        for (size_t column = 0; column < cells.size(); ++column) {
            line += cells[column];
            if (column + 1 < cells.size())
                line += std::string(widths[column] - cells[column].size() + 2, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << "\n";
    }
}

void writeCsv(std::ostream& out, const ChangeReport& report)
{
    out << "fate,detail,old event,new event,roll,clip,old in,old out,new in,new out,offset,offset frames,"
           "old duration,new duration,change event\n";
    for (const ShotRow& row : report.rows) {
        const RowText t = rowText(report, row);
        for (const std::string* field : {&t.fate, &t.detail, &t.oldEvent, &t.newEvent, &t.roll, &t.clip, &t.oldIn,
                                         &t.oldOut, &t.newIn, &t.newOut, &t.offset, &t.offsetFrames,
                                         &t.oldDuration, &t.newDuration})
            out << csvField(*field) << ",";
        out << csvField(t.change) << "\n";
    }
}

void writeJson(std::ostream& out, const ChangeReport& report)
{
    const auto time = [&report](const char* name, int frames) {
        return std::string("\"") + name + "\": \"" + report.timecode(frames) + "\", \"" + name +
               "Frame\": " + number(frames);
    };
    out << "{\n  \"fps\": " << report.rate.fps << ", \"dropFrame\": " << (report.rate.dropMode == 1 ? "true" : "false")
        << ",\n  \"summary\": " << jsonString(report.summary()) << ",\n  \"counts\": {";
    for (int index = 0; index < fateCount; ++index)
        out << (index ? ", " : "") << "\"" << fateName(static_cast<Fate>(index))
            << "\": " << report.count(static_cast<Fate>(index));
    out << "},\n  \"frames\": {\"new\": " << report.newFrames << ", \"covered\": " << report.coveredFrames
        << ", \"needsSound\": " << report.needsSoundFrames << ", \"old\": " << report.oldFrames
        << ", \"dropped\": " << report.droppedFrames << "},\n  \"rows\": [";
    for (size_t index = 0; index < report.rows.size(); ++index) {
        const ShotRow& row = report.rows[index];
        out << (index ? ",\n" : "\n") << "    {\"fate\": \"" << fateName(row.fate)
            << "\", \"detail\": " << jsonString(row.detail) << ", \"roll\": " << jsonString(row.roll)
            << ", \"clip\": " << jsonString(row.clip);
        if (row.hasOld)
            out << ", \"oldEvent\": " << row.oldEvent << ", \"oldRoll\": " << jsonString(row.oldRoll)
                << ", \"oldClip\": " << jsonString(row.oldClip) << ", " << time("oldIn", row.oldIn) << ", "
                << time("oldOut", row.oldOut) << ", \"oldDuration\": " << row.oldDuration();
        if (row.hasNew)
            out << ", \"newEvent\": " << row.newEvent << ", " << time("newIn", row.newIn) << ", "
                << time("newOut", row.newOut) << ", \"newDuration\": " << row.newDuration();
        if (row.hasOffset)
            out << ", \"offset\": \"" << report.signedTimecode(row.offset) << "\", \"offsetFrames\": " << row.offset;
        out << ", \"change\": [";
        for (size_t ref = 0; ref < row.carriedBy.size(); ++ref)
            out << (ref ? ", " : "") << "{\"event\": " << row.carriedBy[ref].event
                << ", \"part\": " << row.carriedBy[ref].part << "}";
        out << "]}";
    }
    out << "\n  ],\n  \"needsSound\": ";
    writeNeedsSoundJson(out, report, "  ");
    out << ",\n  \"overlaps\": [";
    for (size_t index = 0; index < report.overlaps.size(); ++index) {
        const ChangeOverlap& overlap = report.overlaps[index];
        out << (index ? ", " : "") << "{" << time("in", overlap.in) << ", " << time("out", overlap.out)
            << ", \"frames\": " << overlap.out - overlap.in << ", \"events\": [" << overlap.first << ", "
            << overlap.second << "]}";
    }
    out << "],\n  \"suggestions\": [";
    for (size_t index = 0; index < report.suggestions.size(); ++index)
        out << (index ? ", " : "") << "{\"text\": " << jsonString(report.suggestions[index].text)
            << ", \"option\": " << jsonString(report.suggestions[index].option) << "}";
    out << "]\n}\n";
}

} // namespace montala::core::report
