// The HTML form of the change report: one page that needs nothing but a
// browser. The picture is plain SVG written here, so the page stays one
// file with no library to fetch or keep, and the drawing is ours to tune for
// long reels (thin blocks, lines that fade where nothing changed).

#include "core/report/ReportWriters.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <optional>
#include <ostream>

namespace montala::core::report {

namespace {

// One colour per fate, in the order of the enumeration: grey for what
// needs no work, warm colours for what lost or needs sound.
const char* const fateColours[fateCount] = {
    "#a3acb7", // unchanged
    "#2f7fd8", // moved
    "#e69f00", // trimmed
    "#8c6d1f", // extended
    "#8e44ad", // split
    "#d62728", // deleted
    "#2ca02c", // inserted
    "#17a2b8", // speed changed
    "#00707a", // frozen
    "#c2185b", // transition changed
    "#ff6f00", // VFX version
    "#6b8e23", // replaced take
    "#222222", // not matched
};

std::string escape(const std::string& text)
{
    std::string escaped;
    for (char c : text) {
        switch (c) {
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '&':
            escaped += "&amp;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}

// A coordinate to a tenth of a pixel.
std::string fixed(double value)
{
    char text[32];
    const auto written = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 1);
    return std::string(text, written.ptr);
}

std::string event(int number)
{
    char text[16];
    std::snprintf(text, sizeof text, "%03d", number);
    return text;
}

const char* const style = R"(
body{font:14px/1.4 system-ui,"DejaVu Sans",sans-serif;margin:24px;color:#1d232a;background:#fff}
h1{font-size:22px;margin:0 0 4px}h2{font-size:17px;margin:22px 0 8px}
.sub{color:#5b6570;margin:0 0 12px}.summary{font-size:15px;max-width:70em;background:#f3f5f7;padding:10px 14px;border-radius:4px}
.hint{background:#fff4e0;border-left:4px solid #ff6f00;padding:6px 10px;margin:6px 0;max-width:70em}
code{background:#eef0f3;padding:1px 4px;border-radius:3px}
table{border-collapse:collapse}th,td{padding:3px 8px;border-bottom:1px solid #e3e6ea;text-align:left;white-space:nowrap}
th{background:#eef0f3;position:sticky;top:0}#shots th{cursor:pointer;user-select:none}
#shots th.up::after{content:" \25B2"}#shots th.down::after{content:" \25BC"}
td.n{text-align:right;font-variant-numeric:tabular-nums}td.tc{font-variant-numeric:tabular-nums}
.sw{display:inline-block;width:12px;height:12px;border-radius:2px;vertical-align:-1px;margin-right:4px}
#filters label{margin-right:12px;white-space:nowrap}#filters button{margin-right:6px}
.pic{overflow-x:auto;border:1px solid #e3e6ea;border-radius:4px}
svg text{font:11px "DejaVu Sans",sans-serif;fill:#3b444d}
)";

// Sorting on a click of a column head, filtering by the fate boxes. Cells
// that sort by number carry it in data-v.
const char* const script = R"(
(function(){
var table=document.getElementById('shots'),body=table.tBodies[0];
var rows=Array.prototype.slice.call(body.rows);
rows.forEach(function(r,i){r.setAttribute('data-o',i);});
var boxes=Array.prototype.slice.call(document.querySelectorAll('#filters input'));
function apply(){
 var on={},shown=0;
 boxes.forEach(function(b){on[b.value]=b.checked;});
 rows.forEach(function(r){var v=on[r.getAttribute('data-fate')];r.style.display=v?'':'none';if(v)shown++;});
 document.getElementById('shown').textContent=shown+' of '+rows.length+' rows shown';
}
boxes.forEach(function(b){b.addEventListener('change',apply);});
function all(v){boxes.forEach(function(b){b.checked=v;});apply();}
document.getElementById('all').addEventListener('click',function(){all(true);});
document.getElementById('none').addEventListener('click',function(){all(false);});
document.getElementById('changed').addEventListener('click',function(){
 boxes.forEach(function(b){b.checked=b.value!=='unchanged'&&b.value!=='moved';});apply();});
var heads=Array.prototype.slice.call(table.tHead.rows[0].cells),column=-1,ascending=true;
function key(r,i){var c=r.cells[i],v=c.getAttribute('data-v');
 if(v===null)return c.textContent;return v===''?-Infinity:parseFloat(v);}
heads.forEach(function(h,i){h.addEventListener('click',function(){
 ascending=column===i?!ascending:true;column=i;
 rows.sort(function(a,b){var x=key(a,i),y=key(b,i);
  if(x<y)return ascending?-1:1;if(x>y)return ascending?1:-1;
  return a.getAttribute('data-o')-b.getAttribute('data-o');});
 rows.forEach(function(r){body.appendChild(r);});
 heads.forEach(function(o){o.className='';});h.className=ascending?'up':'down';});});
apply();
document.body.setAttribute('data-ready','yes');
})();
)";

// Old above, New below, each shot a block, a line from where a shot's
// picture stood in the Old cut to where it stands now. Both timelines share
// one scale, each from its own first frame.
void writePicture(std::ostream& out, const ChangeReport& report)
{
    int oldStart = 0, oldEnd = 0, newStart = 0, newEnd = 0, shots = 0;
    bool anyOld = false, anyNew = false;
    for (const ShotRow& row : report.rows) {
        if (row.hasOld) {
            oldStart = anyOld ? std::min(oldStart, row.oldIn) : row.oldIn;
            oldEnd = anyOld ? std::max(oldEnd, row.oldOut) : row.oldOut;
            anyOld = true;
        }
        if (row.hasNew) {
            newStart = anyNew ? std::min(newStart, row.newIn) : row.newIn;
            newEnd = anyNew ? std::max(newEnd, row.newOut) : row.newOut;
            anyNew = true;
            ++shots;
        }
    }
    const int span = std::max({oldEnd - oldStart, newEnd - newStart, 1});
    // About three pixels a shot, so a long reel scrolls rather than blurs.
    const double left = 46.0, width = std::clamp(shots * 3.0, 1100.0, 8000.0);
    const double scale = width / span;
    const double oldTop = 28.0, oldBottom = 58.0, newTop = 198.0, newBottom = 228.0, gapTop = 231.0;
    const auto oldX = [&](int frame) { return left + (frame - oldStart) * scale; };
    const auto newX = [&](int frame) { return left + (frame - newStart) * scale; };

    out << "<div class=\"pic\"><svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << fixed(width + left + 20)
        << "\" height=\"262\" role=\"img\" aria-label=\"Old cut above, New cut below\">\n";
    out << "<text x=\"4\" y=\"" << fixed(oldTop + 19) << "\" style=\"font-weight:bold\">Old</text><text x=\"4\" y=\""
        << fixed(newTop + 19) << "\" style=\"font-weight:bold\">New</text>\n";
    // Ticks with their timecode, at the first round step that leaves room
    // for the text.
    const int fps = std::max(report.rate.fps, 1);
    int step = 3600 * fps;
    for (int seconds : {1, 5, 10, 30, 60, 300, 600, 1800}) {
        if (seconds * fps * scale >= 100.0) {
            step = seconds * fps;
            break;
        }
    }
    for (int frame = 0; frame <= span; frame += step) {
        const double x = left + frame * scale;
        if (x + 70 > left + width + 20)
            break; // no room for its text
        if (anyOld)
            out << "<line x1=\"" << fixed(x) << "\" y1=\"" << fixed(oldTop - 4) << "\" x2=\"" << fixed(x) << "\" y2=\""
                << fixed(oldTop) << "\" stroke=\"#8a949e\"/><text x=\"" << fixed(x + 2) << "\" y=\""
                << fixed(oldTop - 8) << "\">" << report.timecode(oldStart + frame) << "</text>";
        if (anyNew)
            out << "<line x1=\"" << fixed(x) << "\" y1=\"" << fixed(newBottom + 14) << "\" x2=\"" << fixed(x)
                << "\" y2=\"" << fixed(newBottom + 18) << "\" stroke=\"#8a949e\"/><text x=\"" << fixed(x + 2)
                << "\" y=\"" << fixed(newBottom + 28) << "\">" << report.timecode(newStart + frame) << "</text>";
        out << "\n";
    }
    // Lines first, so blocks stay on top. A shot that moved with the one
    // before it (a ripple) is drawn faint, so that on a long reel the eye
    // goes to where the offset changes and to what needs work.
    std::optional<int> previousOffset;
    for (const ShotRow& row : report.rows) {
        if (!row.hasOld || !row.hasNew || !row.hasOffset)
            continue;
        const int length = row.newDuration();
        const double from = oldX(row.newIn - row.offset) + length * scale / 2;
        const double to = newX(row.newIn) + length * scale / 2;
        const bool quiet = row.fate == Fate::Unchanged || (row.fate == Fate::Moved && previousOffset == row.offset);
        previousOffset = row.offset;
        out << "<path d=\"M" << fixed(from) << " " << fixed(oldBottom) << " C" << fixed(from) << " "
            << fixed(oldBottom + 70) << " " << fixed(to) << " " << fixed(newTop - 70) << " " << fixed(to) << " "
            << fixed(newTop) << "\" fill=\"none\" stroke=\"" << fateColours[static_cast<int>(row.fate)]
            << "\" stroke-width=\"" << (quiet ? "1" : "1.6") << "\" stroke-opacity=\"" << (quiet ? "0.25" : "0.85")
            << "\"/>\n";
    }
    for (const ShotRow& row : report.rows) {
        const char* colour = fateColours[static_cast<int>(row.fate)];
        const std::string title = std::string(fateLabel(row.fate)) + (row.detail.empty() ? "" : ": " + row.detail);
        if (row.hasOld)
            out << "<rect x=\"" << fixed(oldX(row.oldIn)) << "\" y=\"" << fixed(oldTop) << "\" width=\""
                << fixed(std::max(row.oldDuration() * scale, 1.0)) << "\" height=\"" << fixed(oldBottom - oldTop)
                << "\" fill=\"" << colour << "\" stroke=\"#fff\" stroke-width=\"0.5\"><title>Old "
                << event(row.oldEvent) << " " << escape(row.oldRoll) << " " << escape(row.oldClip) << ", "
                << escape(title) << "</title></rect>\n";
        if (row.hasNew)
            out << "<rect x=\"" << fixed(newX(row.newIn)) << "\" y=\"" << fixed(newTop) << "\" width=\""
                << fixed(std::max(row.newDuration() * scale, 1.0)) << "\" height=\"" << fixed(newBottom - newTop)
                << "\" fill=\"" << colour << "\" stroke=\"#fff\" stroke-width=\"0.5\"><title>New "
                << event(row.newEvent) << " " << escape(row.roll) << " " << escape(row.clip) << ", "
                << escape(title) << "</title></rect>\n";
    }
    // Under the New cut, a red strip where it needs sound.
    for (const NeedsSound& gap : report.needsSound)
        out << "<rect x=\"" << fixed(newX(gap.in)) << "\" y=\"" << fixed(gapTop) << "\" width=\""
            << fixed(std::max((gap.out - gap.in) * scale, 2.0)) << "\" height=\"6\" fill=\"#d62728\"><title>needs sound "
            << report.timecode(gap.in) << "-" << report.timecode(gap.out) << ": " << escape(gap.why)
            << "</title></rect>\n";
    out << "</svg></div>\n";
}

void cell(std::ostream& out, const std::string& text, const char* kind = nullptr, const std::string* sortValue = nullptr)
{
    out << "<td";
    if (kind)
        out << " class=\"" << kind << "\"";
    if (sortValue)
        out << " data-v=\"" << *sortValue << "\"";
    out << ">" << escape(text) << "</td>";
}

void numberCell(std::ostream& out, bool present, int value, const std::string& text, const char* kind = "n")
{
    const std::string sortValue = present ? std::to_string(value) : "";
    cell(out, present ? text : "", kind, &sortValue);
}

void writeTable(std::ostream& out, const ChangeReport& report)
{
    out << "<div id=\"filters\">";
    for (int index = 0; index < fateCount; ++index) {
        const Fate fate = static_cast<Fate>(index);
        const int count = report.count(fate);
        if (count == 0)
            continue;
        out << "<label><input type=\"checkbox\" value=\"" << fateName(fate) << "\" checked><span class=\"sw\" style=\"background:"
            << fateColours[index] << "\"></span>" << fateLabel(fate) << " (" << count << ")</label>";
    }
    out << "<br><button id=\"all\" type=\"button\">All</button><button id=\"none\" type=\"button\">None</button>"
           "<button id=\"changed\" type=\"button\">Only what needs work</button> <span id=\"shown\"></span></div>\n";
    out << "<table id=\"shots\"><thead><tr><th>Fate</th><th>Old</th><th>New</th><th>Roll</th><th>Clip</th>"
           "<th>Old in</th><th>Old out</th><th>New in</th><th>New out</th><th>Offset</th><th>Frames</th>"
           "<th>Old dur</th><th>New dur</th><th>Change event</th><th>Detail</th></tr></thead><tbody>\n";
    for (const ShotRow& row : report.rows) {
        out << "<tr data-fate=\"" << fateName(row.fate) << "\">";
        const std::string fate = std::to_string(static_cast<int>(row.fate));
        out << "<td data-v=\"" << fate << "\"><span class=\"sw\" style=\"background:"
            << fateColours[static_cast<int>(row.fate)] << "\"></span>" << fateLabel(row.fate) << "</td>";
        numberCell(out, row.hasOld, row.oldEvent, event(row.oldEvent));
        numberCell(out, row.hasNew, row.newEvent, event(row.newEvent));
        cell(out, row.hasNew ? row.roll : row.oldRoll);
        cell(out, row.hasNew ? row.clip : row.oldClip);
        numberCell(out, row.hasOld, row.oldIn, report.timecode(row.oldIn), "tc");
        numberCell(out, row.hasOld, row.oldOut, report.timecode(row.oldOut), "tc");
        numberCell(out, row.hasNew, row.newIn, report.timecode(row.newIn), "tc");
        numberCell(out, row.hasNew, row.newOut, report.timecode(row.newOut), "tc");
        numberCell(out, row.hasOffset, row.offset, report.signedTimecode(row.offset), "tc");
        numberCell(out, row.hasOffset, row.offset, (row.offset > 0 ? "+" : "") + std::to_string(row.offset));
        numberCell(out, row.hasOld, row.oldDuration(), std::to_string(row.oldDuration()));
        numberCell(out, row.hasNew, row.newDuration(), std::to_string(row.newDuration()));
        const std::string first = row.carriedBy.empty() ? "" : std::to_string(row.carriedBy.front().event * 10000 +
                                                                               row.carriedBy.front().part);
        cell(out, changeRefText(row), "n", &first);
        cell(out, row.detail);
        out << "</tr>\n";
    }
    out << "</tbody></table>\n";
}

} // namespace

void writeHtml(std::ostream& out, const ChangeReport& report, const std::string& heading)
{
    out << "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
           "<meta name=\"viewport\" content=\"width=device-width\"><title>Change report: "
        << escape(heading) << "</title><style>" << style << "</style></head><body>\n";
    out << "<h1>Change report</h1><p class=\"sub\">" << escape(heading) << ", at " << report.rate.fps
        << (report.rate.pulled ? " (pulled)" : "") << (report.rate.dropMode == 1 ? " drop frame" : "")
        << " fps</p>\n<p class=\"summary\">" << escape(report.summary()) << "</p>\n";
    for (const Suggestion& suggestion : report.suggestions)
        out << "<p class=\"hint\">Probably missed: " << escape(suggestion.text) << ". Try <code>"
            << escape(suggestion.option) << "</code>.</p>\n";
    out << "<h2>Picture</h2>\n<div>";
    for (int index = 0; index < fateCount; ++index)
        if (report.count(static_cast<Fate>(index)) > 0)
            out << "<span class=\"sw\" style=\"background:" << fateColours[index] << "\"></span>"
                << fateLabel(static_cast<Fate>(index)) << " &nbsp; ";
    out << "<span class=\"sw\" style=\"background:#d62728;height:5px\"></span>needs sound</div>\n";
    writePicture(out, report);
    out << "<h2>Needs sound (" << report.needsSound.size() << ")</h2>\n";
    if (report.needsSound.empty()) {
        out << "<p>Every frame of the New cut is carried by a Change event.</p>\n";
    } else {
        out << "<table><thead><tr><th>New in</th><th>New out</th><th>Frames</th><th>New event</th><th>Why</th>"
               "</tr></thead><tbody>\n";
        for (const NeedsSound& gap : report.needsSound)
            out << "<tr><td class=\"tc\">" << report.timecode(gap.in) << "</td><td class=\"tc\">"
                << report.timecode(gap.out) << "</td><td class=\"n\">" << gap.out - gap.in << "</td><td class=\"n\">"
                << event(gap.newEvent) << "</td><td>" << escape(gap.why) << "</td></tr>\n";
        out << "</tbody></table>\n";
    }
    if (!report.overlaps.empty()) {
        out << "<h2>Change events that overlap (" << report.overlaps.size()
            << ")</h2>\n<table><thead><tr><th>New in</th><th>New out</th><th>Frames</th><th>Events</th></tr>"
               "</thead><tbody>\n";
        for (const ChangeOverlap& overlap : report.overlaps)
            out << "<tr><td class=\"tc\">" << report.timecode(overlap.in) << "</td><td class=\"tc\">"
                << report.timecode(overlap.out) << "</td><td class=\"n\">" << overlap.out - overlap.in
                << "</td><td>" << overlap.first << " and " << overlap.second << "</td></tr>\n";
        out << "</tbody></table>\n";
    }
    out << "<h2>Shots</h2>\n";
    writeTable(out, report);
    out << "<script>" << script << "</script>\n</body></html>\n";
}

} // namespace montala::core::report
