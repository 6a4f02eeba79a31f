#include "platform/FileIdentity.h"

#include <sys/stat.h>

namespace montala::platform {

std::optional<FileIdentity> FileIdentity::of(const std::filesystem::path& path)
{
    struct stat status {};
    if (path.empty() || ::stat(path.c_str(), &status) != 0)
        return std::nullopt;
    return FileIdentity{static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino)};
}

bool isSameFile(const std::filesystem::path& first, const std::filesystem::path& second)
{
    const std::optional<FileIdentity> a = FileIdentity::of(first);
    return a && a == FileIdentity::of(second);
}

} // namespace montala::platform
