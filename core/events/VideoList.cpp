#include "core/events/VideoList.h"

#include "core/serialize/SerializationTree.h"
#include "util/Result.h"

#include <algorithm>
#include <iterator>

namespace montala::core {

using util::Result;

namespace {

// The separator rule of the rest of the system: "/" only in a path that
// holds a "/" and no "\".
std::string fileNameOf(const std::string& path)
{
    const char separator =
        path.find('\\') == std::string::npos && path.find('/') != std::string::npos ? '/' : '\\';
    const size_t last = path.rfind(separator);
    return last == std::string::npos ? path : path.substr(last + 1);
}

} // namespace

VideoList::Entry::Entry() : Serializable(currentVersion) {}

VideoList::Entry::Entry(std::string path, const Timecode& start, const Timecode& length)
    : Serializable(currentVersion), path(std::move(path)), start(start), length(length)
{
}

VideoList::Entry& VideoList::Entry::operator=(const Entry& other)
{
    Serializable::operator=(other);
    path = other.path;
    start = other.start;
    length = other.length;
    return *this;
}

std::string VideoList::Entry::getFileName() const
{
    return fileNameOf(path);
}

bool VideoList::Entry::operator<(const Entry& other) const
{
    if (start != other.start)
        return start < other.start;
    if (length != other.length)
        return other.length < length;
    return getFileName() < other.getFileName();
}

bool VideoList::Entry::operator==(const Entry& other) const
{
    return start == other.start && length == other.length && getFileName() == other.getFileName();
}

// Stored form, version 0: path as text, start and length as objects.
void VideoList::Entry::readCurrent(serialize::SerializationTree& tree)
{
    path = tree.readText();
    tree.readObject(start);
    tree.readObject(length);
}

void VideoList::Entry::write(serialize::SerializationTree& tree) const
{
    tree.writeText(path);
    tree.writeObject(start);
    tree.writeObject(length);
}

VideoList::VideoList() : Serializable(currentVersion) {}

VideoList::VideoList(const VideoList& other)
    : Serializable(other), ChangeContextNotificationBase(), entries(other.entries)
{
}

VideoList& VideoList::operator=(const VideoList& other)
{
    if (this == &other)
        return *this;
    if (entries.size() == other.entries.size() &&
        std::equal(entries.begin(), entries.end(), other.entries.begin()))
        return *this;
    entries = other.entries;
    notifyChange();
    return *this;
}

const VideoList::Entry& VideoList::getEntry(size_t index) const
{
    if (index >= entries.size())
        throw Result::InvalidArgument;
    return *std::next(entries.begin(), static_cast<std::ptrdiff_t>(index));
}

int VideoList::addEntry(const Entry& entry)
{
    if (containsPath(entry.getPath()))
        return 1;
    entries.insert(entry);
    notifyChange();
    return 0;
}

int VideoList::removeEntry(const std::string& path)
{
    const auto found = findPath(path);
    if (found == entries.end())
        return 1;
    entries.erase(found);
    notifyChange();
    return 0;
}

bool VideoList::containsPath(const std::string& path) const
{
    return findPath(path) != entries.end();
}

const VideoList::Entry& VideoList::getEntryForPath(const std::string& path) const
{
    const auto found = findPath(path);
    if (found == entries.end())
        throw Result::InvalidArgument;
    return *found;
}

void VideoList::setEntryStart(const std::string& path, const Timecode& start)
{
    const auto found = findPath(path);
    if (found == entries.end())
        return;
    // The start is part of the order: the entry goes out and comes back in.
    const Entry moved(found->getPath(), start, found->getLength());
    entries.erase(found);
    entries.insert(moved);
    notifyChange();
}

VideoList::Entry VideoList::findEntryAt(const Timecode& timecode) const
{
    const int at = timecode.toFrames();
    Entry result;
    for (const Entry& entry : entries) {
        const int start = entry.getStart().toFrames();
        if (start > at)
            break;
        if (at < start + entry.getLength().toFrames())
            result = entry;
    }
    return result;
}

void VideoList::clear()
{
    entries.clear();
    notifyChange();
}

std::set<VideoList::Entry>::const_iterator VideoList::findPath(const std::string& path) const
{
    const std::string fileName = fileNameOf(path);
    for (auto it = entries.begin(); it != entries.end(); ++it) {
        if (it->getPath() == path || it->getFileName() == fileName)
            return it;
    }
    return entries.end();
}

void VideoList::notifyChange()
{
    notify(ChangeContext(ChangeContext::VideoListKind));
}

// Stored form, version 0: the count, then each entry in set order.
void VideoList::readCurrent(serialize::SerializationTree& tree)
{
    entries.clear();
    const int32_t count = tree.readInt32();
    if (count < 0)
        throw Result::BadStoredData;
    for (int32_t i = 0; i < count; ++i) {
        Entry entry;
        tree.readObject(entry);
        entries.insert(entry);
    }
    notifyChange();
}

void VideoList::write(serialize::SerializationTree& tree) const
{
    tree.writeInt32(static_cast<int32_t>(entries.size()));
    for (const Entry& entry : entries)
        tree.writeObject(entry);
}

} // namespace montala::core
