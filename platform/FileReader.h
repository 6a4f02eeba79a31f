#pragma once

#include <filesystem>
#include <string>

namespace montala::platform {

// Reads a whole file, and says why not in words a user understands: it does
// not exist, it is a folder, permission is denied.
class FileReader {
public:
    struct Outcome {
        bool ok = false;
        std::string reason; // empty when ok

        // "PATH: REASON".
        std::string message(const std::filesystem::path& path) const { return path.string() + ": " + reason; }
    };

    static Outcome read(const std::filesystem::path& path, std::string& content);
};

} // namespace montala::platform
