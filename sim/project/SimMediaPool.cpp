#include "sim/project/SimMediaPool.h"

#include "kelmar/base/IDependent.h"
#include "sim/services/SimClassFactory.h"
#include "sim/services/SimDependencyRegistry.h"
#include "sim/services/SimFailures.h"
#include "sim/services/SimHost.h"
#include "sim/services/SimVideoService.h"
#include "sim/project/SimPath.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace montala::sim {

using namespace Kelmar;

namespace {

bool matches(SimPoolClip& clip, const char8* kind)
{
    return !kind || clip.isKind(kind);
}

} // namespace

SimMediaPool::SimMediaPool(SimHost& host)
    : host(&host), failures(host.failurePlanShared()), videos(host.classFactory().videosShared())
{
}

tresult SimMediaPool::queryInterface(const FUID& iid, void** obj)
{
    if (obj && failures->isWithheld(iid)) {
        *obj = nullptr;
        return kNoInterface;
    }
    if (answerInterface<IMediaPool>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

int32 SimMediaPool::getClipCount(const char8* kind)
{
    return static_cast<int32>(std::count_if(list.begin(), list.end(), [kind](auto& clip) { return matches(*clip, kind); }));
}

IPoolClip* SimMediaPool::getClip(int32 index, const char8* kind)
{
    if (index < 0)
        return nullptr;
    for (auto& clip : list) {
        if (matches(*clip, kind) && index-- == 0) {
            clip->addRef();
            return clip.get();
        }
    }
    return nullptr;
}

IPoolClip* SimMediaPool::addClip(IPath* path)
{
    auto* simPath = dynamic_cast<SimPath*>(path);
    if (!simPath || simPath->value().empty())
        return nullptr;
    const std::u16string& text = simPath->value();
    const auto slash = text.find_last_of(u"/\\");
    SimPoolClip::Info info;
    info.id = nextId();
    if (info.id > largestId)
        return nullptr;
    info.path = text;
    info.name = slash == std::u16string::npos ? text : text.substr(slash + 1);
    info.kind = kindOfFile(text);
    info.length = defaultLength;
    auto clip = owned(new SimPoolClip(info));
    list.push_back(clip);
    publish(*clip);
    host->dependencies().notify(static_cast<IMediaPool*>(this), static_cast<IMediaPool*>(this));
    return clip.take();
}

bool SimMediaPool::insert(SimPoolClip::Info info)
{
    if (info.id == 0)
        info.id = nextId();
    if (info.id > largestId || findClip(info.id))
        return false;
    list.push_back(owned(new SimPoolClip(std::move(info))));
    publish(*list.back());
    return true;
}

void SimMediaPool::setMediaFolder(const std::string& folder)
{
    mediaFolder = folder;
    for (const auto& clip : list)
        publish(*clip);
}

void SimMediaPool::publish(const SimPoolClip& clip)
{
    if (!videos || clip.info().kind != "video")
        return;
    std::filesystem::path file(Kelmar::String::utf16ToUtf8(clip.info().path));
    if (file.is_relative() && !mediaFolder.empty())
        file = std::filesystem::path(mediaFolder) / file;
    videos->setFile(clip.id(), file.lexically_normal().string());
}

SimPoolClip* SimMediaPool::findClip(std::int64_t id) const
{
    for (const auto& clip : list)
        if (clip->id() == id)
            return clip.get();
    return nullptr;
}

std::int64_t SimMediaPool::nextId() const
{
    std::int64_t highest = 0;
    for (const auto& clip : list)
        highest = std::max(highest, clip->id());
    return highest + 1;
}

std::string SimMediaPool::kindOfFile(std::u16string_view path)
{
    const auto dot = path.find_last_of(u'.');
    std::string extension;
    if (dot != std::u16string_view::npos)
        for (char16 c : path.substr(dot + 1))
            extension += static_cast<char>(std::tolower(c < 128 ? static_cast<int>(c) : '?'));
    static const char* const audio[] = {"wav", "aif", "aiff", "bwf", "mp3", "flac"};
    for (const char* candidate : audio)
        if (extension == candidate)
            return "audio";
    return "video";
}

} // namespace montala::sim
