#pragma once

#include "core/fileio/WriterInterface.h"

#include <cstddef>
#include <string>
#include <vector>

namespace montala::core::fileio {

// The CMX 3600 writer. Much stricter than the reader: a fixed column layout,
// flawless events only, and it drops on purpose what other systems choke
// on. What a reload of its output gives back differs from what went in:
//
//   written                      read back
//   -------                      ---------
//   cut, roll "Healed Event 001"  cut, roll "HEAL-001"
//   dissolve / wipe ("D", "W")    line dropped (no duration is written)
//   clip name, comments           empty
//   event number 17 at place 3    event number 3
//   drop frame                    drop mode unknown (no FCM line)
//
// Lists above 999 events go to numbered files (name_1.edl, name_2.edl ...)
// since the event number has three digits.
//
// Every file is written safely (platform::SafeFileWriter): through a
// temporary file renamed into place, through symbolic links, keeping the
// mode, refusing read-only files and anything that is no regular file.
class CmxWriter : public WriterInterface {
public:
    static constexpr size_t maxEventsPerFile = 999;
    static constexpr size_t maxTitleBytes = 70;

    // What one write did, for the caller to tell the user: only files this
    // run wrote are named, never an old file that a failure left in place.
    struct Report {
        std::vector<std::u16string> written;
        // Files of an earlier run taken away after a successful write:
        // numbered parts of a longer one (name_3.edl beside a new name_1.edl
        // and name_2.edl), or the single file of a shorter one (name.edl
        // beside new parts).
        std::vector<std::u16string> removed;
        // Such parts left in place, each with the reason: not written by
        // this writer (its title line says otherwise), or one of the inputs.
        std::vector<std::u16string> keptStale;
        std::vector<std::string> keptStaleReasons;
        // The file that could not be written and why, naming it.
        std::u16string failedPath;
        std::string reason;
    };

    util::Result::Type write(const std::u16string& path, const EventList& list) override;
    // As write, with what happened in `report`. No file whose identity
    // (device and inode) is that of one of `inputs` is replaced or removed:
    // the list is refused with InvalidArgument before anything is written.
    // All target files are checked before the first is written, so that a
    // refused one (read-only, a device) leaves every part untouched.
    util::Result::Type write(const std::u16string& path, const EventList& list, Report& report,
                             const std::vector<std::u16string>& inputs = {});

    // One file of at most 999 events. The text goes to a temporary file in
    // the same folder that is renamed into place only when it is complete,
    // so a failure leaves neither a half-written file nor a damaged old one.
    util::Result::Type writeFile(const std::u16string& path, const EventList& list);

    // The files a list of `eventCount` events goes to: `path` itself, or
    // the numbered parts.
    static std::vector<std::u16string> outputPaths(const std::u16string& path, size_t eventCount);

    // The CMX form of a roll name: at most eight characters of
    // ".-_A-Z0-9"; long names keep their trailing number ("ABCD-123").
    static std::string formatRollName(const std::string& rollName);
    // directory + stem + "_" + part + "." + extension.
    static std::u16string numberedPath(const std::u16string& path, size_t part);

private:
    util::Result::Type writeFile(const std::u16string& path, const EventList& list, Report& report);
    // The title and event lines; throws Result::OutOfRange past event 999.
    static std::string formatLines(const std::string& title, const EventList& list);
    // The title that a file of that path is written with.
    static std::string titleOf(const std::u16string& path);
    // Removes the file when this writer wrote it; false when there is none.
    static bool removeStale(const std::u16string& stale, Report& report, const std::vector<std::u16string>& inputs);
    static void removeStaleParts(const std::u16string& path, size_t firstStale, Report& report,
                                 const std::vector<std::u16string>& inputs);
};

// Writes list to path with a CmxWriter.
util::Result::Type writeEdlFile(const std::u16string& path, const EventList& list);
util::Result::Type writeEdlFile(const std::u16string& path, const EventList& list, CmxWriter::Report& report,
                                const std::vector<std::u16string>& inputs = {});

} // namespace montala::core::fileio
