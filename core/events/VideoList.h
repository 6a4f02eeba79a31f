#pragma once

#include "core/model/ChangeContext.h"
#include "core/time/Timecode.h"
#include "core/serialize/Serializable.h"

#include <set>
#include <string>

namespace montala::core {

// The picture files of the new cut and where each lies on the new timeline.
// A video is known by its file name: the same file in another folder (or on
// another drive) is the same video and is not added twice.
class VideoList : public serialize::Serializable, public ChangeContextNotificationBase {
public:
    static constexpr uint32_t currentVersion = 0;

    class Entry : public serialize::Serializable {
    public:
        static constexpr uint32_t currentVersion = 0;

        Entry();
        Entry(std::string path, const Timecode& start, const Timecode& length);
        Entry(const Entry& other) = default;
        Entry& operator=(const Entry& other);

        const std::string& getPath() const { return path; }
        const Timecode& getStart() const { return start; }
        const Timecode& getLength() const { return length; }
        // The part of the path behind its last directory separator.
        std::string getFileName() const;
        bool isEmpty() const { return path.empty(); }

        // By start; at equal starts the longer first; then by file name.
        bool operator<(const Entry& other) const;
        // Start, length and file name; the folder takes no part.
        bool operator==(const Entry& other) const;

        void readCurrent(serialize::SerializationTree& tree) override;
        void write(serialize::SerializationTree& tree) const override;

    private:
        std::string path;
        Timecode start;
        Timecode length;
    };

    VideoList();
    // Entries only: listeners stay with their object.
    VideoList(const VideoList& other);
    // Nothing happens, not even a notification, when both hold the same
    // entries; otherwise copies and notifies.
    VideoList& operator=(const VideoList& other);
    ~VideoList() override = default;

    size_t getSize() const { return entries.size(); }
    // Result::InvalidArgument past the end.
    const Entry& getEntry(size_t index) const;
    // 1 without change when the path or its file name is already there;
    // otherwise inserts, notifies and gives 0.
    int addEntry(const Entry& entry);
    // 1 when there is no such entry; otherwise removes, notifies, gives 0.
    int removeEntry(const std::string& path);
    bool containsPath(const std::string& path) const;
    // Result::InvalidArgument when there is none.
    const Entry& getEntryForPath(const std::string& path) const;
    // Moves the entry; nothing happens when there is no such entry.
    void setEntryStart(const std::string& path, const Timecode& start);
    // The entry that shows the picture at the timecode (from its start up
    // to, not including, its end); an empty entry when none does. Where
    // entries overlap the one starting last wins.
    Entry findEntryAt(const Timecode& timecode) const;
    void clear();

    void readCurrent(serialize::SerializationTree& tree) override;
    void write(serialize::SerializationTree& tree) const override;

private:
    std::set<Entry>::const_iterator findPath(const std::string& path) const;
    void notifyChange();

    std::set<Entry> entries;
};

} // namespace montala::core
