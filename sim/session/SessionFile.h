#pragma once

#include "kelmar/base/IPtr.h"
#include "sim/project/SimProject.h"

#include <functional>
#include <string>
#include <string_view>

namespace montala::sim {

class SimHost;

// A session file: one project of the simulated host, whole, as JSON that a
// person can write by hand (docs/session-file.md describes it).
//
// Reading checks everything before anything is kept: a file that is not
// JSON, lacks a field, names an unknown kind or field, or says something
// impossible (an event that ends before it starts, a clip that is not in
// the pool) gives no project, and an error that names the place in the file
// as a JSON pointer and its line, e.g. "film.json: line 12:
// /tracks/2/events/5/end: ...". What could not be kept exactly is refused
// too: numbers out of range, a NUL inside a text, a key given twice, folders
// nested more than 64 deep.
//
// Writing is canonical: the same project always gives the same bytes.
//
// The reader (read, load) is SessionFileReader.cpp, the writer (write, save)
// SessionFileWriter.cpp.
class SessionFile {
public:
    // A new project of `host`, not yet open; null with `error` set.
    static Kelmar::IPtr<SimProject> load(SimHost& host, const std::string& path, std::string& error);
    // The same from text; `origin` starts the error messages.
    static Kelmar::IPtr<SimProject> read(SimHost& host, std::string_view text, const std::string& origin,
                                         std::string& error);

    static std::string write(SimProject& project);
    // Writes next to `path` and then swaps the file in, so that a failed save
    // leaves the old file as it was (platform::SafeFileWriter: through links,
    // keeping the mode, refusing read-only files and devices). An open
    // project's storage notifications hear of the save first, as the host
    // tells them before it writes a project. The text goes to the file as it
    // is made, a track at a time. `stop`, when given, is asked once the text
    // is made and before it takes the file's place: true, and the file stays
    // as it was and the save answers false with an empty error.
    static bool save(SimProject& project, const std::string& path, std::string& error,
                     const std::function<bool()>& stop = nullptr);

    static constexpr int version = 1;
    static constexpr const char* formatName = "montala-session";
};

} // namespace montala::sim
