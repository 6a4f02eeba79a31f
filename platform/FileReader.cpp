#include "platform/FileReader.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace montala::platform {

namespace {

std::string reasonFor(int error)
{
    switch (error) {
    case ENOENT:
        return "does not exist";
    case EACCES:
    case EPERM:
        return "cannot be opened: permission denied";
    case EISDIR:
        return "is a folder, not a file";
    default:
        return std::string("cannot be read: ") + std::strerror(error);
    }
}

} // namespace

FileReader::Outcome FileReader::read(const std::filesystem::path& path, std::string& content)
{
    content.clear();
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return {false, reasonFor(errno)};
    struct stat status {};
    // A folder opens for reading on Linux; only reading it fails.
    if (::fstat(fd, &status) == 0 && S_ISDIR(status.st_mode)) {
        ::close(fd);
        return {false, reasonFor(EISDIR)};
    }
    if (S_ISREG(status.st_mode) && status.st_size > 0)
        content.reserve(static_cast<std::size_t>(status.st_size));
    char buffer[65536];
    for (;;) {
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got == 0)
            break;
        if (got < 0) {
            if (errno == EINTR)
                continue;
            const int error = errno;
            ::close(fd);
            content.clear();
            return {false, reasonFor(error)};
        }
        content.append(buffer, static_cast<std::size_t>(got));
    }
    ::close(fd);
    return {true, {}};
}

} // namespace montala::platform
