#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace montala::platform {

// Writes a whole file so that a failure never destroys what was there:
//
//   folder/                          folder/
//     film.json  (old)      ->         .film.json.XXXXXX  (new text, fsync'd)
//                                      film.json  (old, untouched until...)
//                           ->         film.json  (new: renamed over the old)
//
// The rename is atomic, so a reader sees the old file or the new one, never
// half of either. Around that:
// - A symbolic link is followed to its target, which is replaced; the link
//   stays a link (a chain of links is followed to its end).
// - An existing target keeps its permission bits (and its owner, where the
//   process may set it).
// - A target the user may not write is refused, judged by its mode bits as
//   well as by access(): root may write a 444 file, but it was made
//   read-only on purpose.
// - Only a regular file or a new path is written. A folder, a device node
//   (/dev/null), a fifo or a socket is refused, so that root never replaces
//   a device with a plain file.
// - On every failure the temporary file is removed.
//
// Hard links to the old file keep the old text: the new file is a new inode.
class SafeFileWriter {
public:
    enum class Error {
        None,
        NotRegularFile, // the path names a folder, a device, a fifo or a socket
        ReadOnly,       // the file exists and may not be written
        NoFolder,       // the folder the file should be in does not exist
        LinkLoop,       // symbolic links that do not end
        CannotCreate,   // no temporary file could be made in the folder
        CannotWrite,    // writing or syncing the text failed (a full disk, say)
        CannotReplace,  // the finished text could not be renamed into place
        Stopped,        // the producer of the text gave up; nothing was replaced
    };

    struct Outcome {
        Error error = Error::None;
        std::filesystem::path path;   // as the caller named it
        std::filesystem::path target; // the file written: the end of any links
        std::string reason;           // what went wrong, without the path

        bool ok() const { return error == Error::None; }
        // "PATH: REASON", naming the file as the caller gave it.
        std::string message() const;
    };

    static Outcome write(const std::filesystem::path& path, std::string_view content);
    // The same for a text made piece by piece, so that a large file never
    // has to be whole in memory: `produce` hands each piece to `put` in
    // order, and answers false to give up, which leaves the file as it was
    // (Error::Stopped, with no reason). A failed write is reported once the
    // producer has finished; `put` itself only keeps the first error.
    using Put = std::function<void(std::string_view piece)>;
    static Outcome write(const std::filesystem::path& path, const std::function<bool(const Put& put)>& produce);
    // Every check of write without writing: whether write would refuse the
    // path (a read-only file, a device, no folder, a link loop). A caller
    // that writes several files checks them all first, so that a refusal
    // leaves every one untouched.
    static Outcome check(const std::filesystem::path& path);

    // The end of a chain of symbolic links starting at `path` (which need not
    // exist); `path` itself when it is no link. False for a loop.
    static bool resolveLinks(const std::filesystem::path& path, std::filesystem::path& target);
};

} // namespace montala::platform
