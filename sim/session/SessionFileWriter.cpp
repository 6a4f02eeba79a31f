#include "sim/session/SessionFile.h"

#include "kelmar/base/FVariant.h"
#include "kelmar/base/String.h"
#include "sim/session/Base64.h"
#include "sim/project/SimMediaPool.h"
#include "sim/services/SimHost.h"
#include "sim/project/SimProjectManager.h"
#include "sim/project/SimStorage.h"
#include "platform/SafeFileWriter.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <string>

// Writing a session file: canonical JSON, laid out for a person to read, and
// saved through a temporary file.

namespace montala::sim {

using Json = nlohmann::ordered_json;

namespace {

class Writer {
public:
    explicit Writer(SimProject& project) : project(project), rate(project.frameRate())
    {
        startFrame = rate.exactFrame(project.getProjectStart());
    }

    // The document without its tracks, which are written one at a time
    // (see writeDocument).
    Json head()
    {
        Json root;
        root["format"] = SessionFile::formatName;
        root["version"] = SessionFile::version;
        root["name"] = Kelmar::String::utf16ToUtf8(project.get().name);
        Json rateJson;
        rateJson["fps"] = rate.fps;
        if (rate.pullDown)
            rateJson["pullDown"] = true;
        if (rate.dropFrame)
            rateJson["dropFrame"] = true;
        root["frameRate"] = rateJson;
        root["start"] = startFrame ? Json(rate.label(*startFrame)) : Json(project.getProjectStart());
        root["end"] = time(project.length());
        root["locators"] = Json{{"left", time(project.leftLocator)}, {"right", time(project.rightLocator)}};
        Json cycle{{"left", time(project.cycleLeft)}, {"right", time(project.cycleRight)}};
        if (project.cycleOn)
            cycle["on"] = true;
        root["cycle"] = cycle;
        root["cursor"] = time(project.cursor);
        if (!project.attributes().empty())
            root["attributes"] = attributes(project);
        if (!project.mediaPool().clips().empty()) {
            Json pool = Json::array();
            for (const auto& clip : project.mediaPool().clips()) {
                const SimPoolClip::Info& info = clip->info();
                pool.push_back(Json{{"id", info.id},
                                    {"kind", info.kind},
                                    {"name", Kelmar::String::utf16ToUtf8(info.name)},
                                    {"path", Kelmar::String::utf16ToUtf8(info.path)},
                                    {"length", duration(info.length)}});
            }
            root["mediaPool"] = pool;
        }
        return root;
    }

private:
    Json time(double seconds) const
    {
        if (startFrame)
            if (const auto frame = rate.exactFrame(seconds))
                return rate.label(*startFrame + *frame);
        return seconds;
    }

    Json duration(double seconds) const
    {
        if (const auto frame = rate.exactFrame(seconds); frame && *frame >= 0)
            return rate.label(*frame);
        return seconds;
    }

    static Json attributes(const SimObject& node)
    {
        Json result = Json::object();
        for (const auto& [name, value] : node.attributes()) {
            if (value.isInt()) {
                result[name] = value.getInt();
            } else if (value.isFloat()) {
                result[name] = value.getFloat();
            } else if (value.isString8()) {
                result[name] = value.getString8() ? value.getString8() : "";
            } else if (value.isString16()) {
                result[name] = Json{{"text16", Kelmar::String::utf16ToUtf8(value.getString16() ? value.getString16() : u"")}};
            } else if (auto* storage = dynamic_cast<SimStorage*>(value.getObject())) {
                Json blocks = Json::object();
                for (const auto& [block, bytes] : storage->blocks())
                    blocks[block] = Base64::encode(bytes);
                result[name] = Json{{"storage", blocks}};
            }
        }
        return result;
    }

public:
    Json track(SimObject& node)
    {
        Json result;
        result["kind"] = kindName(node.kind());
        result["name"] = Kelmar::String::utf16ToUtf8(node.get().name);
        if (node.get().locked)
            result["locked"] = true;
        if (node.selectedFlag())
            result["selected"] = true;
        if (!node.attributes().empty())
            result["attributes"] = attributes(node);
        if (node.kind() == ObjectKind::Folder) {
            Json tracks = Json::array();
            for (const auto& child : node.children())
                tracks.push_back(track(*child));
            result["tracks"] = std::move(tracks);
            return result;
        }
        if (node.kind() == ObjectKind::RulerTrack)
            return result;
        if (!node.automation().empty()) {
            Json automation = Json::array();
            for (const auto& automationTrack : node.automation()) {
                Json points = Json::array();
                for (const auto& point : automationTrack->children()) {
                    Json pointJson{{"time", time(point->get().start)}, {"value", point->get().value}};
                    if (point->get().segmentEnd)
                        pointJson["segmentEnd"] = true;
                    points.push_back(std::move(pointJson));
                }
                automation.push_back(Json{{"name", Kelmar::String::utf16ToUtf8(automationTrack->get().name)},
                                          {"curveType", automationTrack->get().curveType},
                                          {"points", std::move(points)}});
            }
            result["automation"] = std::move(automation);
        }
        Json events = Json::array();
        for (const auto& child : node.children())
            events.push_back(event(*child, false));
        result["events"] = std::move(events);
        return result;
    }

private:
    Json event(SimObject& node, bool inPart)
    {
        const SimObject::Fields& f = node.get();
        const auto position = [&](double seconds) { return inPart ? duration(seconds) : time(seconds); };
        Json result;
        result["kind"] = kindName(node.kind());
        if (!f.name.empty())
            result["name"] = Kelmar::String::utf16ToUtf8(f.name);
        result["start"] = position(f.start);
        if (node.kind() != ObjectKind::PointMarker)
            result["end"] = position(f.end);
        if (node.kind() == ObjectKind::AudioEvent) {
            result["file"] = f.file;
            result["offset"] = f.offset;
            if (f.joinedToNext)
                result["joinedToNext"] = true;
        }
        if (node.kind() == ObjectKind::VideoEvent) {
            result["clip"] = f.clipId;
            result["offset"] = f.offset;
        }
        if (!node.attributes().empty())
            result["attributes"] = attributes(node);
        if (node.kind() == ObjectKind::Part) {
            Json events = Json::array();
            for (const auto& child : node.children())
                events.push_back(event(*child, true));
            result["events"] = std::move(events);
        }
        return result;
    }

    SimProject& project;
    SimFrameRate rate;
    std::optional<std::int64_t> startFrame;
};

// JSON laid out for reading: objects and lists one entry per line, except
// those that hold only plain values, which take one line each (an event, a
// point, a frame rate).
bool isFlat(const Json& value)
{
    if (!value.is_structured())
        return true;
    for (const auto& item : value)
        if (item.is_structured())
            return false;
    return true;
}

void print(const Json& value, int indent, std::string& out)
{
    if (value.is_object() && !value.empty() && !isFlat(value)) {
        out += "{\n";
        bool first = true;
        for (const auto& [key, item] : value.items()) {
            if (!first)
                out += ",\n";
            first = false;
            out += std::string(indent + 2, ' ') + Json(key).dump() + ": ";
            print(item, indent + 2, out);
        }
        out += "\n" + std::string(indent, ' ') + "}";
    } else if (value.is_array() && !value.empty() && !isFlat(value)) {
        out += "[\n";
        for (std::size_t i = 0; i < value.size(); ++i) {
            if (i > 0)
                out += ",\n";
            out += std::string(indent + 2, ' ');
            print(value[i], indent + 2, out);
        }
        out += "\n" + std::string(indent, ' ') + "]";
    } else if (value.is_object() && !value.empty()) {
        out += "{";
        bool first = true;
        for (const auto& [key, item] : value.items()) {
            out += first ? "" : ", ";
            first = false;
            out += Json(key).dump() + ": " + item.dump();
        }
        out += "}";
    } else if (value.is_array() && !value.empty()) {
        out += "[";
        for (std::size_t i = 0; i < value.size(); ++i)
            out += (i > 0 ? ", " : "") + value[i].dump();
        out += "]";
    } else {
        out += value.dump();
    }
}

// Writes the document in pieces of about `pieceSize` bytes: the tracks one
// at a time, so that a feature's session is never whole in memory, neither
// as JSON nor as text. The bytes are those that print() makes of the whole
// document: the document always holds objects, so it and its list of tracks
// take one entry per line.
void writeDocument(SimProject& project, const platform::SafeFileWriter::Put& put)
{
    constexpr std::size_t pieceSize = 1 << 20;
    Writer writer(project);
    std::string out = "{\n";
    const Json head = writer.head();
    for (const auto& [key, item] : head.items()) {
        out += "  " + Json(key).dump() + ": ";
        print(item, 2, out);
        out += ",\n";
    }
    out += "  \"tracks\": ";
    const SimObject::List& tracks = project.children();
    if (tracks.empty()) {
        out += "[]";
    } else {
        out += "[\n";
        for (std::size_t i = 0; i < tracks.size(); ++i) {
            if (i > 0)
                out += ",\n";
            out += "    ";
            print(writer.track(*tracks[i]), 4, out);
            if (out.size() >= pieceSize) {
                put(out);
                out.clear();
            }
        }
        out += "\n  ]";
    }
    out += "\n}\n";
    put(out);
}

} // namespace

std::string SessionFile::write(SimProject& project)
{
    std::string out;
    writeDocument(project, [&out](std::string_view piece) { out += piece; });
    return out;
}

bool SessionFile::save(SimProject& project, const std::string& path, std::string& error,
                       const std::function<bool()>& stop)
{
    // As the host does before it writes a project: its storage notifications
    // hear of it first, so that what a plug-in stores then is in the file.
    SimProjectManager& manager = project.host().projectManager();
    for (const auto& open : manager.openProjects()) {
        if (open.get() == &project) {
            manager.saveProject(&project);
            break;
        }
    }
    const platform::SafeFileWriter::Outcome outcome =
        platform::SafeFileWriter::write(path, [&](const platform::SafeFileWriter::Put& put) {
            writeDocument(project, put);
            return !(stop && stop());
        });
    if (outcome.error == platform::SafeFileWriter::Error::Stopped) {
        error.clear();
        return false;
    }
    if (!outcome.ok()) {
        error = outcome.message();
        return false;
    }
    return true;
}

} // namespace montala::sim
