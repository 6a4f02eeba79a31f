#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace montala::core {

class DataModel;

// What changed, told by kind; a listener that needs more casts. A context
// lives on the notifier's stack or in the notifier and must not be kept.
class ChangeContext {
public:
    enum Kind {
        DataModelKind = 0,
        SettingsKind = 1,
        EventListKind = 2,
        EventKind = 3,
        VideoListKind = 4,
        PreviewKind = 5,
        ActionKind = 6,
    };

    explicit ChangeContext(int kind) : kind(kind) {}
    virtual ~ChangeContext() = default;

    int kind;
};

class DataModelChangeContext : public ChangeContext {
public:
    explicit DataModelChangeContext(DataModel* model) : ChangeContext(DataModelKind), model(model) {}
    DataModel* model;
};

class EventListChangeContext : public ChangeContext {
public:
    explicit EventListChangeContext(int listKind) : ChangeContext(EventListKind), listKind(listKind) {}
    int listKind;
};

class EventChangeContext : public ChangeContext {
public:
    EventChangeContext() : ChangeContext(EventKind) {}
};

class ActionChangeContext : public ChangeContext {
public:
    explicit ActionChangeContext(int action) : ChangeContext(ActionKind), action(action) {}
    int action;
};

class ChangeContextListenerInterface {
public:
    virtual ~ChangeContextListenerInterface() = default;
    virtual void changed(const ChangeContext& context) = 0;
};

// Keeps a set of listeners and calls them synchronously. It owns none of
// them and does not notice when one dies: a listener removes itself. No
// listener may rely on the order of calls. Most notifiers (each event of a
// list) have one listener, kept without a heap block of its own.
class ChangeContextNotificationBase {
public:
    ChangeContextNotificationBase() = default;
    // Listeners belong to an object, not to its value: a copy starts without.
    ChangeContextNotificationBase(const ChangeContextNotificationBase&) {}
    ChangeContextNotificationBase& operator=(const ChangeContextNotificationBase&) { return *this; }
    virtual ~ChangeContextNotificationBase() = default;

    virtual void addListener(ChangeContextListenerInterface* listener);
    virtual void removeListener(ChangeContextListenerInterface* listener);
    // A listener must not add or remove listeners of this notifier meanwhile.
    virtual void notify(const ChangeContext& context);

    size_t getListenerCount() const { return (first ? 1 : 0) + (more ? more->size() : 0); }

private:
    ChangeContextListenerInterface* first = nullptr;
    // Made only for a second listener, so that the many notifiers with one
    // (each event of a list) stay small.
    std::unique_ptr<std::vector<ChangeContextListenerInterface*>> more;
};

} // namespace montala::core
