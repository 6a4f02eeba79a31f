#pragma once

#include "core/services/MediaPoolInterface.h"

#include "kelmar/base/FObject.h"
#include "kelmar/services/IHostServices.h"
#include "kelmar/project/IMediaPool.h"
#include "kelmar/project/IPoolClip.h"
#include "kelmar/base/IPtr.h"

#include <cstdint>
#include <set>
#include <string>

namespace montala::host {

// The video clips of one project's media pool. The project owns it; it
// hears of the host's changes to the pool as a dependent of the pool and
// passes them on to its listeners. Only clips of kind "video" are counted
// and indexed: the dialogs and the preview have no use for the others.
//
// Failures are thrown: NoInterface for a missing object, HostCallFailed for
// a failing host call, InvalidArgument for an index out of range,
// NotInitialized for a pool made without a host.
class MediaPool : public Kelmar::FObject, public core::MediaPoolInterface {
public:
    // A pool without a host: empty, and told of nothing.
    MediaPool() = default;
    // Borrowed: the project keeps the host's pool and the services outlive it.
    MediaPool(Kelmar::IMediaPool* pool, Kelmar::IHostServices* services);
    ~MediaPool() override;

    const char* isA() const override { return "MediaPool"; }

    int getClipCount() override;
    std::string getClipPath(int index) override;
    std::string getClipName(int index) override;
    std::string getClipFileName(int index) override;
    int64_t getClipId(int index) override;
    double getClipLength(int index) override;
    void addListener(Listener* listener) override;
    void removeListener(Listener* listener) override;

    // Puts a file (UTF-8 path) into the pool. Adds nothing to an empty pool,
    // a habit of old that is kept: a project whose pool never held a picture
    // gets none behind the user's back. True when the host took the file.
    bool addClip(const std::string& path);
    // The clip of `path` with the given id; the file is added first when no
    // such clip is there yet. Null when it cannot be found or added.
    Kelmar::IPtr<Kelmar::IPoolClip> ensureClip(const std::string& path, int64_t id);
    // The first video clip whose name or file name is exactly `text` and
    // whose id is `id`; null when there is none.
    Kelmar::IPtr<Kelmar::IPoolClip> findClip(const std::string& text, int64_t id);

    // The pool tells of a change with IDependent::kChanged.
    void update(Kelmar::FUnknown* changedUnknown, Kelmar::int32 message) override;
    // Tells every listener, as after a change of the pool (the project does it
    // when its frame rate changes).
    void notifyListeners();

private:
    Kelmar::IPtr<Kelmar::IPoolClip> getClip(int index);

    Kelmar::IMediaPool* pool = nullptr;
    Kelmar::IHostServices* services = nullptr;
    std::set<Listener*> listeners;
};

} // namespace montala::host
