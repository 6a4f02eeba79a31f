#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace montala::platform {

// Which file a path names, by device and inode: two paths name the same file
// however they are spelled ("a.edl", "./a.edl", a link to it, a hard link).
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    bool operator==(const FileIdentity&) const = default;

    // Follows symbolic links; nothing for a path that names no file.
    static std::optional<FileIdentity> of(const std::filesystem::path& path);
};

// True when both paths name one existing file.
bool isSameFile(const std::filesystem::path& first, const std::filesystem::path& second);

} // namespace montala::platform
