#pragma once

#include "core/fileio/WriterInterface.h"

#include <cstddef>
#include <ostream>
#include <string>

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
class CmxWriter : public WriterInterface {
public:
    static constexpr size_t maxEventsPerFile = 999;
    static constexpr size_t maxTitleBytes = 70;

    util::Result::Type write(const std::u16string& path, const EventList& list) override;

    // One file of at most 999 events. The text goes to a temporary file in
    // the same folder that is renamed into place only when it is complete,
    // so a failure leaves neither a half-written file nor a damaged old one.
    util::Result::Type writeFile(const std::u16string& path, const EventList& list);

    // The CMX form of a roll name: at most eight characters of
    // ".-_A-Z0-9"; long names keep their trailing number ("ABCD-123").
    static std::string formatRollName(const std::string& rollName);
    // directory + stem + "_" + part + "." + extension.
    static std::u16string numberedPath(const std::u16string& path, size_t part);

private:
    // The title and event lines; throws Result::OutOfRange past event 999.
    static void writeLines(std::ostream& stream, const std::string& title, const EventList& list);
};

// Writes list to path with a CmxWriter.
util::Result::Type writeEdlFile(const std::u16string& path, const EventList& list);

} // namespace montala::core::fileio
