#include "sim/session/SessionFile.h"

#include "kelmar/base/FVariant.h"
#include "kelmar/base/String.h"
#include "sim/session/Base64.h"
#include "sim/project/SimMediaPool.h"
#include "sim/services/SimHost.h"
#include "sim/project/SimStorage.h"
#include "platform/FileReader.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <optional>
#include <set>
#include <vector>

// Reading a session file: the JSON is parsed with the checks that give every
// refusal its place, then turned into a project that is kept only whole.

namespace montala::sim {

using Json = nlohmann::ordered_json;
using Kelmar::IPtr;

namespace {

// Folders inside folders are read recursively; far below what a stack
// holds, far above what a session needs.
constexpr int maxFolderDepth = 64;
// Any JSON nested deeper is refused while it is parsed, before a deep tree
// exists at all.
constexpr std::size_t maxJsonDepth = 256;

// ---- Reading

struct Failure {
    std::string place;
    std::string message;
};

std::string escapeKey(const std::string& key)
{
    std::string escaped;
    for (char c : key) {
        if (c == '~')
            escaped += "~0";
        else if (c == '/')
            escaped += "~1";
        else
            escaped += c;
    }
    return escaped;
}

std::string quote(const std::string& text)
{
    return Json(text).dump();
}

// One JSON object being read: knows its place, and which fields were read so
// that any other field can be refused as unknown.
class ObjectReader {
public:
    ObjectReader(const Json& value, std::string place) : value(value), here(std::move(place))
    {
        if (!value.is_object())
            throw Failure{here, "must be an object"};
    }

    const Json* find(const char* key)
    {
        used.insert(key);
        const auto found = value.find(key);
        return found == value.end() ? nullptr : &*found;
    }

    const Json& need(const char* key)
    {
        const Json* found = find(key);
        if (!found)
            throw Failure{here, std::string("\"") + key + "\" is missing"};
        return *found;
    }

    std::string at(const std::string& key) const { return here + "/" + escapeKey(key); }
    const std::string& place() const { return here; }

    void finish() const
    {
        for (const auto& [key, item] : value.items())
            if (!used.count(key))
                throw Failure{at(key), "is not a known field"};
    }

private:
    const Json& value;
    std::string here;
    std::set<std::string> used;
};

std::string textOf(const Json& value, const std::string& place)
{
    if (!value.is_string())
        throw Failure{place, "must be text"};
    const std::string& text = value.get_ref<const std::string&>();
    // The host's 8-bit texts end at a NUL: the rest would be lost unseen.
    if (text.find('\0') != std::string::npos)
        throw Failure{place, "holds a NUL character (\\u0000), which a text of the host cannot hold"};
    return text;
}

bool flagOf(const Json& value, const std::string& place)
{
    if (!value.is_boolean())
        throw Failure{place, "must be true or false"};
    return value.get<bool>();
}

double numberOf(const Json& value, const std::string& place)
{
    if (!value.is_number())
        throw Failure{place, "must be a number"};
    const double number = value.get<double>();
    if (!std::isfinite(number))
        throw Failure{place, "must be a finite number"};
    return number;
}

std::int64_t integerOf(const Json& value, const std::string& place)
{
    if (!value.is_number_integer())
        throw Failure{place, "must be a whole number"};
    return value.get<std::int64_t>();
}

const Json& arrayOf(const Json& value, const std::string& place)
{
    if (!value.is_array())
        throw Failure{place, "must be a list"};
    return value;
}

class Reader {
public:
    explicit Reader(SimHost& host) : host(host) {}

    // Each track's JSON is let go once the track is built, so that a
    // feature's tree and the project it becomes are never whole in memory at
    // the same time.
    IPtr<SimProject> project(Json& root, const std::string& defaultName)
    {
        ObjectReader fields(root, "");
        if (textOf(fields.need("format"), fields.at("format")) != SessionFile::formatName)
            throw Failure{fields.at("format"), std::string("must be \"") + SessionFile::formatName + "\""};
        const std::int64_t fileVersion = integerOf(fields.need("version"), fields.at("version"));
        if (fileVersion != SessionFile::version)
            throw Failure{fields.at("version"), "version " + std::to_string(fileVersion)
                                                    + " is not known; this reader knows version "
                                                    + std::to_string(SessionFile::version)};
        std::string name = defaultName;
        if (const Json* value = fields.find("name"))
            name = textOf(*value, fields.at("name"));
        auto result = SimProject::create(host, Kelmar::String::utf8ToUtf16(name));

        rate = frameRate(fields.need("frameRate"), fields.at("frameRate"));
        start = projectStart(fields.need("start"), fields.at("start"));
        result->initSettings(rate, start);

        SimObject::Fields values = result->get();
        values.end = time(fields.need("end"), fields.at("end"));
        result->restoreFields(values);

        if (const Json* value = fields.find("locators")) {
            ObjectReader locators(*value, fields.at("locators"));
            result->leftLocator = time(locators.need("left"), locators.at("left"));
            result->rightLocator = time(locators.need("right"), locators.at("right"));
            locators.finish();
        }
        if (const Json* value = fields.find("cycle")) {
            ObjectReader cycle(*value, fields.at("cycle"));
            result->cycleLeft = time(cycle.need("left"), cycle.at("left"));
            result->cycleRight = time(cycle.need("right"), cycle.at("right"));
            if (const Json* on = cycle.find("on"))
                result->cycleOn = flagOf(*on, cycle.at("on"));
            cycle.finish();
        }
        if (const Json* value = fields.find("cursor"))
            result->cursor = time(*value, fields.at("cursor"));
        if (const Json* value = fields.find("attributes"))
            attributes(*value, fields.at("attributes"), *result);
        if (const Json* value = fields.find("mediaPool"))
            mediaPool(*value, fields.at("mediaPool"), result->mediaPool());
        pool = &result->mediaPool();
        if (const Json* value = fields.find("tracks")) {
            arrayOf(*value, fields.at("tracks"));
            Json& list = root["tracks"];
            for (std::size_t i = 0; i < list.size(); ++i) {
                result->appendChild(track(list[i], fields.at("tracks") + "/" + std::to_string(i), 0));
                list[i] = nullptr;
            }
        }
        fields.finish();
        return result;
    }

private:
    SimFrameRate frameRate(const Json& value, const std::string& place)
    {
        ObjectReader fields(value, place);
        SimFrameRate result;
        const std::int64_t fps = integerOf(fields.need("fps"), fields.at("fps"));
        if (fps <= 0 || fps > 1000)
            throw Failure{fields.at("fps"), "must be between 1 and 1000"};
        result.fps = static_cast<int>(fps);
        if (const Json* pullDown = fields.find("pullDown"))
            result.pullDown = flagOf(*pullDown, fields.at("pullDown"));
        if (const Json* dropFrame = fields.find("dropFrame"))
            result.dropFrame = flagOf(*dropFrame, fields.at("dropFrame"));
        if (!result.isValid())
            throw Failure{fields.at("dropFrame"), "drop frame needs a rate that is a multiple of 30"};
        fields.finish();
        return result;
    }

    double projectStart(const Json& value, const std::string& place)
    {
        if (value.is_string()) {
            std::int64_t frames = 0;
            if (!rate.parseLabel(value.get<std::string>(), frames))
                throw Failure{place, quote(value.get<std::string>()) + " is no timecode at " + rate.describe()};
            startFrame = frames;
            return rate.frameToSeconds(frames);
        }
        const double seconds = numberOf(value, place);
        if (seconds < 0.0)
            throw Failure{place, "must not be negative"};
        refuseFarOut(value, seconds, place);
        startFrame = rate.exactFrame(seconds);
        return seconds;
    }

    // A timecode label has three digits of hours at most, so a time of 1,000
    // hours or more could be read but not written back; positions that far
    // out are a slip, and a run would carry them into every track.
    static void refuseFarOut(const Json& value, double seconds, const std::string& place)
    {
        constexpr double limit = 1000.0 * 3600.0;
        if (!(seconds < limit))
            throw Failure{place, value.dump() + " lies 1,000 hours or more from midnight, past the last timecode a "
                                                "session can hold (999 hours)"};
    }

    // A position: timecode text on the timeline, or seconds after the start.
    double time(const Json& value, const std::string& place)
    {
        double seconds = 0.0;
        if (value.is_string()) {
            std::int64_t frames = 0;
            if (!rate.parseLabel(value.get<std::string>(), frames))
                throw Failure{place, quote(value.get<std::string>()) + " is no timecode at " + rate.describe()};
            seconds = startFrame ? rate.frameToSeconds(frames - *startFrame) : rate.frameToSeconds(frames) - start;
        } else {
            seconds = numberOf(value, place);
        }
        if (seconds < 0.0)
            throw Failure{place, "lies before the project start"};
        refuseFarOut(value, start + seconds, place);
        return seconds;
    }

    // A length: timecode text counted from zero, or seconds.
    double duration(const Json& value, const std::string& place)
    {
        double seconds = 0.0;
        if (value.is_string()) {
            std::int64_t frames = 0;
            if (!rate.parseLabel(value.get<std::string>(), frames))
                throw Failure{place, quote(value.get<std::string>()) + " is no timecode at " + rate.describe()};
            seconds = rate.frameToSeconds(frames);
        } else {
            seconds = numberOf(value, place);
        }
        if (seconds < 0.0)
            throw Failure{place, "must not be negative"};
        refuseFarOut(value, seconds, place);
        return seconds;
    }

    void attributes(const Json& value, const std::string& place, SimObject& node)
    {
        if (!value.is_object())
            throw Failure{place, "must be an object"};
        for (const auto& [name, item] : value.items()) {
            const std::string here = place + "/" + escapeKey(name);
            Kelmar::FVariant attribute;
            IPtr<SimStorage> storage;
            std::u16string wide;
            if (item.is_number_integer()) {
                attribute.setInt(item.get<std::int64_t>());
            } else if (item.is_number_float()) {
                attribute.setFloat(numberOf(item, here));
            } else if (item.is_string()) {
                attribute.setString8(textOf(item, here).c_str(), true);
            } else if (item.is_object() && item.size() == 1 && item.contains("text16")) {
                wide = Kelmar::String::utf8ToUtf16(textOf(item["text16"], here + "/text16"));
                attribute.setString16(wide.c_str(), true);
            } else if (item.is_object() && item.size() == 1 && item.contains("storage")) {
                storage = owned(new SimStorage);
                const Json& blocks = item["storage"];
                if (!blocks.is_object())
                    throw Failure{here + "/storage", "must be an object"};
                for (const auto& [block, data] : blocks.items()) {
                    const std::string blockPlace = here + "/storage/" + escapeKey(block);
                    std::vector<unsigned char> bytes;
                    if (!Base64::decode(textOf(data, blockPlace), bytes))
                        throw Failure{blockPlace, "is not base64"};
                    storage->setBlock(block, std::move(bytes));
                }
                attribute.setObject(static_cast<Kelmar::IStorage*>(storage.get()), true);
            } else {
                throw Failure{here, "must be a number, text, {\"text16\": text} or {\"storage\": {...}}"};
            }
            node.restoreAttribute(name, &attribute);
        }
    }

    void mediaPool(const Json& value, const std::string& place, SimMediaPool& target)
    {
        const Json& list = arrayOf(value, place);
        for (std::size_t i = 0; i < list.size(); ++i) {
            ObjectReader fields(list[i], place + "/" + std::to_string(i));
            SimPoolClip::Info info;
            info.id = integerOf(fields.need("id"), fields.at("id"));
            if (info.id <= 0)
                throw Failure{fields.at("id"), "must be above 0"};
            if (info.id > SimMediaPool::largestId)
                throw Failure{fields.at("id"), "must be at most " + std::to_string(SimMediaPool::largestId)};
            info.kind = textOf(fields.need("kind"), fields.at("kind"));
            if (info.kind != "video" && info.kind != "audio")
                throw Failure{fields.at("kind"), quote(info.kind) + " is no clip kind (\"video\" or \"audio\")"};
            info.name = Kelmar::String::utf8ToUtf16(textOf(fields.need("name"), fields.at("name")));
            info.path = Kelmar::String::utf8ToUtf16(textOf(fields.need("path"), fields.at("path")));
            info.length = duration(fields.need("length"), fields.at("length"));
            fields.finish();
            if (!target.insert(info))
                throw Failure{fields.at("id"), "clip " + std::to_string(info.id) + " is in the pool twice"};
        }
    }

    // The kind named `text`, one of `kinds` by their names in the file.
    static ObjectKind kindOf(const std::string& text, std::initializer_list<ObjectKind> kinds, const char* what,
                             const std::string& place)
    {
        std::string names;
        for (const ObjectKind kind : kinds) {
            if (text == kindName(kind))
                return kind;
            names += (names.empty() ? "" : ", ") + std::string(kindName(kind));
        }
        throw Failure{place, quote(text) + " is no " + what + " kind (" + names + ")"};
    }

    // `depth` counts the folders around the track.
    IPtr<SimObject> track(const Json& value, const std::string& place, int depth)
    {
        ObjectReader fields(value, place);
        const ObjectKind kind = kindOf(textOf(fields.need("kind"), fields.at("kind")),
                                       {ObjectKind::AudioTrack, ObjectKind::VideoTrack, ObjectKind::MarkerTrack,
                                        ObjectKind::Folder, ObjectKind::RulerTrack},
                                       "track", fields.at("kind"));
        IPtr<SimObject> result = SimObject::create(kind);
        // The track's events and points lie together, in time order.
        const NodeHeap::Placing placing(result->heapPlace());
        SimObject::Fields values;
        if (const Json* name = fields.find("name"))
            values.name = Kelmar::String::utf8ToUtf16(textOf(*name, fields.at("name")));
        if (const Json* locked = fields.find("locked"))
            values.locked = flagOf(*locked, fields.at("locked"));
        result->restoreFields(values);
        if (const Json* selected = fields.find("selected"))
            result->setSelectedFlag(flagOf(*selected, fields.at("selected")));
        if (const Json* attributeList = fields.find("attributes"))
            attributes(*attributeList, fields.at("attributes"), *result);

        if (kind == ObjectKind::Folder) {
            if (depth >= maxFolderDepth)
                throw Failure{place, "folders are nested more than " + std::to_string(maxFolderDepth) + " deep"};
            if (const Json* tracks = fields.find("tracks")) {
                const Json& list = arrayOf(*tracks, fields.at("tracks"));
                for (std::size_t i = 0; i < list.size(); ++i)
                    result->appendChild(track(list[i], fields.at("tracks") + "/" + std::to_string(i), depth + 1));
            }
        } else if (kind != ObjectKind::RulerTrack) {
            if (const Json* events = fields.find("events")) {
                const Json& list = arrayOf(*events, fields.at("events"));
                result->reserveChildren(list.size());
                for (std::size_t i = 0; i < list.size(); ++i)
                    result->appendChild(event(list[i], fields.at("events") + "/" + std::to_string(i), *result));
            }
            if (const Json* automation = fields.find("automation")) {
                const Json& list = arrayOf(*automation, fields.at("automation"));
                for (std::size_t i = 0; i < list.size(); ++i)
                    result->appendAutomation(
                        automationTrack(list[i], fields.at("automation") + "/" + std::to_string(i)));
            }
        }
        fields.finish();
        return result;
    }

    // An event of `container`; inside a part, times are lengths from the
    // part's start.
    IPtr<SimObject> event(const Json& value, const std::string& place, const SimObject& container)
    {
        ObjectReader fields(value, place);
        const std::string kindText = textOf(fields.need("kind"), fields.at("kind"));
        const ObjectKind kind = kindOf(kindText,
                                       {ObjectKind::AudioEvent, ObjectKind::Part, ObjectKind::VideoEvent,
                                        ObjectKind::PointMarker, ObjectKind::RangeMarker},
                                       "event", fields.at("kind"));
        if (!container.accepts(kind))
            throw Failure{fields.at("kind"), "a " + std::string(kindName(container.kind())) + " "
                                                 + (container.kind() == ObjectKind::Part ? "part" : "track")
                                                 + " cannot hold an event of kind " + quote(kindText)};
        const bool inPart = container.kind() == ObjectKind::Part;
        const auto position = [&](const Json& item, const std::string& here) {
            return inPart ? duration(item, here) : time(item, here);
        };
        IPtr<SimObject> result = SimObject::create(kind);
        SimObject::Fields values;
        if (const Json* name = fields.find("name"))
            values.name = Kelmar::String::utf8ToUtf16(textOf(*name, fields.at("name")));
        values.start = position(fields.need("start"), fields.at("start"));
        values.end = values.start;
        if (kind != ObjectKind::PointMarker) {
            values.end = position(fields.need("end"), fields.at("end"));
            if (values.end < values.start)
                throw Failure{place, "the event ends before it starts"};
            if (values.end == values.start && kind != ObjectKind::RangeMarker)
                throw Failure{place, "the event has no length"};
        }
        if (inPart && values.end > container.get().end - container.get().start + 1e-9)
            throw Failure{place, "the event lies outside its part"};
        if (kind == ObjectKind::AudioEvent) {
            values.file = textOf(fields.need("file"), fields.at("file"));
            if (values.file.empty())
                throw Failure{fields.at("file"), "must name a file"};
            if (const Json* joined = fields.find("joinedToNext"))
                values.joinedToNext = flagOf(*joined, fields.at("joinedToNext"));
        }
        if (kind == ObjectKind::AudioEvent || kind == ObjectKind::VideoEvent) {
            if (const Json* offset = fields.find("offset")) {
                values.offset = numberOf(*offset, fields.at("offset"));
                if (values.offset < 0.0)
                    throw Failure{fields.at("offset"), "must not be negative"};
            }
        }
        if (kind == ObjectKind::VideoEvent) {
            const std::int64_t clip = integerOf(fields.need("clip"), fields.at("clip"));
            if (!pool->findClip(clip))
                throw Failure{fields.at("clip"), "clip " + std::to_string(clip) + " is not in the media pool"};
            values.clipId = static_cast<std::int32_t>(clip);
        }
        result->restoreFields(values);
        if (const Json* attributeList = fields.find("attributes"))
            attributes(*attributeList, fields.at("attributes"), *result);
        if (kind == ObjectKind::Part) {
            if (const Json* events = fields.find("events")) {
                const Json& list = arrayOf(*events, fields.at("events"));
                for (std::size_t i = 0; i < list.size(); ++i)
                    result->appendChild(event(list[i], fields.at("events") + "/" + std::to_string(i), *result));
            }
        }
        fields.finish();
        return result;
    }

    IPtr<SimObject> automationTrack(const Json& value, const std::string& place)
    {
        ObjectReader fields(value, place);
        IPtr<SimObject> result = SimObject::create(ObjectKind::AutomationTrack);
        SimObject::Fields values;
        if (const Json* name = fields.find("name"))
            values.name = Kelmar::String::utf8ToUtf16(textOf(*name, fields.at("name")));
        const std::int64_t curve = integerOf(fields.need("curveType"), fields.at("curveType"));
        if (curve < 0 || curve > 255)
            throw Failure{fields.at("curveType"), "must be between 0 and 255"};
        values.curveType = static_cast<std::uint8_t>(curve);
        result->restoreFields(values);
        if (const Json* points = fields.find("points")) {
            const Json& list = arrayOf(*points, fields.at("points"));
            double previous = 0.0;
            for (std::size_t i = 0; i < list.size(); ++i) {
                const std::string here = fields.at("points") + "/" + std::to_string(i);
                ObjectReader pointFields(list[i], here);
                const double at = time(pointFields.need("time"), pointFields.at("time"));
                if (i > 0 && at < previous)
                    throw Failure{here, "the points are not in time order"};
                previous = at;
                const double level = numberOf(pointFields.need("value"), pointFields.at("value"));
                bool segmentEnd = false;
                if (const Json* flag = pointFields.find("segmentEnd"))
                    segmentEnd = flagOf(*flag, pointFields.at("segmentEnd"));
                pointFields.finish();
                result->appendChild(SimObject::makePoint(at, level, segmentEnd));
            }
        }
        fields.finish();
        return result;
    }

    SimHost& host;
    SimFrameRate rate;
    double start = 0.0;
    std::optional<std::int64_t> startFrame;
    SimMediaPool* pool = nullptr;
};

// Line and column of a byte position, for syntax errors.
std::string lineAndColumn(std::string_view text, std::size_t position)
{
    int line = 1;
    int column = 1;
    for (std::size_t i = 0; i < position && i < text.size(); ++i) {
        if (text[i] == '\n') {
            ++line;
            column = 1;
        } else {
            ++column;
        }
    }
    return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

// ---- Parsing
//
// The text is parsed with a SAX handler of our own rather than Json::parse,
// so that what the library would take silently or report without a place is
// refused with one: numbers out of range (1e400, 18446744073709551615), a
// number that underflows to 0, a key given twice, a NUL in a key, and
// nesting too deep to be read safely.

// A character iterator that notes how far the parser has read, so that a
// handler knows the line it is at.
class CountingIterator {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    CountingIterator(const char* at, const char** furthest) : at(at), furthest(furthest) {}
    reference operator*() const { return *at; }
    CountingIterator& operator++()
    {
        ++at;
        if (at > *furthest)
            *furthest = at;
        return *this;
    }
    CountingIterator operator++(int)
    {
        CountingIterator before = *this;
        ++*this;
        return before;
    }
    bool operator==(const CountingIterator& other) const { return at == other.at; }
    bool operator!=(const CountingIterator& other) const { return at != other.at; }

private:
    const char* at;
    const char** furthest;
};

// Where the parser is, as a JSON pointer.
class PlaceTracker {
public:
    // The place of the value that starts now.
    std::string next() const
    {
        if (levels.empty())
            return "";
        const Level& top = levels.back();
        return top.place + "/" + (top.isObject ? escapeKey(top.key) : std::to_string(top.count));
    }
    std::size_t depth() const { return levels.size(); }
    void enter(bool isObject) { levels.push_back({next(), isObject, {}, 0}); }
    void leave()
    {
        levels.pop_back();
        done();
    }
    void key(const std::string& name) { levels.back().key = name; }
    // A value of the innermost list is complete.
    void done()
    {
        if (!levels.empty() && !levels.back().isObject)
            ++levels.back().count;
    }

private:
    struct Level {
        std::string place;
        bool isObject;
        std::string key;
        std::size_t count;
    };
    std::vector<Level> levels;
};

// A parse error of the text itself, or a value refused while parsing.
struct ParseFailure {
    std::size_t position = 0; // bytes read when it was found
    std::string place;        // JSON pointer, empty for a syntax error
    std::string message;
};

bool isIntegerLiteral(const std::string& raw)
{
    return raw.find_first_of(".eE") == std::string::npos;
}

// True if a number literal's digits before any exponent are all zero.
bool hasZeroMantissa(const std::string& raw)
{
    for (char c : raw) {
        if (c == 'e' || c == 'E')
            break;
        if (c >= '1' && c <= '9')
            return false;
    }
    return true;
}

// Builds the document, refusing what would be altered or lost.
class DocumentBuilder : public nlohmann::json_sax<Json> {
public:
    explicit DocumentBuilder(const char* const& furthest, const char* begin) : furthest(furthest), begin(begin) {}

    Json root;
    std::optional<ParseFailure> failure;

    bool null() override { return put(Json(nullptr)); }
    bool boolean(bool value) override { return put(value); }
    bool number_integer(number_integer_t value) override { return put(value); }
    bool number_unsigned(number_unsigned_t value) override
    {
        if (value > static_cast<number_unsigned_t>(std::numeric_limits<std::int64_t>::max()))
            return refuse(std::to_string(value) + " is out of range (whole numbers go up to 9223372036854775807)");
        return put(static_cast<number_integer_t>(value));
    }
    bool number_float(number_float_t value, const string_t& raw) override
    {
        // The library falls back to a double for whole numbers past 64 bits.
        if (isIntegerLiteral(raw))
            return refuse(raw + " is out of range (whole numbers go up to 9223372036854775807)");
        if (value == 0.0 && !hasZeroMantissa(raw))
            return refuse(raw + " is too small to be held; it would be read as 0");
        return put(value);
    }
    bool string(string_t& value) override { return put(std::move(value)); }
    bool binary(binary_t&) override { return refuse("binary values are not JSON text"); }
    bool start_object(std::size_t) override { return open(Json::object()); }
    bool key(string_t& name) override
    {
        Json& object = *stack.back();
        if (name.find('\0') != std::string::npos) {
            std::string shown;
            for (char c : name)
                shown += c == '\0' ? std::string("\\u0000") : std::string(1, c);
            places.key(shown);
            return refuse("a field name holds a NUL character (\\u0000)");
        }
        places.key(name);
        // The library would keep the last one and drop the first unseen.
        if (object.contains(name))
            return refuse("is given twice in one object");
        pendingKey = name;
        return true;
    }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(Json::array()); }
    bool end_array() override { return close(); }
    bool parse_error(std::size_t position, const std::string&, const nlohmann::json::exception& error) override
    {
        if (error.id == 406) {
            // A number past the range of a double: "number overflow parsing '1e400'".
            std::string what = error.what();
            const auto quoteAt = what.find('\'');
            const std::string literal =
                quoteAt == std::string::npos ? "the number" : what.substr(quoteAt + 1, what.size() - quoteAt - 2);
            failure = ParseFailure{position, places.next(), literal + " is out of range"};
            return false;
        }
        // The library's message starts with its own prefix; the part after
        // the last colon says what is wrong.
        std::string what = error.what();
        const auto colon = what.rfind(": ");
        if (colon != std::string::npos)
            what = what.substr(colon + 2);
        failure = ParseFailure{position, "", "not JSON: " + what};
        return false;
    }

private:
    bool refuse(std::string message)
    {
        failure = ParseFailure{static_cast<std::size_t>(furthest - begin), places.next(), std::move(message)};
        return false;
    }

    Json* place(Json&& value)
    {
        Json* placed = nullptr;
        if (stack.empty()) {
            root = std::move(value);
            placed = &root;
        } else if (stack.back()->is_object()) {
            placed = &((*stack.back())[pendingKey] = std::move(value));
        } else {
            stack.back()->push_back(std::move(value));
            placed = &stack.back()->back();
        }
        return placed;
    }
    bool put(Json value)
    {
        place(std::move(value));
        places.done();
        return true;
    }
    bool open(Json&& container)
    {
        if (places.depth() >= maxJsonDepth) {
            failure = ParseFailure{static_cast<std::size_t>(furthest - begin), places.next(),
                                   "is nested more than " + std::to_string(maxJsonDepth) + " levels deep"};
            return false;
        }
        const bool isObject = container.is_object();
        stack.push_back(place(std::move(container)));
        places.enter(isObject);
        return true;
    }
    bool close()
    {
        // A feature's document holds hundreds of thousands of small objects
        // whose lists of fields grew by doubling: each keeps only its own.
        Json& closed = *stack.back();
        if (closed.is_object())
            closed.get_ref<Json::object_t&>().shrink_to_fit();
        else
            closed.get_ref<Json::array_t&>().shrink_to_fit();
        stack.pop_back();
        places.leave();
        return true;
    }
    const char* const& furthest;
    const char* begin;
    PlaceTracker places;
    std::vector<Json*> stack; // the open objects and lists, innermost last
    std::string pendingKey;
};

// Finds the line of the value at a JSON pointer in text that is known to
// parse, for the messages of the checks that follow parsing.
class Locator : public nlohmann::json_sax<Json> {
public:
    Locator(std::string wanted, const char* const& furthest, const char* begin)
        : wanted(std::move(wanted)), furthest(furthest), begin(begin)
    {
    }

    std::optional<std::size_t> position;

    bool null() override { return value(); }
    bool boolean(bool) override { return value(); }
    bool number_integer(number_integer_t) override { return value(); }
    bool number_unsigned(number_unsigned_t) override { return value(); }
    bool number_float(number_float_t, const string_t&) override { return value(); }
    bool string(string_t&) override { return value(); }
    bool binary(binary_t&) override { return value(); }
    bool start_object(std::size_t) override { return open(true); }
    bool key(string_t& name) override
    {
        places.key(name);
        return true;
    }
    bool end_object() override
    {
        places.leave();
        return true;
    }
    bool start_array(std::size_t) override { return open(false); }
    bool end_array() override
    {
        places.leave();
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception&) override { return false; }

private:
    bool found()
    {
        if (places.next() != wanted)
            return false;
        position = static_cast<std::size_t>(furthest - begin);
        return true;
    }
    bool value()
    {
        if (found())
            return false;
        places.done();
        return true;
    }
    bool open(bool isObject)
    {
        if (found())
            return false;
        places.enter(isObject);
        return true;
    }

    std::string wanted;
    const char* const& furthest;
    const char* begin;
    PlaceTracker places;
};

// The line of a value in the text, counted from 1; the byte position is
// where the parser had read to, one past the value's last character (or
// past the character after a number, which the parser looks at to end it).
int lineAt(std::string_view text, std::size_t position)
{
    const std::size_t end = std::min(position > 0 ? position - 1 : 0, text.size());
    return 1 + static_cast<int>(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(end), '\n'));
}

std::optional<int> lineOf(std::string_view text, const std::string& place)
{
    const char* begin = text.data();
    const char* furthest = begin;
    Locator locator(place, furthest, begin);
    try {
        Json::sax_parse(CountingIterator(begin, &furthest), CountingIterator(begin + text.size(), &furthest), &locator);
    } catch (const nlohmann::json::exception&) {
        return std::nullopt;
    }
    if (!locator.position)
        return std::nullopt;
    return lineAt(text, *locator.position);
}

} // namespace

IPtr<SimProject> SessionFile::read(SimHost& host, std::string_view text, const std::string& origin,
                                   std::string& error)
{
    const char* begin = text.data();
    const char* furthest = begin;
    DocumentBuilder builder(furthest, begin);
    bool parsed = false;
    try {
        parsed = Json::sax_parse(CountingIterator(begin, &furthest), CountingIterator(begin + text.size(), &furthest),
                                 &builder);
    } catch (const nlohmann::json::exception& e) {
        builder.failure = ParseFailure{static_cast<std::size_t>(furthest - begin), "", std::string("not JSON: ") + e.what()};
    } catch (const std::bad_alloc&) {
        builder.failure = ParseFailure{static_cast<std::size_t>(furthest - begin), "", "too large to be read"};
    }
    if (!parsed || builder.failure) {
        const ParseFailure failure =
            builder.failure.value_or(ParseFailure{static_cast<std::size_t>(furthest - begin), "", "not JSON"});
        if (failure.place.empty()) {
            // A syntax error: the place is the line and column, there is no
            // JSON pointer yet.
            error = origin + ": " + lineAndColumn(text, failure.position > 0 ? failure.position - 1 : 0) + ": "
                    + failure.message;
        } else {
            error = origin + ": line " + std::to_string(lineAt(text, failure.position)) + ": " + failure.place + ": "
                    + failure.message;
        }
        return nullptr;
    }

    std::string name = std::filesystem::path(origin).stem().string();
    std::string place = "/";
    std::string message;
    try {
        return Reader(host).project(builder.root, name);
    } catch (const Failure& failure) {
        place = failure.place.empty() ? "/" : failure.place;
        message = failure.message;
    } catch (const nlohmann::json::exception& e) {
        // No check should let one through; if one does, it still names the file.
        message = e.what();
    }
    const std::optional<int> line = lineOf(text, place == "/" ? "" : place);
    error = origin + ": " + (line ? "line " + std::to_string(*line) + ": " : "") + place + ": " + message;
    return nullptr;
}

IPtr<SimProject> SessionFile::load(SimHost& host, const std::string& path, std::string& error)
{
    std::string content;
    const platform::FileReader::Outcome outcome = platform::FileReader::read(path, content);
    if (!outcome.ok) {
        error = outcome.message(path);
        return nullptr;
    }
    IPtr<SimProject> project = read(host, content, path, error);
    if (project)
        project->setDocumentPath(Kelmar::String::utf8ToUtf16(path));
    return project;
}

} // namespace montala::sim
