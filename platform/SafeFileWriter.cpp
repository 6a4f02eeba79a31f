#include "platform/SafeFileWriter.h"

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <iterator>
#include <optional>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

namespace montala::platform {

namespace fs = std::filesystem;

namespace {

// More links than this in one chain is taken for a loop, as the kernel does.
constexpr int maxLinksFollowed = 40;

std::string errnoText(int number)
{
    return std::strerror(number);
}

std::string kindOf(mode_t mode)
{
    if (S_ISDIR(mode))
        return "a folder";
    if (S_ISCHR(mode) || S_ISBLK(mode))
        return "a device";
    if (S_ISFIFO(mode))
        return "a fifo";
    if (S_ISSOCK(mode))
        return "a socket";
    return "not a regular file";
}

std::string octal(mode_t mode)
{
    char text[8];
    std::snprintf(text, sizeof text, "%03o", static_cast<unsigned>(mode & 0777));
    return text;
}

// The temporary file being written, for the handlers of the signals that
// end a program: they remove it before the program ends, so that a
// terminal closed or a kill while saving leaves no half-written file. One
// file at a time: the programs write their files one after the other.
char pendingPath[PATH_MAX + 1];
volatile std::sig_atomic_t pendingSet = 0;
constexpr int endingSignals[] = {SIGINT, SIGTERM, SIGHUP};

extern "C" void removePendingAndEnd(int signal)
{
    if (pendingSet != 0)
        ::unlink(pendingPath);
    ::signal(signal, SIG_DFL);
    ::raise(signal);
}

// While it lives, the ending signals remove the file at `path` first (a
// signal the program ignores, SIGHUP under nohup, stays ignored), and a file
// too large for the process's size limit is a write error (EFBIG), as a full
// disk is, instead of SIGXFSZ ending the program with the file left behind.
class SignalsWhileWriting {
public:
    SignalsWhileWriting()
    {
        struct sigaction ignore {};
        ignore.sa_handler = SIG_IGN;
        sigemptyset(&ignore.sa_mask);
        sizeLimitHandled = ::sigaction(SIGXFSZ, &ignore, &previousSizeLimit) == 0;

        pendingSet = 0;
        struct sigaction action {};
        action.sa_handler = removePendingAndEnd;
        sigemptyset(&action.sa_mask);
        for (size_t index = 0; index < std::size(endingSignals); ++index) {
            installed[index] = ::sigaction(endingSignals[index], nullptr, &previous[index]) == 0 &&
                               previous[index].sa_handler != SIG_IGN &&
                               ::sigaction(endingSignals[index], &action, nullptr) == 0;
        }
    }

    // Named before the file is created, so that no moment is left between
    // its creation and the handlers knowing it: a signal before the open
    // only removes a name that is not there yet (no one else makes names
    // with this process's id). Cleared again when the open fails.
    void pending(const fs::path& path)
    {
        pendingSet = 0;
        const std::string& text = path.native();
        if (text.size() > PATH_MAX)
            return;
        std::memcpy(pendingPath, text.c_str(), text.size() + 1);
        pendingSet = 1;
    }
    void clear() { pendingSet = 0; }

    ~SignalsWhileWriting()
    {
        for (size_t index = 0; index < std::size(endingSignals); ++index)
            if (installed[index])
                ::sigaction(endingSignals[index], &previous[index], nullptr);
        pendingSet = 0;
        if (sizeLimitHandled)
            ::sigaction(SIGXFSZ, &previousSizeLimit, nullptr);
    }

    SignalsWhileWriting(const SignalsWhileWriting&) = delete;
    SignalsWhileWriting& operator=(const SignalsWhileWriting&) = delete;

private:
    struct sigaction previous[std::size(endingSignals)] {};
    bool installed[std::size(endingSignals)] = {};
    struct sigaction previousSizeLimit {};
    bool sizeLimitHandled = false;
};

// The temporary file: created next to the target, so that the rename stays
// within one file system, and removed on every way out unless it was
// renamed into place.
class TemporaryFile {
public:
    explicit TemporaryFile(const fs::path& target) : folder(target.parent_path())
    {
        static std::atomic<unsigned> counter{0};
        const std::string stem = "." + target.filename().string() + ".";
        for (int attempt = 0; attempt < 100 && descriptor < 0; ++attempt) {
            path = folder / (stem + std::to_string(::getpid()) + "-" + std::to_string(counter++) + ".saving");
            signals.pending(path);
            // 0666 lets the umask decide, as for any new file; O_EXCL and
            // O_NOFOLLOW keep a planted file or link from being written.
            descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
            if (descriptor < 0) {
                const int error = errno;
                signals.clear();
                errno = error;
                if (error != EEXIST)
                    break;
            }
        }
        if (descriptor < 0)
            openError = errno;
        created = descriptor >= 0;
    }
    ~TemporaryFile()
    {
        if (descriptor >= 0)
            ::close(descriptor);
        if (created && !renamed)
            ::unlink(path.c_str());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    int fd() const { return descriptor; }
    int error() const { return openError; }

    // 0 or the errno of the failing call.
    int append(std::string_view content)
    {
        const char* data = content.data();
        std::size_t left = content.size();
        while (left > 0) {
            const ssize_t written = ::write(descriptor, data, left);
            if (written < 0) {
                if (errno == EINTR)
                    continue;
                return errno;
            }
            data += written;
            left -= static_cast<std::size_t>(written);
        }
        return 0;
    }

    int finish()
    {
        if (::fsync(descriptor) != 0)
            return errno;
        const int fd = descriptor;
        descriptor = -1;
        // close may report a delayed write error (NFS): it counts.
        if (::close(fd) != 0)
            return errno;
        return 0;
    }

    int renameTo(const fs::path& target)
    {
        if (::rename(path.c_str(), target.c_str()) != 0)
            return errno;
        renamed = true;
        // The new name is only durable once the folder is synced; a failure
        // here cannot undo the rename, so it is not reported.
        const int folderFd = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (folderFd >= 0) {
            ::fsync(folderFd);
            ::close(folderFd);
        }
        return 0;
    }

private:
    fs::path folder;
    fs::path path;
    int descriptor = -1;
    int openError = 0;
    bool created = false; // never remove a file of that name that was not ours
    bool renamed = false;
    SignalsWhileWriting signals;
};

} // namespace

std::string SafeFileWriter::Outcome::message() const
{
    return path.string() + ": " + reason;
}

bool SafeFileWriter::resolveLinks(const fs::path& path, fs::path& target)
{
    fs::path current = path;
    for (int step = 0; step <= maxLinksFollowed; ++step) {
        struct stat status {};
        if (::lstat(current.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) {
            target = current;
            return true;
        }
        std::error_code error;
        const fs::path link = fs::read_symlink(current, error);
        if (error) {
            target = current;
            return true;
        }
        current = link.is_absolute() ? link : current.parent_path() / link;
    }
    return false;
}

namespace {

struct Checked {
    SafeFileWriter::Outcome outcome;
    bool exists = false;
    struct stat status {};
};

Checked checkTarget(const fs::path& path)
{
    Checked checked;
    SafeFileWriter::Outcome& outcome = checked.outcome;
    outcome.path = path;
    using Error = SafeFileWriter::Error;
    const auto fail = [&checked](Error error, std::string reason) {
        checked.outcome.error = error;
        checked.outcome.reason = std::move(reason);
        return checked;
    };

    if (path.empty() || !path.has_filename())
        return fail(Error::NotRegularFile, "names a folder, not a file");
    fs::path target;
    if (!SafeFileWriter::resolveLinks(path, target))
        return fail(Error::LinkLoop, "symbolic links lead round in a loop");
    outcome.target = target;
    const std::string through = target == path ? "" : " (the link's target " + target.string() + ")";

    struct stat& existing = checked.status;
    const bool exists = checked.exists = ::lstat(target.c_str(), &existing) == 0;
    if (!exists && errno != ENOENT) {
        if (errno == ENOTDIR)
            return fail(Error::NoFolder, "a part of the path is not a folder");
        return fail(Error::CannotCreate, "cannot be looked at: " + errnoText(errno));
    }
    if (exists) {
        if (!S_ISREG(existing.st_mode))
            return fail(Error::NotRegularFile, "is " + kindOf(existing.st_mode) + through + "; only a regular file "
                                               "or a new path can be written");
        // access() alone says yes to root for any file: the mode bits say
        // what the owner meant.
        if ((existing.st_mode & 0222) == 0 || ::access(target.c_str(), W_OK) != 0)
            return fail(Error::ReadOnly, "is read-only" + through + " (mode " + octal(existing.st_mode)
                                         + "); it is left as it is");
    }

    const fs::path folder = target.parent_path();
    struct stat folderStatus {};
    if (::stat(folder.empty() ? "." : folder.c_str(), &folderStatus) != 0)
        return fail(Error::NoFolder, "the folder " + folder.string() + " does not exist");
    if (!S_ISDIR(folderStatus.st_mode))
        return fail(Error::NoFolder, folder.string() + " is not a folder");
    return checked;
}

} // namespace

SafeFileWriter::Outcome SafeFileWriter::check(const fs::path& path)
{
    return checkTarget(path).outcome;
}

SafeFileWriter::Outcome SafeFileWriter::write(const fs::path& path, std::string_view content)
{
    return write(path, [content](const Put& put) {
        put(content);
        return true;
    });
}

SafeFileWriter::Outcome SafeFileWriter::write(const fs::path& path, const std::function<bool(const Put& put)>& produce)
{
    Checked checked = checkTarget(path);
    Outcome& outcome = checked.outcome;
    if (!outcome.ok())
        return outcome;
    const fs::path& target = outcome.target;
    const fs::path folder = target.parent_path();
    const std::string through = target == path ? "" : " (the link's target " + target.string() + ")";
    const struct stat& existing = checked.status;
    const bool exists = checked.exists;
    const auto fail = [&outcome](Error error, std::string reason) {
        outcome.error = error;
        outcome.reason = std::move(reason);
        return outcome;
    };

    TemporaryFile temporary(target);
    if (temporary.fd() < 0)
        return fail(Error::CannotCreate,
                    "cannot create a file in the folder " + (folder.empty() ? std::string(".") : folder.string()) + ": "
                        + errnoText(temporary.error()));
    if (exists) {
        if (::fchmod(temporary.fd(), existing.st_mode & 07777) != 0)
            return fail(Error::CannotWrite, "cannot keep the file's mode: " + errnoText(errno));
        // Only root may give the file back to its owner; for anyone else the
        // owner is already the one writing.
        struct stat created {};
        if (::fstat(temporary.fd(), &created) == 0
            && (created.st_uid != existing.st_uid || created.st_gid != existing.st_gid)) {
            [[maybe_unused]] const int ignored = ::fchown(temporary.fd(), existing.st_uid, existing.st_gid);
        }
    }
    int error = 0;
    const bool produced = produce([&](std::string_view piece) {
        if (error == 0)
            error = temporary.append(piece);
    });
    if (!produced)
        return fail(Error::Stopped, "");
    if (error == 0)
        error = temporary.finish();
    if (error != 0)
        return fail(Error::CannotWrite, "cannot be written: " + errnoText(error) + "; the old file is left as it was");
    if (const int renameError = temporary.renameTo(target))
        return fail(Error::CannotReplace, "cannot be replaced" + through + ": " + errnoText(renameError));
    return outcome;
}

} // namespace montala::platform
