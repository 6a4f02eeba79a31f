#include "host/MediaPool.h"

#include "host/HostCalls.h"
#include "util/StringUtil.h"

#include "kelmar/base/IDependencyRegistry.h"
#include "kelmar/base/IPath.h"
#include "kelmar/base/String.h"

#include <cstring>
#include <vector>

namespace montala::host {

using util::Result;

namespace {

constexpr const char* videoKind = "video";
// Bytes the host may write for one path, terminator included.
constexpr int pathBufferBytes = 2048;

// The clip's path; NoInterface without one, HostCallFailed when the host
// cannot give its text.
std::u16string readPath(Kelmar::IPoolClip& clip)
{
    auto path = Kelmar::owned(clip.getPath());
    if (!path)
        throw Result::NoInterface;
    std::vector<Kelmar::char16> buffer(pathBufferBytes / sizeof(Kelmar::char16), 0);
    check(path->getText(buffer.data(), pathBufferBytes));
    buffer.back() = 0;
    return buffer.data();
}

std::u16string fileNameOf(const std::string& path)
{
    return util::StringUtil::getFileName(Kelmar::String::utf8ToUtf16(path));
}

} // namespace

MediaPool::MediaPool(Kelmar::IMediaPool* pool, Kelmar::IHostServices* services) : pool(pool), services(services)
{
    if (!pool && !services)
        return;
    auto registry = getService<Kelmar::IDependencyRegistry>(services);
    check(registry->addDependent(pool, this));
}

MediaPool::~MediaPool()
{
    if (!pool || !services)
        return;
    // A destructor reports nothing: a host that has lost its registry has
    // no dependents left to forget.
    void* answer = nullptr;
    if (services->getService(Kelmar::IDependencyRegistry::iid, &answer) == Kelmar::kResultOk && answer) {
        auto registry = Kelmar::owned(static_cast<Kelmar::IDependencyRegistry*>(answer));
        registry->removeDependent(pool, this);
    }
}

int MediaPool::getClipCount()
{
    if (!pool)
        return 0;
    return pool->getClipCount(videoKind);
}

Kelmar::IPtr<Kelmar::IPoolClip> MediaPool::getClip(int index)
{
    if (!pool || !services)
        throw Result::NotInitialized;
    if (index < 0 || index >= pool->getClipCount(videoKind))
        throw Result::InvalidArgument;
    auto clip = Kelmar::owned(pool->getClip(index, videoKind));
    if (!clip)
        throw Result::NoInterface;
    return clip;
}

std::string MediaPool::getClipPath(int index)
{
    return Kelmar::String::utf16ToUtf8(readPath(*getClip(index)));
}

std::string MediaPool::getClipName(int index)
{
    auto clip = getClip(index);
    Kelmar::String name;
    check(clip->getName(name));
    return name.toUtf8();
}

std::string MediaPool::getClipFileName(int index)
{
    return Kelmar::String::utf16ToUtf8(util::StringUtil::getFileName(readPath(*getClip(index))));
}

int64_t MediaPool::getClipId(int index)
{
    return getClip(index)->getId();
}

double MediaPool::getClipLength(int index)
{
    return getClip(index)->getLength();
}

void MediaPool::addListener(Listener* listener)
{
    if (listener)
        listeners.insert(listener);
}

void MediaPool::removeListener(Listener* listener)
{
    listeners.erase(listener);
}

bool MediaPool::addClip(const std::string& path)
{
    if (!pool || pool->getClipCount(videoKind) <= 0)
        return false;
    auto pathObject = getService<Kelmar::IPath>(services);
    check(pathObject->setText(Kelmar::String::utf8ToUtf16(path).c_str(), 0));
    auto clip = Kelmar::owned(pool->addClip(pathObject.get()));
    return static_cast<bool>(clip);
}

Kelmar::IPtr<Kelmar::IPoolClip> MediaPool::ensureClip(const std::string& path, int64_t id)
{
    const std::string name = Kelmar::String::utf16ToUtf8(fileNameOf(path));
    // Adding a file the pool already holds would give it a second entry.
    if (auto clip = findClip(name, id))
        return clip;
    if (!addClip(path))
        return {};
    return findClip(name, id);
}

Kelmar::IPtr<Kelmar::IPoolClip> MediaPool::findClip(const std::string& text, int64_t id)
{
    if (!pool)
        return {};
    const std::u16string wanted = Kelmar::String::utf8ToUtf16(text);
    const int count = pool->getClipCount(videoKind);
    for (int index = 0; index < count; ++index) {
        auto clip = Kelmar::owned(pool->getClip(index, videoKind));
        if (!clip || clip->getId() != id)
            continue;
        Kelmar::String name;
        if (clip->getName(name) == Kelmar::kResultOk && name.toUtf16() == wanted)
            return clip;
        // A clip whose path cannot be read is simply not this one.
        try {
            if (util::StringUtil::getFileName(readPath(*clip)) == wanted)
                return clip;
        } catch (Result::Type) {
        }
    }
    return {};
}

void MediaPool::update(Kelmar::FUnknown*, Kelmar::int32 message)
{
    if (message == Kelmar::IDependent::kChanged)
        notifyListeners();
}

void MediaPool::notifyListeners()
{
    // A listener may take itself out while it is told.
    const std::set<Listener*> told = listeners;
    for (Listener* listener : told)
        if (listeners.count(listener) != 0)
            listener->poolChanged();
}

} // namespace montala::host
